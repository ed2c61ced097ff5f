// A row of a track matte, for a host that makes its own.
#ifndef RK_TRACK_MATTE_H
#define RK_TRACK_MATTE_H

#include "RK/indep/composite/RK_TransferRect.h"

// Writes the alphas of `count` pixels of `out_row`, and nothing else, from a row of `matte_width` pixels
// whose first lies at column `offset`, which may be negative: alpha, or alpha times luma, plain or inverted,
// as RK_MaskKind says (of `kind` the low two bits count). Columns that the matte does not reach get full for
// the inverted kinds and 0 for the others. Pixels have 16 bits when `is16` is set, else 8. A count or a width
// below 1 is none; the matte's pixels may be null when none of them is read. 0; 3, reported and nothing
// written, for null pixels that would be used.
RK_API RK_Long RK_PrepTrackMatteUniv(RK_Long count, const void* matte_pixels, RK_Long offset,
                                     RK_Long matte_width, RK_Long kind, bool is16, void* out_row);

#endif
