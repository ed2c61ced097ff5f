// What a stretch of a kernel's row adds to the sums of a run of pixels: the hot part of a convolution.
#ifndef RKP_CONVOLVE_TAPS_H
#define RKP_CONVOLVE_TAPS_H

#include <type_traits>

#include "RK/indep/frame/RKp_Depth.h"

// A kernel entry, and a sum of products; unsigned at the integer depths, because they wrap.
template <class P>
using RKp_ConvolveSum = std::conditional_t<std::is_same_v<P, RK_PixelFloat>, float, uint32_t>;

// At most so many taps in a call.
constexpr int32_t RKp_kMostTaps = 64;

// sums[4 * i + c] += channel c of in[i + t] * taps[4 * t + c], for every pixel i below `pixels` and every tap
// t below `count`, the taps of a pixel in order. Reads in[0 .. pixels + count - 2].
template <class P>
using RKp_AddTapsFunc = void(const P* in, int32_t pixels, const RKp_ConvolveSum<P>* taps, int32_t count,
                             RKp_ConvolveSum<P>* sums);

template <class P>
void RKp_AddTaps(const P* in, int32_t pixels, const RKp_ConvolveSum<P>* taps, int32_t count,
                 RKp_ConvolveSum<P>* sums);

// The same sums at 8 and 16 bits, for taps that are signed numbers of 16 bits.
template <class P>
void RKp_AddTaps_SSE2(const P* in, int32_t pixels, const RKp_ConvolveSum<P>* taps, int32_t count,
                      RKp_ConvolveSum<P>* sums);

#endif
