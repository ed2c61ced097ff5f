// The package's life.
#ifndef RK_BIRTH_H
#define RK_BIRTH_H

#include "RK/indep/frame/RK.h"

// Once before any other function, on the main thread. There is no second birth. 0 or the first error: 4 for want of
// memory, 1 without an interface broker, or what a package of the host returned. After a failure the package is
// dead, and RK_Death, the only call still allowed, frees what had been made. A module that fails to load is
// reported and left out, and is no failure of birth.
RK_API RK_Long RK_Birth();
// Once after the last. Everything is freed whatever fails; 0 or the first error met.
RK_API RK_Long RK_Death();
// Gives large blending scratch back: for 1024 pixels stays. 0, or 4 when the smaller rows cannot be had.
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
