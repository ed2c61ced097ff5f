#include "RK/indep/retime/FnTweenerStages.h"

namespace {

bool Exists(const FnIntMap& map, int32_t x, int32_t y) {
    return x >= 0 && y >= 0 && x < map.Width() && y < map.Height();
}

}  // namespace

// ---- First classification -------------------------------------------------------------------------------

// An undecided neighbour repeats the vote of the one before it; one that sees both sources ends the repeating.
template <class Stored, class Computed, int Scale>
int32_t FnMotionEstimateGradientTweenerGuessOcclusion<Stored, Computed, Scale>::ByVote(int32_t x, int32_t y) const {
    static const int kAround[8][2] = {{-1, 1}, {-1, 0}, {-1, -1}, {0, 1}, {0, -1}, {1, 1}, {1, 0}, {1, -1}};
    int32_t votes[3] = {0, 0, 0};
    int32_t vote = 0;
    for (const auto& to : kAround) {
        if (!Exists(*classes, x + to[0], y + to[1])) continue;
        const int32_t klass = classes->Row(y + to[1])[x + to[0]];
        if (klass >= kFnBothSources && klass <= kFnSecondOnly) vote = klass;
        ++votes[vote];
    }
    return votes[1] > votes[2] ? kFnFirstOnly : votes[2] > votes[1] ? kFnSecondOnly : kFnUndecided;
}

template <class Stored, class Computed, int Scale>
int32_t FnMotionEstimateGradientTweenerGuessOcclusion<Stored, Computed, Scale>::ByLists(int32_t x, int32_t y) const {
    if (!(flags & kFnGuessOcclusion)) return kFnBothSources;
    const bool no_a = list_a->At(Element(x, y)).IsEmpty(), no_b = list_b->At(Element(x, y)).IsEmpty();
    if (no_a && no_b) return kFnUndecided;
    return no_a ? kFnSecondOnly : no_b ? kFnFirstOnly : kFnBothSources;
}

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerGuessOcclusion<Stored, Computed, Scale>::ProcessBand() {
    const FnBand band = Band();
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y) {
        int* row = classes->Row(y);
        for (int32_t x = 0; x < classes->Width(); ++x) {
            if (row[x] >= kFnBothSources && row[x] <= kFnSecondOnly) continue;
            row[x] = row[x] == kFnUndecided ? ByVote(x, y) : ByLists(x, y);
            changed_ = true;
        }
    }
}

// ---- Majority -------------------------------------------------------------------------------------------

namespace {

int32_t Majority(int32_t klass, const int32_t c[3]) {
    if (klass == kFnBothSources) {
        if (c[1] > c[0] && c[1] > c[2]) return kFnFirstOnly;
        if (c[2] > c[0] && c[2] > c[1]) return kFnSecondOnly;
    } else if (klass == kFnFirstOnly) {
        if (c[1] < c[0]) return kFnBothSources;
        if (c[1] < c[2]) return kFnSecondOnly;
    } else {
        if (c[2] < c[0]) return kFnBothSources;
        if (c[1] > c[2]) return kFnFirstOnly;
    }
    return klass;
}

}  // namespace

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerGuessOcclusionSmoother<Stored, Computed, Scale>::ProcessBand() {
    const FnBand band = Band();
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y) {
        for (int32_t x = 0; x < classes->Width(); ++x) {
            int32_t count[3] = {0, 0, 0};
            for (int32_t j = y - 1; j <= y + 1; ++j)
                for (int32_t i = x - 1; i <= x + 1; ++i) {
                    if (!Exists(*classes, i, j)) continue;
                    const int32_t klass = classes->Row(j)[i];
                    if (klass >= kFnBothSources && klass <= kFnSecondOnly) ++count[klass];
                }
            int& klass = classes->Row(y)[x];
            const int32_t now = Majority(klass, count);
            changed_ |= now != klass;
            klass = now;
        }
    }
}

// ---- Exchange -------------------------------------------------------------------------------------------

// Kept: the half pixel is added twice. The list is emptied whatever follows.
template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerGuessOcclusionBlanker<Stored, Computed, Scale>::Exchange(int32_t x, int32_t y,
                                                                                             CandidateLists& from,
                                                                                             CandidateLists& to) {
    const int64_t here = Element(x, y);
    if (from.At(here).IsEmpty()) return;
    const HvVec2 v = from.At(here).First();
    from.Empty(here);
    const int32_t there_x = FnFloor((static_cast<float>(x) + 0.5f - v.x) + 0.5f);
    const int32_t there_y = FnFloor((static_cast<float>(y) + 0.5f + v.y) + 0.5f);
    if (!Exists(*classes, there_x, there_y)) return;
    const CandidateList other = to.At(Element(there_x, there_y));
    if (other.IsEmpty()) return;
    const HvVec2 w = other.First();
    to.Empty(here);
    if (!to.Add(here, w)) Abort(kFnNoMemory);
}

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerGuessOcclusionBlanker<Stored, Computed, Scale>::ProcessBand() {
    const FnBand band = Band();
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y)
        for (int32_t x = 0; x < classes->Width(); ++x) {
            if (classes->Row(y)[x] == kFnFirstOnly) Exchange(x, y, *list_a, *list_b);
            if (classes->Row(y)[x] == kFnSecondOnly) Exchange(x, y, *list_b, *list_a);
        }
}

template class FnMotionEstimateGradientTweenerGuessOcclusion<float, float, 1>;
template class FnMotionEstimateGradientTweenerGuessOcclusionSmoother<float, float, 1>;
template class FnMotionEstimateGradientTweenerGuessOcclusionBlanker<float, float, 1>;
