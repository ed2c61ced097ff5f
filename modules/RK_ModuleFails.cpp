// A sample of a module that cannot go on: it has written slots already when it finds that out. The package
// puts them all back.
#include "RK/indep/frame/RK_Modules.h"

static void nonsense() {}

static RK_Long entry(RK_Long selector, void* parameters) {
    const auto* params = static_cast<const RK_ModuleParams*>(parameters);
    if (selector != RK_kModuleLoad) return RK_kOK;
    for (int i = 0; i < RK_kSlotCount; ++i) params->over_funcs[i] = reinterpret_cast<void*>(&nonsense);
    params->report_error(77, "this machine lacks the accelerator");
    return RK_kBadParam;
}

static const MOD_Property kProperties[] = {{RK_kModuleVersionKey, RK_kModuleVersion}, {nullptr, 0}};
static const MOD_RoutineEntry kRoutines[] = {
    {RK_kModuleType, RK_kModuleFlag, "Failing sample", kProperties, entry}};
MOD_EXPORT_ROUTINES(kRoutines);
