// The 8-bit samplers, and the weights that all depths share.
#include "RK/indep/sample/RK_SubpixelSample.h"

#include "RK/indep/sample/RKp_RoundingMode.h"
#include "RK/indep/sample/RKp_SpanRows.h"
#include "RK/indep/sample/RKp_SubpixelSample_StraightT.h"

RK_Long RK_SubpixelSampleComputeWeight(uint16_t xfrac, uint16_t yfrac, double weights[4]) {
    const auto w = RKp_BilinearWeights<double>(xfrac, yfrac);
    weights[0] = w.w00;
    weights[1] = w.w10;
    weights[2] = w.w01;
    weights[3] = w.w11;
    return RK_kOK;
}

// ---- Default forms --------------------------------------------------------------------------------------

RK_Long RK_SubpixelSample_Straight(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    RKp_RoundingToNearest([&] {
        bool all_inside;
        *out = RKp_SampleClipped<RKp_Default8>(x, y, *pb->src, &all_inside);
    });
    return RK_kOK;
}

RK_Long RK_SubpixelSamplePlus_Straight(void*, int32_t x, int32_t y, const RK_SampPB* pb, uint8_t* all_inside,
                                       RK_Pixel8* out) {
    RKp_RoundingToNearest([&] {
        bool inside;
        *out = RKp_SampleClipped<RKp_Default8>(x, y, *pb->src, &inside);
        *all_inside = inside;
    });
    return RK_kOK;
}

RK_Long RK_SubpixelSampleNoClip_Straight(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    RKp_RoundingToNearest([&] { *out = RKp_SampleNoClip<RKp_Default8>(x, y, *pb->src); });
    return RK_kOK;
}

RK_Long RK_SubpixelSampleTranslateNoClip_Straight(void*, int32_t x, int32_t y, const double weights[4],
                                                  const RK_SampPB* pb, RK_Pixel8* out) {
    RKp_RoundingToNearest([&] { *out = RKp_SampleTranslate<RKp_Given8>(x, y, weights, *pb->src); });
    return RK_kOK;
}

RK_Long RK_SubpixelSpanSampleTranslateNoClip_Straight(void*, RK_Long count, int32_t x, int32_t y, const RK_SampPB* pb,
                                                      int32_t* alpha_sum, RK_Pixel8* out) {
    if (count < 1) return RK_kOK;
    RKp_RoundingToNearest([&] { RKp_SpanRow(*pb->src, x, y, count, out); });
    RKp_AddAlphas(count, out, alpha_sum);
    return RK_kOK;
}

// ---- Portable forms -------------------------------------------------------------------------------------

RK_Long RK_SubpixelCPlusPlus(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    bool all_inside;
    *out = RKp_SampleClipped<RKp_Portable8>(x, y, *pb->src, &all_inside);
    return RK_kOK;
}

RK_Long RK_SubpixelCPlusPlusNoClip(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    *out = RKp_SampleNoClip<RKp_Portable8>(x, y, *pb->src);
    return RK_kOK;
}

RK_Long RK_SubpixelSpanSampleCPlusPlus(void*, RK_Long count, int32_t x, int32_t y, const RK_SampPB* pb,
                                       int32_t* alpha_sum, RK_Pixel8* out) {
    if (count < 1) return RK_kOK;
    RKp_SampleSpan<RKp_Portable8>(count, x, y, *pb->src, alpha_sum, out);
    return RK_kOK;
}
