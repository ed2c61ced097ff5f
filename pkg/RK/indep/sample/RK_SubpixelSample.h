// The bilinear samplers: one source pixel, or a short run, at a subpixel position.
//
// Neighbours of (x, y) are p00 at (x >> 16, y >> 16) and those right of, below, and right below it. A neighbour
// outside the source is transparent black. Straight pixels are interpolated as if premultiplied: a transparent
// neighbour adds nothing to colour. The NoClip, Translate and span forms make no bounds test: all four neighbours of
// every position must lie inside.
//
// Forms differ in the last unit and stay apart: the default forms work in double, the CPlusPlus forms in float and
// without the shortcuts at whole positions and equal neighbours.
#ifndef RK_SUBPIXEL_SAMPLE_H
#define RK_SUBPIXEL_SAMPLE_H

#include "RK/indep/sample/RK_Samp.h"

// u, v the fractions: w11 = uv, w10 = u - w11, w01 = v - w11, w00 = 1 - w11 - w10 - w01. Always 0.
RK_API RK_Long RK_SubpixelSampleComputeWeight(uint16_t xfrac, uint16_t yfrac, double weights[4]);

// ---- 8 bits ----
RK_API RK_Sampler<RK_Pixel8> RK_SubpixelSample_Straight, RK_SubpixelSampleNoClip_Straight;
RK_API RK_Sampler<RK_Pixel8> RK_SubpixelCPlusPlus, RK_SubpixelCPlusPlusNoClip;
RK_API RK_SamplerTranslate<RK_Pixel8> RK_SubpixelSampleTranslateNoClip_Straight;
RK_API RK_SamplerPlus<RK_Pixel8> RK_SubpixelSamplePlus_Straight;
RK_API RK_SamplerSpan<RK_Pixel8> RK_SubpixelSpanSampleTranslateNoClip_Straight, RK_SubpixelSpanSampleCPlusPlus;
// Premultiplied pixels, integer arithmetic throughout, clipped.
RK_API RK_Sampler<RK_Pixel8> RK_SubpixelSample_Premul;

// Four positions at once: x0, y0, x1, y1, ... No shortcuts. The Translate form reads only the whole parts.
RK_API RK_Long RK_SubpixelSampleNoClip_Straight_4(void* ref, const int32_t xy[8], const RK_SampPB* pb,
                                                  RK_Pixel8 out[4]);
RK_API RK_Long RK_SubpixelSampleTranslateNoClip_Straight_4(void* ref, const int32_t xy[8], const double weights[16],
                                                           const RK_SampPB* pb, RK_Pixel8 out[4]);

// ---- 16 bits ----
RK_API RK_Sampler<RK_Pixel16> RK_SubpixelSample_Straight16, RK_SubpixelSampleNoClip_Straight16;
RK_API RK_Sampler<RK_Pixel16> RK_SubpixelCPlusPlus16, RK_SubpixelCPlusPlusNoClip16;
RK_API RK_SamplerTranslate<RK_Pixel16> RK_SubpixelSampleTranslateNoClip_Straight16;
RK_API RK_SamplerPlus<RK_Pixel16> RK_SubpixelSamplePlus_Straight16;
RK_API RK_SamplerSpan<RK_Pixel16> RK_SubpixelSpanSampleTranslateNoClip_Straight16, RK_SubpixelSpanSampleCPlusPlus16;

// ---- float ----
RK_API RK_Sampler<RK_PixelFloat> RK_SubpixelCPlusPlusFloat, RK_SubpixelCPlusPlusNoClipFloat;
RK_API RK_SamplerTranslate<RK_PixelFloat> RK_SubpixelSampleTranslateNoClipCPlusPlusFloat;
RK_API RK_SamplerPlus<RK_PixelFloat> RK_SubpixelSpanSampleAllInCPlusPlusFloat;
RK_API RK_SamplerSpan<RK_PixelFloat> RK_SubpixelSpanSampleCPlusPlusFloat;

// The slot's form where the processor has SSE2: single precision, and nested linear steps between equal alphas.
RK_Sampler<RK_Pixel8> RKp_SubpixelSampleNoClip_SSE2;

#endif
