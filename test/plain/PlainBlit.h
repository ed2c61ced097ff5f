// The copies with a geometry of their own once more: through a matrix, and over a background.
#ifndef TEST_PLAIN_BLIT_H
#define TEST_PLAIN_BLIT_H

#include "RK/host/GEO.h"
#include "test/plain/PlainCopy.h"

namespace plain {

// 0, or what `abort_func` answered. Of `dst_to_src`; what lies outside either rectangle or world is left.
template <class P>
int copyThrough(RK_ProgressInfo* progress, const RK_LayerDef& src, const RK_LayerDef& dst,
                const GEO_Matrix3& dst_to_src, const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    CopySides s, d;
    if (!copySides(src_rect, src, s) || !copySides(dst_rect, dst, d)) return 0;
    const int64_t top = std::max<int64_t>(d.top, 0);
    for (int64_t y = top; y < std::min<int64_t>(d.bottom, dst.height); ++y) {
        if ((y - top) % 64 == 0 && progress != nullptr)
            if (const RK_Long answer = progress->abort_func(progress->refcon))
                return static_cast<int>(answer);
        for (int64_t x = std::max<int64_t>(d.left, 0); x < std::min<int64_t>(d.right, dst.width); ++x) {
            const GEO_Vector2T<double> centre = {static_cast<double>(x) + 0.5, static_cast<double>(y) + 0.5};
            GEO_Vector2T<double> from;
            GEO_TransformFloatPoints(&dst_to_src, 1, &centre, &from);
            // A pixel spans from its number to the next one.
            const auto in = [](double v, int64_t low, int64_t high, int size) {
                return v >= static_cast<double>(low) && v < static_cast<double>(high) && v >= 0 && v < size;
            };
            if (in(from.x, s.left, s.right, src.width) && in(from.y, s.top, s.bottom, src.height))
                at<P>(dst, x, y) = at<P>(src, static_cast<int64_t>(from.x), static_cast<int64_t>(from.y));
        }
    }
    return 0;
}

inline uint8_t toNearest(float x) {
    const float v = x * 255.0f;
    return !(v > 0.0f) ? uint8_t{0} : v >= 255.0f ? uint8_t{255} : static_cast<uint8_t>(std::nearbyint(v));
}
inline RK_Pixel8 screenPixel(const RK_PixelFloat& p, bool sse2) {
    RK_Pixel8 q;
    convert(p, q);
    return sse2 ? RK_Pixel8{toNearest(p.alpha), toNearest(p.red), toNearest(p.green), toNearest(p.blue)} : q;
}
template <class P>
RK_Pixel8 screenPixel(const P& p, bool) {
    RK_Pixel8 q;
    convert(p, q);
    return q;
}

struct Showing {
    int64_t origin_x, origin_y, step_x, step_y;
    bool checkered, sse2;
    RK_PixelFloat even, odd;
};
template <class P>
void show(const RK_LayerDef& src, const Showing& how, const GEO_Rect& rect, const RK_LayerDef& dst) {
    for (int64_t y = std::max<int64_t>(rect.top, 0); y < std::min<int64_t>(rect.bottom, dst.height); ++y)
        for (int64_t x = std::max<int64_t>(rect.left, 0); x < std::min<int64_t>(rect.right, dst.width); ++x) {
            RK_Pixel8 ground;
            convert(how.checkered && (x / 8 + y / 8) % 2 == 1 ? how.odd : how.even, ground);
            RK_Pixel8& out = at<RK_Pixel8>(dst, x, y);
            out = {255, ground.red, ground.green, ground.blue};
            const int64_t column = how.origin_x + (x - rect.left) * how.step_x;
            const int64_t row = how.origin_y + (y - rect.top) * how.step_y;
            if (column < 0 || column >= src.width || row < 0 || row >= src.height) continue;
            const P& p = at<P>(src, column, row);
            const RK_Pixel8 over = screenPixel(p, how.sse2);
            const int64_t a = p.alpha == DepthOf<P>::D::W ? 255 : over.alpha;
            const auto mix = [a](uint8_t below, uint8_t above) {
                return a == 255 ? above : static_cast<uint8_t>(lerp<Int8>(below, above, a));
            };
            out = {255, mix(ground.red, over.red), mix(ground.green, over.green),
                   mix(ground.blue, over.blue)};
        }
}

}  // namespace plain

#endif
