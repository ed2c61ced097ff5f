// Where a composite's pixels lie: the clip that the rectangle-level composites share.
#ifndef RKP_COMPOSITE_AREA_H
#define RKP_COMPOSITE_AREA_H

#include "RK/indep/frame/RK.h"

// A world's usable size: 0 without pixels, or for a negative one.
inline int32_t RKp_UsableWidth(const RK_LayerDef& world) {
    return world.data == nullptr || world.width < 0 ? 0 : world.width;
}
inline int32_t RKp_UsableHeight(const RK_LayerDef& world) {
    return world.data == nullptr || world.height < 0 ? 0 : world.height;
}

// The whole world, as far as 16-bit edges reach.
GEO_Rect RKp_WholeRect(const RK_LayerDef& world);

// Pixel (x, y), which must lie in the world.
template <class P>
P* RKp_PixelAt(const RK_LayerDef& world, int64_t x, int64_t y) {
    const int64_t offset = y * world.rowbytes + x * static_cast<int64_t>(sizeof(P));
    return reinterpret_cast<P*>(static_cast<uint8_t*>(world.data) + static_cast<ptrdiff_t>(offset));
}

// The pixels of the destination that are composited, and where their source begins. Not empty.
struct RKp_CompositeArea {
    GEO_LRect dst;
    int32_t src_left, src_top;

    int32_t width() const { return dst.right - dst.left; }
    int32_t height() const { return dst.bottom - dst.top; }
};

// The part of `src_rect` that lies inside `src` and, laid down with its top left at (dst_x, dst_y), inside
// `dst`. False, and `area` is not written, when nothing is left; a reversed rectangle is empty. Any place is
// safe.
bool RKp_ClipComposite(const GEO_Rect& src_rect, const RK_LayerDef& src, RK_Long dst_x, RK_Long dst_y,
                       const RK_LayerDef& dst, RKp_CompositeArea* area);

// Cuts the area down to the destination pixels that `mask` covers with its top left at (mask_x, mask_y).
// False, and `area` is not written, when nothing is left.
bool RKp_ClipToMask(const RK_LayerDef& mask, int32_t mask_x, int32_t mask_y, RKp_CompositeArea* area);

#endif
