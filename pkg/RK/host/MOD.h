// MOD, the host's plug-in package: files of routines, found by a scan.
#ifndef RK_HOST_MOD_H
#define RK_HOST_MOD_H

#include "RK/host/Long.h"

// A four-character type, first character in the lowest byte.
constexpr uint32_t MOD_Type(char a, char b, char c, char d) {
    return uint32_t(uint8_t(a)) | uint32_t(uint8_t(b)) << 8 | uint32_t(uint8_t(c)) << 16 |
           uint32_t(uint8_t(d)) << 24;
}

struct MOD_File;     // a plug-in file that the scan has loaded
struct MOD_Routine;  // a registered routine

struct MOD_RoutineInfo {
    uint32_t type;
    uint32_t flags;
    char name[64];
};

using MOD_EntryFunc = RK_Long(RK_Long selector, void* parameters);

// The scan calls `per_file` for every file of the type, then `end_of_scan` once; either may be null. A non-zero
// result of either is MOD_InstallScan's result; the remaining files are still visited.
using MOD_FileFunc = RK_Long(void* refcon, MOD_File* file);
using MOD_EndOfScanFunc = RK_Long(void* refcon);
RK_HOST_API RK_Long MOD_InstallScan(uint32_t type, void* refcon, MOD_FileFunc* per_file,
                                    MOD_EndOfScanFunc* end_of_scan);

RK_HOST_API int32_t MOD_GetRoutineCount(MOD_File* file);
RK_HOST_API RK_Long MOD_GetRoutineInfo(MOD_File* file, int32_t index, MOD_RoutineInfo* info);
// Reads a 32-bit property of a routine; 3 when it has none of that key.
RK_HOST_API RK_Long MOD_GetModPropsProp(MOD_File* file, int32_t index, const char* key, int32_t* value);

RK_HOST_API RK_Long MOD_RegisterRoutine(MOD_File* file, int32_t index, MOD_Routine** out);
RK_HOST_API RK_Long MOD_UnregisterRoutine(MOD_Routine* routine);
// Makes the routine callable and gives its entry; Unprep takes that back.
RK_HOST_API RK_Long MOD_PrepRoutine(MOD_Routine* routine, MOD_EntryFunc** entry);
RK_HOST_API RK_Long MOD_UnprepRoutine(MOD_Routine* routine);

// ---- What a plug-in file holds --------------------------------------------------------------------------
// A file of routines is a shared object that exports a MOD_RoutineTable under the name MOD_G_RoutineTable. A file
// without it, or with a negative count, a null entry or a pointer that leads nowhere in it, is passed over.

struct MOD_Property {
    const char* key;
    int32_t value;
};
struct MOD_RoutineEntry {
    uint32_t type;
    uint32_t flags;
    const char* name;
    const MOD_Property* properties;  // ended by a null key; at most 64; null: none
    MOD_EntryFunc* entry;
};
struct MOD_RoutineTable {
    int32_t count;  // 0 to 1024
    const MOD_RoutineEntry* routines;
};

// Written once in a plug-in's source, with a semicolon: exports the array of its routines.
#define MOD_EXPORT_ROUTINES(array)                               \
    extern "C" RK_API const MOD_RoutineTable MOD_G_RoutineTable; \
    const MOD_RoutineTable MOD_G_RoutineTable = {static_cast<int32_t>(sizeof(array) / sizeof((array)[0])), array}

RK_HOST_API RK_Long MOD_CheckVersions(RK_Long caller, RK_Long version);

#endif
