#include "RK/indep/retime/FnTweener.h"

#include "RK/indep/retime/FnTweenerStages.h"

template <class Stored, class Computed, int Scale, class FieldStored, class FieldComputed, int FieldScale>
bool FnMotionEstimateGradientTweener<Stored, Computed, Scale, FieldStored, FieldComputed, FieldScale>::MakeMaps() {
    FnTweenParameters& p = parameters;
    const struct {
        bool make;
        bool made;
    } maps[] = {
        {!(p.flags & kFnGivenClasses), !(p.flags & kFnGivenClasses) && classes_.Resize(p.width, p.height)},
        {!(p.flags & kFnGivenResultA), !(p.flags & kFnGivenResultA) && result_a_.Resize(p.width, p.height)},
        {!(p.flags & kFnGivenResultB), !(p.flags & kFnGivenResultB) && result_b_.Resize(p.width, p.height)},
    };
    for (const auto& map : maps)
        if (map.make != map.made) return false;
    if (maps[0].make) p.classes = &classes_;
    if (maps[1].make) p.result_a = &result_a_;
    if (maps[2].make) p.result_b = &result_b_;
    p.classes->Fill(p.flags & kFnGuessOcclusion ? kFnNotLookedAt : kFnBothSources);
    p.result_a->Fill(kFnUndefined);
    p.result_b->Fill(kFnUndefined);
    p.list_a = &list_a_;
    p.list_b = &list_b_;
    const int64_t elements = int64_t{p.width} * p.height;
    return list_a_.Make(elements) && list_b_.Make(elements);
}

template <class Stored, class Computed, int Scale, class FieldStored, class FieldComputed, int FieldScale>
void FnMotionEstimateGradientTweener<Stored, Computed, Scale, FieldStored, FieldComputed, FieldScale>::Project(
    const FnVectorMap* field, CandidateLists* lists, float factor, bool extended) {
    if (!field || Check() != 0) return;
    FnMotionEstimateGradientTweenerGenerateTemporalCandidates<Stored, Computed, Scale> temporal(parameters);
    temporal.factor = factor;
    temporal.extended = extended;
    temporal.SetInterrupt(Interrupt());
    temporal.Process(const_cast<FnVectorMap*>(field), lists);
}

template <class Stored, class Computed, int Scale, class FieldStored, class FieldComputed, int FieldScale>
void FnMotionEstimateGradientTweener<Stored, Computed, Scale, FieldStored, FieldComputed, FieldScale>::Classify() {
    constexpr int32_t kMostGuesses = 11;
    FnMotionEstimateGradientTweenerGuessOcclusion<Stored, Computed, Scale> guess(parameters);
    guess.SetInterrupt(Interrupt());
    int32_t rounds = 0;
    do guess.ProcessMap(parameters.classes);
    while (++rounds < kMostGuesses && guess.Changed() && Check() == 0);

    FnMotionEstimateGradientTweenerGuessOcclusionSmoother<Stored, Computed, Scale> smoother(parameters);
    smoother.SetInterrupt(Interrupt());
    for (int32_t i = 0; i < parameters.occlusion_smooth_passes && Check() == 0; ++i) {
        smoother.ProcessMap(parameters.classes);
        if (!smoother.Changed()) break;
    }
    if (Check() != 0) return;
    FnMotionEstimateGradientTweenerGuessOcclusionBlanker<Stored, Computed, Scale> blanker(parameters);
    blanker.SetInterrupt(Interrupt());
    blanker.ProcessMap(parameters.classes);
}

template <class Stored, class Computed, int Scale, class FieldStored, class FieldComputed, int FieldScale>
void FnMotionEstimateGradientTweener<Stored, Computed, Scale, FieldStored, FieldComputed, FieldScale>::Run() {
    FnTweenParameters& p = parameters;
    if (Check() != 0) return;
    if (!MakeMaps()) return Abort(kFnNoMemory);
    const float rest = 1.0f - p.t;
    Project(p.fields[1], p.list_b, rest, false);
    Project(p.fields[0], p.list_a, p.t, false);
    if (p.flags & kFnGuessOcclusion && Check() == 0) Classify();
    Project(p.fields[3], p.list_a, p.t, true);
    Project(p.fields[2], p.list_b, rest, true);
    if (Check() != 0) return;
    FnMotionEstimateGradientTweenerIterateSpatialCandidates<Stored, Computed, Scale> iterate(p);
    iterate.SetInterrupt(Interrupt());
    iterate.Process();
}

template <class Stored, class Computed, int Scale, class FieldStored, class FieldComputed, int FieldScale>
void FnMotionEstimateGradientTweener<Stored, Computed, Scale, FieldStored, FieldComputed, FieldScale>::Finish() {
    list_a_.Free();
    list_b_.Free();
}

template class FnMotionEstimateGradientTweener<float, float, 1, float, float, 1>;
