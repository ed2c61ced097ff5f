#include "RK/host/RVFX.h"

#include "refhost/Internal.h"

RK_Long RVFX_CheckVersions(RK_Long, RK_Long version) { return RefHost::CheckPackage("RVFX", version); }
