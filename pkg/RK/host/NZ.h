// NZ, the host's noise package.
#ifndef RK_HOST_NZ_H
#define RK_HOST_NZ_H

#include "RK/host/Long.h"

// A fixed table of `*count` 32-bit noise values, a prime number of them. The host's; it lives as long as the
// process. 0 or 4.
RK_HOST_API RK_Long NZ_GetPrimeSizedTable(const uint32_t** table, int32_t* count);

#endif
