#include "test/life/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<int64_t> g_made{0}, g_failing{0};
}

namespace test {

void failNew(int64_t n) {
    g_made = 0;
    g_failing = n;
}
int64_t newsSince() { return g_made; }

}  // namespace test

void* operator new(size_t bytes) {
    if (g_made.fetch_add(1) + 1 == g_failing.load()) throw std::bad_alloc();
    if (void* block = std::malloc(bytes ? bytes : 1)) return block;
    throw std::bad_alloc();
}
void* operator new[](size_t bytes) { return ::operator new(bytes); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }
