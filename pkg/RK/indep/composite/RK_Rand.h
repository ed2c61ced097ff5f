// The random numbers of RK_Xfer_Dissolve.
#ifndef RK_RAND_H
#define RK_RAND_H

#include "RK/indep/frame/RK.h"

// Moves the seed, 32 bits whatever the width of long is, to (seed / 44488) * 3399 + (seed % 44488) * 48271 in
// wrapped arithmetic, 0 becoming 0x7FFFFFFF, and gives bits 7 to 21 of it: 0..32767. `seed` is not null.
RK_API RK_Long RK_Rand(uint32_t* seed);

#endif
