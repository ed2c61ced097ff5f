// What the sources of the reference host share among themselves.
#ifndef REFHOST_INTERNAL_H
#define REFHOST_INTERNAL_H

#include "refhost/RefHost.h"

namespace RefHost {

// Every block of the host comes from here: counted, aligned to 16, null when it cannot be had or
// FailAllocation says so. Nothing is reported.
void* AllocateBlock(size_t bytes);
// The block in a new size, moved if need be; null leaves it as it was.
void* ResizeBlock(void* block, size_t bytes);
size_t BlockBytes(const void* block);
void FreeBlock(void* block);

// Keeps a report, or holds it back while a bracket of deferred reporting is open. Never throws.
void Record(ReportKind kind, uint32_t location, int32_t severity, const char* text) noexcept;

// The code that FailCall set for this operation, and forgets it; 0 when none is set.
RK_Long FailingCall(const char* operation) noexcept;

// 0 when `version` is that of the package, else 7.
RK_Long CheckPackage(const char* package, RK_Long version) noexcept;

}  // namespace RefHost

#endif
