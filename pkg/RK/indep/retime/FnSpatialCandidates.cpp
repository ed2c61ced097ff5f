#include "RK/indep/retime/FnTweenerStages.h"

namespace {

constexpr float kStartCost = 1.7014117e38f;

}  // namespace

// ---- One pass -------------------------------------------------------------------------------------------

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<Stored, Computed, Scale>::Prepare() {
    monitor_a_.SetInterrupt(Interrupt());
    monitor_b_.SetInterrupt(Interrupt());
    if (!run_monitors) return;
    monitor_a_.StartAfresh();
    monitor_b_.StartAfresh();
    monitor_a_.ProcessMap(result_a);
    monitor_b_.ProcessMap(result_b);
}

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<Stored, Computed, Scale>::PassEnd() {
    if (Error() != 0) return;
    monitor_a_.ProcessMap(result_a);
    monitor_b_.ProcessMap(result_b);
    if (!first_pass_) return;
    first_pass_ = false;
    list_a->EmptyAll();
    list_b->EmptyAll();
}

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<Stored, Computed, Scale>::ProcessBand() {
    const FnBand band = Band();
    FnRandom random;
    bool missing = false;
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y) {
        HvVec2 *a = result_a->Row(y), *b = result_b->Row(y);
        int* klass = classes->Row(y);
        for (int32_t x = 0; x < width; ++x) {
            if (only_missing && !Lacks(klass[x], a[x], b[x])) continue;
            if (skip_class_0 && klass[x] == kFnBothSources) continue;
            Choose(x, y, random, klass[x], a[x], b[x]);
            missing |= only_missing && Lacks(klass[x], a[x], b[x]);
        }
    }
    if (missing) still_missing_ = true;
}

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<Stored, Computed, Scale>::Choose(
    int32_t x, int32_t y, FnRandom& random, int32_t& klass, HvVec2& a, HvVec2& b) const {
    FnCandidateSet as, bs;
    const int64_t element = Element(x, y);
    monitor_a_.Gather(x, y, &as);
    list_a->At(element).ForEach([&](const HvVec2& v) { as.Add(v); });
    as.RemoveDuplicates();
    monitor_b_.Gather(x, y, &bs);
    list_b->At(element).ForEach([&](const HvVec2& v) { bs.Add(v); });
    bs.RemoveDuplicates();

    const bool negate = flags & kFnUseNegated;
    if (klass == kFnBothSources && (as.Count() == 0 || bs.Count() == 0) && !negate) return;
    if (as.Count() == 1 && bs.Count() == 1) {
        a = as[0];
        b = bs[0];
        return;
    }
    // Kept: a mean whose taking is skipped stays (0, 0) and counts as such.
    HvVec2 mean_a = {0.0f, 0.0f}, mean_b = {0.0f, 0.0f};
    if (!(klass == kFnSecondOnly && bs.Count() > 0)) {
        as.ShuffleInFull(random);
        mean_a = monitor_a_.LocalMean(x, y);
    }
    if (!(klass == kFnFirstOnly && as.Count() > 0)) {
        bs.ShuffleInFull(random);
        mean_b = monitor_b_.LocalMean(x, y);
    }
    if (negate && as.Count() == 0 && bs.Count() > 0) {
        as.NegateFrom(bs);
        mean_a = -mean_b;
    } else if (negate && bs.Count() == 0 && as.Count() > 0) {
        bs.NegateFrom(as);
        mean_b = -mean_a;
    }
    if (klass == kFnFirstOnly) return ChooseByMean(bs, mean_b, b);
    if (klass == kFnSecondOnly) return ChooseByMean(as, mean_a, a);
    if (klass == kFnUndecided) klass = kFnBothSources;
    if (klass == kFnBothSources) ChoosePair(x, y, as, bs, mean_a, mean_b, a, b);
}

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<Stored, Computed, Scale>::ChooseByMean(
    const FnCandidateSet& from, const HvVec2& mean, HvVec2& out) const {
    float least = kStartCost;
    for (const HvVec2& c : from) {
        const float cost = FnL1(mean - c) * 8.0f * smooth_weight;
        if (cost < least) least = cost, out = c;
    }
}

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<Stored, Computed, Scale>::ChoosePair(
    int32_t x, int32_t y, const FnCandidateSet& as, const FnCandidateSet& bs, const HvVec2& mean_a,
    const HvVec2& mean_b, HvVec2& result_of_a, HvVec2& result_of_b) const {
    const bool masked = mask && mask->Read(x, y) > 0.5f;
    const float match_weight = masked ? 0.0f : error_weight * 65535.0f;
    const float rest = 1.0f - t;
    // What b costs does not depend on a.
    float sample_b[FnCandidateSet::kMost], distance_b[FnCandidateSet::kMost];
    for (int32_t j = 0; j < bs.Count() && as.Count() > 0; ++j) {
        sample_b[j] = LumaAt(x, y, bs[j] * t, FirstFrame());
        distance_b[j] = FnL1(mean_b - bs[j]) * 8.0f;
    }
    float least = kStartCost;
    HvVec2 best_a = result_of_a, best_b = result_of_b;
    for (const HvVec2& a : as) {
        const float sample_a = LumaAt(x, y, a * rest, SecondFrame());
        const float distance_a = FnL1(mean_a - a) * 8.0f;
        for (int32_t j = 0; j < bs.Count(); ++j) {
            const float cost = std::fabs(sample_b[j] - sample_a) * match_weight + FnL1(a + bs[j]) * sum_weight +
                               (distance_a + distance_b[j]) * smooth_weight;
            if (cost < least) least = cost, best_a = a, best_b = bs[j];
        }
    }
    result_of_a = best_a;
    result_of_b = best_b;
}

