// A sample acceleration module: takes the place of RK_IterateGeneric's body, counts its calls, and leaves the
// work to the body that stood there before.
#include "RK/indep/frame/RK_Modules.h"
#include "RK/indep/passes/RK_Iterate.h"

namespace {

constexpr int kIterateGeneric = 53;
using IterateGeneric = decltype(RK_IterateGeneric);

IterateGeneric* g_before = nullptr;

}  // namespace

extern "C" {

// For whoever wants to see that the module is in use.
RK_API int32_t RK_ModuleOverride_calls = 0;

static RK_Long iterateGeneric(RK_Long iterations, void* refcon, RK_GenericFunc* fn) {
    ++RK_ModuleOverride_calls;
    return g_before(iterations, refcon, fn);
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
    {RK_kModuleType, RK_kModuleFlag, "Counting RK_IterateGeneric", kProperties, entry}};
MOD_EXPORT_ROUTINES(kRoutines);
