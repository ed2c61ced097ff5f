// Smoothing of a block field by candidate voting.
#ifndef FN_SMOOTH_BLOCKS_H
#define FN_SMOOTH_BLOCKS_H

#include "RK/indep/retime/FnBlocks.h"
#include "RK/indep/retime/FnNeighboursMonitor.h"

// The mean of |T(x, y) - R(x - v.x, y + v.y)| over the block's pixels whose mask is not above 0.5; FLT_MAX when a
// quarter of the block or less can be used. Target and reference have one size.
float FnMatchError(const HvVec2& v, const FnBlockRect& block, const FnFloatMap& reference, const FnFloatMap& target,
                   const FnFloatMap* mask);

// Each element of the map takes the best of its changed neighbours' vectors and its own. An element around which
// nothing changed, or for which there is no vector at all, stays as it is. One object serves the rounds of a level: the
// error map remembers the match error of each block's vector, FLT_MAX for not known.
template <class Stored, class Computed, int Scale, class Vector>
class FnMotionEstimateGradientSmooth : public FnImgProc {
  public:
    using Luma = FnTexture<Stored, Computed>;
    FnMotionEstimateGradientBlockParameters blocks{};
    float error_weight = 1.0f, smooth_weight = 1.0f;
    const Luma* reference = nullptr;
    const Luma* target = nullptr;
    const Luma* mask = nullptr;  // may be null
    const FnMotionEstimateGradientChangedNeighboursMonitorClient* monitor = nullptr;
    bool make_error_map = true;  // by the next run
    FnFloatMap errors;

    void Prepare() override;
    void ProcessBand() override;

  private:
    struct Choice {
        HvVec2 own, mean, best;
        float cost, error, own_error;
        FnBlockRect block;
    };
    void Element(int32_t x, int32_t y, Vector& vector, FnRandom& random);
    void Evaluate(const HvVec2& candidate, Choice& choice) const;
};

extern template class FnMotionEstimateGradientSmooth<float, float, 1, HvVec2>;
using FnBlockSmooth = FnMotionEstimateGradientSmooth<float, float, 1, HvVec2>;

#endif
