// Drawing a world through a matrix, or through a series of matrices that describe motion during a frame.
#ifndef RK_TRANSFORM_WORLD_H
#define RK_TRANSFORM_WORLD_H

#include "RK/indep/composite/RK_TransferRect.h"
#include "RK/indep/sample/RK_Samp.h"

constexpr RK_Long RK_kDraft = 0;
constexpr RK_Long RK_kBest = 1;

// A mask as the transforms take it; the fields mean what they mean in RK_Mask.
struct RK_TransformMask {
    const RK_World* mask_world;
    int16_t mask_y, mask_x;
    uint32_t mask_kind;
};

// Draws `src` into `dest_rect` of `dst` (null: all of it), both of one depth, row by row, as `comp_mode` says.
//   quality       RK_kDraft takes the nearest pixel; any other value is best: bilinear, or the mean of each footprint
//                 where the source is reduced.
//   mode_flags    not read.
//   field         RK_kEvenField or RK_kOddField draw those rows of `dst`; any other value all.
//   linear_tables null, or the tables to blend with in linear light.
//   mask          null for none.
//   matrices      `matrix_count` of them. More than one is a series over the frame: what moves is blurred. From source
//                 to destination when `src2dst` is non-zero, else the other way. Pixel (0, 0) spans 0..1.
// A perspective is linearised at the drawn rectangle's corner. A translation by whole pixels (at draft any translation)
// is RK_TransferRect itself. The stencil modes clear the alpha of `dest_rect` where the source does not reach.
// `progress` (null: none) is called after rows; a non-zero answer is returned at once, finished rows stay.
//
// 0, also when nothing was to be drawn: `matrix_count` below 1, nothing of the source inside, a matrix that does not
// invert or has no extent. 3 for differing or unknown depths and null arguments, reported; 4 for memory; 5 for a refused
// mode, reported; 1 for a singular matrix inside a series that needs them all.
RK_API RK_Long RK_TransformWorld(RK_ProgressInfo* progress, RK_Long quality, RK_Long mode_flags, RK_Long field,
                                 const RK_World* src, const RK_CompositeMode* comp_mode,
                                 const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                                 const GEO_Matrix3* matrices, RK_Long matrix_count, uint8_t src2dst,
                                 const GEO_Rect* dest_rect, RK_World* dst);

// The same with the caller's scratch, whose rows have room for the width of `dst`: for any thread. Null is the
// process-wide scratch.
RK_API RK_Long RK_TransformWorldPlus(RK_ProgressInfo* progress, RK_Long quality, RK_Long mode_flags, RK_Long field,
                                     const RK_World* src, const RK_CompositeMode* comp_mode,
                                     const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                                     RK_BlendScratch* scratch, const GEO_Matrix3* matrices, RK_Long matrix_count,
                                     uint8_t src2dst, const GEO_Rect* dest_rect, RK_World* dst);

// The bodies in slots 32 and 48.
RK_Long RK_TransformWorld_S(RK_ProgressInfo* progress, RK_Long quality, RK_Long mode_flags, RK_Long field,
                            const RK_World* src, const RK_CompositeMode* comp_mode,
                            const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                            const GEO_Matrix3* matrices, RK_Long matrix_count, uint8_t src2dst,
                            const GEO_Rect* dest_rect, RK_World* dst);
RK_Long RK_TransformWorldPlus_S(RK_ProgressInfo* progress, RK_Long quality, RK_Long mode_flags, RK_Long field,
                                const RK_World* src, const RK_CompositeMode* comp_mode,
                                const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                                RK_BlendScratch* scratch, const GEO_Matrix3* matrices, RK_Long matrix_count,
                                uint8_t src2dst, const GEO_Rect* dest_rect, RK_World* dst);

#endif
