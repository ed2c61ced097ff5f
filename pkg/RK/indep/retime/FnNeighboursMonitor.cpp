#include "RK/indep/retime/FnNeighboursMonitor.h"

namespace {

// The part of 3 x 3 around (x, y) that exists.
struct Around {
    int32_t left, right, above, below;  // first and last column and row
    Around(const FnTexIndexer& map, int32_t x, int32_t y)
        : left(x > 0 ? x - 1 : x),
          right(x + 1 < map.Width() ? x + 1 : x),
          above(y > 0 ? y - 1 : y),
          below(y + 1 < map.Height() ? y + 1 : y) {}
    // All eight neighbours exist.
    bool IsWhole() const { return right - left == 2 && below - above == 2; }
};

}  // namespace

int32_t FnMotionEstimateGradientChangedNeighboursMonitor::Gather(int32_t x, int32_t y,
                                                                 FnCandidateSet* out) const {
    if (!previous_.HasPixels() || !changed_.HasPixels()) return 0;
    const Around around(previous_, x, y);
    if (around.IsWhole()) return GatherInside(x, y, out);
    int32_t count = 0;
    for (int32_t j = around.below; j >= around.above; --j) {
        const HvVec2* vectors = previous_.Row(j);
        const int* changed = changed_.Row(j);
        for (int32_t i = around.left; i <= around.right; ++i) {
            if ((i == x && j == y) || !(all_neighbours || changed[i] != 0)) continue;
            out->Add(vectors[i]);
            ++count;
        }
    }
    return count;
}

// Where nothing changed, which is the most of a map that settles, one look at the flags is all.
int32_t FnMotionEstimateGradientChangedNeighboursMonitor::GatherInside(int32_t x, int32_t y,
                                                                       FnCandidateSet* out) const {
    const HvVec2* below = previous_.Row(y + 1) + x;
    const HvVec2* here = previous_.Row(y) + x;
    const HvVec2* above = previous_.Row(y - 1) + x;
    if (all_neighbours) {
        for (int i = -1; i <= 1; ++i) out->Add(below[i]);
        out->Add(here[-1]);
        out->Add(here[1]);
        for (int i = -1; i <= 1; ++i) out->Add(above[i]);
        return 8;
    }
    const int* c = changed_.Row(y + 1) + x;
    const int* d = changed_.Row(y) + x;
    const int* e = changed_.Row(y - 1) + x;
    if ((c[-1] | c[0] | c[1] | d[-1] | d[1] | e[-1] | e[0] | e[1]) == 0) return 0;
    for (int i = -1; i <= 1; ++i)
        if (c[i] != 0) out->Add(below[i]);
    if (d[-1] != 0) out->Add(here[-1]);
    if (d[1] != 0) out->Add(here[1]);
    for (int i = -1; i <= 1; ++i)
        if (e[i] != 0) out->Add(above[i]);
    return c[-1] + c[0] + c[1] + d[-1] + d[1] + e[-1] + e[0] + e[1];
}

HvVec2 FnMotionEstimateGradientChangedNeighboursMonitor::LocalMean(int32_t x, int32_t y) const {
    if (!previous_.HasPixels()) return {0.0f, 0.0f};
    const Around around(previous_, x, y);
    HvVec2 sum = {0.0f, 0.0f};
    int32_t count = 0;
    for (int32_t j = around.above; j <= around.below; ++j) {
        const HvVec2* vectors = previous_.Row(j);
        for (int32_t i = around.left; i <= around.right; ++i) {
            if ((i == x && j == y) || FnIsUndefinedInEither(vectors[i])) continue;
            sum = sum + vectors[i];
            ++count;
        }
    }
    if (count == 0) return {0.0f, 0.0f};
    return {sum.x / static_cast<float>(count), sum.y / static_cast<float>(count)};
}

void FnMotionEstimateGradientChangedNeighboursMonitor::Prepare() {
    const FnVectorMap& map = Watched();
    const bool made = !previous_.HasPixels() || !changed_.HasPixels() || previous_.Width() != map.Width() ||
                      previous_.Height() != map.Height();
    if (made && !(changed_.Resize(map.Width(), map.Height()) && previous_.Resize(map.Width(), map.Height())))
        return Abort(kFnNoMemory);
    if (made || first_run) {
        changed_.Fill(1);
        if (!previous_.CopyFrom(map)) return Abort(kFnNoMemory);
    }
    SetPassCount(first_run ? 0 : 1);
    if (!first_run) all_neighbours = false;
    first_run = false;
    saw_undefined_ = false;
}

void FnMotionEstimateGradientChangedNeighboursMonitor::ProcessBand() {
    const FnBand band = Band();
    bool saw = false;
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y) {
        const HvVec2* now = Watched().Row(y);
        HvVec2* before = previous_.Row(y);
        int* changed = changed_.Row(y);
        for (int32_t x = 0; x < Map()->Width(); ++x) {
            saw |= FnIsUndefinedInEither(now[x]);
            changed[x] = now[x] != before[x];
            if (changed[x]) before[x] = now[x];
        }
    }
    if (saw) saw_undefined_ = true;
}
