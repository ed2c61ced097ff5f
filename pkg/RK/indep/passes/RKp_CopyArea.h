// Which pixels a copy joins: the two rectangles, cut to their worlds.
#ifndef RKP_COPY_AREA_H
#define RKP_COPY_AREA_H

#include "RK/indep/frame/RK.h"

struct RKp_CopyRect {
    GEO_LRect rect;
    bool whole;  // the world itself

    int32_t width() const { return rect.right - rect.left; }
    int32_t height() const { return rect.bottom - rect.top; }
};

// A rectangle against its own world; null is the whole. False when nothing of it can be drawn.
bool RKp_PrepareCopyRect(const GEO_Rect* rect, const RK_LayerDef& world, RKp_CopyRect* out);

// Cuts each rectangle to its world, and the other in proportion to the sizes before any cut: the source's left, top,
// right, bottom, then the destination's. False when a side ends empty.
bool RKp_CutCopyRects(const RK_LayerDef& src, const RK_LayerDef& dst, GEO_LRect* src_rect, GEO_LRect* dst_rect);

// Whole worlds of one size and depth: one move when both own their rows and have equal rowbytes, else row by row.
void RKp_MoveWorld(const RK_LayerDef& src, const RK_LayerDef& dst, size_t pixel_size);

// Rows of a rectangle of one size, which lies inside both worlds.
void RKp_MoveRows(const RK_LayerDef& src, const GEO_LRect& src_rect, const RK_LayerDef& dst, const GEO_LRect& dst_rect,
                  size_t pixel_size);

inline const char* RKp_CopyRow(const RK_LayerDef& world, int32_t y) {
    return static_cast<const char*>(world.data) + static_cast<ptrdiff_t>(int64_t{y} * world.rowbytes);
}
inline char* RKp_CopyRowOut(const RK_LayerDef& world, int32_t y) { return const_cast<char*>(RKp_CopyRow(world, y)); }

// Spreads `from` source places over `to` destination places: write(source, first, count) tells how often a source place
// is written, and where.
template <class Write>
void RKp_Replicate(int32_t from, int32_t to, Write&& write) {
    int64_t e = 0;
    int32_t place = 0;
    for (int32_t i = 0; i < from; ++i) {
        e += to;
        const auto n = static_cast<int32_t>(e / from);
        if (n == 0) continue;
        write(i, place, n);
        place += n;
        e -= int64_t{n} * from;
    }
}

#endif
