// A module file whose table is nonsense in the one place that the build defines: such a file is passed over.
// All its pointers that lead nowhere are odd addresses in the first page.
#include "RK/indep/frame/RK_Modules.h"

#ifndef COUNT
#define COUNT 1
#endif
#ifndef ROUTINES
#define ROUTINES kRoutines
#endif
#ifndef ENTRY
#define ENTRY entry
#endif
#ifndef NAME
#define NAME "nonsense"
#endif
#ifndef PROPERTIES
#define PROPERTIES kProperties
#endif
#ifndef TABLE
#define TABLE MOD_G_RoutineTable
#endif
#define NOWHERE(type) reinterpret_cast<type*>(uintptr_t{0x1001})

// Called, it would show in slot 1.
[[maybe_unused]] static RK_Long entry(RK_Long, void* parameters) {
    static_cast<RK_ModuleParams*>(parameters)->over_funcs[1] = parameters;
    return 0;
}

[[maybe_unused]] static const MOD_Property kProperties[] = {{RK_kModuleVersionKey, RK_kModuleVersion},
                                                            {nullptr, 0}};

struct Endless {
    MOD_Property properties[65];
    Endless() : properties() {
        for (MOD_Property& p : properties) p = {"again", 0};
    }
};
[[maybe_unused]] static const Endless kEndless;

extern "C" {
RK_API extern const MOD_RoutineEntry kRoutines[];
RK_API extern const MOD_RoutineTable TABLE;
const MOD_RoutineEntry kRoutines[] = {{RK_kModuleType, RK_kModuleFlag, NAME, PROPERTIES, ENTRY}};
const MOD_RoutineTable TABLE = {COUNT, ROUTINES};
}
