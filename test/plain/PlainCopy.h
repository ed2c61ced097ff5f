// The copies between worlds once more: the cut and the walk of a draft copy, and the sampled copy.
#ifndef TEST_PLAIN_COPY_H
#define TEST_PLAIN_COPY_H

#include "test/plain/PlainArea.h"

namespace plain {

struct CopySides {
    int64_t left, top, right, bottom;
};
// The sides that a rectangle asks for; false when nothing can be drawn.
inline bool copySides(const GEO_Rect* rect, const RK_LayerDef& world, CopySides& s) {
    s = {0, 0, world.width, world.height};
    if (rect == nullptr) return true;
    s = {rect->left, rect->top, rect->right, rect->bottom};
    return s.left < s.right && s.top < s.bottom && s.left < world.width && s.top < world.height &&
           s.right > 0 && s.bottom > 0;
}

// How often each index of `from` is written, one entry per written index.
inline std::vector<int64_t> walk(int64_t from, int64_t to) {
    std::vector<int64_t> v;
    int64_t e = 0;
    for (int64_t i = 0; i < from; ++i)
        for (e += to; e >= from; e -= from) v.push_back(i);
    return v;
}

template <class S, class D>
void copyDraft(const RK_LayerDef& src, const RK_LayerDef& dst, const GEO_Rect* src_rect,
               const GEO_Rect* dst_rect) {
    CopySides s, d;
    if (!copySides(src_rect, src, s) || !copySides(dst_rect, dst, d)) return;
    const int64_t sw = s.right - s.left, sh = s.bottom - s.top, dw = d.right - d.left, dh = d.bottom - d.top;
    const auto cutLow = [](int64_t& side, int64_t& other, int64_t num, int64_t den) {
        if (side < 0) other += -side * num / den, side = 0;
    };
    const auto cutHigh = [](int64_t& side, int64_t& other, int64_t limit, int64_t num, int64_t den) {
        if (side > limit) other -= (side - limit) * num / den, side = limit;
    };
    cutLow(s.left, d.left, dw, sw);
    cutLow(s.top, d.top, dh, sh);
    cutHigh(s.right, d.right, src.width, dw, sw);
    cutHigh(s.bottom, d.bottom, src.height, dh, sh);
    cutLow(d.left, s.left, sw, dw);
    cutLow(d.top, s.top, sh, dh);
    cutHigh(d.right, s.right, dst.width, sw, dw);
    cutHigh(d.bottom, s.bottom, dst.height, sh, dh);
    if (s.left >= s.right || s.top >= s.bottom || d.left >= d.right || d.top >= d.bottom) return;
    const std::vector<int64_t> rows = walk(s.bottom - s.top, d.bottom - d.top);
    const std::vector<int64_t> columns = walk(s.right - s.left, d.right - d.left);
    for (size_t y = 0; y < rows.size(); ++y)
        for (size_t x = 0; x < columns.size(); ++x)
            convert(at<S>(src, s.left + columns[x], s.top + rows[y]),
                    at<D>(dst, d.left + int64_t(x), d.top + int64_t(y)));
}

// `sample(x, y, pb, area)` is the depth's sampler. 0, or what `abort` answered.
template <class P, class Sample>
int copySampled(RK_ProgressInfo* progress, const RK_LayerDef& src, const RK_LayerDef& dst,
                const GEO_Rect* src_rect, const GEO_Rect* dst_rect, Sample sample) {
    CopySides s, d;
    if (!copySides(src_rect, src, s) || !copySides(dst_rect, dst, d)) return 0;
    const int64_t sw = s.right - s.left, sh = s.bottom - s.top, dw = d.right - d.left, dh = d.bottom - d.top;
    if (sw == dw && sh == dh) {
        copyDraft<P, P>(src, dst, src_rect, dst_rect);
        return 0;
    }
    const int64_t sx = sw * 65536 / dw, sy = sh * 65536 / dh;
    RK_SampPB pb{};
    pb.src = &src;
    pb.x_radius = static_cast<int32_t>(sx / 2);
    pb.y_radius = static_cast<int32_t>(sy / 2);
    const double area = static_cast<double>(sx) * static_cast<double>(sy) / 65536.0;
    pb.area = area < 2147483647.0 ? static_cast<int32_t>(area) : INT32_MAX;
    int64_t x0 = s.left * 65536 + sx / 2 - 32768, y0 = s.top * 65536 + sy / 2 - 32768;
    if (d.left < 0) x0 += -d.left * sx, d.left = 0;
    if (d.top < 0) y0 += -d.top * sy, d.top = 0;
    d.right = std::min<int64_t>(d.right, dst.width), d.bottom = std::min<int64_t>(d.bottom, dst.height);
    for (int64_t y = d.top; y < d.bottom; ++y) {
        if (((y - d.top) & 63) == 0 && progress != nullptr && progress->abort_func != nullptr)
            if (const RK_Long answer = progress->abort_func(progress->refcon))
                return static_cast<int>(answer);
        for (int64_t x = d.left; x < d.right; ++x)
            at<P>(dst, x, y) =
                sample(static_cast<int32_t>(x0 + (x - d.left) * sx),
                       static_cast<int32_t>(y0 + (y - d.top) * sy), pb, sx > 0x10000 || sy > 0x10000);
    }
    return 0;
}

// What the slots of the processor record sample with.
inline RK_Pixel8 sampled(int32_t x, int32_t y, const RK_SampPB& pb, bool area, bool sse2, RK_Pixel8*) {
    const auto point = [&](int32_t px, int32_t py) { return bilinearDefault<RK_Pixel8>(px, py, *pb.src); };
    return area ? areaStraight<RK_Pixel8>(x, y, pb, sse2 ? Rounding::kHalfUp : Rounding::kTiesToEven, point)
                : point(x, y);
}
inline RK_Pixel16 sampled(int32_t x, int32_t y, const RK_SampPB& pb, bool area, bool sse2, RK_Pixel16*) {
    const auto point = [&](int32_t px, int32_t py) { return bilinearDefault<RK_Pixel16>(px, py, *pb.src); };
    return area ? areaStraight<RK_Pixel16>(x, y, pb, sse2 ? Rounding::kHalfUp : Rounding::kHalfAway, point)
                : point(x, y);
}
inline RK_PixelFloat sampled(int32_t x, int32_t y, const RK_SampPB& pb, bool area, bool, RK_PixelFloat*) {
    const auto point = [&](int32_t px, int32_t py) {
        return bilinearPortable<RK_PixelFloat>(px, py, *pb.src);
    };
    return area ? areaStraight<RK_PixelFloat>(x, y, pb, Rounding::kNone, point) : point(x, y);
}

}  // namespace plain

#endif
