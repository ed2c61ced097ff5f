#include "RK/indep/passes/RKp_CopyArea.h"

#include <algorithm>
#include <cstring>

#include "RK/indep/world/RK_World.h"

namespace {

// Rows between a reference's own may belong to somebody else.
bool isReference(const RK_LayerDef& world, size_t pixel_size) {
    if (world.world_object != nullptr) return world.world_object->IsReference();
    if (world.ras_world != nullptr) return false;
    return world.rowbytes != int64_t{world.width} * static_cast<int64_t>(pixel_size);
}

// What a cut of one side takes from the other rectangle.
int32_t share(int64_t cut, int64_t numerator, int64_t denominator) {
    return static_cast<int32_t>(cut * numerator / denominator);
}

// Cuts `a` to 0..size of its world along one axis, low end then high end, and moves the ends of `b` along.
struct Axis {
    int32_t &a_low, &a_high, &b_low, &b_high;
};
void cutLow(Axis r, int64_t a_size, int64_t b_size) {
    if (r.a_low >= 0) return;
    r.b_low += share(-int64_t{r.a_low}, b_size, a_size);
    r.a_low = 0;
}
void cutHigh(Axis r, int32_t limit, int64_t a_size, int64_t b_size) {
    if (r.a_high <= limit) return;
    r.b_high -= share(int64_t{r.a_high} - limit, b_size, a_size);
    r.a_high = limit;
}

}  // namespace

bool RKp_PrepareCopyRect(const GEO_Rect* rect, const RK_LayerDef& world, RKp_CopyRect* out) {
    const GEO_LRect all = {0, 0, world.width, world.height};
    const GEO_LRect r = rect == nullptr ? all : GEO_LRect{rect->left, rect->top, rect->right, rect->bottom};
    const bool whole = r.left == 0 && r.top == 0 && r.right == all.right && r.bottom == all.bottom;
    *out = {r, whole};
    if (r.right <= r.left || r.bottom <= r.top) return false;
    return whole || (r.left < world.width && r.top < world.height && r.right >= 1 && r.bottom >= 1);
}

bool RKp_CutCopyRects(const RK_LayerDef& src, const RK_LayerDef& dst, GEO_LRect* src_rect, GEO_LRect* dst_rect) {
    GEO_LRect &s = *src_rect, &d = *dst_rect;
    const int64_t sw = int64_t{s.right} - s.left, sh = int64_t{s.bottom} - s.top;
    const int64_t dw = int64_t{d.right} - d.left, dh = int64_t{d.bottom} - d.top;
    const Axis sx = {s.left, s.right, d.left, d.right}, sy = {s.top, s.bottom, d.top, d.bottom};
    const Axis dx = {d.left, d.right, s.left, s.right}, dy = {d.top, d.bottom, s.top, s.bottom};
    cutLow(sx, sw, dw);
    cutLow(sy, sh, dh);
    cutHigh(sx, src.width, sw, dw);
    cutHigh(sy, src.height, sh, dh);
    cutLow(dx, dw, sw);
    cutLow(dy, dh, sh);
    cutHigh(dx, dst.width, dw, sw);
    cutHigh(dy, dst.height, dh, sh);
    return s.left < s.right && s.top < s.bottom && d.left < d.right && d.top < d.bottom;
}

void RKp_MoveRows(const RK_LayerDef& src, const GEO_LRect& src_rect, const RK_LayerDef& dst, const GEO_LRect& dst_rect,
                  size_t pixel_size) {
    const size_t bytes = static_cast<size_t>(dst_rect.right - dst_rect.left) * pixel_size;
    for (int32_t i = 0; i < dst_rect.bottom - dst_rect.top; ++i) {
        std::memmove(RKp_CopyRowOut(dst, dst_rect.top + i) + static_cast<size_t>(dst_rect.left) * pixel_size,
                     RKp_CopyRow(src, src_rect.top + i) + static_cast<size_t>(src_rect.left) * pixel_size, bytes);
    }
}

void RKp_MoveWorld(const RK_LayerDef& src, const RK_LayerDef& dst, size_t pixel_size) {
    const GEO_LRect all = {0, 0, src.width, src.height};
    const bool one_move = src.rowbytes == dst.rowbytes && src.rowbytes > 0 && !isReference(src, pixel_size) &&
                          !isReference(dst, pixel_size);
    if (!one_move) return RKp_MoveRows(src, all, dst, all, pixel_size);
    std::memmove(dst.data, src.data,
                 (static_cast<size_t>(src.height) - 1) * static_cast<size_t>(src.rowbytes) +
                     static_cast<size_t>(src.width) * pixel_size);
}
