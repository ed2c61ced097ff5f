// Accumulates coverage: the alpha of `dst` united with the source's. Colours are neither read nor written.
#ifndef RKP_ALPHA_MERGE_H
#define RKP_ALPHA_MERGE_H

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_SlotTypes.h"

// Of the form RKp_AlphaMergeFunc<P>. The source alpha is scaled by `opacity`, unless that is full, and then
// by the alpha of `matte`, unless that is null. Opacity 0 does nothing, matte or not; nor does a count
// below 1. `src` and `dst` may be the same row. The result is always 0.
template <class P>
RK_Long RKp_AlphaMerge(RK_Long count, const P* src, typename RKp_Depth<P>::Channel opacity, const P* matte,
                       P* dst);

// The same bits, save which of two NaNs a float alpha inherits.
template <class P>
RK_Long RKp_AlphaMerge_SSE2(RK_Long count, const P* src, typename RKp_Depth<P>::Channel opacity,
                            const P* matte, P* dst);

// Instances stand in the sources of the same stem and nowhere else.
#define RKP_ALPHA_MERGE(declare, function, P)                                                               \
    declare RK_Long function<P>(RK_Long count, const P* src, RKp_Depth<P>::Channel opacity, const P* matte, \
                                P* dst);
RKP_ALPHA_MERGE(extern template, RKp_AlphaMerge, RK_Pixel8)
RKP_ALPHA_MERGE(extern template, RKp_AlphaMerge, RK_Pixel16)
RKP_ALPHA_MERGE(extern template, RKp_AlphaMerge, RK_PixelFloat)
RKP_ALPHA_MERGE(template <>, RKp_AlphaMerge_SSE2, RK_Pixel8)
RKP_ALPHA_MERGE(template <>, RKp_AlphaMerge_SSE2, RK_Pixel16)
RKP_ALPHA_MERGE(template <>, RKp_AlphaMerge_SSE2, RK_PixelFloat)

#endif
