// The tweener's stages.
#ifndef FN_TWEENER_STAGES_H
#define FN_TWEENER_STAGES_H

#include "RK/indep/retime/FnNeighboursMonitor.h"
#include "RK/indep/retime/FnTweener.h"

// Projects a field to time t: each vector goes to the list of the element that it lands on.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateGradientTweenerGenerateTemporalCandidates : public FnTweenParameters,
                                                                  public FnImgProc1<CandidateLists> {
  public:
    explicit FnMotionEstimateGradientTweenerGenerateTemporalCandidates(const FnTweenParameters& p)
        : FnTweenParameters(p) {
        AllowThreads(false);  // it writes into the lists of other elements
    }
    float factor = 0.0f;
    bool extended = false;
    void ProcessBand() override;
};

// First classification, in place, as one band. Changed() tells whether an element was still undecided.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateGradientTweenerGuessOcclusion : public FnTweenParameters, public FnImgProc {
  public:
    explicit FnMotionEstimateGradientTweenerGuessOcclusion(const FnTweenParameters& p) : FnTweenParameters(p) {
        AllowThreads(false);
    }
    void PassStart() override { changed_ = false; }
    void ProcessBand() override;
    bool Changed() const { return changed_; }

  private:
    int32_t ByVote(int32_t x, int32_t y) const;
    int32_t ByLists(int32_t x, int32_t y) const;
    bool changed_ = false;
};

// Majority filter, in place, as one band.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateGradientTweenerGuessOcclusionSmoother : public FnTweenParameters, public FnImgProc {
  public:
    explicit FnMotionEstimateGradientTweenerGuessOcclusionSmoother(const FnTweenParameters& p)
        : FnTweenParameters(p) {
        AllowThreads(false);
    }
    void PassStart() override { changed_ = false; }
    void ProcessBand() override;
    bool Changed() const { return changed_; }

  private:
    bool changed_ = false;
};

// Takes the list that an occluded element should not have, and what it points at as the other list.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateGradientTweenerGuessOcclusionBlanker : public FnTweenParameters, public FnImgProc {
  public:
    explicit FnMotionEstimateGradientTweenerGuessOcclusionBlanker(const FnTweenParameters& p) : FnTweenParameters(p) {
        AllowThreads(false);
    }
    void ProcessBand() override;

  private:
    void Exchange(int32_t x, int32_t y, CandidateLists& from, CandidateLists& to);
};

// One choice per element. Reads the neighbours as the monitors last saw them.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass : public FnTweenParameters, public FnImgProc {
  public:
    explicit FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass(const FnTweenParameters& p)
        : FnTweenParameters(p) {}
    bool run_monitors = false;   // each pass starts with every neighbour counting
    bool only_missing = false;   // elements that lack a vector they should have
    bool skip_class_0 = false;
    bool StillMissing() const { return still_missing_; }

    void Prepare() override;
    void PassStart() override { still_missing_ = false; }
    void ProcessBand() override;
    void PassEnd() override;

  private:
    bool Lacks(int32_t klass, const HvVec2& a, const HvVec2& b) const {
        return (klass == kFnFirstOnly || FnIsUndefined(a)) && (klass == kFnSecondOnly || FnIsUndefined(b));
    }
    void Choose(int32_t x, int32_t y, FnRandom& random, int32_t& klass, HvVec2& a, HvVec2& b) const;
    void ChoosePair(int32_t x, int32_t y, const FnCandidateSet& as, const FnCandidateSet& bs, const HvVec2& mean_a,
                    const HvVec2& mean_b, HvVec2& a, HvVec2& b) const;
    void ChooseByMean(const FnCandidateSet& from, const HvVec2& mean, HvVec2& out) const;
    float LumaAt(int32_t x, int32_t y, const HvVec2& offset, const Frame& frame) const;

    FnMotionEstimateGradientChangedNeighboursMonitor monitor_a_, monitor_b_;
    std::atomic<bool> still_missing_{false};
    bool first_pass_ = true;
};

// Runs the passes until every element has what it should have, or they give up.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateGradientTweenerIterateSpatialCandidates : public FnTweenParameters, public FnMultiProcessor {
  public:
    explicit FnMotionEstimateGradientTweenerIterateSpatialCandidates(const FnTweenParameters& p)
        : FnTweenParameters(p) {}
    void Run() override;
};

extern template class FnMotionEstimateGradientTweenerGenerateTemporalCandidates<float, float, 1>;
extern template class FnMotionEstimateGradientTweenerGuessOcclusion<float, float, 1>;
extern template class FnMotionEstimateGradientTweenerGuessOcclusionSmoother<float, float, 1>;
extern template class FnMotionEstimateGradientTweenerGuessOcclusionBlanker<float, float, 1>;
extern template class FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass<float, float, 1>;
extern template class FnMotionEstimateGradientTweenerIterateSpatialCandidates<float, float, 1>;

#endif
