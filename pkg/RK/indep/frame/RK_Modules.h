// Acceleration modules: shared objects that put their own functions into the standard function table at
// start-up.
//
// A module is a file with the extension ".RVX" in the folder that the host scans. It exports its routines
// with MOD_EXPORT_ROUTINES (RK/host/MOD.h). A routine is taken for an acceleration module when its type is
// RK_kModuleType, its flags have RK_kModuleFlag, and its property RK_kModuleVersionKey is RK_kModuleVersion;
// others are passed over in silence. Routines of one file are taken from the last to the first.
//
// The entry is called with RK_kModuleLoad once, on the main thread, before any pixel work. The table is whole
// by then, as far as the processor's variants and the modules before this one have filled it: a module may
// keep what a slot held, and call it. What it writes must have the slot's function type and keep its
// contract: same arguments, same results for every pixel, no exception let out, callable from any thread that
// calls the export.
//
// A load that returns other than 0, or throws, is a failure: the whole table is put back as it was before,
// the routine is let go, and the failure is reported. Neither the package nor other modules are touched by
// it. A module that was loaded gets RK_kModuleUnload once, at the package's death; its result is reported to
// the host as that of RK_Death.
#ifndef RK_MODULES_H
#define RK_MODULES_H

#include "RK/host/MOD.h"
#include "RK/indep/frame/RK_OverFuncs.h"

constexpr const char* RK_kModuleExtension = ".RVX";
constexpr uint32_t RK_kModuleType = MOD_Type('e', 'F', 'S', 'T');
constexpr uint32_t RK_kModuleFlag = 1u << 3;
constexpr const char* RK_kModuleVersionKey = "vers";
constexpr int32_t RK_kModuleVersion = 2;

// The entry is a MOD_EntryFunc: its `parameters` are an RK_ModuleParams.
constexpr RK_Long RK_kModuleLoad = 1;
constexpr RK_Long RK_kModuleUnload = 2;

// Valid during the call only; the module copies what it wants to keep. The tables that it leads to live until
// the module has been unloaded, but for the two colour tables, which are gone, and null, in an unload.
struct RK_ModuleParams {
    int16_t version_major, version_minor;  // 2, 1

    // Shows the user an error with a small number of the module's choice. Returns 0.
    RK_Long (*report_error)(RK_Long code, const char* text);
    // The callback block that effect plug-ins get; null in hosts that have no plug-in doors.
    const void* callbacks;

    // 256 rows of 256 bytes: row a holds a * x / 255 rounded, and min(255, x * 255 / a rounded).
    const uint8_t* fcm_table;
    const uint8_t* fcd_table;

    // The host program's runtime: memory that crosses the border must come from and go back to it.
    void* (*calloc)(size_t count, size_t bytes);
    void (*free)(void* block);
    void* (*malloc)(size_t bytes);
    void* (*realloc)(void* block, size_t bytes);
    void (*exit)(int status);

    // RK_kSlotCount slots; RK_GetSlotInfo tells their names.
    void** over_funcs;
};

#endif
