#include <algorithm>

#include "RK/indep/composite/RK_TransferRect.h"
#include "RK/indep/composite/RKp_ClearAlpha.h"
#include "RK/indep/composite/RKp_CompositeArea.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

template <class P>
void clearAlpha(const RK_LayerDef& world, int32_t top, int32_t bottom, int32_t left, int32_t right) {
    if (left >= right) return;
    for (int32_t y = top; y < bottom; ++y) {
        P* row = RKp_PixelAt<P>(world, 0, y);
        for (int32_t x = left; x < right; ++x) row[x].alpha = 0;
    }
}

}  // namespace

template <class P>
void RKp_ClearAlphaOutside(const GEO_LRect& keep, const RK_LayerDef& world) {
    const int32_t width = RKp_UsableWidth(world), height = RKp_UsableHeight(world);
    int32_t left = std::max(keep.left, 0), right = std::min(keep.right, width);
    int32_t top = std::max(keep.top, 0), bottom = std::min(keep.bottom, height);
    if (left >= right || top >= bottom) left = right = top = bottom = 0;

    clearAlpha<P>(world, 0, top, 0, width);
    clearAlpha<P>(world, top, bottom, 0, left);
    clearAlpha<P>(world, top, bottom, right, width);
    clearAlpha<P>(world, bottom, height, 0, width);
}

template void RKp_ClearAlphaOutside<RK_Pixel8>(const GEO_LRect&, const RK_LayerDef&);
template void RKp_ClearAlphaOutside<RK_Pixel16>(const GEO_LRect&, const RK_LayerDef&);
template void RKp_ClearAlphaOutside<RK_PixelFloat>(const GEO_LRect&, const RK_LayerDef&);

RK_Long RK_ClearAlphaExceptRect(RK_ProgressInfo*, const GEO_Rect* keep, RK_LayerDef* world) {
    if (world == nullptr || world->data == nullptr || keep == nullptr)
        return RKp_ReportBadParam(RKp_kSiteFill);
    return RKp_ForDepth(RKp_WorldDepth(world), RKp_kBadDepthText, [&](auto tag) {
        using P = typename decltype(tag)::Pixel;
        RKp_ClearAlphaOutside<P>({keep->left, keep->top, keep->right, keep->bottom}, *world);
        return RK_kOK;
    });
}
