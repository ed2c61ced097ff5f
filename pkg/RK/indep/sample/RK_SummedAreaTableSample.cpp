// Reading the tables. All weights, sums and the finish are double.
#include <algorithm>
#include <cmath>
#include <type_traits>

#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/sample/RK_SummedAreaTable.h"

namespace {

struct Sums {
    double A = 0, R = 0, G = 0, B = 0;

    template <class Entry>
    void add(const Entry& cell, double sign, double count, double wx, double wy) {
        A += sign * cell.alpha * count * wx * wy;
        R += sign * cell.red * count * wx * wy;
        G += sign * cell.green * count * wx * wy;
        B += sign * cell.blue * count * wx * wy;
    }
};

// Integer depths are limited to 0..full and rounded.
template <class P>
typename RKp_Depth<P>::Channel store(double v) {
    if constexpr (std::is_same_v<P, RK_PixelFloat>) {
        return static_cast<float>(v);
    } else {
        const auto full = static_cast<double>(RKp_Depth<P>::kFull);
        if (!(v >= 0)) return 0;
        return static_cast<typename RKp_Depth<P>::Channel>(v > full ? full : v + 0.5);
    }
}

template <class P>
P finish(const Sums& sums, double area) {
    if (!(sums.A > 0)) return P{};
    const auto full = static_cast<double>(RKp_Depth<P>::kFull);
    const double scale = full / sums.A;
    return {store<P>(std::clamp(sums.A / area, 0.0, full)), store<P>(sums.R * scale), store<P>(sums.G * scale),
            store<P>(sums.B * scale)};
}

}  // namespace

template <class Pixel, class Entry>
void RK_SummedAreaTable_SampleDraft(int32_t width, int32_t height, const Entry* table, int32_t left, int32_t top,
                                    int32_t right, int32_t bottom, Pixel* out) {
    *out = Pixel{};
    const int64_t w = int64_t{right} - left, h = int64_t{bottom} - top;
    // The product of two 33-bit sides can exceed 64 bits only when both are huge; then it is as good as infinite.
    const double area = static_cast<double>(w) * static_cast<double>(h);
    if (table == nullptr || !(area > 0)) return;
    const int32_t l = std::max(left, 0), t = std::max(top, 0), r = std::min(right, width), b = std::min(bottom, height);
    if (r <= l || b <= t) return;
    Sums sums;
    const auto term = [&](int32_t x, int32_t y, double sign) {
        const double count = static_cast<double>(x) * static_cast<double>(y);
        if (count != 0) sums.add(table[(int64_t{y} - 1) * width + (x - 1)], sign, count, 1, 1);
    };
    term(r, b, 1);
    term(l, t, 1);
    term(l, b, -1);
    term(r, t, -1);
    *out = finish<Pixel>(sums, area);
}

template <class Pixel, class Entry>
void RK_SummedAreaTable_SampleAA(int32_t width, int32_t height, const Entry* table, float left, float top, float right,
                                 float bottom, Pixel* out) {
    *out = Pixel{};
    double l = left + 0.5, t = top + 0.5, r = right + 0.5, b = bottom + 0.5;
    const double area = (r - l) * (b - t);
    if (table == nullptr || !(area > 0)) return;
    l = std::max(l, 0.0);
    t = std::max(t, 0.0);
    if (r >= width) r = width - 1e-5;
    if (b >= height) b = height - 1e-5;
    if (!(r > l) || !(b > t)) return;
    Sums sums;
    const auto corner = [&](double cx, double cy, double sign) {
        const double x0 = std::floor(cx), y0 = std::floor(cy);
        const double wx[2] = {1 - (cx - x0), cx - x0}, wy[2] = {1 - (cy - y0), cy - y0};
        for (int row = 0; row < 2; ++row) {
            for (int column = 0; column < 2; ++column) {
                const auto i = static_cast<int64_t>(x0) - 1 + column, j = static_cast<int64_t>(y0) - 1 + row;
                const double count = static_cast<double>((i + 1) * (j + 1));
                if (count == 0 || wx[column] == 0 || wy[row] == 0) continue;
                sums.add(table[j * width + i], sign, count, wx[column], wy[row]);
            }
        }
    };
    corner(r, b, 1);
    corner(l, t, 1);
    corner(l, b, -1);
    corner(r, t, -1);
    *out = finish<Pixel>(sums, area);
}

#define RKp_INSTANTIATE(Pixel, Entry)                                                                              \
    template RK_API void RK_SummedAreaTable_SampleDraft<Pixel, Entry>(int32_t, int32_t, const Entry*, int32_t,     \
                                                                      int32_t, int32_t, int32_t, Pixel*);          \
    template RK_API void RK_SummedAreaTable_SampleAA<Pixel, Entry>(int32_t, int32_t, const Entry*, float, float,   \
                                                                   float, float, Pixel*);
RKp_INSTANTIATE(RK_Pixel8, RK_PixelFloat)
RKp_INSTANTIATE(RK_Pixel16, RK_PixelFloat)
RKp_INSTANTIATE(RK_PixelFloat, RK_PixelDouble)
#undef RKp_INSTANTIATE
