// One pixel stored along a row.
#ifndef RKP_FILL_ROW_H
#define RKP_FILL_ROW_H

#include <cstring>

#include "RK/indep/frame/RK.h"

// Stores a block of 64 bytes over and over, which compiles to whole vector stores at every depth; a plain
// loop over pixels does so only by the compiler's luck. Copying what the row holds already would be quicker
// in the cache but takes twice the time outside it: it reads lines that are still on their way. The pixel is
// taken by value, because it may lie in the row. A count below 1 does nothing.
template <class P>
void RKp_FillRow(P* row, int32_t count, P pixel) {
    constexpr int32_t kBlock = 64 / sizeof(P);
    P block[kBlock];
    for (P& p : block) p = pixel;
    int32_t x = 0;
    for (; count - x >= kBlock; x += kBlock) std::memcpy(static_cast<void*>(row + x), block, sizeof block);
    for (; x < count; ++x) row[x] = pixel;
}

#endif
