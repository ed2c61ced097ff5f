// The convolution of typed worlds; RK_Convolve.h tells what it does.
#ifndef RKP_CONVOLVE_H
#define RKP_CONVOLVE_H

#include "RK/indep/world/RK_WorldXT.h"

// Instantiated for the three depths.
template <class P>
RK_Long RKp_Convolve(RK_ProgressInfo* progress, RK_WorldX<P>* src, const GEO_Rect* rect, uint32_t flags,
                     int32_t size, const int32_t* a_kernel, const int32_t* r_kernel, const int32_t* g_kernel,
                     const int32_t* b_kernel, RK_WorldX<P>* dst);

#endif
