// Text on a world, in a small built-in font.
#ifndef TOOL_LABEL_H
#define TOOL_LABEL_H

#include <string>

#include "RK/indep/world/RK_World.h"

// The size of one character's cell at scale 1.
constexpr int32_t kLabelAdvance = 6, kLabelHeight = 9;

// Draws the text on an 8-bit world, its top left corner at (x, y); parts outside are left out. The font has
// small letters, digits and the dash; anything else is a gap.
void DrawLabel(RK_World& world, int32_t x, int32_t y, int32_t scale, const std::string& text,
               RK_Pixel8 colour);

#endif
