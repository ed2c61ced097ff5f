// The processor record and the number of threads.
#include <atomic>
#include <thread>

#include "refhost/Internal.h"

namespace {

KIT_CPU_Data g_facts = RefHost::DetectCPU();
std::atomic<int32_t> g_threads{0};

}  // namespace

const KIT_CPU_Data* KIT_G_CPU_DataP = &g_facts;

namespace RefHost {

KIT_CPU_Data DetectCPU() {
    __builtin_cpu_init();
    return {__builtin_cpu_supports("sse2") ? 1u : 0u, __builtin_cpu_supports("ssse3") ? 1u : 0u};
}

void SetCPU(KIT_CPU_Data facts) { g_facts = facts; }

void SetThreadCount(int32_t count) { g_threads = count; }

}  // namespace RefHost

int32_t KIT_GetNumThreads() {
    const int32_t set = g_threads.load();
    if (set > 0) return set;
    const unsigned machine = std::thread::hardware_concurrency();
    return machine > 0 ? static_cast<int32_t>(machine) : 1;
}
