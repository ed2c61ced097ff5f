#include "RK/indep/composite/RKp_CompositeArea.h"

#include <algorithm>

namespace {

// A place beyond 32 bits is as far off every world as the last one within them.
int64_t place(RK_Long at) {
    const RK_Long low = INT32_MIN, high = INT32_MAX;
    return std::clamp(at, low, high);
}

int16_t edge(int32_t size) { return static_cast<int16_t>(std::min<int32_t>(size, INT16_MAX)); }

// [begin, end) cut down to [low, high); false when nothing is left.
bool cut(int64_t& begin, int64_t& end, int64_t low, int64_t high) {
    begin = std::max(begin, low);
    end = std::min(end, high);
    return begin < end;
}

}  // namespace

GEO_Rect RKp_WholeRect(const RK_LayerDef& world) {
    return {0, 0, edge(RKp_UsableHeight(world)), edge(RKp_UsableWidth(world))};
}

bool RKp_ClipComposite(const GEO_Rect& src_rect, const RK_LayerDef& src, RK_Long dst_x, RK_Long dst_y,
                       const RK_LayerDef& dst, RKp_CompositeArea* area) {
    const GEO_Rect whole = RKp_WholeRect(src);
    GEO_Rect inside;
    if (!GEO_SectRect(&src_rect, &whole, &inside)) return false;

    const int64_t dx = place(dst_x) - src_rect.left;
    const int64_t dy = place(dst_y) - src_rect.top;
    int64_t left = inside.left + dx, right = inside.right + dx;
    int64_t top = inside.top + dy, bottom = inside.bottom + dy;
    if (!cut(left, right, 0, RKp_UsableWidth(dst)) || !cut(top, bottom, 0, RKp_UsableHeight(dst)))
        return false;

    area->dst = {static_cast<int32_t>(left), static_cast<int32_t>(top), static_cast<int32_t>(right),
                 static_cast<int32_t>(bottom)};
    area->src_left = static_cast<int32_t>(left - dx);
    area->src_top = static_cast<int32_t>(top - dy);
    return true;
}

bool RKp_ClipToMask(const RK_LayerDef& mask, int32_t mask_x, int32_t mask_y, RKp_CompositeArea* area) {
    int64_t left = area->dst.left, right = area->dst.right;
    int64_t top = area->dst.top, bottom = area->dst.bottom;
    if (!cut(left, right, mask_x, int64_t{mask_x} + RKp_UsableWidth(mask)) ||
        !cut(top, bottom, mask_y, int64_t{mask_y} + RKp_UsableHeight(mask)))
        return false;

    area->src_left += static_cast<int32_t>(left - area->dst.left);
    area->src_top += static_cast<int32_t>(top - area->dst.top);
    area->dst = {static_cast<int32_t>(left), static_cast<int32_t>(top), static_cast<int32_t>(right),
                 static_cast<int32_t>(bottom)};
    return true;
}
