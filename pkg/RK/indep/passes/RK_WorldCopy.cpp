// Copies between host bitmaps.
#include <algorithm>

#include "RK/host/RAS.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/passes/RKp_CopyArea.h"
#include "RK/indep/world/RK_WorldDepth.h"

namespace {

using CopyFunc = RK_Long(RK_ProgressInfo*, const RK_LayerDef*, RK_LayerDef*, const GEO_Rect*, const GEO_Rect*);

RK_Long copyBitmaps(CopyFunc* copy, uint32_t site, RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst,
                    const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    if (src == nullptr || dst == nullptr) return RKp_ReportBadParam(site);
    RK_LayerDef from, to;
    RK_Long error = RK_EffectWorldFromRASWorld(src, &from);
    if (error == RK_kOK) error = RK_EffectWorldFromRASWorld(dst, &to);
    return error == RK_kOK ? copy(progress, &from, &to, src_rect, dst_rect) : error;
}

int32_t channelOrder(RAS_World** bitmap) {
    return (*bitmap)->bits_per_pixel == 32 ? RAS_GetChannelOrder(bitmap) : 0;
}

// Reverses the four bytes of every pixel of the rectangle, as far as it lies in the world.
void swapChannels(const RK_LayerDef& world, const GEO_Rect* rect) {
    const GEO_LRect all = {0, 0, world.width, world.height};
    const GEO_LRect r = rect == nullptr ? all : GEO_LRect{rect->left, rect->top, rect->right, rect->bottom};
    for (int32_t y = std::max(r.top, 0); y < std::min(r.bottom, all.bottom); ++y) {
        char* row = RKp_CopyRowOut(world, y);
        for (int32_t x = std::max(r.left, 0); x < std::min(r.right, all.right); ++x) std::reverse(row + x * 4, row + x * 4 + 4);
    }
}

RK_Long matchChannelOrder(RAS_World** src, RAS_World** dst, const GEO_Rect* dst_rect) {
    if (channelOrder(src) == channelOrder(dst)) return RK_kOK;
    if ((*dst)->bits_per_pixel != 32) {
        KITp_ReportErrString(RK_kLocation, 8,
                             "Flipping 32/16-bit worlds is not implemented. Source data 8-bit BGRA.");
        return 5;
    }
    RK_LayerDef world;
    const RK_Long error = RK_EffectWorldFromRASWorld(dst, &world);
    if (error == RK_kOK) swapChannels(world, dst_rect);
    return error;
}

}  // namespace

RK_Long RK_WorldCopy(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst, const GEO_Rect* src_rect,
                     const GEO_Rect* dst_rect) {
    const RK_Long error =
        copyBitmaps(&RK_CopyBits_Draft, RKp_kSiteCopyDraft, progress, src, dst, src_rect, dst_rect);
    return error == RK_kOK ? matchChannelOrder(src, dst, dst_rect) : error;
}
RK_Long RK_WorldCopy_Static(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst, const GEO_Rect* src_rect,
                            const GEO_Rect* dst_rect) {
    return copyBitmaps(&RK_CopyBits_Draft_Static, RKp_kSiteCopyDraft, progress, src, dst, src_rect, dst_rect);
}
RK_Long RK_WorldCopy_HQ_Straight(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst,
                                 const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    return copyBitmaps(&RK_CopyBits_HQ_Straight, RKp_kSiteCopyStraight, progress, src, dst, src_rect, dst_rect);
}
RK_Long RK_WorldCopy_HQ(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst, const GEO_Rect* src_rect,
                        const GEO_Rect* dst_rect) {
    return RK_WorldCopy_HQ_Straight(progress, src, dst, src_rect, dst_rect);
}
RK_Long RK_WorldCopy_HQ_Straight_Static(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst,
                                        const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    return copyBitmaps(&RK_CopyBits_HQ_Straight_Static, RKp_kSiteCopyStraight, progress, src, dst, src_rect, dst_rect);
}
RK_Long RK_WorldCopy_HQ_Static(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst, const GEO_Rect* src_rect,
                               const GEO_Rect* dst_rect) {
    return RK_WorldCopy_HQ_Straight_Static(progress, src, dst, src_rect, dst_rect);
}
RK_Long RK_WorldCopy_HQ_Premul(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst, const GEO_Rect* src_rect,
                               const GEO_Rect* dst_rect) {
    return copyBitmaps(&RK_CopyBits_HQ_Premul, RKp_kSiteCopyPremul, progress, src, dst, src_rect, dst_rect);
}
