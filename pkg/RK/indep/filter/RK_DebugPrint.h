// Text on a world in a small built-in font: figures where they belong, while something is sought.
#ifndef RK_DEBUG_PRINT_H
#define RK_DEBUG_PRINT_H

#include "RK/indep/frame/RK.h"

// A character's cell.
constexpr int32_t RK_kGlyphWidth = 6, RK_kGlyphHeight = 10;

// Formats as printf does, cuts the text to 1023 characters, and lays it over the world, its first cell
// covering the columns x..x + 5 and the rows y + 1..y + 10. A character without room for its cell, and one
// column and row more, is left out whole, and the next one has its place all the same.
//   \r            nothing
//   \n            back to x, ten rows down
//   \t            to column (column % 4) + 24 of the world, which may lie to the left
//   above 127     nothing
//   others        a glyph; the codes below 32 are small symbols
// At 8 and 16 bits the colour is the low bits of c * full + 0.5, not clamped. 0, or 3 with a report for a
// null world, pixels or format, an unknown depth, or a format that cannot be had.
RK_API RK_Long RK_DebugPrint(RK_World* world, int32_t x, int32_t y, const RK_PixelFloat& colour,
                             const char* format, ...) __attribute__((format(printf, 5, 6)));

#endif
