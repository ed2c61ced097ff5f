// Lines of one pixel's width, and single pixels. What is drawn replaces what was there.
#ifndef RK_LINES_H
#define RK_LINES_H

#include "RK/indep/frame/RK.h"

// From start to end, x before y, in pixels; the parts outside the world are left out. Along its longer axis
// the line has one pixel at every place, from that nearest to the start to that nearest to the end. A line of
// no length is the pixel that holds the start. The colour is not clamped: at 8 and 16 bits the low bits of c
// * full + 0.5 are stored. 0, or 3 with a report for a null argument, null pixels or an unknown depth.
RK_API RK_Long RK_DrawLine(const double start[2], const double end[2], const RK_PixelFloat* colour,
                           RK_World* world);

// Sets the pixel at (x, y) and gives 1. Gives 0, and writes nothing, where that lies outside the world, for a
// null colour, world or pixels, and for a world of another depth.
RK_API RK_Long RK_SetPixel8(int32_t x, int32_t y, const RK_Pixel8* colour, RK_LayerDef* world);
RK_API RK_Long RK_SetPixel16(int32_t x, int32_t y, const RK_Pixel16* colour, RK_LayerDef* world);
RK_API RK_Long RK_SetPixelFloat(int32_t x, int32_t y, const RK_PixelFloat* colour, RK_LayerDef* world);

#endif
