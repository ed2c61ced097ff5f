// DSK, the host's file package.
#ifndef RK_HOST_DSK_H
#define RK_HOST_DSK_H

#include "RK/host/Long.h"

// Tells the scan that files with `extension` (with its dot) are of `type`.
RK_HOST_API RK_Long DSK_AddExtensionMap(const char* extension, uint32_t type);

RK_HOST_API RK_Long DSK_CheckVersions(RK_Long caller, RK_Long version);

#endif
