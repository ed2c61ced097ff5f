// SHIM, the host's platform layer.
#ifndef RK_HOST_SHIM_H
#define RK_HOST_SHIM_H

#include "RK/host/Long.h"

// Between the two, bitmaps are made with as few window-system objects as the platform allows. Brackets nest.
RK_HOST_API void SHIM_BeginGdiMinimalisticWindowCreationMode();
RK_HOST_API void SHIM_EndGdiMinimalisticWindowCreationMode();

// The pen of the current port. Line draws from the pen's place to one dh to the right and dv down, both places included,
// and leaves the pen there; one of no length is a dot.
RK_HOST_API void MoveTo(int16_t h, int16_t v);
RK_HOST_API void Line(int16_t dh, int16_t dv);

#endif
