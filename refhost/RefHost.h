// What a program may set and ask of the reference host.
#ifndef REFHOST_H
#define REFHOST_H

#include <string>
#include <vector>

#include "RK/host/GEO.h"
#include "RK/host/KIT.h"

namespace RefHost {

// ---- Processor ------------------------------------------------------------------------------------------
// What the machine has, until a program says otherwise. Set before RK_Birth.
RK_HOST_API KIT_CPU_Data DetectCPU();
RK_HOST_API void SetCPU(KIT_CPU_Data facts);
RK_HOST_API void SetThreadCount(int32_t count);  // 0: as many as the machine has

// ---- Reports --------------------------------------------------------------------------------------------
// Memory: a named block could not be had; the text is its name. WorldAllocation: severity is the code.
enum class ReportKind { Verification, Error, BufferedError, Exception, Memory, WorldAllocation };
struct Report {
    ReportKind kind;
    uint32_t location;
    int32_t severity;  // the source line of a verification
    std::string text;
};
// Reports are kept, oldest first, and printed to standard error unless a program turns that off.
RK_HOST_API std::vector<Report> TakeReports();  // hands them out and forgets them
RK_HOST_API void PrintReports(bool on);

// The log lines, oldest first.
RK_HOST_API std::vector<std::string> TakeLog();

// ---- Memory ---------------------------------------------------------------------------------------------
struct MemoryUse {
    int64_t blocks;     // live blocks of every kind
    int64_t bytes;      // in them
    int64_t accounted;  // what KIT_AccountAllocation has been told
};
RK_HOST_API MemoryUse Memory();
// The n-th allocation from now on fails, once; 0: none does. Allocations counts those made since.
RK_HOST_API void FailAllocation(int64_t n);
RK_HOST_API int64_t AllocationsSince();

// ---- Plug-ins -------------------------------------------------------------------------------------------
// Folder that the scan walks, instead of the one that RK_PLUGIN_PATH names. Empty: that one again.
RK_HOST_API void SetPluginFolder(const std::string& folder);

// ---- Drawing --------------------------------------------------------------------------------------------
// Where the lines of the platform layer go, both ends included. Null, as at the start: nowhere.
using LineFunc = void(void* refcon, Point from, Point to);
RK_HOST_API void SetLineFunc(LineFunc* draw, void* refcon);

// ---- Calls that fail ------------------------------------------------------------------------------------
// The next call of a host operation, named as in its header, fails with `code`, once. Known to:
// GEO_PrepareFCMD, GEO_UnprepareFCMD, NZ_GetPrimeSizedTable, ZIN_GetLNKAddressProc (gives null),
// RAS_NewWorld, RAS_LoadLockPixels, SEQ_New, SEQ_Dispose, DSK_AddExtensionMap, MOD_InstallScan, MOD_RegisterRoutine,
// MOD_PrepRoutine, MOD_UnprepRoutine, MOD_UnregisterRoutine.
RK_HOST_API void FailCall(const std::string& operation, RK_Long code);

// ---- Versions and platform ------------------------------------------------------------------------------
RK_HOST_API void SetPackageVersion(const std::string& package, RK_Long version);
// How often the package's version has been checked.
RK_HOST_API int32_t PackageChecks(const std::string& package);
// Open brackets of the minimalistic window-creation mode.
RK_HOST_API int32_t MinimalisticBrackets();

}  // namespace RefHost

#endif
