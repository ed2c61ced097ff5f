#include "RK/indep/filter/RK_DebugPrint.h"

#include <cstdarg>
#include <cstdio>
#include <type_traits>

#include "RK/indep/composite/RK_Xfer.h"
#include "RK/indep/filter/RKp_Draw.h"
#include "RK/indep/filter/RKp_Font.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_World.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

constexpr size_t kTextBytes = 1024;

template <class P>
RK_PixelXferOpacity<P>* overOf() {
    if constexpr (std::is_same_v<P, RK_Pixel8>)
        return RKp_G_Xfer1_Opacity_table8[RK_Xfer_Over];
    else if constexpr (std::is_same_v<P, RK_Pixel16>)
        return RKp_G_Xfer1_Opacity_table16[RK_Xfer_Over];
    else
        return RKp_G_Xfer1_Opacity_tableF[RK_Xfer_Over];
}

// The glyph's first byte lies on row y + 10.
template <class P>
void drawGlyph(const RK_LayerDef& world, int64_t x, int64_t y, uint8_t code, const P& colour) {
    const uint8_t* rows = &RKp_G_Font[code * RKp_kGlyphBytes];
    for (int32_t row = 0; row < RK_kGlyphHeight; ++row) {
        P* pixel = RKp_PixelAt<P>(world, x, y + RK_kGlyphHeight - row);
        for (uint32_t bits = rows[row]; (bits & 0xFF) != 0; bits <<= 1, ++pixel)
            if (bits & 0x80)
                overOf<P>()(&colour, nullptr, static_cast<RK_Channel<P>>(RKp_Depth<P>::kFull), pixel);
    }
}

template <class P>
void drawText(const RK_LayerDef& world, int64_t left, int64_t y, const char* text, const P& colour) {
    int64_t x = left;
    for (; *text != '\0'; ++text) {
        const auto code = static_cast<uint8_t>(*text);
        if (code == '\r' || code >= RKp_kGlyphCount) continue;
        if (code == '\n') {
            x = left;
            y += RK_kGlyphHeight;
        } else if (code == '\t') {
            // Kept: a tab goes to one of four columns, wherever the pen was, and so may go back.
            x = x % 4 + 24;
        } else {
            const bool room =
                x >= 0 && x + RK_kGlyphWidth < world.width && y >= 0 && y + RK_kGlyphHeight < world.height;
            if (room) drawGlyph(world, x, y, code, colour);
            x += RK_kGlyphWidth;
        }
    }
}

}  // namespace

RK_Long RK_DebugPrint(RK_World* world, int32_t x, int32_t y, const RK_PixelFloat& colour, const char* format,
                      ...) {
    if (world == nullptr || world->record.data == nullptr || format == nullptr)
        return RKp_ReportBadParam(RKp_kSiteDebugPrint);
    char text[kTextBytes];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0) return RKp_ReportBadParam(RKp_kSiteDebugPrint);
    return RKp_ForDepth(static_cast<int32_t>(world->Depth()), RKp_kBadDepthText, [&](auto tag) -> RK_Long {
        using P = typename decltype(tag)::Pixel;
        drawText(world->record, x, y, text, RKp_DrawingColour<P>(colour));
        return RK_kOK;
    });
}
