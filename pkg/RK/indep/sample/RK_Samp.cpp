#include "RK/indep/sample/RK_Samp.h"

#include <cmath>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_SubpixelSample.h"

template <>
RK_SamplerBundle<RK_Pixel8> RKp_GetSamplerBundle<RK_Pixel8>() {
    return {RKp_Slot<RKp_kSlot_SubpixelSamplePlus_Straight>(),
            RKp_Slot<RKp_kSlot_SubpixelSample_Straight>(),
            RKp_Slot<RKp_kSlot_AreaSample>(),
            RKp_Slot<RKp_kSlot_SubpixelSampleNoClip_Straight>(),
            RKp_Slot<RKp_kSlot_SubpixelSampleTranslateNoClip_Straight>(),
            RKp_Slot<RKp_kSlot_SubpixelSpanSampleTranslateNoClip_Straight>()};
}
template <>
RK_SamplerBundle<RK_Pixel16> RKp_GetSamplerBundle<RK_Pixel16>() {
    return {RKp_Slot<RKp_kSlot_SubpixelSamplePlus_Straight16>(),
            RKp_Slot<RKp_kSlot_SubpixelSample_Straight16>(),
            RKp_Slot<RKp_kSlot_AreaSample16>(),
            RKp_Slot<RKp_kSlot_SubpixelSampleNoClip_Straight16>(),
            RKp_Slot<RKp_kSlot_SubpixelSampleTranslateNoClip_Straight16>(),
            RKp_Slot<RKp_kSlot_SubpixelSpanSampleTranslateNoClip_Straight16>()};
}
template <>
RK_SamplerBundle<RK_PixelFloat> RKp_GetSamplerBundle<RK_PixelFloat>() {
    return {&RK_SubpixelSpanSampleAllInCPlusPlusFloat, &RK_SubpixelCPlusPlusFloat,
            &RK_AreaSampleFloat,                      &RK_SubpixelCPlusPlusNoClipFloat,
            &RK_SubpixelSampleTranslateNoClipCPlusPlusFloat, &RK_SubpixelSpanSampleCPlusPlusFloat};
}

template <>
bool RKp_PlusIsClipped(const RK_SamplerBundle<RK_Pixel8>& samplers) {
    return samplers.plus == &RK_SubpixelSamplePlus_Straight && samplers.clipped == &RK_SubpixelSample_Straight;
}
template <>
bool RKp_PlusIsClipped(const RK_SamplerBundle<RK_Pixel16>& samplers) {
    return samplers.plus == &RK_SubpixelSamplePlus_Straight16 && samplers.clipped == &RK_SubpixelSample_Straight16;
}
template <>
bool RKp_PlusIsClipped(const RK_SamplerBundle<RK_PixelFloat>&) {
    return true;
}

double RK_Hypot(double a, double b) { return std::sqrt(a * a + b * b); }
