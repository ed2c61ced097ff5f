#include "RK/indep/composite/RK_CompositeRect.h"

#include "RK/indep/composite/RKp_CompositeArea.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_Report.h"

// Legend: s, d source and destination pixels; sa, da their alphas; o the opacity.
namespace {

struct Straight {
    uint32_t o;

    void operator()(const RK_Pixel8& s, RK_Pixel8& d) const {
        const uint32_t sa = s.alpha, da = d.alpha;
        if (da == 255) return;
        if (da == 0) {
            d = {RKp_G_fcm_table[o * 256 + sa], s.red, s.green, s.blue};
            return;
        }
        // Weights over 255 * 255; every sum below fits 32 bits, as it is at most 255 * 255 * 65025.
        const uint32_t e = (255 - da) * o * sa;
        const uint32_t g = da * 65025;
        const uint32_t t = g + e;
        d.alpha = static_cast<uint8_t>(t / 65025);
        d.red = static_cast<uint8_t>((s.red * e + d.red * g) / t);
        d.green = static_cast<uint8_t>((s.green * e + d.green * g) / t);
        d.blue = static_cast<uint8_t>((s.blue * e + d.blue * g) / t);
    }
};

struct Premul {
    uint32_t o;

    void operator()(const RK_Pixel8& s, RK_Pixel8& d) const {
        if (d.alpha == 255) return;
        const uint8_t* scale = RKp_G_fcm_table + o * 256;
        const RK_Pixel8 q = {scale[s.alpha], scale[s.red], scale[s.green], scale[s.blue]};
        if (d.alpha == 0) {
            d = q;
            return;
        }
        // Kept: the sums wrap at 8 bits.
        const uint8_t* rest = RKp_G_fcm_table + (255 - d.alpha) * 256;
        d.alpha = static_cast<uint8_t>(d.alpha + rest[q.alpha]);
        d.red = static_cast<uint8_t>(d.red + rest[q.red]);
        d.green = static_cast<uint8_t>(d.green + rest[q.green]);
        d.blue = static_cast<uint8_t>(d.blue + rest[q.blue]);
    }
};

bool isBlended(RK_Long field, int32_t y) {
    return field == 0 || (field == 1 && (y & 1) == 0) || (field == 2 && (y & 1) == 1);
}

template <class PixelOp>
RK_Long compositeRect(RK_ProgressInfo* progress, const GEO_Rect* src_rect, uint8_t opacity,
                      const RK_LayerDef* src, RK_Long dst_x, RK_Long dst_y, RK_Long field, RK_LayerDef* dst) {
    if (opacity == 0) return RK_kOK;
    if (src == nullptr || dst == nullptr) return RKp_ReportBadParam(RKp_kSiteFill);
    RKp_CompositeArea area;
    if (!RKp_ClipComposite(src_rect != nullptr ? *src_rect : RKp_WholeRect(*src), *src, dst_x, dst_y, *dst,
                           &area))
        return RK_kOK;

    const PixelOp op = {opacity};
    return RKp_AtBorder([&] {
        for (int32_t i = 0; i < area.height(); ++i) {
            const int32_t y = area.dst.top + i;
            if (!isBlended(field, y)) continue;
            const int32_t rows_left = area.dst.bottom - y;
            if ((rows_left & 31) == 0 && progress != nullptr && progress->progress_func != nullptr)
                RKp_ThrowIf(progress->progress_func(progress->refcon, rows_left, area.height()));
            const RK_Pixel8* s = RKp_PixelAt<const RK_Pixel8>(*src, area.src_left, area.src_top + i);
            RK_Pixel8* d = RKp_PixelAt<RK_Pixel8>(*dst, area.dst.left, y);
            for (int32_t x = 0; x < area.width(); ++x) op(s[x], d[x]);
        }
    });
}

}  // namespace

RK_Long RK_CompositeRectDraft_Straight(RK_ProgressInfo* progress, const GEO_Rect* src_rect, uint8_t opacity,
                                       const RK_LayerDef* src, RK_Long dst_x, RK_Long dst_y, RK_Long field,
                                       void*, RK_LayerDef* dst) {
    return compositeRect<Straight>(progress, src_rect, opacity, src, dst_x, dst_y, field, dst);
}

RK_Long RK_CompositeRectBest_Straight(RK_ProgressInfo* progress, const GEO_Rect* src_rect, uint8_t opacity,
                                      const RK_LayerDef* src, RK_Long dst_x, RK_Long dst_y, RK_Long field,
                                      void*, RK_LayerDef* dst) {
    return compositeRect<Straight>(progress, src_rect, opacity, src, dst_x, dst_y, field, dst);
}

RK_Long RK_CompositeRectDraft_Premul(RK_ProgressInfo* progress, const GEO_Rect* src_rect, uint8_t opacity,
                                     const RK_LayerDef* src, RK_Long dst_x, RK_Long dst_y, RK_Long field,
                                     void*, RK_LayerDef* dst) {
    return compositeRect<Premul>(progress, src_rect, opacity, src, dst_x, dst_y, field, dst);
}

RK_Long RK_CompositeRectBest_Premul(RK_ProgressInfo* progress, const GEO_Rect* src_rect, uint8_t opacity,
                                    const RK_LayerDef* src, RK_Long dst_x, RK_Long dst_y, RK_Long field,
                                    void*, RK_LayerDef* dst) {
    return compositeRect<Premul>(progress, src_rect, opacity, src, dst_x, dst_y, field, dst);
}
