// The glyphs of debug text, as bytes.
#ifndef RKP_FONT_H
#define RKP_FONT_H

#include <array>
#include <cstddef>
#include <cstdint>

constexpr size_t RKp_kGlyphCount = 128, RKp_kGlyphBytes = 10;

// The glyph of a code begins at code * 10. A byte is a row, the bottom one first; its high six bits are the
// columns, the top bit the leftmost.
extern const std::array<uint8_t, RKp_kGlyphCount * RKp_kGlyphBytes> RKp_G_Font;

#endif
