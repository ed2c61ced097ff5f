#include "RK/indep/filter/RKp_Font.h"

namespace {

constexpr const char* const kDrawn[][RKp_kGlyphBytes] = {
#define RKp_GLYPHS(...) {__VA_ARGS__},
#include "RK/indep/filter/RKp_Font.def"
#undef RKp_GLYPHS
};
constexpr size_t kPerLine = 8, kColumns = 6;
static_assert(sizeof kDrawn / sizeof kDrawn[0] * kPerLine == RKp_kGlyphCount, "a glyph for every code");

constexpr bool wellDrawn() {
    for (const auto& lines : kDrawn) {
        for (const char* line : lines) {
            for (size_t i = 0; i < kPerLine * (kColumns + 1) - 1; ++i) {
                const bool gap = i % (kColumns + 1) == kColumns;
                if (gap ? line[i] != ' ' : line[i] != '#' && line[i] != '.') return false;
            }
            if (line[kPerLine * (kColumns + 1) - 1] != '\0') return false;
        }
    }
    return true;
}
static_assert(wellDrawn(), "each line draws eight glyphs of six columns, a blank between them");

constexpr uint8_t rowOf(size_t code, size_t from_bottom) {
    const char* line =
        kDrawn[code / kPerLine][RKp_kGlyphBytes - 1 - from_bottom] + code % kPerLine * (kColumns + 1);
    int bits = 0;
    for (size_t column = 0; column < kColumns; ++column)
        if (line[column] == '#') bits |= 0x80 >> column;
    return static_cast<uint8_t>(bits);
}

constexpr auto table() {
    std::array<uint8_t, RKp_kGlyphCount * RKp_kGlyphBytes> bytes{};
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = rowOf(i / RKp_kGlyphBytes, i % RKp_kGlyphBytes);
    return bytes;
}

}  // namespace

const std::array<uint8_t, RKp_kGlyphCount * RKp_kGlyphBytes> RKp_G_Font = table();
