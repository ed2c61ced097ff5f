#include "RK/indep/passes/RK_Fill.h"

#include <algorithm>
#include <cstring>

#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "RK/indep/world/RKp_FillRow.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

// At float -0.0 counts too, and is stored as +0.0; NaN does not.
template <class P>
bool IsZero(const P& p) {
    return p.alpha == 0 && p.red == 0 && p.green == 0 && p.blue == 0;
}

// Two edges in order, each cut to 0..limit by itself.
struct Span {
    Span(int32_t from, int32_t to, int32_t limit)
        : first(Cut(std::min(from, to), limit)), end(Cut(std::max(from, to), limit)) {}
    static int32_t Cut(int32_t edge, int32_t limit) { return std::max(std::min(edge, limit), 0); }
    int32_t first, end;
};

template <class P>
void FillRows(const P& pixel, const GEO_Rect* rect, RK_LayerDef* record) {
    RK_WorldX<P> world(record, false);
    const Span x =
        rect ? Span(rect->left, rect->right, world.width()) : Span(0, world.width(), world.width());
    const Span y =
        rect ? Span(rect->top, rect->bottom, world.height()) : Span(0, world.height(), world.height());
    const int32_t count = x.end - x.first;
    if (count < 1) return;
    const bool zero = IsZero(pixel);
    for (int32_t row = y.first; row < y.end; ++row) {
        P* out = world.row(row) + x.first;
        if (zero)
            std::memset(static_cast<void*>(out), 0, static_cast<size_t>(count) * sizeof(P));
        else
            RKp_FillRow(out, count, pixel);
    }
}

template <class Colour>
RK_Long FillWith(const Colour* colour, const GEO_Rect* rect, RK_LayerDef* world, const char* bad_depth) {
    if (world == nullptr) return RKp_ReportBadParam(RKp_kSiteFill);
    return RKp_ForDepth(RKp_WorldDepth(world), bad_depth, [&](auto tag) {
        using P = typename decltype(tag)::Pixel;
        if (world->data == nullptr) return RKp_ReportBadParam(RKp_kSiteFill);
        FillRows(colour != nullptr ? RKp_ConvertPixel<P>(*colour) : P{}, rect, world);
        return RK_kOK;
    });
}

}  // namespace

RK_Long RK_Fill(RK_EffectRef, const RK_Pixel8* color, const GEO_Rect* rect, RK_LayerDef* world) {
    return FillWith(color, rect, world, "Unknown world bitdepth in RK_Fill");
}

RK_Long RK_Fill16(RK_EffectRef, const RK_Pixel16* color, const GEO_Rect* rect, RK_LayerDef* world) {
    return FillWith(color, rect, world, "Unknown world bitdepth in RK_Fill16");
}

RK_Long RK_FillFloat(RK_EffectRef, const RK_PixelFloat* color, const GEO_Rect* rect, RK_LayerDef* world) {
    return FillWith(color, rect, world, "Unknown world bitdepth in RK_FillFloat");
}
