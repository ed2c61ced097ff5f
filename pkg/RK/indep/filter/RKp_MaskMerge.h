// A row of a mask multiplied into the alpha of a row of pixels.
#ifndef RKP_MASK_MERGE_H
#define RKP_MASK_MERGE_H

#include "RK/indep/frame/RKp_SlotTypes.h"

// Of the form RKp_MaskMergeFunc<M, P>: the pixels before `first` get an alpha of 0, without a look at the
// mask; those from `first` up to `last` have theirs multiplied by the mask's sample of the same column; the
// others stay. So `first` equal to `last` blanks, and `mask_row` may be null then. Colours stay. The result
// is always 0.
template <class M, class P>
RK_Long RKp_MaskMerge(void* reference, RK_Long first, RK_Long last, const M* mask_row, P* pixel_row);

// clang-format off
#define RKP_MASK_MERGE(declare, M, P) \
    declare RK_Long RKp_MaskMerge<M, P>(void* reference, RK_Long first, RK_Long last, const M* mask_row, P* pixel_row);
RKP_MASK_MERGE(extern template, uint8_t, RK_Pixel8)
RKP_MASK_MERGE(extern template, uint8_t, RK_Pixel16)
RKP_MASK_MERGE(extern template, uint16_t, RK_Pixel16)
RKP_MASK_MERGE(extern template, uint16_t, RK_PixelFloat)
RKP_MASK_MERGE(extern template, uint8_t, RK_PixelFloat)
// clang-format on

#endif
