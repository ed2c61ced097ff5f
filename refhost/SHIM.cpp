#include "RK/host/SHIM.h"

#include <atomic>

#include "refhost/Internal.h"

namespace {
std::atomic<int32_t> g_brackets{0};
}

// This platform makes no window-system objects for a bitmap; the brackets are only counted.
void SHIM_BeginGdiMinimalisticWindowCreationMode() { ++g_brackets; }
void SHIM_EndGdiMinimalisticWindowCreationMode() { --g_brackets; }

namespace RefHost {
int32_t MinimalisticBrackets() { return g_brackets.load(); }
}  // namespace RefHost
