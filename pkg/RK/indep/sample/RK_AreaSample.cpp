// The straight area samplers of every depth.
#include "RK/indep/sample/RK_AreaSample.h"

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RKp_AreaSample_StraightT.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RKp_RoundingMode.h"
#include "RK/indep/sample/RKp_Rounding.h"

namespace {

double atMost(double v, double limit) { return v < limit ? v : limit; }

struct Common8 {
    using Pixel = RK_Pixel8;
    static constexpr double limit = 255;
    static RK_Sampler<RK_Pixel8>* point() { return RKp_Slot<RKp_kSlot_SubpixelSample_Straight>(); }
};
struct Even8 : Common8 {
    static uint8_t alpha(double v) { return static_cast<uint8_t>(RKp_RoundToEven(v)); }
    static uint8_t colour(double v) { return alpha(atMost(v, limit)); }
};
struct Portable8 : Common8 {
    static uint8_t alpha(double v) { return static_cast<uint8_t>(RKp_TruncateDouble(v + 0.5)); }
    static uint8_t colour(double v) { return alpha(atMost(v, limit)); }
};
struct Common16 {
    using Pixel = RK_Pixel16;
    static constexpr double limit = 32768;
    static RK_Sampler<RK_Pixel16>* point() { return RKp_Slot<RKp_kSlot_SubpixelSample_Straight16>(); }
};
struct Rounded16 : Common16 {
    static uint16_t alpha(double v) { return static_cast<uint16_t>(GEO_RoundDouble(v)); }
    static uint16_t colour(double v) { return alpha(atMost(v, limit)); }
};
struct Portable16 : Common16 {
    static uint16_t alpha(double v) { return static_cast<uint16_t>(RKp_TruncateDouble(v + 0.5)); }
    static uint16_t colour(double v) { return alpha(atMost(v, limit)); }
};
struct PortableFloat {
    using Pixel = RK_PixelFloat;
    static constexpr double limit = 1;
    static RK_Sampler<RK_PixelFloat>* point() { return &RK_SubpixelCPlusPlusFloat; }
    static float alpha(double v) { return static_cast<float>(v); }
    // Only alpha is limited.
    static float colour(double v) { return static_cast<float>(v); }
};

}  // namespace

template <>
RK_Long RK_AreaSample_CPlusPlus<RK_Pixel8>(RK_ProgressInfo* ref, int32_t x, int32_t y, const RK_SampPB* pb,
                                           RK_Pixel8* out) {
    *out = RKp_AreaSample<Portable8>(ref, x, y, *pb);
    return RK_kOK;
}
template <>
RK_Long RK_AreaSample_CPlusPlus<RK_Pixel16>(RK_ProgressInfo* ref, int32_t x, int32_t y, const RK_SampPB* pb,
                                            RK_Pixel16* out) {
    *out = RKp_AreaSample<Portable16>(ref, x, y, *pb);
    return RK_kOK;
}
template <>
RK_Long RK_AreaSample_CPlusPlus<RK_PixelFloat>(RK_ProgressInfo* ref, int32_t x, int32_t y, const RK_SampPB* pb,
                                               RK_PixelFloat* out) {
    *out = RKp_AreaSample<PortableFloat>(ref, x, y, *pb);
    return RK_kOK;
}

RK_Long RKp_AreaSample8_Static(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    RKp_RoundingToNearest([&] { *out = RKp_AreaSample<Even8>(ref, x, y, *pb); });
    return RK_kOK;
}
RK_Long RKp_AreaSample16_Static(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    *out = RKp_AreaSample<Rounded16>(ref, x, y, *pb);
    return RK_kOK;
}
RK_Long RKp_AreaSample8_Portable(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    return RK_AreaSample_CPlusPlus(static_cast<RK_ProgressInfo*>(ref), x, y, pb, out);
}
RK_Long RKp_AreaSample16_Portable(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    return RK_AreaSample_CPlusPlus(static_cast<RK_ProgressInfo*>(ref), x, y, pb, out);
}
RK_Long RK_AreaSampleFloat(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_PixelFloat* out) {
    return RK_AreaSample_CPlusPlus(static_cast<RK_ProgressInfo*>(ref), x, y, pb, out);
}

RK_Long RK_AreaSample_Straight(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    return RKp_Slot<RKp_kSlot_AreaSample>()(ref, x, y, pb, out);
}
RK_Long RK_AreaSample_Straight16(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    return RKp_Slot<RKp_kSlot_AreaSample16>()(ref, x, y, pb, out);
}
