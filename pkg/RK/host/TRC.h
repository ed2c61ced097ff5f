// TRC, the host's log.
#ifndef RK_HOST_TRC_H
#define RK_HOST_TRC_H

#include "RK/host/Long.h"

RK_HOST_API void TRC_Log(int32_t level, const char* package, const char* topic, const char* text);

#endif
