// What every sampler reads.
#ifndef RK_SAMP_H
#define RK_SAMP_H

#include "RK/indep/composite/RK_Xfer.h"

// Positions are signed 16.16: the integer part by arithmetic shift, so -0.25 is -1 and 0xC000. Integer positions name
// pixels: (i << 16, j << 16) is pixel (i, j) itself.
struct RK_SampPB {
    int32_t x_radius, y_radius;     // half the footprint in source pixels, 16.16; read by area samplers
    int32_t area;                   // 4 * x_radius * y_radius, 16.16; read by the premultiplied area sampler
    const RK_LayerDef* src;         // read by every sampler
    uint32_t reserved1, reserved2;  // zero
    int32_t motion_samples;         // samples per destination pixel along a path; read by the behind scans
    RK_CompositeMode comp_mode;     // read by the behind scans
    const void* mask;               // null when absent
    const uint8_t* fcm_table;       // row o at o * 256; read by the behind scans
    uint32_t reserved3[9];          // zero
};
RK_ASSERT_OFFSET(RK_SampPB, src, 12, 16);
RK_ASSERT_OFFSET(RK_SampPB, motion_samples, 24, 32);
RK_ASSERT_OFFSET(RK_SampPB, comp_mode, 28, 36);
RK_ASSERT_OFFSET(RK_SampPB, mask, 40, 48);
RK_ASSERT_OFFSET(RK_SampPB, fcm_table, 44, 56);
static_assert(sizeof(RK_SampPB) == (sizeof(void*) == 4 ? 84 : 104), "RK_SampPB has changed its size");

constexpr int32_t RK_kHalfPixel = 0x8000;
constexpr int32_t RK_kOnePixel = 0x10000;

// ---- Shapes of samplers ---------------------------------------------------------------------------------
// All return 0. The first argument is ignored.

template <class P>
using RK_Sampler = RK_Long(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, P* out);
// `all_inside` tells whether all four neighbours were inside the source; it stays 0 at a whole position.
template <class P>
using RK_SamplerPlus = RK_Long(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, uint8_t* all_inside, P* out);
// Weights w00, w10, w01, w11 of RK_SubpixelSampleComputeWeight.
template <class P>
using RK_SamplerTranslate = RK_Long(void* ref, int32_t x, int32_t y, const double weights[4], const RK_SampPB* pb,
                                    P* out);
template <class P>
struct RK_AlphaSumOf {
    using Type = int32_t;
};
template <>
struct RK_AlphaSumOf<RK_PixelFloat> {
    using Type = float;
};
template <class P>
using RK_AlphaSum = typename RK_AlphaSumOf<P>::Type;
// `count` pixels, each one source pixel right of the one before; each result's alpha is added to `alpha_sum`.
template <class P>
using RK_SamplerSpan = RK_Long(void* ref, RK_Long count, int32_t x, int32_t y, const RK_SampPB* pb,
                               RK_AlphaSum<P>* alpha_sum, P* out);

// The samplers of a depth as the transforms take them.
template <class P>
struct RK_SamplerBundle {
    RK_SamplerPlus<P>* plus;
    RK_Sampler<P>* clipped;
    RK_Sampler<P>* area;
    RK_Sampler<P>* no_clip;
    RK_SamplerTranslate<P>* translate;
    RK_SamplerSpan<P>* span;
};
// 8 and 16 bits read the standard function table at the time of the call; float is fixed to the portable forms.
template <class P>
RK_SamplerBundle<P> RKp_GetSamplerBundle();
// Are the Plus and the clipped sampler the library's own? Then they give the same pixels.
template <class P>
bool RKp_PlusIsClipped(const RK_SamplerBundle<P>& samplers);

// sqrt(a * a + b * b), with no guard against overflow.
RK_API double RK_Hypot(double a, double b);

#endif
