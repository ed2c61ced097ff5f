#include "RK/indep/passes/RK_Premul.h"

#include <algorithm>
#include <type_traits>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/world/RK_WorldDepth.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

// ---- Against black --------------------------------------------------------------------------------------

template <class P>
RKp_ScanFunc<P>* blackScan(bool forward) {
    if constexpr (std::is_same_v<P, RK_Pixel8>)
        return forward ? RKp_Slot<RKp_kSlot_Premul_Black8>() : RKp_Slot<RKp_kSlot_Unmul_Black8>();
    else if constexpr (std::is_same_v<P, RK_Pixel16>)
        return forward ? RKp_Slot<RKp_kSlot_Premul_Black16>() : RKp_Slot<RKp_kSlot_Unmul_Black16>();
    else
        return forward ? RKp_Slot<RKp_kSlot_Premul_BlackFloat>() : RKp_Slot<RKp_kSlot_Unmul_BlackFloat>();
}

template <class P>
struct BlackPass {
    RKp_ScanFunc<P>* scan;
    char* first;
    ptrdiff_t rowbytes;
    int32_t width;

    static RK_Long row(void* refcon, RK_Long, RK_Long i, RK_Long) {
        const BlackPass& pass = *static_cast<BlackPass*>(refcon);
        return pass.scan(pass.width, nullptr, reinterpret_cast<P*>(pass.first + i * pass.rowbytes));
    }
};

// ---- Against a colour -----------------------------------------------------------------------------------

template <class P, class From>
P matteColour(const From& color) {
    return RKp_ConvertPixel<P>(color);
}
// Kept: a product in float, where other conversions of 8 bits round one in double.
template <>
RK_PixelFloat matteColour<RK_PixelFloat>(const RK_Pixel8& color) {
    const auto channel = [](uint8_t c) { return static_cast<float>(c) * 0.003921569f; };
    return {channel(color.alpha), channel(color.red), channel(color.green), channel(color.blue)};
}

// The colour's share m = mul(k, inv a) is taken away, at the integer depths not below 0, and the rest
// divided.
template <class P>
typename RKp_Depth<P>::Wide withoutMatte(typename RKp_Depth<P>::Wide c, typename RKp_Depth<P>::Wide k,
                                         typename RKp_Depth<P>::Wide a) {
    using D = RKp_Depth<P>;
    typename D::Wide rest = c - D::mul(k, D::inv(a));
    if constexpr (std::is_integral_v<typename D::Wide>) rest = std::max(rest, 0);
    return D::div(a, rest);
}

template <class P>
struct ColourPass {
    P colour;
    int32_t width;

    // One call for each row: `in` and `out` are its first pixels. rule(channel, matte channel, alpha).
    template <class Skip, class Rule>
    RK_Long row(const P* in, P* out, Skip skip, Rule rule) const {
        using C = typename RKp_Depth<P>::Channel;
        for (int32_t i = 0; i < width; ++i) {
            const P p = in[i];
            if (skip(p.alpha))
                out[i] = p;
            else
                out[i] = {p.alpha, static_cast<C>(rule(p.red, colour.red, p.alpha)),
                          static_cast<C>(rule(p.green, colour.green, p.alpha)),
                          static_cast<C>(rule(p.blue, colour.blue, p.alpha))};
        }
        return RK_kOK;
    }
    using Wide = typename RKp_Depth<P>::Wide;
    static RK_Long forwardRow(void* refcon, RK_Long, RK_Long, void* in, void* out) {
        return static_cast<ColourPass*>(refcon)->row(
            static_cast<const P*>(in), static_cast<P*>(out), [](Wide a) { return a == RKp_Depth<P>::kFull; },
            [](Wide c, Wide k, Wide a) { return RKp_Depth<P>::lerp(k, c, a); });
    }
    static RK_Long backwardRow(void* refcon, RK_Long, RK_Long, void* in, void* out) {
        return static_cast<ColourPass*>(refcon)->row(
            static_cast<const P*>(in), static_cast<P*>(out),
            [](Wide a) { return a == 0 || a == RKp_Depth<P>::kFull; }, withoutMatte<P>);
    }
};

// The pass visits a column one pixel wide, so that its pixel function is called once for each row.
template <class P>
RK_Long premulColour(RK_LayerDef* src, const P& colour, RK_Long forward, const GEO_Rect* rect,
                     RK_LayerDef* dst) {
    ColourPass<P> pass = {colour, 0};
    RK_PixelFunc* row = forward != 0 ? ColourPass<P>::forwardRow : ColourPass<P>::backwardRow;
    if (rect == nullptr) {
        // A narrowed record, not a rectangle: a world may be higher than one can tell.
        pass.width = std::min(src->width, dst->width);
        RK_LayerDef column = *dst;
        column.width = std::min(dst->width, 1);
        return RK_Iterate(nullptr, 0, 0, src, nullptr, &pass, row, &column);
    }
    const int32_t left = rect->left;
    const int64_t to_edge = int64_t{std::min(src->width, dst->width)} - left;
    pass.width = static_cast<int32_t>(std::max<int64_t>(0, std::min<int64_t>(rect->right - left, to_edge)));
    // The column beyond the last one that a rectangle can tell wraps, and is empty.
    const GEO_Rect column = {rect->top, rect->left, rect->bottom, static_cast<int16_t>(left + 1)};
    return RK_Iterate(nullptr, 0, 0, src, &column, &pass, row, dst);
}

