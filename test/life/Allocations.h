// The runtime's own allocations, made to fail.
#ifndef TEST_LIFE_ALLOCATIONS_H
#define TEST_LIFE_ALLOCATIONS_H

#include <cstdint>

namespace test {

// The n-th operator new from now on throws std::bad_alloc, once; 0: none does.
void failNew(int64_t n);
// Calls of operator new since.
int64_t newsSince();

}  // namespace test

#endif
