// Box blur of a world along its rows or its columns, repeated for some passes; the retired fast blurs.
#ifndef RK_BOX_BLUR_H
#define RK_BOX_BLUR_H

#include "RK/indep/filter/RK_BlurFlags.h"
#include "RK/indep/world/RK_World.h"

// Blurs each line of `src` into the line of `dst` at the same place, as RK_BlurFlags.h tells. A pass gives
// each pixel the mean of the 2R + 1 pixels around it, R being `radius` rounded up; the two outermost have the
// weight 1 - (R - radius). The cost does not depend on the radius.
//
// passes       1 or more; each pass blurs the result of the one before it, kept as wide as `dst` can see
// force_copy   each line is read whole before it is written, so that `dst` may be `src` itself (with equal
// directions)
//
// At depth 8 the weights are in 1024ths. At depth 32 a blurred channel is held to 0..1, values below 1e-30
// become 0, NaN stays.
RK_API RK_Long RK_BoxBlur1D(const RK_ProgressInfo* progress, const RK_World* src, float radius,
                            int32_t passes, uint32_t flags, int32_t src_direction, int32_t src_premultiplied,
                            int32_t dst_direction, int32_t dst_premultiplied, uint8_t force_copy,
                            RK_World* dst);

// The old blurs in place are retired: whatever is given, nothing is read or written, and the result is 5.
RK_API RK_Long RK_FastBlur_Straight(...);
RK_API RK_Long RK_FastBlur_Premul(...);

#endif
