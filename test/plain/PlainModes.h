// Plain twins of the transfer modes: one pixel as the one-pixel tables composite it, and one row as the
// pipeline does.
#ifndef TEST_PLAIN_MODES_H
#define TEST_PLAIN_MODES_H

#include "RK/indep/composite/RK_Xfer.h"
#include "test/plain/PlainArithmetic.h"

namespace plain {

// Mode 0..36 on one pixel. Opacities scale the source's alpha one after the other; pass full for none.
template <class P>
P pixel(int mode, const P& source, decltype(P::red) opacity1, decltype(P::red) opacity2,
        const P& destination);

// The mode's row function alone: the middle of what row() does. A wrapped mode finds `out` against its
// neutral background and writes colour; an over-first mode finds the source behind it already.
template <class P>
int rowFunction(const RK_BlendingMode<P>& mode, bool has_matte, int count, const P* src, const P* matte,
                P* out);

// What a composited row holds, in place of `out`. `plan_has_matte` is what the plan was made for; `matte` is
// the row as passed, which may be null where the plan has none. 0, or 3 for MatteMix without a matte,
// touching nothing.
template <class P>
int row(const RK_BlendingMode<P>& mode, bool plan_has_matte, int count, const P* src, const P* matte, P* out);

}  // namespace plain

#endif
