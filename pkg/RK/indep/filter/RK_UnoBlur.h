// Blurs of one line of a mask. The host walks the rows, and then the columns, and calls a scan for each.
#ifndef RK_UNO_BLUR_H
#define RK_UNO_BLUR_H

#include "RK/indep/frame/RK.h"

// Blurs the samples of `src_line` from column `first` up to `last` into `dst_line`; all others count as zero
// and are not read. `radius` is 16.16. Written are the columns from `first` - w, but not before 0, up to
// `last` + w, with w
//   ceil(radius)                          for a Gaussian,
//   (radius + 1) / 2, as a whole number   for the single box,
//   radius * a + 3, as a whole number     for repeated boxes, a being 0.6 in mode 0 and 1.0 in others;
// `last` + ceil(radius) + 3 columns always suffice. What a scan does not write is the caller's to clear. The
// lines do not overlap. A negative `first` counts as 0. With a radius of 0 or less the span is copied as it
// is.
//
// The Gaussian scans do not look at `mode`, and `reference` is never read. The box scans take a Gaussian for
// a small radius (up to 1.9 in mode 0, else up to 3.0), or, in mode 1, a single box; above that repeated
// boxes of three samples, a fraction of the last.
//
// 0; 3 for a Gaussian of a radius above 32767.0, or, reported, for a null line of a span that is not empty; 4
// when there is no memory for the weights. Nothing is written then. The weights of the last radius are kept
// in the package without a lock: the scans are for one thread at a time.
RK_API RK_Long RK_GBlurUnoScan(int32_t mode, RK_EffectRef reference, int32_t first, int32_t last,
                               int32_t radius, const uint8_t* src_line, uint8_t* dst_line);
RK_API RK_Long RK_GBlurDeepUnoScan(int32_t mode, RK_EffectRef reference, int32_t first, int32_t last,
                                   int32_t radius, const uint16_t* src_line, uint16_t* dst_line);
RK_API RK_Long RK_BoxBlurUnoScan(int32_t mode, RK_EffectRef reference, int32_t first, int32_t last,
                                 int32_t radius, const uint8_t* src_line, uint8_t* dst_line);
RK_API RK_Long RK_BoxBlurDeepUnoScan(int32_t mode, RK_EffectRef reference, int32_t first, int32_t last,
                                     int32_t radius, const uint16_t* src_line, uint16_t* dst_line);

// Frees the kept weights.
void RKp_DisposeUnoWeights();

#endif
