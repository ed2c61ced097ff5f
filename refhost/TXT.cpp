#include "RK/host/TXT.h"

#include "refhost/Internal.h"

RK_Long TXT_CheckVersions(RK_Long, RK_Long version) { return RefHost::CheckPackage("TXT", version); }
