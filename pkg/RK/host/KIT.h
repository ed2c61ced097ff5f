// KIT, the host's base package: memory, reports, message lookup, deferred reporting, processor facts.
#ifndef RK_HOST_KIT_H
#define RK_HOST_KIT_H

#include <exception>

#include "RK/host/Long.h"

// ---- Processor and threads ------------------------------------------------------------------------------

// Non-zero when code of that kind may run. The library reads it at birth; the blurs read it at each call.
struct KIT_CPU_Data {
    uint32_t has_sse2;   // integer SSE2 vector code
    uint32_t has_ssse3;  // byte-shuffle vector code
};
RK_HOST_API extern const KIT_CPU_Data* KIT_G_CPU_DataP;

// Threads that a slot's body may spread work over, at least 1. Callers size per-thread scratch by it.
RK_HOST_API int32_t KIT_GetNumThreads();

// ---- Reports --------------------------------------------------------------------------------------------
// A report never throws and never stops the caller. A location is 0x250000 ORed with a report site.

// A broken internal promise. `line` is a source line, `zero` is 0.
RK_HOST_API void KIT_ReportFailedVerification(uint32_t location, int32_t line, int32_t zero, const char* text);

// An error the user should see, with its text; the library passes severity 8.
RK_HOST_API void KITp_ReportErrString(uint32_t location, int32_t severity, const char* text);

// An error whose text stands in KITp_G_buffer; the library passes severity 16.
RK_HOST_API void KITp_ReportError(uint32_t location, int32_t severity);

constexpr size_t KIT_kBufferBytes = 1024;
RK_HOST_API extern char KITp_G_buffer[KIT_kBufferBytes];
RK_HOST_API extern char KITp_G_err_buf[KIT_kBufferBytes];

// Maps a standard exception to a result code and reports it: out of memory to 4, anything else to 3.
RK_HOST_API RK_Long KIT_TranslateAndReportException(const std::exception& error);

// Between Start and End reports are held back; End lets them out in their order. Brackets nest.
struct KIT_DeferredReporting {
    void* held;
};
RK_HOST_API RK_Long KIT_DeferredReportingStart(int32_t severity, KIT_DeferredReporting* cookie);
RK_HOST_API RK_Long KIT_DeferredReportingEnd(int32_t zero1, int32_t zero2, KIT_DeferredReporting* cookie);

// ---- Messages -------------------------------------------------------------------------------------------

struct KIT_ZMessage {
    const char* text;  // "key=English message"
    intptr_t words[3];
};
struct KIT_ZRef {
    const char* package;
    int32_t count;  // entries, with the ending one
    const KIT_ZMessage* messages;
};

// The text to show for an entry, in the user's language; without a translation the entry's own English message.
// Never fails and never returns null: an index outside the table gives an empty text.
RK_HOST_API const char* KIT_ZLookupLStrCache(const KIT_ZRef* zref, int32_t index, int32_t zero1, int32_t zero2);

// ---- Memory ---------------------------------------------------------------------------------------------
// Blocks are aligned to 8 at least. Failure gives null; the forms with a name report it first.

RK_HOST_API void* KIT_AllocatePtr(size_t bytes, const char* name);
RK_HOST_API void* KIT_AllocatePtrQuiet(size_t bytes);
RK_HOST_API void* KIT_ResizePtr(void* block, size_t bytes, const char* name);  // null leaves the block as it was
RK_HOST_API void KIT_FreePtr(void* block);                                    // null is allowed

// A handle is a movable block behind one more pointer.
using KIT_Handle = void**;
RK_HOST_API KIT_Handle KIT_AllocateHandle(size_t bytes, const char* name);
RK_HOST_API KIT_Handle KIT_AllocateHandleClear(size_t bytes, const char* name);
RK_HOST_API KIT_Handle KIT_AllocateHandleQuiet(size_t bytes);
RK_HOST_API RK_Long KIT_ResizeHandle(KIT_Handle handle, size_t bytes, const char* name);  // 0 or 4
RK_HOST_API size_t KIT_GetHandleSize(KIT_Handle handle);
RK_HOST_API void KIT_FreeHandle(KIT_Handle handle);  // null is allowed

// Tells the host of scratch held outside its sight: positive when made, the same negative when released.
RK_HOST_API void KIT_AccountAllocation(int64_t bytes);

// Objects of derived classes are allocated from, and go back to, the host. An allocation that fails makes the
// new-expression null.
class RK_HOST_API KIT_MemTrackedObject {
  public:
    static void* operator new(size_t bytes) noexcept;
    static void* operator new(size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) noexcept;
    static void operator delete(void*, void*) noexcept {}
};

// 0 when the package agrees with the version that the caller was built against, 7 otherwise.
RK_HOST_API RK_Long KIT_CheckVersions(RK_Long caller, RK_Long version);

#endif
