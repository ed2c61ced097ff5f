// Vector fields for a time between two frames.
#ifndef FN_TWEENER_H
#define FN_TWEENER_H

#include "RK/indep/retime/CandidateList.h"
#include "RK/indep/retime/FnImgProc.h"
#include "RK/indep/retime/FnTexture.h"

// What is visible where, per element.
enum FnOcclusionClass : int32_t {
    kFnBothSources = 0,
    kFnFirstOnly = 1,
    kFnSecondOnly = 2,
    kFnUndecided = 3,
    kFnNotLookedAt = 666,
};

enum FnTweenFlags : uint32_t {
    kFnGivenClasses = 1,  // the caller's maps, not owned
    kFnGivenResultA = 2,
    kFnGivenResultB = 4,
    kFnOwnsLists = 8,
    kFnGuessOcclusion = 16,
    kFnPaintClasses = 64,
    kFnSincSampling = 0x100,
    kFnUseNegated = 0x800,  // a vector known in one direction serves the other
    kFnTweenDefaults = 0x438,
};

// A copy goes to each stage, with the owns flag cleared.
template <class Stored, class Computed>
struct FnMotionEstimateGradientTweeningParameters {
    using Frame = FnTexture<Stored, Computed>;
    int32_t width = 0, height = 0;
    float t = 0.5f;  // a multiple of 0.005
    int32_t iterations = 5;
    float spare_scale = 33.17888f;  // the spares are read by no stage
    float spare = 0.0f;
    float smooth_weight = 1.0f, error_weight = 1.0f, sum_weight = 10.0f;
    float spare_weight = 1.0f;
    uint32_t flags = kFnTweenDefaults;
    int32_t occlusion_smooth_passes = 1;
    const FnVectorMap* fields[4] = {};  // first to second, second to first, and two more that may be null
    const Frame* frames[4] = {};        // first, first, second, second
    const FnFloatMap* mask = nullptr;   // may be null
    FnIntMap* classes = nullptr;
    FnVectorMap* result_a = nullptr;
    FnVectorMap* result_b = nullptr;
    CandidateLists* list_a = nullptr;
    CandidateLists* list_b = nullptr;

    const Frame& FirstFrame() const { return *frames[0]; }
    const Frame& SecondFrame() const { return *frames[2]; }
    int64_t Element(int32_t x, int32_t y) const { return int64_t{y} * width + x; }
};
using FnTweenParameters = FnMotionEstimateGradientTweeningParameters<float, float>;

// Owns the order of the stages: projection of both fields, occlusion, choice. Fills the class map and both result
// maps; maps that the flags do not call the caller's are made here and die with it.
template <class Stored, class Computed, int Scale, class FieldStored, class FieldComputed, int FieldScale>
class FnMotionEstimateGradientTweener : public FnMultiProcessor {
  public:
    explicit FnMotionEstimateGradientTweener(const FnTweenParameters& p) : parameters(p) {}
    FnTweenParameters parameters;
    void Run() override;
    void Finish() override;

  private:
    bool MakeMaps();
    void Project(const FnVectorMap* field, CandidateLists* lists, float factor, bool extended);
    void Classify();

    FnIntMap classes_;
    FnVectorMap result_a_, result_b_;
    CandidateLists list_a_, list_b_;
};
extern template class FnMotionEstimateGradientTweener<float, float, 1, float, float, 1>;

#endif
