// The package's life.
#ifndef RK_BIRTH_H
#define RK_BIRTH_H

#include "RK/indep/frame/RK.h"

// Once before any other function, on the main thread. 0 or the first error; after a failure the package is dead.
// There is no second birth.
RK_API RK_Long RK_Birth();
// Once after the last. 0 or the first error met.
RK_API RK_Long RK_Death();
// Gives large blending scratch back.
RK_API RK_Long RK_FreeUpSomeMemory();

// 0 when the packages that the library needs, and the caller's idea of this one (version 17), agree; otherwise 7,
// with a report when the caller's differs. The packages are asked once per process.
RK_API RK_Long RK_CheckVersions(RK_Long caller, RK_Long version);
RK_API RK_Long RK_PkgObjectVersion();

// Retired: reports "Obsolete routine" and returns 515.
RK_API RK_Long RK_OverrideStdFuncs();

// Plug-in code needs no translation of its function pointers on this platform: 0, and null results.
RK_API RK_Long RK_IsCFM();
RK_API RK_Long RK_AddEntryToCFMMachoMaps();
RK_API void RK_GetCFMToMachoMapEntry(void* entry, void** result);
RK_API void RK_GetMachoToCFMMapEntry(void* entry, void** result);

#endif
