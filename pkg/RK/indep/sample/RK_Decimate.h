// Worlds at half their size, alpha-aware. Depths 8 and 16 only.
#ifndef RK_DECIMATE_H
#define RK_DECIMATE_H

#include "RK/indep/world/RK_World.h"

// Halves `src` into `dst`, whose size is the result's: (src size + keep_odd) / 2 in each axis; in another size, outputs
// without a source are left alone by the box and computed from the taps that exist by the Gaussian. With `keep_odd` an
// odd last row or column counts; without it the box drops it. The box takes the mean of pairs; the Gaussian five taps
// of 0.05, 0.25, 0.4, 0.25, 0.05 around every second pixel, not renormalised at the ends.
// Throw 3 for a null world, a depth other than 8 or 16, or differing depths; 4 for memory.
RK_API void RK_BoxFilteredDecimateByTwo(const RK_World* src, bool keep_odd, RK_World* dst);
RK_API void RK_GaussFilteredDecimateByTwo(const RK_World* src, bool keep_odd, RK_World* dst);

// The same into a new world, which the caller deletes. Do nothing if either argument is null. A result without pixels
// throws 516, reported. After a throw `*dst` is untouched.
RK_API void RK_NewBoxFilteredDecimateByTwo(const RK_World* src, bool keep_odd, const RK_World** dst);
RK_API void RK_NewGaussFilteredDecimateByTwo(const RK_World* src, bool keep_odd, const RK_World** dst);

#endif
