// TXT, a host package of which the library only checks the version.
#ifndef RK_HOST_TXT_H
#define RK_HOST_TXT_H

#include "RK/host/Long.h"

RK_HOST_API RK_Long TXT_CheckVersions(RK_Long caller, RK_Long version);

#endif
