// A world through a kernel of whole numbers, one kernel for each channel.
#ifndef RK_CONVOLVE_H
#define RK_CONVOLVE_H

#include "RK/indep/frame/RK.h"

// Flags of a convolution.
constexpr uint32_t RK_KERNEL_1D = 1;  // one row of `size` entries instead of size x size
constexpr uint32_t RK_KERNEL_NORMALISE =
    2;  // divide each channel by the sum of its kernel, not by 255 * entries
constexpr uint32_t RK_KERNEL_NO_CLAMP =
    4;  // leave results as they come, at the integer depths their low bits
constexpr uint32_t RK_KERNEL_VERTICAL = 0x20;  // with RK_KERNEL_1D: the row lies along y

// Each pixel of `dst` becomes, channel by channel, the sum of kernel entry times pixel of `src` around the
// same place, divided by the channel's divisor and clamped to 0..full. `size` is odd. A kernel is an array of
// size * size entries, row by row from the top left (size entries with RK_KERNEL_1D), its middle entry over
// the pixel; it isn't flipped. What lies outside `src` adds nothing and the divisor stays, so that edges
// darken. A sum of entries of 0 divides by 1.
//
// At 8 and 16 bits sums are 32-bit and wrap, and the division truncates; at float every product and sum is
// rounded to float, row after row. `rect` is not read: all of `dst` is written. The worlds must not share
// pixels.
//
// `progress` (null: none): its progress_func alone is asked, after rows, whenever more than 2048 pixels were
// done since the last time, with the rows done and those in all; what isn't 0 ends the work and is returned,
// and rows done stay.
//
// 0, or 3 (reported, nothing written) for a null world, pixels or kernel, a negative or even `size`, worlds
// of unequal or unknown depth.
RK_API RK_Long RK_Convolve(RK_ProgressInfo* progress, RK_LayerDef* src, const GEO_Rect* rect, uint32_t flags,
                           int32_t size, const int32_t* a_kernel, const int32_t* r_kernel,
                           const int32_t* g_kernel, const int32_t* b_kernel, RK_LayerDef* dst);

#endif
