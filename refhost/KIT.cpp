#include "refhost/Internal.h"

RK_Long KIT_CheckVersions(RK_Long, RK_Long version) { return RefHost::CheckPackage("KIT", version); }
