#include "RK/indep/frame/RK_Modules.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "RK/host/DSK.h"
#include "RK/host/KIT.h"
#include "RK/host/SEQ.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_Modules.h"

namespace {

constexpr uint32_t kSiteModuleFailed = 9;

struct Module {
    MOD_Routine* routine;
    MOD_EntryFunc* entry;
};
static_assert(sizeof(Module) == 2 * sizeof(void*), "a record of the module list holds two pointers");
SEQ_List* g_modules = nullptr;

RK_Long reportForModule(RK_Long code, const char* text) {
    KITp_ReportErrString(RK_kLocation | static_cast<uint32_t>(code), 8, text);
    return RK_kOK;
}

// Module code is not ours: whatever it throws is its failure, a thrown 0 too.
RK_Long callEntry(MOD_EntryFunc* entry, RK_Long selector) {
    RK_ModuleParams params = {
        2,           1,         reportForModule, nullptr,      RKp_G_fcm_table, RKp_G_fcd_table,
        std::calloc, std::free, std::malloc,     std::realloc, std::exit,       RKp_G_OverFuncs};
    RK_Long answer = RK_kBadParam;
    try {
        const RK_Long error = RKp_AtBorder([&] { answer = entry(selector, &params); });
        return error != RK_kOK ? error : answer;
    } catch (...) {
        return RK_kBadParam;
    }
}

// What the module wrote is seen only if all of this succeeds.
RK_Long load(MOD_Routine* routine) {
    Module module = {routine, nullptr};
    RK_Long error = MOD_PrepRoutine(routine, &module.entry);
    if (error != RK_kOK) return error;
    error = callEntry(module.entry, RK_kModuleLoad);
    if (error == RK_kOK) {
        error = SEQ_Insert(g_modules, &module);
        if (error != RK_kOK) callEntry(module.entry, RK_kModuleUnload);
    }
    if (error != RK_kOK) MOD_UnprepRoutine(routine);
    return error;
}

RK_Long registerAndLoad(MOD_File* file, int32_t index) {
    MOD_Routine* routine = nullptr;
    RK_Long error = MOD_RegisterRoutine(file, index, &routine);
    if (error != RK_kOK) return error;
    void* saved[RK_kSlotCount];
    std::copy(std::begin(RKp_G_OverFuncs), std::end(RKp_G_OverFuncs), saved);
    error = load(routine);
    if (error != RK_kOK) {
        std::copy(std::begin(saved), std::end(saved), RKp_G_OverFuncs);
        MOD_UnregisterRoutine(routine);
    }
    return error;
}

bool isModule(MOD_File* file, int32_t index, MOD_RoutineInfo* info) {
    int32_t version = 0;
    return MOD_GetRoutineInfo(file, index, info) == 0 && info->type == RK_kModuleType &&
           (info->flags & RK_kModuleFlag) != 0 &&
           MOD_GetModPropsProp(file, index, RK_kModuleVersionKey, &version) == 0 &&
           version == RK_kModuleVersion;
}

// A module's failure ends with the module: one bad file must not keep the host from starting.
RK_Long visitFile(void*, MOD_File* file) {
    for (int32_t i = MOD_GetRoutineCount(file) - 1; i >= 0; --i) {
        MOD_RoutineInfo info;
        if (!isModule(file, i, &info)) continue;
        const RK_Long error = registerAndLoad(file, i);
        if (error == RK_kOK) continue;
        char text[160];
        std::snprintf(text, sizeof text, "acceleration module \"%s\" failed to load (%ld)", info.name, error);
        reportForModule(kSiteModuleFailed, text);
    }
    return RK_kOK;
}

}  // namespace

RK_Long RKp_StartModuleScan() {
    RK_Long error = SEQ_New(sizeof(Module), &g_modules);
    if (error == RK_kOK) error = DSK_AddExtensionMap(RK_kModuleExtension, RK_kModuleType);
    if (error == RK_kOK) error = MOD_InstallScan(RK_kModuleType, nullptr, visitFile, nullptr);
    return error;
}

RK_Long RKp_UnloadModules() {
    RK_Long first = RK_kOK;
    const auto keepFirst = [&first](RK_Long error) {
        if (first == RK_kOK) first = error;
    };
    for (int32_t i = 0; i < SEQ_Count(g_modules); ++i) {
        Module module;
        if (SEQ_Get(g_modules, i, &module) != RK_kOK) continue;
        keepFirst(callEntry(module.entry, RK_kModuleUnload));
        keepFirst(MOD_UnprepRoutine(module.routine));
        keepFirst(MOD_UnregisterRoutine(module.routine));
    }
    keepFirst(SEQ_Dispose(g_modules));
    g_modules = nullptr;
    return first;
}
