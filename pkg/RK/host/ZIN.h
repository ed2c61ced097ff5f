// ZIN, the host's colour package, as far as the start of the package needs it.
#ifndef RK_HOST_ZIN_H
#define RK_HOST_ZIN_H

#include "RK/host/LNK.h"

// The entry of the interface broker; null when the host has none.
RK_HOST_API LNK_AddressProc* ZIN_GetLNKAddressProc();

#endif
