// SHIM, the host's platform layer.
#ifndef RK_HOST_SHIM_H
#define RK_HOST_SHIM_H

#include "RK/host/Long.h"

// Between the two, bitmaps are made with as few window-system objects as the platform allows. Brackets nest.
RK_HOST_API void SHIM_BeginGdiMinimalisticWindowCreationMode();
RK_HOST_API void SHIM_EndGdiMinimalisticWindowCreationMode();

#endif
