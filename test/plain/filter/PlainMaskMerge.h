// Masks into alpha, and the rows of track mattes, once more.
#ifndef TEST_PLAIN_FILTER_MASK_MERGE_H
#define TEST_PLAIN_FILTER_MASK_MERGE_H

#include "test/plain/filter/PlainMask.h"

namespace plain {

inline uint8_t mergedAlpha(uint8_t m, uint8_t a) {
    return m == 0 ? uint8_t(0) : m == 255 ? a : static_cast<uint8_t>(Int8::mul(m, a));
}
inline uint16_t mergedAlpha(uint8_t m, uint16_t a) {
    const uint32_t s = (uint32_t{m} * 0x808080u + 33200u) >> 16;
    return static_cast<uint16_t>(Int16::mul(s, a));
}
inline uint16_t mergedAlpha(uint16_t m, uint16_t a) {
    return m == 0 ? uint16_t(0) : m == 32768 ? a : static_cast<uint16_t>(Int16::mul(m, a));
}
inline float mergedAlpha(uint8_t m, float a) {
    const float part = static_cast<float>(m) / 255.0f;
    return a * part;
}
inline float mergedAlpha(uint16_t m, float a) {
    const float part = static_cast<float>(m) * 3.0517578e-05f;
    return a * part;
}
// One row: blank below `first`, merged up to `last`, untouched from there on.
template <class P, class M>
void mergeRow(int first, int last, const M* mask, P* pixels) {
    for (int c = 0; c < first; ++c) pixels[c].alpha = 0;
    for (int c = first; c < last; ++c) pixels[c].alpha = mergedAlpha(mask[c], pixels[c].alpha);
}
// The mask's sample (0, 0) lies at world pixel (x, y). Alpha in the area that the mask doesn't cover is 0.
// Rectangles may be null. Works the area's first `rows` rows.
template <class P, class M>
void mergeMask(int x, int y, const GEO_Rect* area, const Mask& mask, const GEO_Rect* mask_area,
               const RK_LayerDef& world, int64_t rows = INT64_MAX) {
    int64_t done = 0;
    for (int wy = 0; wy < world.height; ++wy) {
        bool any = false;
        for (int wx = 0; wx < world.width; ++wx) {
            const auto outside = [&](const GEO_Rect* r) {
                return r != nullptr && (wx < r->left || wx >= r->right || wy < r->top || wy >= r->bottom);
            };
            if (outside(area) || outside(mask_area)) continue;
            any = true;
            if (done >= rows) continue;
            P& p = at<P>(world, wx, wy);
            const int64_t mx = int64_t{wx} - x, my = int64_t{wy} - y;
            const bool covered = mx >= 0 && my >= 0 && mx < mask.width && my < mask.height;
            p.alpha =
                covered ? mergedAlpha(mask.get<M>(mx, my), p.alpha) : typename DepthOf<P>::D::Channel(0);
        }
        done += any ? 1 : 0;
    }
}

// `count` alphas of `out` from `width` pixels that begin at column `offset`. Kinds: 0 alpha, 1 its inverse, 2
// luma times alpha, 3 its inverse; columns without a pixel get full for odd kinds and 0 for even ones.
template <class P>
void trackMatte(int64_t count, const P* pixels, int64_t offset, int64_t width, int kind, P* out) {
    using D = typename DepthOf<P>::D;
    for (int64_t i = 0; i < count; ++i) {
        typename D::N matte = 0;
        if (i >= offset && i < offset + width) {
            const Wide<D> p = load<D>(pixels[i - offset]);
            matte = kind >= 2 ? D::mul(p.a, luma<D>(p)) : p.a;
        }
        out[i].alpha = static_cast<typename D::Channel>((kind & 1) != 0 ? D::inv(matte) : matte);
    }
}

}  // namespace plain

#endif
