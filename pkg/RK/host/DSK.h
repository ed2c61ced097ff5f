// DSK, the host's file package.
#ifndef RK_HOST_DSK_H
#define RK_HOST_DSK_H

#include "RK/host/Long.h"

// Tells the scan that files with `extension` (with its dot) are of `type`.
RK_HOST_API RK_Long DSK_AddExtensionMap(const char* extension, uint32_t type);

// ---- Files ----------------------------------------------------------------------------------------------
// Results: 0, 3 for a file that cannot be opened, read or written as asked, 4 for memory.

struct DSK_File;
RK_HOST_API RK_Long DSK_OpenToRead(const char* path, DSK_File** file);
// A file that appears under its path whole, when it is closed, or not at all.
RK_HOST_API RK_Long DSK_CreateWhole(const char* path, DSK_File** file);
// All the bytes, or 3.
RK_HOST_API RK_Long DSK_Read(DSK_File* file, void* bytes, size_t count);
RK_HOST_API RK_Long DSK_Write(DSK_File* file, const void* bytes, size_t count);
// Bytes from here to the end of a file being read; 0 for one being written.
RK_HOST_API int64_t DSK_BytesLeft(DSK_File* file);
// A running sum over all bytes read or written so far, and their number.
RK_HOST_API uint64_t DSK_Checksum(DSK_File* file, int64_t* count);
// Releases the file. One that was created is moved to its path if `keep`, and is gone otherwise; so is one whose
// writing failed, which gives 3.
RK_HOST_API RK_Long DSK_Close(DSK_File* file, bool keep);
RK_HOST_API RK_Long DSK_Delete(const char* path);

RK_HOST_API RK_Long DSK_CheckVersions(RK_Long caller, RK_Long version);

#endif
