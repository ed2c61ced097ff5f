#include "RK/indep/passes/RK_Iterate.h"

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RKp_IterateRowsT.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

// The tests of both passes; then pass(tag, from, to) at the worlds' depth, where `from` is `to` without a
// source.
template <class Pass>
RK_Long AtDepth(uint32_t site, RK_LayerDef* src, RK_PixelFunc* pixel_fn, RK_LayerDef* dst, Pass&& pass) {
    if (src != nullptr && src->data == nullptr) return RKp_ReportBadParam(site);
    if (dst == nullptr || dst->data == nullptr || pixel_fn == nullptr) return RKp_ReportBadParam(site);
    return RKp_AtBorder([&] {
        const int32_t depth = RKp_WorldDepth(dst);
        if (src != nullptr && RKp_WorldDepth(src) != depth)
            return RKp_VERIFICATION("RK_Iterate requires source and dst worlds to be same depth");
        return RKp_ForDepth(depth, RKp_kBadDepthText, [&](auto tag) {
            using P = typename decltype(tag)::Pixel;
            RK_WorldX<P> from(src != nullptr ? src : dst, false);
            RK_WorldX<P> to(dst, false);
            return pass(tag, from, to);
        });
    });
}

// Pixels outside the source read zeros, except that clipping leaves none.
RK_Long IterateOrigin(bool clip, const RKp_EffectProgress& progress, RK_LayerDef* src, const GEO_Rect* rect,
                      const Point* origin, void* refcon, RK_PixelFunc* pixel_fn, RK_LayerDef* dst) {
    return AtDepth(
        RKp_kSiteIterateOrigin, src, pixel_fn, dst, [&](auto tag, auto& from, auto& to) -> RK_Long {
            using P = typename decltype(tag)::Pixel;
            const Point place = src != nullptr && origin != nullptr ? *origin : Point{0, 0};
            const RKp_IterateArea source = RKp_PlaceSource(from.record, place);
            RKp_IterateArea area;
            if (!RKp_IterateClip(rect, to.record, src != nullptr && clip ? &source : nullptr, area))
                return RK_kOK;
            if (area.right <= area.left || area.bottom <= area.top) return RK_kOK;

            // Columns that have a source pixel; none where the source lies apart.
            const int32_t first = std::clamp(source.left, area.left, area.right);
            const int32_t end = std::clamp(source.right, first, area.right);
            const RKp_PixelCalls<P> calls(pixel_fn, refcon);
            return RKp_WalkRows(area, progress, [&](int32_t y, RK_Long& result) {
                P* out = to.row(y);
                if (y < source.top || y >= source.bottom)
                    return calls.blank(area.left, area.right, y, out, result);
                return calls.blank(area.left, first, y, out, result) &&
                       calls.span(first, end, y, from.row(y - place.v), place.h, out, result) &&
                       calls.blank(end, area.right, y, out, result);
            });
        });
}

}  // namespace

RK_Long RK_Iterate_Static(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                          RK_LayerDef* src, const GEO_Rect* rect, void* refcon, RK_PixelFunc* pixel_fn,
                          RK_LayerDef* dst) {
    return AtDepth(RKp_kSiteIterate, src, pixel_fn, dst, [&](auto tag, auto& from, auto& to) -> RK_Long {
        using P = typename decltype(tag)::Pixel;
        const RKp_IterateArea source = RKp_PlaceSource(from.record, {0, 0});
        RKp_IterateArea area;
        if (!RKp_IterateClip(rect, to.record, src != nullptr ? &source : nullptr, area)) return RK_kOK;
        const RKp_PixelCalls<P> calls(pixel_fn, refcon);
        return RKp_WalkRows(
            area, {effect_data, progress_base, progress_final}, [&](int32_t y, RK_Long& result) {
                return calls.span(area.left, area.right, y, from.row(y), 0, to.row(y), result);
            });
    });
}

RK_Long RK_IterateOrigin_Static(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                                RK_LayerDef* src, const GEO_Rect* rect, const Point* origin, void* refcon,
                                RK_PixelFunc* pixel_fn, RK_LayerDef* dst) {
    return IterateOrigin(true, {effect_data, progress_base, progress_final}, src, rect, origin, refcon,
                         pixel_fn, dst);
}

RK_Long RK_IterateOriginUnclipped_Static(RK_EffectData* effect_data, RK_Long progress_base,
                                         RK_Long progress_final, RK_LayerDef* src, const GEO_Rect* rect,
                                         const Point* origin, void* refcon, RK_PixelFunc* pixel_fn,
                                         RK_LayerDef* dst) {
    return IterateOrigin(false, {effect_data, progress_base, progress_final}, src, rect, origin, refcon,
                         pixel_fn, dst);
}

RK_Long RK_IterateGeneric_Static(RK_Long iterations, void* refcon, RK_GenericFunc* fn) {
    if (fn == nullptr) return RKp_ReportBadParam(RKp_kSiteIterateGeneric);
    return RKp_AtBorder([&]() -> RK_Long {
        if (iterations == -1) return fn(refcon, 0, 0, 1);
        for (RK_Long i = 0; i < iterations; ++i) {
            const RK_Long result = fn(refcon, 0, i, iterations);
            if (result != RK_kOK) return result;
        }
        return RK_kOK;
    });
}

// ---- Exports --------------------------------------------------------------------------------------------

RK_Long RK_Iterate(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                   RK_LayerDef* src, const GEO_Rect* rect, void* refcon, RK_PixelFunc* pixel_fn,
                   RK_LayerDef* dst) {
    return RKp_Slot<RKp_kSlot_Iterate>()(effect_data, progress_base, progress_final, src, rect, refcon,
                                         pixel_fn, dst);
}

RK_Long RK_IterateOrigin(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                         RK_LayerDef* src, const GEO_Rect* rect, const Point* origin, void* refcon,
                         RK_PixelFunc* pixel_fn, RK_LayerDef* dst) {
    return RKp_Slot<RKp_kSlot_IterateOrigin>()(effect_data, progress_base, progress_final, src, rect, origin,
                                               refcon, pixel_fn, dst);
}

RK_Long RK_IterateLUT(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                      RK_LayerDef* src, const GEO_Rect* rect, const uint8_t* a_lut, const uint8_t* r_lut,
                      const uint8_t* g_lut, const uint8_t* b_lut, RK_LayerDef* dst) {
    return RKp_Slot<RKp_kSlot_IterateLUT>()(effect_data, progress_base, progress_final, src, rect, a_lut,
                                            r_lut, g_lut, b_lut, dst);
}

RK_Long RK_IterateGeneric(RK_Long iterations, void* refcon, RK_GenericFunc* fn) {
    return RKp_Slot<RKp_kSlot_IterateGeneric>()(iterations, refcon, fn);
}
