// LNK, the host's interface broker: procedures by name.
#ifndef RK_HOST_LNK_H
#define RK_HOST_LNK_H

#include "RK/host/Long.h"

using LNK_Proc = void();

// The address of one of the broker's own procedures, null for a name it does not know.
using LNK_AddressProc = LNK_Proc*(const char* name);

#endif
