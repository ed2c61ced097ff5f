// A file of many routines. Each that is called appends its letter to a word that a test can read.
#include <cstring>

#include "RK/indep/frame/RK_Modules.h"

extern "C" {
RK_API char ModuleMany_loaded[16] = "";
RK_API char ModuleMany_unloaded[16] = "";
// What the last load was given.
RK_API RK_ModuleParams ModuleMany_params = {};
// What entries answer to an unload.
RK_API RK_Long ModuleMany_unload_result = 0;
}

template <char letter>
static RK_Long entry(RK_Long selector, void* parameters) {
    auto* params = static_cast<RK_ModuleParams*>(parameters);
    char* word = selector == RK_kModuleLoad ? ModuleMany_loaded : ModuleMany_unloaded;
    const size_t length = std::strlen(word);
    if (length + 1 < sizeof ModuleMany_loaded) word[length] = letter;
    if (selector != RK_kModuleLoad) return ModuleMany_unload_result;
    ModuleMany_params = *params;
    params->over_funcs[1] = reinterpret_cast<void*>(&entry<letter>);
    return 0;
}

static const MOD_Property kRight[] = {{"name", 1}, {RK_kModuleVersionKey, RK_kModuleVersion}, {nullptr, 0}};
static const MOD_Property kOlder[] = {{RK_kModuleVersionKey, 1}, {nullptr, 0}};
static const MOD_Property kNewer[] = {{RK_kModuleVersionKey, 3}, {nullptr, 0}};
static const MOD_Property kOther[] = {{"flavour", RK_kModuleVersion}, {nullptr, 0}};

static const MOD_RoutineEntry kRoutines[] = {
    {RK_kModuleType, RK_kModuleFlag, "first", kRight, entry<'a'>},
    {RK_kModuleType, RK_kModuleFlag, "older version", kOlder, entry<'b'>},
    {RK_kModuleType, RK_kModuleFlag, "newer version", kNewer, entry<'c'>},
    {RK_kModuleType, RK_kModuleFlag, "no version", kOther, entry<'d'>},
    {RK_kModuleType, RK_kModuleFlag, "no properties", nullptr, entry<'e'>},
    {MOD_Type('e', 'F', 'K', 'T'), RK_kModuleFlag, "another type", kRight, entry<'f'>},
    {RK_kModuleType, ~RK_kModuleFlag, "without the flag", kRight, entry<'g'>},
    {RK_kModuleType, 0xFFFFFFFFu, "last, with other flags too", kRight, entry<'h'>},
};
MOD_EXPORT_ROUTINES(kRoutines);
