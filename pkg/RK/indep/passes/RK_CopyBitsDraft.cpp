#include <cstring>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/passes/RKp_CopyArea.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

template <class To, class From>
void copyScaled(const RK_LayerDef& src, const GEO_LRect& s, const RK_LayerDef& dst, const GEO_LRect& d) {
    const int32_t dw = d.right - d.left;
    RKp_Replicate(s.bottom - s.top, d.bottom - d.top, [&](int32_t row, int32_t first, int32_t rows) {
        const From* in = reinterpret_cast<const From*>(RKp_CopyRow(src, s.top + row)) + s.left;
        To* out = reinterpret_cast<To*>(RKp_CopyRowOut(dst, d.top + first)) + d.left;
        RKp_Replicate(s.right - s.left, dw, [&](int32_t column, int32_t place, int32_t columns) {
            const To pixel = RKp_ConvertPixel<To>(in[column]);
            for (int32_t k = 0; k < columns; ++k) out[place + k] = pixel;
        });
        for (int32_t k = 1; k < rows; ++k)
            std::memcpy(reinterpret_cast<To*>(RKp_CopyRowOut(dst, d.top + first + k)) + d.left, out,
                        static_cast<size_t>(dw) * sizeof(To));
    });
}

template <class To, class From>
void copyDraft(const RK_LayerDef& src, RKp_CopyRect s, const RK_LayerDef& dst, RKp_CopyRect d) {
    const bool one_depth = sizeof(To) == sizeof(From);
    const bool one_size = s.width() == d.width() && s.height() == d.height();
    if (one_depth && one_size && s.whole && d.whole) return RKp_MoveWorld(src, dst, sizeof(To));
    if (!RKp_CutCopyRects(src, dst, &s.rect, &d.rect)) return;
    if (one_depth && s.width() == d.width() && s.height() == d.height())
        return RKp_MoveRows(src, s.rect, dst, d.rect, sizeof(To));
    copyScaled<To, From>(src, s.rect, dst, d.rect);
}

}  // namespace

RK_Long RK_CopyBits_Draft_Static(RK_ProgressInfo*, const RK_LayerDef* src, RK_LayerDef* dst, const GEO_Rect* src_rect,
                                 const GEO_Rect* dst_rect) {
    if (src == nullptr || dst == nullptr || src->data == nullptr || dst->data == nullptr) {
        // Kept: the user is told twice.
        RKp_ReportBadParam(RKp_kSiteCopyDraft);
        return RKp_ReportBadParam(RKp_kSiteCopyDraft);
    }
    return RKp_ForDepth(RKp_WorldDepth(src), RKp_kBadDepthText, [&](auto from) {
        return RKp_ForDepth(RKp_WorldDepth(dst), RKp_kBadDepthText, [&](auto to) -> RK_Long {
            RKp_CopyRect s, d;
            if (RKp_PrepareCopyRect(src_rect, *src, &s) && RKp_PrepareCopyRect(dst_rect, *dst, &d))
                copyDraft<typename decltype(to)::Pixel, typename decltype(from)::Pixel>(*src, s, *dst, d);
            return RK_kOK;
        });
    });
}

RK_Long RK_CopyBits_Draft(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                          const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    return RKp_Slot<RKp_kSlot_CopyBits_Draft>()(progress, src, dst, src_rect, dst_rect);
}
