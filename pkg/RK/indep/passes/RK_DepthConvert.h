// Whole worlds moved to another depth.
#ifndef RK_DEPTH_CONVERT_H
#define RK_DEPTH_CONVERT_H

#include "RK/indep/frame/RK.h"

// Stores every pixel of `src` in `dst`, a world of the same size and of any depth; between worlds of different sizes,
// and without pixels, it does nothing. 8-bit alpha becomes float by a float product, which is not the rule of the other
// passes; all else goes by that. `tables` is read between an integer depth and float only; null leaves the values as
// they are. Failures are reported, and leave `dst` as it was: a null world, a depth that is none of 8, 16 and 32, and
// tables, as long as there are none that could be used.
RK_API void RK_DepthConvertWorld(const RK_LinearBlendingTables* tables, const RK_World* src, RK_World* dst);

// The noise of dithered conversions begins anew, so that what follows repeats exactly. The cursor of the
// noise has no lock: dithered conversions run one at a time.
RK_API void RK_ResetDitherRandomIndex();

#endif
