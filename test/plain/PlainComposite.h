// Plain twins of transfer rect, composite rect and the clearing of alpha, over whole records.
#ifndef TEST_PLAIN_COMPOSITE_H
#define TEST_PLAIN_COMPOSITE_H

#include "RK/indep/composite/RK_TransferRect.h"
#include "test/plain/PlainArithmetic.h"

namespace plain {

// 0 or a progress answer; 5 for a refused mode, 3 for MatteMix without a mask. `src_rect`, `mask` and
// `progress` may be null. Source, destination and mask hold pixels of P.
template <class P>
int transferRect(RK_ProgressInfo* progress, int field, const GEO_Rect* src_rect, const RK_LayerDef& src,
                 const RK_CompositeModePlus& mode, const RK_Mask* mask, int64_t dst_x, int64_t dst_y,
                 const RK_LayerDef& dst);

// Alpha becomes 0 outside `keep`.
template <class P>
void clearAlphaExcept(const GEO_Rect& keep, const RK_LayerDef& world);

// The source behind the destination, as 8-bit pixels whatever the worlds' depth.
int compositeRect(bool premultiplied, RK_ProgressInfo* progress, const GEO_Rect* src_rect, uint8_t opacity,
                  const RK_LayerDef& src, int64_t dst_x, int64_t dst_y, int field, const RK_LayerDef& dst);

}  // namespace plain

#endif
