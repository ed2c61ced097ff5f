// Gaussian blur of a world along its rows or its columns.
#ifndef RK_GAUSSIAN_BLUR_H
#define RK_GAUSSIAN_BLUR_H

#include "RK/indep/filter/RK_BlurFlags.h"
#include "RK/indep/world/RK_World.h"

// Blurs each line of `src` into the line of `dst` at the same place, as RK_BlurFlags.h tells, by 2R + 1 taps
// of the curve of RK_GaussianKernel in 255ths, R being `radius` rounded up (an R beyond 16 bits wraps, and
// one below 0 is one tap). The cost grows with the radius. At depth 32 nothing is clamped.
//
// force_copy   each line is read whole before it is written, so that `dst` may be `src` itself (with equal
// directions)
RK_API RK_Long RK_GaussianBlur1D(const RK_ProgressInfo* progress, const RK_World* src, float radius,
                                 uint32_t flags, int32_t src_direction, int32_t src_premultiplied,
                                 int32_t dst_direction, int32_t dst_premultiplied, uint8_t force_copy,
                                 RK_World* dst);

#endif
