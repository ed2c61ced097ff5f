// Four 8-bit positions at once.
#include <algorithm>

#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RKp_SubpixelSample_StraightT.h"

namespace {

// No shortcut and no test for zero: where A is zero the quotient is NaN, and NaN saturates to 0.
struct Saturating8 {
    using Pixel = RK_Pixel8;
    using Weight = float;
    using Sum = float;
    using Quotient = RKp_Reciprocal<float, float>;
    static bool isZero(float) { return false; }
    static uint8_t store(float v) { return static_cast<uint8_t>(std::clamp(RKp_Truncate(v + 0.5f), 0, 255)); }
};

}  // namespace

RK_Long RK_SubpixelSampleNoClip_Straight_4(void*, const int32_t xy[8], const RK_SampPB* pb, RK_Pixel8 out[4]) {
    for (int i = 0; i < 4; ++i) {
        const int32_t x = xy[2 * i], y = xy[2 * i + 1];
        out[i] = RKp_MixDiffering<Saturating8>(RKp_NeighboursInside<RK_Pixel8>(*pb->src, x, y),
                                               RKp_BilinearWeights<float>(x, y));
    }
    return RK_kOK;
}

RK_Long RK_SubpixelSampleTranslateNoClip_Straight_4(void*, const int32_t xy[8], const double weights[16],
                                                    const RK_SampPB* pb, RK_Pixel8 out[4]) {
    for (int i = 0; i < 4; ++i) {
        out[i] = RKp_MixDiffering<Saturating8>(RKp_NeighboursInside<RK_Pixel8>(*pb->src, xy[2 * i], xy[2 * i + 1]),
                                               RKp_NarrowWeights(weights + 4 * i));
    }
    return RK_kOK;
}
