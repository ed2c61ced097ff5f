// The main composite: a rectangle of one world laid onto another, under a transfer mode.
#ifndef RK_TRANSFER_RECT_H
#define RK_TRANSFER_RECT_H

#include "RK/indep/composite/RK_BlendScratch.h"
#include "RK/indep/composite/RK_Xfer.h"

// How a mask's pixels make the matte; bit 0 means inverted. A luma is weighted by the mask's own alpha.
enum RK_MaskKind : uint32_t {
    RK_kMaskAlpha = 0,
    RK_kMaskInvertedAlpha = 1,
    RK_kMaskLuma = 2,
    RK_kMaskInvertedLuma = 3
};

// A mask as the composites take it: they are handed &mask.world and read the three fields behind it.
struct RK_Mask {
    RK_LayerDef world;
    int16_t mask_y;  // the destination row at which the mask's row 0 lies
    int16_t mask_x;  // the same for columns
    uint32_t mask_kind;
};
RK_ASSERT_OFFSET(RK_Mask, mask_y, 76, 96);
RK_ASSERT_OFFSET(RK_Mask, mask_x, 78, 98);
RK_ASSERT_OFFSET(RK_Mask, mask_kind, 80, 100);

// Which destination rows are blended.
constexpr RK_Long RK_kBothFields = 0;
constexpr RK_Long RK_kEvenField = 1;
constexpr RK_Long RK_kOddField = 2;

// Lays `src_rect` of `src` (null: all of it) onto `dst`, its top left at (dst_x, dst_y), as `mode` says, in
// rows. Source, destination and mask have one depth; parts outside the worlds are clipped. `mask` (null:
// none) is the record inside an RK_Mask. `tables` (null: none) alone decides on linear light; mode->tables is
// not read. The two reserved arguments are not read. `progress` (null: none) is called every 128th row with
// the rows done and the rows in all; a non-zero answer stops the pass and is the result, and rows done stay
// done.
//
// 0; 3 for differing or unknown depths and null arguments (reported); 4 for want of scratch; 5 for a refused
// mode (reported); or what progress answered. No pixel is touched before these tests. Uses the process-wide
// scratch: for one thread at a time.
RK_API RK_Long RK_TransferRect(RK_ProgressInfo* progress, void* reserved1, void* reserved2, RK_Long field,
                               const GEO_Rect* src_rect, const RK_LayerDef* src,
                               const RK_CompositeModePlus* mode, const RK_LinearBlendingTables* tables,
                               const RK_LayerDef* mask, RK_Long dst_x, RK_Long dst_y, RK_LayerDef* dst);

// The same with the caller's scratch, whose rows have room for the width of `src_rect`: for any thread. Null
// is the process-wide scratch.
RK_API RK_Long RK_TransferRectPlus(RK_ProgressInfo* progress, void* reserved1, void* reserved2, RK_Long field,
                                   const GEO_Rect* src_rect, const RK_LayerDef* src,
                                   const RK_CompositeModePlus* mode, const RK_LinearBlendingTables* tables,
                                   const RK_LayerDef* mask, RK_BlendScratch* scratch, RK_Long dst_x,
                                   RK_Long dst_y, RK_LayerDef* dst);

// Sets the alpha of every pixel outside `keep` to 0; colour stays. A null world, null pixels or a null `keep`
// is reported and gives 3.
RK_API RK_Long RK_ClearAlphaExceptRect(RK_ProgressInfo* progress, const GEO_Rect* keep, RK_LayerDef* world);

#endif
