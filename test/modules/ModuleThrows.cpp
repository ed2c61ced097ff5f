// Routines that write slots and then throw: what the border knows, and what it does not.
#include <stdexcept>

#include "RK/indep/frame/RK_Modules.h"

template <class What>
static RK_Long entry(RK_Long, void* parameters) {
    auto* params = static_cast<RK_ModuleParams*>(parameters);
    for (int i = 0; i < RK_kSlotCount; ++i) params->over_funcs[i] = params;
    throw What{};
}

struct Unknown {};
struct Standard : std::runtime_error {
    Standard() : std::runtime_error("thrown by a module") {}
};

static const MOD_Property kProperties[] = {{RK_kModuleVersionKey, RK_kModuleVersion}, {nullptr, 0}};
static const MOD_RoutineEntry kRoutines[] = {
    {RK_kModuleType, RK_kModuleFlag, "unknown", kProperties, entry<Unknown>},
    {RK_kModuleType, RK_kModuleFlag, "standard", kProperties, entry<Standard>},
    {RK_kModuleType, RK_kModuleFlag, "a long, and a thrown 0 at that", kProperties, entry<RK_Long>},
};
MOD_EXPORT_ROUTINES(kRoutines);
