// The 16-bit samplers.
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RKp_SpanRows.h"
#include "RK/indep/sample/RKp_SubpixelSample_StraightT.h"

RK_Long RK_SubpixelSample_Straight16(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    bool all_inside;
    *out = RKp_SampleClipped<RKp_Default16>(x, y, *pb->src, &all_inside);
    return RK_kOK;
}

RK_Long RK_SubpixelSamplePlus_Straight16(void*, int32_t x, int32_t y, const RK_SampPB* pb, uint8_t* all_inside,
                                         RK_Pixel16* out) {
    bool inside;
    *out = RKp_SampleClipped<RKp_Default16>(x, y, *pb->src, &inside);
    *all_inside = inside;
    return RK_kOK;
}

RK_Long RK_SubpixelSampleNoClip_Straight16(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    *out = RKp_SampleNoClip<RKp_Default16>(x, y, *pb->src);
    return RK_kOK;
}

RK_Long RK_SubpixelSampleTranslateNoClip_Straight16(void*, int32_t x, int32_t y, const double weights[4],
                                                    const RK_SampPB* pb, RK_Pixel16* out) {
    *out = RKp_SampleTranslate<RKp_Given16>(x, y, weights, *pb->src);
    return RK_kOK;
}

RK_Long RK_SubpixelSpanSampleTranslateNoClip_Straight16(void*, RK_Long count, int32_t x, int32_t y, const RK_SampPB* pb,
                                                        int32_t* alpha_sum, RK_Pixel16* out) {
    if (count < 1) return RK_kOK;
    RKp_SpanRow(*pb->src, x, y, count, out);
    RKp_AddAlphas(count, out, alpha_sum);
    return RK_kOK;
}

RK_Long RK_SubpixelCPlusPlus16(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    bool all_inside;
    *out = RKp_SampleClipped<RKp_Portable16>(x, y, *pb->src, &all_inside);
    return RK_kOK;
}

RK_Long RK_SubpixelCPlusPlusNoClip16(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    *out = RKp_SampleNoClip<RKp_Portable16>(x, y, *pb->src);
    return RK_kOK;
}

RK_Long RK_SubpixelSpanSampleCPlusPlus16(void*, RK_Long count, int32_t x, int32_t y, const RK_SampPB* pb,
                                         int32_t* alpha_sum, RK_Pixel16* out) {
    if (count < 1) return RK_kOK;
    RKp_SampleSpan<RKp_Portable16>(count, x, y, *pb->src, alpha_sum, out);
    return RK_kOK;
}
