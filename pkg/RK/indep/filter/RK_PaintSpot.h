// A kernel as a brush.
#ifndef RK_PAINT_SPOT_H
#define RK_PAINT_SPOT_H

#include "RK/indep/frame/RK.h"

// Mixes a colour into an 8-bit world around (x, y): each channel, alpha included, becomes (d * (255 - k) + c
// * k) / 255, where k is the kernel's entry over the pixel, 0 leaving it and 255 replacing it. Entries above
// 255 count as 32-bit numbers that wrap, their results being held to 255. `size` is odd. The kernel is an
// array of size * size entries, row by row from the top left; with RK_KERNEL_1D in `flags` of size entries, a
// row, or with RK_KERNEL_VERTICAL too a column. Other flags are not read. Parts of the spot outside the world
// are left out. `reference` is not used. 0, or 3 with a report and nothing drawn for a null world, pixels or
// kernel, another depth, a negative or even size.
RK_API RK_Long RK_PaintSpot(RK_EffectRef reference, int32_t x, int32_t y, uint32_t flags, int32_t size,
                            const uint32_t* kernel, RK_Pixel8 colour, RK_LayerDef* world);

#endif
