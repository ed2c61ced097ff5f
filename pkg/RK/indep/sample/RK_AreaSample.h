// Nearest and area samplers.
#ifndef RK_AREA_SAMPLE_H
#define RK_AREA_SAMPLE_H

#include "RK/indep/sample/RK_Samp.h"

// The nearest pixel, halves upward; outside the source the zero pixel.
RK_API RK_Sampler<RK_Pixel8> RK_NNSample;
RK_API RK_Sampler<RK_Pixel16> RK_NNSample16;
RK_API RK_Sampler<RK_PixelFloat> RK_NNSampleFloat;

// The mean over the box of half-extents x_radius and y_radius around the position, colour weighted by alpha. What
// lies outside the source counts as empty: alpha is divided by the whole footprint. Straight pixels. These two call
// what their slots hold now.
RK_API RK_Sampler<RK_Pixel8> RK_AreaSample_Straight;
RK_API RK_Sampler<RK_Pixel16> RK_AreaSample_Straight16;
// The portable form at each depth; the only one at float.
template <class P>
RK_API RK_Long RK_AreaSample_CPlusPlus(RK_ProgressInfo* ref, int32_t x, int32_t y, const RK_SampPB* pb, P* out);
// Premultiplied pixels in integers; also reads pb->area, the footprint's. An area of 0 gives the zero pixel.
RK_API RK_Sampler<RK_Pixel8> RK_AreaSample_Premul;

// The slots' bodies: 8 bits round ties to even, 16 bits round by GEO_RoundDouble; with SSE2 the portable forms stand
// in the slots, and these adapt their first argument.
RK_Sampler<RK_Pixel8> RKp_AreaSample8_Static, RKp_AreaSample8_Portable;
RK_Sampler<RK_Pixel16> RKp_AreaSample16_Static, RKp_AreaSample16_Portable;
RK_Sampler<RK_PixelFloat> RK_AreaSampleFloat;

#endif
