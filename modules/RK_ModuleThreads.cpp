// A sample acceleration module: spreads the parts of RK_IterateGeneric over threads. Each takes a run of
// neighbouring parts, the calling thread the first, as thread 0: what asks for progress does so there alone.
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

#include "RK/host/KIT.h"
#include "RK/indep/frame/RK_Modules.h"
#include "RK/indep/passes/RK_Iterate.h"

namespace {

constexpr int kIterateGeneric = 53;
using IterateGeneric = decltype(RK_IterateGeneric);

IterateGeneric* g_before = nullptr;

// One call's work, shared by its threads.
struct Work {
    RK_Long iterations;
    void* refcon;
    RK_GenericFunc* fn;
    RK_Long threads;
    std::atomic<RK_Long> result{RK_kOK};  // the first that is not 0; it stops all

    RK_Long begin(RK_Long thread) const {
        return iterations / threads * thread +
               (thread < iterations % threads ? thread : iterations % threads);
    }
    void run(RK_Long thread) {
        for (RK_Long i = begin(thread), end = begin(thread + 1); i < end && result.load() == RK_kOK; ++i) {
            RK_Long none = RK_kOK;
            const RK_Long now = part(thread, i);
            if (now != RK_kOK) result.compare_exchange_strong(none, now);
        }
    }
    // An exception must not leave a thread, nor a slot.
    RK_Long part(RK_Long thread, RK_Long i) const {
        try {
            return fn(refcon, thread, i, iterations);
        } catch (RK_Long code) {
            return code;
        } catch (...) {
            return RK_kBadParam;
        }
    }
};

}  // namespace

extern "C" {

// For whoever wants to see that the module is in use: calls that had helpers, and how many helpers in all.
RK_API int32_t RK_ModuleThreads_calls = 0;
RK_API int32_t RK_ModuleThreads_helpers = 0;

static RK_Long iterateGeneric(RK_Long iterations, void* refcon, RK_GenericFunc* fn) {
    RK_Long threads = KIT_GetNumThreads();
    if (threads > iterations) threads = iterations;
    if (!fn || threads < 2) return g_before(iterations, refcon, fn);
    Work work = {iterations, refcon, fn, threads};
    std::vector<std::thread> helpers;
    RK_Long started = 1;
    try {
        helpers.reserve(static_cast<size_t>(threads));
        for (; started < threads; ++started) helpers.emplace_back(&Work::run, &work, started);
    } catch (const std::exception&) {
        // What could not be started is done here, below.
    }
    ++RK_ModuleThreads_calls;
    RK_ModuleThreads_helpers += static_cast<int32_t>(started - 1);
    work.run(0);
    for (std::thread& helper : helpers) helper.join();
    // The scratch of a thread that never ran is free for its parts.
    for (RK_Long thread = started; thread < threads; ++thread) work.run(thread);
    return work.result.load();
}

static RK_Long entry(RK_Long selector, void* parameters) {
    const auto* params = static_cast<const RK_ModuleParams*>(parameters);
    if (selector != RK_kModuleLoad) return RK_kOK;
    if (params->version_major != 2) return RK_kVersionMismatch;
    g_before = reinterpret_cast<IterateGeneric*>(params->over_funcs[kIterateGeneric]);
    if (!g_before) return RK_kBadParam;
    params->over_funcs[kIterateGeneric] = reinterpret_cast<void*>(&iterateGeneric);
    return RK_kOK;
}
}

static const MOD_Property kProperties[] = {{RK_kModuleVersionKey, RK_kModuleVersion}, {nullptr, 0}};
static const MOD_RoutineEntry kRoutines[] = {
    {RK_kModuleType, RK_kModuleFlag, "Threads for RK_IterateGeneric", kProperties, entry}};
MOD_EXPORT_ROUTINES(kRoutines);
