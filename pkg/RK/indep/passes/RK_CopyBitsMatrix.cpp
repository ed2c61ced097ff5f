// The draft copy through a matrix.
#include <cmath>

#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/passes/RKp_CopyArea.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

GEO_LRect cutToWorld(const GEO_LRect& r, const RK_LayerDef& world) {
    return {r.left < 0 ? 0 : r.left, r.top < 0 ? 0 : r.top, r.right > world.width ? world.width : r.right,
            r.bottom > world.height ? world.height : r.bottom};
}

template <class P>
RK_Long copyRows(RK_ProgressInfo* progress, const RK_LayerDef& src, const GEO_LRect& s, const RK_LayerDef& dst,
                 const GEO_LRect& d, const GEO_Matrix3& dst2src) {
    for (int32_t y = d.top; y < d.bottom; ++y) {
        if (progress != nullptr && progress->abort_func != nullptr && ((y - d.top) & 63) == 0) {
            const RK_Long stop = progress->abort_func(progress->refcon);
            if (stop != RK_kOK) return stop;
        }
        P* out = reinterpret_cast<P*>(RKp_CopyRowOut(dst, y));
        for (int32_t x = d.left; x < d.right; ++x) {
            const auto from = dst2src.TransformPointAndDivide({x + 0.5, y + 0.5});
            const double column = std::floor(from.x), row = std::floor(from.y);
            // Written so that what is not a number is outside.
            if (!(column >= s.left && column < s.right && row >= s.top && row < s.bottom)) continue;
            out[x] = reinterpret_cast<const P*>(RKp_CopyRow(src, static_cast<int32_t>(row)))[static_cast<int32_t>(column)];
        }
    }
    return RK_kOK;
}

}  // namespace

RK_Long RK_CopyBits3_LO_Straight(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst, RK_Long src2dst,
                                 const GEO_Matrix3* matrix, const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    if (src == nullptr || dst == nullptr || src->data == nullptr || dst->data == nullptr || matrix == nullptr)
        return RKp_ReportBadParam(RKp_kSiteCopyDraft);
    const int32_t depth = RKp_WorldDepth(src);
    if (depth != RKp_WorldDepth(dst))
        return RKp_VERIFICATION("RK_CopyBits3_LO_Straight requires src and dst worlds to have same bit depth");
    return RKp_ForDepth(depth, RKp_kBadDepthText, [&](auto tag) -> RK_Long {
        RKp_CopyRect s, d;
        if (!RKp_PrepareCopyRect(src_rect, *src, &s) || !RKp_PrepareCopyRect(dst_rect, *dst, &d)) return RK_kOK;
        GEO_Matrix3 dst2src = *matrix;
        if (src2dst != 0 && GEO_InverseMatrixQuiet(matrix, &dst2src) != 0) return RK_kOK;
        return copyRows<typename decltype(tag)::Pixel>(progress, *src, cutToWorld(s.rect, *src), *dst,
                                                       cutToWorld(d.rect, *dst), dst2src);
    });
}
