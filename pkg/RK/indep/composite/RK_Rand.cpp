#include "RK/indep/composite/RK_Rand.h"

RK_Long RK_Rand(uint32_t* seed) {
    // Kept: the products are added; the generator's common form subtracts the first.
    uint32_t next = (*seed / 44488u) * 3399u + (*seed % 44488u) * 48271u;
    if (next == 0) next = 0x7FFFFFFFu;
    *seed = next;
    return static_cast<RK_Long>((next >> 7) & 0x7FFFu);
}