template <class Stored, class Computed, int Scale>
float FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<Stored, Computed, Scale>::LumaAt(
    int32_t x, int32_t y, const HvVec2& offset, const Frame& frame) const {
    constexpr float kUnknown = 128.0f, kOutside = 16711425.0f;
    if (offset.x == 0.0f && offset.y == 0.0f) return frame.Read(x, y);
    if (FnIsUndefined(offset)) return kUnknown;
    const float px = static_cast<float>(x) + 0.5f - offset.x, py = static_cast<float>(y) + 0.5f + offset.y;
    const bool inside = px >= 0.0f && px <= static_cast<float>(frame.Width()) && py >= 0.0f &&
                        py <= static_cast<float>(frame.Height());
    return inside ? frame.Bilinear(px, py) : kOutside;
}

// ---- All passes -----------------------------------------------------------------------------------------

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerIterateSpatialCandidates<Stored, Computed, Scale>::Run() {
    constexpr int32_t kMostRepairs = 101;
    if (iterations == 0) return;
    FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<Stored, Computed, Scale> pass(*this);
    pass.SetInterrupt(Interrupt());
    // Gives the number of rounds it took.
    auto repair = [&] {
        pass.run_monitors = pass.only_missing = true;
        int32_t rounds = 0;
        do {
            pass.ProcessMap(result_a);
            ++rounds;
        } while (Check() == 0 && pass.StillMissing() && rounds < kMostRepairs);
        return rounds;
    };

    for (int32_t i = 0; i < iterations && Check() == 0; ++i) pass.ProcessMap(result_a);
    if (Check() != 0) return;
    if (flags & kFnGuessOcclusion) {
        pass.flags &= ~static_cast<uint32_t>(kFnUseNegated);
        const int32_t rounds = repair();
        pass.skip_class_0 = true;
        pass.only_missing = false;
        for (int32_t i = 0; i < rounds && Check() == 0; ++i) pass.ProcessMap(result_a);
        pass.skip_class_0 = false;
    }
    if (Check() != 0) return;
    pass.flags |= kFnUseNegated;
    repair();
}

template class FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<float, float, 1>;
template class FnMotionEstimateGradientTweenerIterateSpatialCandidates<float, float, 1>;
