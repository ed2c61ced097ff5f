// The float samplers. Results are stored as computed: no rounding, no clamp.
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RKp_SpanRows.h"
#include "RK/indep/sample/RKp_SubpixelSample_StraightT.h"

RK_Long RK_SubpixelCPlusPlusFloat(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_PixelFloat* out) {
    bool all_inside;
    *out = RKp_SampleClipped<RKp_PortableFloat>(x, y, *pb->src, &all_inside);
    return RK_kOK;
}

RK_Long RK_SubpixelSpanSampleAllInCPlusPlusFloat(void*, int32_t x, int32_t y, const RK_SampPB* pb, uint8_t* all_inside,
                                                 RK_PixelFloat* out) {
    bool inside;
    *out = RKp_SampleClipped<RKp_PortableFloat>(x, y, *pb->src, &inside);
    *all_inside = inside;
    return RK_kOK;
}

RK_Long RK_SubpixelCPlusPlusNoClipFloat(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_PixelFloat* out) {
    *out = RKp_SampleNoClip<RKp_PortableFloat>(x, y, *pb->src);
    return RK_kOK;
}

RK_Long RK_SubpixelSampleTranslateNoClipCPlusPlusFloat(void*, int32_t x, int32_t y, const double weights[4],
                                                       const RK_SampPB* pb, RK_PixelFloat* out) {
    *out = RKp_SampleTranslate<RKp_PortableFloat>(x, y, weights, *pb->src);
    return RK_kOK;
}

RK_Long RK_SubpixelSpanSampleCPlusPlusFloat(void*, RK_Long count, int32_t x, int32_t y, const RK_SampPB* pb,
                                            float* alpha_sum, RK_PixelFloat* out) {
    if (count < 1) return RK_kOK;
    RKp_SpanRow(*pb->src, x, y, RKp_BilinearWeights<float>(x, y), count, alpha_sum, out);
    return RK_kOK;
}