template <class Colour>
RK_Long premulColourRect(RK_LayerDef* src, const Colour* color, RK_Long forward, const GEO_Rect* rect,
                         RK_LayerDef* dst, const char* unequal, const char* bad_depth) {
    if (src == nullptr || dst == nullptr) return RKp_ReportBadParam(RKp_kSiteIterate);
    const int32_t depth = RKp_WorldDepth(src);
    if (depth != RKp_WorldDepth(dst)) return RKp_VERIFICATION(unequal);
    return RKp_ForDepth(depth, bad_depth, [&](auto tag) {
        using P = typename decltype(tag)::Pixel;
        return premulColour<P>(src, color == nullptr ? P{} : matteColour<P>(*color), forward, rect, dst);
    });
}

// Kept: the float form tells of the 16-bit one.
constexpr const char* kUnequal16 = "worlds must be same bitdepth in RK_PremulColorRect16()";

}  // namespace

RK_Long RK_Premul(RK_EffectRef effect_ref, RK_Long forward, RK_LayerDef* world) {
    return RKp_Slot<RKp_kSlot_PremulRect>()(effect_ref, forward, nullptr, world);
}
RK_Long RK_PremulRect(RK_EffectRef effect_ref, RK_Long forward, const GEO_Rect* rect, RK_LayerDef* world) {
    return RKp_Slot<RKp_kSlot_PremulRect>()(effect_ref, forward, rect, world);
}

RK_Long RK_PremulRect_S(RK_EffectRef, RK_Long forward, const GEO_Rect* rect, RK_LayerDef* world) {
    if (world == nullptr) return RKp_ReportBadParam(RKp_kSiteIterate);
    return RKp_ForDepth(RKp_WorldDepth(world), RKp_kBadDepthText, [&](auto tag) -> RK_Long {
        using P = typename decltype(tag)::Pixel;
        const int32_t left = rect ? rect->left : 0, top = rect ? rect->top : 0;
        const int32_t width = rect ? rect->right - left : world->width;
        const int32_t height = rect ? rect->bottom - top : world->height;
        // A height of -1 would mean one piece of work.
        if (width < 1 || height < 1) return RK_kOK;
        const ptrdiff_t rowbytes = world->rowbytes;
        char* first =
            static_cast<char*>(world->data) + top * rowbytes + left * static_cast<ptrdiff_t>(sizeof(P));
        BlackPass<P> pass = {blackScan<P>(forward != 0), first, rowbytes, width};
        return RK_IterateGeneric_Static(height, &pass, BlackPass<P>::row);
    });
}

RK_Long RK_PremulColorRect(RK_EffectRef, RK_LayerDef* src, const RK_Pixel8* color, RK_Long forward,
                           const GEO_Rect* rect, RK_LayerDef* dst) {
    return premulColourRect(src, color, forward, rect, dst,
                            "worlds must be same bitdepth in RK_PremulColorRect()",
                            "Unknown world bitdepth in RK_PremulColorRect");
}
RK_Long RK_PremulColorRect16(RK_EffectRef, RK_LayerDef* src, const RK_Pixel16* color, RK_Long forward,
                             const GEO_Rect* rect, RK_LayerDef* dst) {
    return premulColourRect(src, color, forward, rect, dst, kUnequal16,
                            "Unknown world bitdepth in RK_PremulColorRect16");
}
RK_Long RK_PremulColorRectFloat(RK_EffectRef, RK_LayerDef* src, const RK_PixelFloat* color, RK_Long forward,
                                const GEO_Rect* rect, RK_LayerDef* dst) {
    return premulColourRect(src, color, forward, rect, dst, kUnequal16,
                            "Unknown world bitdepth in RK_PremulColorRectFloat");
}

RK_Long RK_PremulColor(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_Pixel8* color, RK_Long forward,
                       RK_LayerDef* dst) {
    return RK_PremulColorRect(effect_ref, src, color, forward, nullptr, dst);
}
RK_Long RK_PremulColor16(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_Pixel16* color, RK_Long forward,
                         RK_LayerDef* dst) {
    return RK_PremulColorRect16(effect_ref, src, color, forward, nullptr, dst);
}
RK_Long RK_PremulColorFloat(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_PixelFloat* color,
                            RK_Long forward, RK_LayerDef* dst) {
    return RK_PremulColorRectFloat(effect_ref, src, color, forward, nullptr, dst);
}
