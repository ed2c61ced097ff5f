// The area samplers once more: all pixels of the box in one plain pass.
#ifndef TEST_PLAIN_AREA_H
#define TEST_PLAIN_AREA_H

#include "test/plain/PlainSample.h"

namespace plain {

// How a form rounds its results; float is only narrowed.
enum class Rounding { kTiesToEven, kHalfUp, kHalfAway, kNone };
inline double rounded(Rounding how, double v) {
    switch (how) {
        case Rounding::kTiesToEven: return std::nearbyint(v);
        case Rounding::kHalfUp: return std::trunc(v + 0.5);
        case Rounding::kHalfAway: return std::round(v);
        default: return v;
    }
}

// One pixel along one axis: its index and the part of it that the run covers, in 1 / 65536.
struct Covered {
    int64_t index, part;
    bool partial() const { return part != 0x10000; }
};
// Partial ends with their fractions, whole ones between.
inline std::vector<Covered> coverage(int64_t from, int64_t to) {
    std::vector<Covered> v;
    int64_t i = from >> 16;
    if ((from & 0xFFFF) != 0) v.push_back({i++, 0x10000 - (from & 0xFFFF)});
    for (; i < to >> 16; ++i) v.push_back({i, 0x10000});
    if ((to & 0xFFFF) != 0) v.push_back({to >> 16, to & 0xFFFF});
    return v;
}
inline int64_t held(int64_t v, int64_t highest) { return v < 0 ? 0 : v > highest ? highest : v; }

struct Box {
    int64_t left, top, right, bottom;
    Box(int32_t x, int32_t y, const RK_SampPB& pb)
        : left(int64_t{x} - pb.x_radius + 32768),
          top(int64_t{y} - pb.y_radius + 32768),
          right(int64_t{x} + pb.x_radius + 32768),
          bottom(int64_t{y} + pb.y_radius + 32768) {}
    void clamp(const RK_LayerDef& src) {
        left = held(left, int64_t{src.width} << 16), right = held(right, int64_t{src.width} << 16);
        top = held(top, int64_t{src.height} << 16), bottom = held(bottom, int64_t{src.height} << 16);
    }
};

template <class P>
struct AreaSums {
    double A = 0, R = 0, G = 0, B = 0;
    void add(const P& p, double weight) {
        const double a = weight * static_cast<double>(p.alpha);
        A += a;
        R += a * static_cast<double>(p.red);
        G += a * static_cast<double>(p.green);
        B += a * static_cast<double>(p.blue);
    }
};

// `point` samples the source at a position.
template <class P, class Point>
P areaStraight(int32_t x, int32_t y, const RK_SampPB& pb, Rounding rounding, Point point) {
    using C = typename DepthOf<P>::D::Channel;
    const RK_LayerDef& src = *pb.src;
    const double k16 = 1.0 / 65536, k32 = k16 * k16;
    const bool wide = pb.x_radius > 32768, high = pb.y_radius > 32768;
    Box box(x, y, pb);
    AreaSums<P> sums;
    if (!wide && !high) {
        sums.add(point(x, y),
                 static_cast<double>(box.right - box.left) * static_cast<double>(box.bottom - box.top) * k32);
    } else if (wide != high) {
        const double across = 2.0 * (wide ? pb.y_radius : pb.x_radius);
        const int size = wide ? src.width : src.height;
        for (const Covered& c : coverage(wide ? box.left : box.top, wide ? box.right : box.bottom)) {
            if (c.index < 0 || c.index >= size) continue;
            const int32_t at = static_cast<int32_t>(c.index * 0x10000);
            sums.add(wide ? point(at, y) : point(x, at),
                     c.partial() ? static_cast<double>(c.part) * across * k32 : across * k16);
        }
    } else {
        box.clamp(src);
        for (const Covered& row : coverage(box.top, box.bottom))
            for (const Covered& column : coverage(box.left, box.right)) {
                const double r = static_cast<double>(row.part), c = static_cast<double>(column.part);
                const double weight = row.partial() && column.partial() ? r * c * k32
                                      : row.partial()                   ? r * k16
                                      : column.partial()                ? c * k16
                                                                        : 1.0;
                sums.add(at<P>(src, column.index, row.index), weight);
            }
    }
    if (sums.A == 0) return {};
    const double limit = static_cast<double>(DepthOf<P>::D::W);
    const auto least = [&](double v) { return v < limit ? v : limit; };
    const double alpha = least(sums.A * 0.25 / (pb.x_radius * k16 * pb.y_radius * k16));
    if (alpha == 0) return {};
    const auto colour = [&](double sum) {
        const double v = sum / sums.A;
        return static_cast<C>(rounded(rounding, sizeof(P) == 16 ? v : least(v)));
    };
    return {static_cast<C>(rounded(rounding, alpha)), colour(sums.R), colour(sums.G), colour(sums.B)};
}

inline RK_Pixel8 areaPremul(int32_t x, int32_t y, const RK_SampPB& pb) {
    const RK_LayerDef& src = *pb.src;
    const bool wide = pb.x_radius > 32768, high = pb.y_radius > 32768;
    Box box(x, y, pb);
    box.clamp(src);
    const int64_t width = box.right - box.left, height = box.bottom - box.top;
    int64_t A = 0, R = 0, G = 0, B = 0;
    const auto add = [&](const RK_Pixel8& p, int64_t covered) {
        A += p.alpha * (covered << 8) / 65536;
        R += p.red * (covered << 8) / 65536;
        G += p.green * (covered << 8) / 65536;
        B += p.blue * (covered << 8) / 65536;
    };
    if (!wide && !high) {
        add(bilinearPremul(x, y, src), width * height / 65536);
    } else if (wide != high) {
        const int64_t across = wide ? height : width;
        const int64_t centre = (wide ? box.top : box.left) + (across >> 1) - 32768;
        const int32_t middle = static_cast<int32_t>(centre);
        for (const Covered& c : coverage(wide ? box.left : box.top, wide ? box.right : box.bottom)) {
            const int32_t at = static_cast<int32_t>(c.index * 0x10000);
            add(wide ? bilinearPremul(at, middle, src) : bilinearPremul(middle, at, src),
                c.part * across / 65536);
        }
    } else {
        for (const Covered& row : coverage(box.top, box.bottom))
            for (const Covered& column : coverage(box.left, box.right))
                add(at<RK_Pixel8>(src, column.index, row.index), row.part * column.part / 65536);
    }
    const int64_t d = (int64_t{pb.area} >> 8) + (pb.area >> 7 & 1), h = d >> 1;
    if (A == 0 || d == 0) return {};
    const auto mean = [&](int64_t sum) {
        return static_cast<uint8_t>(std::min<int64_t>(255, (sum + h) / d));
    };
    if (mean(A) == 0) return {};
    return {mean(A), mean(R), mean(G), mean(B)};
}

}  // namespace plain

#endif
