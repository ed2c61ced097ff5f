// Two worlds mixed by one ratio, and a row of channel values moved towards a constant.
#ifndef RK_BLEND_H
#define RK_BLEND_H

#include "RK/indep/frame/RK.h"

// dst becomes the mix of src1 and src2, which may share its pixels. `ratio` is 16.16: 0 and below copies
// src1, 65536 and above src2. `reserved` is not read. Premul mixes channel by channel; Straight weights
// colours by their alphas, so that of two pixels a clear one lends no colour; RK_Blend is RK_Blend_Straight.
//
// 0, or 3 (reported, nothing written) for null worlds, unequal or unknown depths, null pixels, unequal sizes.
RK_API RK_Long RK_Blend_Premul(void* reserved, const RK_LayerDef* src1, const RK_LayerDef* src2,
                               RK_Long ratio, RK_LayerDef* dst);
RK_API RK_Long RK_Blend_Straight(void* reserved, const RK_LayerDef* src1, const RK_LayerDef* src2,
                                 RK_Long ratio, RK_LayerDef* dst);
RK_API RK_Long RK_Blend(void* reserved, const RK_LayerDef* src1, const RK_LayerDef* src2, RK_Long ratio,
                        RK_LayerDef* dst);

// Moves each of `count` channel values of `row` towards `target` by weight * opacity, both 0..full. The
// values lie side by side, four to a pixel, and weight[i] goes with value i. A count below 1 does nothing. 0,
// or 3 (reported) for a null weight or row. Instances: <RK_Pixel8, uint8_t>, <RK_Pixel16, uint16_t>,
// <RK_PixelFloat, float>.
template <class P, class C>
RK_API RK_Long RK_BlendSingleChannel(RK_Long count, C opacity, C target, const C* weight, P* row);

#endif
