// The plug-in scan: shared objects in a folder, their routine tables, and the routines that are in use.
#include "RK/host/MOD.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "RK/host/TRC.h"
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

constexpr int32_t kMostRoutines = 1024, kMostProperties = 64;

std::string g_folder;

std::string pluginFolder() {
    if (!g_folder.empty()) return g_folder;
    const char* named = std::getenv("RK_PLUGIN_PATH");
    return named ? named : "";
}

std::string extensionOf(const std::string& name) {
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? "" : name.substr(dot);
}

// The files of the type below the folder. A folder behind a symbolic link is not entered: it may lead back.
// (The runtime's own directory iterators end the program when memory runs out.)
void findFiles(const std::string& folder, uint32_t type, std::vector<std::string>& found) {
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder.c_str()), closedir);
    if (!stream) return;
    while (const dirent* entry = readdir(stream.get())) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        const std::string path = folder + "/" + name;
        struct stat status;
        if (lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
            findFiles(path, type, found);
        else if (RefHost::HasExtensionOf(extensionOf(name), type) && stat(path.c_str(), &status) == 0 &&
                 S_ISREG(status.st_mode))
            found.push_back(path);
    }
}

// By name, so that a scan has one order on every machine.
std::vector<std::string> filesOfType(const std::string& folder, uint32_t type) {
    std::vector<std::string> found;
    findFiles(folder, type, found);
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
    if (!isLoaded(reinterpret_cast<const void*>(routine.entry)) || !isLoaded(routine.name, object))
        return false;
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

// The log tells whoever wonders where a plug-in has gone.
void passOver(const std::string& path, const char* why) {
    TRC_Log(5, "MOD", "Scan", ("passed over " + path + ": " + (why ? why : "not loadable")).c_str());
}

// `*out` stays null for a file that is no shared object or has no sound routine table: such a file is passed
// over, and that is no failure. 0 or 4.
RK_Long load(const std::string& path, MOD_File** out) {
    *out = nullptr;
    if (!RefHost::IsWholeSharedObject(path)) {
        passOver(path, "no whole shared object of this program's kind");
        return 0;
    }
    void* object = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!object) {
        passOver(path, dlerror());
        return 0;
    }
    RK_Long error = 0;
    const auto* table = static_cast<const MOD_RoutineTable*>(dlsym(object, "MOD_G_RoutineTable"));
    if (!table || !isSound(table))
        passOver(path, table ? "its routine table is nonsense" : "it has no routine table");
    else if (void* place = RefHost::AllocateBlock(sizeof(MOD_File)))
        *out = new (place) MOD_File{object, table, 1};
    else
        error = 4;
    if (!*out) dlclose(object);
    return error;
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
            MOD_File* file;
            keepFirst(load(path, &file));
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
