// A single fixed composite at 8 bits: the source behind the destination, with one opacity.
#ifndef RK_COMPOSITE_RECT_H
#define RK_COMPOSITE_RECT_H

#include "RK/indep/frame/RK.h"

// Lays `src_rect` of `src` (null: all of it) behind `dst`, its top left at (dst_x, dst_y), the source scaled
// by `opacity` (255 is opaque; 0 does nothing at all). `field`: 0 blends every row, 1 the even rows of `dst`,
// 2 the odd ones, any other value none. `reserved` is not read. Parts outside the worlds are clipped; depth
// is not asked, so pixels of deeper worlds are walked as if they had 4 bytes.
//
// `progress` (null: none) is called before a blended row when the number of rows left is a multiple of 32,
// with that number and the rows in all; a non-zero answer is returned at once, and rows done stay done.
//
// 0, or 3 for a null world (reported), or what progress answered. The Draft and Best forms are the same.
RK_API RK_Long RK_CompositeRectDraft_Straight(RK_ProgressInfo* progress, const GEO_Rect* src_rect,
                                              uint8_t opacity, const RK_LayerDef* src, RK_Long dst_x,
                                              RK_Long dst_y, RK_Long field, void* reserved, RK_LayerDef* dst);
RK_API RK_Long RK_CompositeRectBest_Straight(RK_ProgressInfo* progress, const GEO_Rect* src_rect,
                                             uint8_t opacity, const RK_LayerDef* src, RK_Long dst_x,
                                             RK_Long dst_y, RK_Long field, void* reserved, RK_LayerDef* dst);
RK_API RK_Long RK_CompositeRectDraft_Premul(RK_ProgressInfo* progress, const GEO_Rect* src_rect,
                                            uint8_t opacity, const RK_LayerDef* src, RK_Long dst_x,
                                            RK_Long dst_y, RK_Long field, void* reserved, RK_LayerDef* dst);
RK_API RK_Long RK_CompositeRectBest_Premul(RK_ProgressInfo* progress, const GEO_Rect* src_rect,
                                           uint8_t opacity, const RK_LayerDef* src, RK_Long dst_x,
                                           RK_Long dst_y, RK_Long field, void* reserved, RK_LayerDef* dst);

#endif
