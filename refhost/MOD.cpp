// The plug-in scan: shared objects in a folder, their routine tables, and the routines that are in use.
#include "RK/host/MOD.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <new>

#include "refhost/ElfCheck.h"
#include "refhost/ExtensionMap.h"
#include "refhost/Internal.h"

// Loaded while the scan visits it, and as long as one of its routines is registered.
struct MOD_File {
    void* object;
    const MOD_RoutineTable* table;
    int32_t users;
};

struct MOD_Routine {
    MOD_File* file;
    int32_t index;
    bool ready;
};

namespace {

namespace fs = std::filesystem;

constexpr int32_t kMostRoutines = 1024, kMostProperties = 64;

std::string g_folder;

std::string pluginFolder() {
    if (!g_folder.empty()) return g_folder;
    const char* named = std::getenv("RK_PLUGIN_PATH");
    return named ? named : "";
}

// The files of the type below the folder, by name, so that a scan has one order on every machine.
std::vector<std::string> filesOfType(const std::string& folder, uint32_t type) {
    std::vector<std::string> found;
    std::error_code error;
    fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, error), end;
    for (; !error && at != end; at.increment(error)) {
        std::error_code unreadable;
        if (!at->is_regular_file(unreadable)) continue;
        if (RefHost::HasExtensionOf(at->path().extension().string(), type)) found.push_back(at->path().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

// True when the address lies in a loaded object: in `object` itself where one is asked for.
bool isLoaded(const void* address, const void* object = nullptr) {
    Dl_info info;
    if (!address || dladdr(address, &info) == 0) return false;
    return !object || info.dli_fbase == object;
}

bool isSound(const MOD_RoutineEntry& routine, const void* object) {
    if (!isLoaded(reinterpret_cast<const void*>(routine.entry)) || !isLoaded(routine.name, object)) return false;
    if (!routine.properties) return true;
    for (int32_t i = 0; i < kMostProperties; ++i) {
        if (!isLoaded(&routine.properties[i], object)) return false;
        if (!routine.properties[i].key) return true;
        if (!isLoaded(routine.properties[i].key, object)) return false;
    }
    return false;
}

// A table with nonsense in it counts as none.
bool isSound(const MOD_RoutineTable* table) {
    Dl_info info;
    if (dladdr(table, &info) == 0 || table->count < 0 || table->count > kMostRoutines) return false;
    if (table->count == 0) return true;
    if (!isLoaded(table->routines, info.dli_fbase) ||
        !isLoaded(table->routines + table->count - 1, info.dli_fbase))
        return false;
    return std::all_of(table->routines, table->routines + table->count,
                       [&](const MOD_RoutineEntry& routine) { return isSound(routine, info.dli_fbase); });
}

// Null for a file that is no shared object or has no sound routine table: such a file is passed over.
MOD_File* load(const std::string& path) {
    if (!RefHost::IsWholeSharedObject(path)) return nullptr;
    void* object = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!object) return nullptr;
    const auto* table = static_cast<const MOD_RoutineTable*>(dlsym(object, "MOD_G_RoutineTable"));
    void* place = table && isSound(table) ? RefHost::AllocateBlock(sizeof(MOD_File)) : nullptr;
    if (!place) {
        dlclose(object);
        return nullptr;
    }
    return new (place) MOD_File{object, table, 1};
}

void release(MOD_File* file) {
    if (--file->users > 0) return;
    dlclose(file->object);
    RefHost::FreeBlock(file);
}

const MOD_RoutineEntry* routineOf(const MOD_File* file, int32_t index) {
    if (!file || index < 0 || index >= file->table->count) return nullptr;
    return &file->table->routines[index];
}

RK_Long scan(uint32_t type, void* refcon, MOD_FileFunc* per_file, MOD_EndOfScanFunc* end_of_scan) {
    RK_Long result = 0;
    const auto keepFirst = [&](RK_Long code) {
        if (result == 0) result = code;
    };
    const std::string folder = pluginFolder();
    if (!folder.empty() && per_file) {
        for (const std::string& path : filesOfType(folder, type)) {
            MOD_File* file = load(path);
            if (!file) continue;
            keepFirst(per_file(refcon, file));
            release(file);
        }
    }
    if (end_of_scan) keepFirst(end_of_scan(refcon));
    return result;
}

}  // namespace

RK_Long MOD_InstallScan(uint32_t type, void* refcon, MOD_FileFunc* per_file, MOD_EndOfScanFunc* end_of_scan) {
    if (const RK_Long code = RefHost::FailingCall("MOD_InstallScan")) return code;
    try {
        return scan(type, refcon, per_file, end_of_scan);
    } catch (const std::exception& error) {
        return KIT_TranslateAndReportException(error);
    }
}

int32_t MOD_GetRoutineCount(MOD_File* file) { return file ? file->table->count : 0; }

RK_Long MOD_GetRoutineInfo(MOD_File* file, int32_t index, MOD_RoutineInfo* info) {
    const MOD_RoutineEntry* routine = routineOf(file, index);
    if (!routine || !info) return 3;
    *info = {routine->type, routine->flags, {}};
    std::strncpy(info->name, routine->name, sizeof info->name - 1);
    return 0;
}

RK_Long MOD_GetModPropsProp(MOD_File* file, int32_t index, const char* key, int32_t* value) {
    const MOD_RoutineEntry* routine = routineOf(file, index);
    if (!routine || !key || !value || !routine->properties) return 3;
    for (const MOD_Property* property = routine->properties; property->key; ++property) {
        if (std::strcmp(property->key, key) != 0) continue;
        *value = property->value;
        return 0;
    }
    return 3;
}

RK_Long MOD_RegisterRoutine(MOD_File* file, int32_t index, MOD_Routine** out) {
    if (!routineOf(file, index) || !out) return 3;
    *out = nullptr;
    if (const RK_Long code = RefHost::FailingCall("MOD_RegisterRoutine")) return code;
    void* place = RefHost::AllocateBlock(sizeof(MOD_Routine));
    if (!place) return 4;
    ++file->users;
    *out = new (place) MOD_Routine{file, index, false};
    return 0;
}

RK_Long MOD_UnregisterRoutine(MOD_Routine* routine) {
    if (!routine) return 3;
    const RK_Long code = RefHost::FailingCall("MOD_UnregisterRoutine");
    MOD_File* file = routine->file;
    RefHost::FreeBlock(routine);
    release(file);
    return code;
}

RK_Long MOD_PrepRoutine(MOD_Routine* routine, MOD_EntryFunc** entry) {
    if (!routine || !entry || routine->ready) return 3;
    if (const RK_Long code = RefHost::FailingCall("MOD_PrepRoutine")) return code;
    routine->ready = true;
    *entry = routineOf(routine->file, routine->index)->entry;
    return 0;
}

RK_Long MOD_UnprepRoutine(MOD_Routine* routine) {
    if (!routine || !routine->ready) return 3;
    routine->ready = false;
    return RefHost::FailingCall("MOD_UnprepRoutine");
}

RK_Long MOD_CheckVersions(RK_Long, RK_Long version) { return RefHost::CheckPackage("MOD", version); }

namespace RefHost {
void SetPluginFolder(const std::string& folder) { g_folder = folder; }
}  // namespace RefHost
