// The matte rows that a mask yields.
#ifndef RK_MATTE_ROW_H
#define RK_MATTE_ROW_H

#include "RK/indep/composite/RK_TransferRect.h"

// The matte of `count` pixels of destination row y, from column `left` on. Only its alphas count. Of
// mask_kind the low two bits count: bit 0 inverts, bit 1 takes luma * alpha instead of alpha.
//
// Plain alpha is read in place, and the columns must lie inside the mask. The other kinds are written into
// the alphas of `matte_row`, which has room for `count` pixels and is what is returned: computed values
// inside the mask; outside of it full, except that columns beside a plain luma mask get 0.
template <class P>
RK_API const P* RK_MatteRow(const RK_Mask& mask, int32_t y, int32_t left, int32_t count, P* matte_row);

#endif
