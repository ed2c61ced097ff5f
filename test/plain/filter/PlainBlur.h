// The one-dimensional blurs once more: a line is read, filtered and written. At 8 bits, where sums are exact,
// a window is a difference of two; at 16 bits and float, where the order of the sums shows, they run along
// the line.
#ifndef TEST_PLAIN_FILTER_BLUR_H
#define TEST_PLAIN_FILTER_BLUR_H

#include <algorithm>
#include <array>
#include <type_traits>
#include <vector>

#include "test/plain/filter/PlainKernel.h"

namespace plain {

// ---- Lines ----------------------------------------------------------------------------------------------

// Alpha, red, green, blue.
template <class P>
using Channels = std::array<typename DepthOf<P>::D::Channel, 4>;

// Pixels from index `first` of a frame that has the source line's start at 0.
template <class P>
struct Line {
    int64_t first = 0;
    std::vector<Channels<P>> pixels;

    int64_t end() const { return first + static_cast<int64_t>(pixels.size()); }
    bool holds(int64_t i) const { return i >= first && i < end(); }
    const Channels<P>& at(int64_t i) const { return pixels[static_cast<size_t>(i - first)]; }
    Channels<P> orZero(int64_t i) const { return holds(i) ? at(i) : Channels<P>{}; }
};

struct Blur {
    float radius;
    int32_t passes;  // box only
    uint32_t flags;
    int32_t src_direction, src_premultiplied, dst_direction, dst_premultiplied;
    uint8_t force_copy;

    bool wants(int k) const { return (flags >> k & 1) != 0; }
    bool wantsColour() const { return (flags & 0xE) != 0; }
    bool renormalises() const { return (flags & 0x10) != 0; }
    bool premultipliesOnLoad() const { return src_premultiplied == 0 && wantsColour(); }
};

template <class C>
C cut(int64_t v) {
    return static_cast<C>(v);
}
template <class C>
C cut(float v) {
    if constexpr (std::is_same_v<C, float>)
        return v;
    else
        return static_cast<C>(toInt(v));
}

// ---- Box ------------------------------------------------------------------------------------------------

// What a window holds: weighted sums of the channels, and its divisor.
template <class N, class W>
struct Window {
    N sum[4] = {0, 0, 0, 0};
    W divisor = 0;
};

// The output pixel at 8 bits: sums and divisor are in 1/1024.
inline Channels<RK_Pixel8> boxPixel(const Blur& b, bool divides, const Window<int64_t, int64_t>& w,
                                    Channels<RK_Pixel8> out) {
    const int64_t D = w.divisor, A = w.sum[0], t = (A + 127) / 255;
    const bool none = divides ? D == 0 || t == 0 : D == 0;
    if (none && divides && b.wantsColour()) return {};
    for (int k = 0; k < 4; ++k) {
        if (!b.wants(k)) continue;
        int64_t v = 0;
        if (!none && divides && k > 0) v = std::min<int64_t>(255, (w.sum[k] + t / 2) / t);
        if (!none && (!divides || k == 0)) v = (w.sum[k] + D / 2) / D;
        out[static_cast<size_t>(k)] = static_cast<uint8_t>(v);
    }
    return out;
}
inline Channels<RK_Pixel16> boxPixel(const Blur& b, bool divides, const Window<float, float>& w,
                                     Channels<RK_Pixel16> out) {
    const float D = w.divisor, t = 3.0517578e-05f * w.sum[0];
    const bool none = divides ? D == 0 || t == 0 : D == 0;
    if (none && divides && b.wantsColour()) return {};
    for (int k = 0; k < 4; ++k) {
        if (!b.wants(k)) continue;
        float v = 0;
        if (!none && divides && k > 0) {
            v = (w.sum[k] + 0.5f * t) / t;
            if (v > 32768.0f) v = 32768.0f;
        }
        if (!none && (!divides || k == 0)) v = (w.sum[k] + 0.5f * D) / D;
        out[static_cast<size_t>(k)] = cut<uint16_t>(v);
    }
    return out;
}
inline Channels<RK_PixelFloat> boxPixel(const Blur& b, bool divides, const Window<double, float>& w,
                                        Channels<RK_PixelFloat> out) {
    const double D = w.divisor, t = w.sum[0];
    const bool none = divides ? D == 0 || t == 0 : D == 0;
    if (none && divides && b.wantsColour()) return {};
    for (int k = 0; k < 4; ++k) {
        if (!b.wants(k)) continue;
        double v = 0;
        if (!none) v = w.sum[k] / (divides && k > 0 ? t : D);
        if (v > 1.0) v = 1.0;
        if (v < 1e-30) v = 0.0;
        out[static_cast<size_t>(k)] = static_cast<float>(v);
    }
    return out;
}

inline std::vector<Window<int64_t, int64_t>> boxWindows(const Blur& b, const Line<RK_Pixel8>& in,
                                                        int64_t first, int64_t end) {
    const float ceiling = std::ceil(b.radius);
    const int64_t R = static_cast<int64_t>(ceiling), f = static_cast<int64_t>((ceiling - b.radius) * 1024.0f);
    // Sums of the pixels before each.
    std::vector<std::array<int64_t, 4>> before(1);
    for (const Channels<RK_Pixel8>& c : in.pixels) {
        before.push_back(before.back());
        for (size_t k = 0; k < 4; ++k) before.back()[k] += c[k];
    }
    std::vector<Window<int64_t, int64_t>> windows;
    for (int64_t x = first; x < end; ++x) {
        Window<int64_t, int64_t> w;
        const int64_t low = std::max(x - R, in.first), high = std::min(x + R + 1, in.end());
        int64_t inside = 0;
        if (low < high) {
            const size_t from = static_cast<size_t>(low - in.first),
                         to = static_cast<size_t>(high - in.first);
            for (size_t k = 0; k < 4; ++k) w.sum[k] = 1024 * (before[to][k] - before[from][k]);
            inside = 1024 * (high - low);
        }
        for (const int64_t edge : {x - R, x + R}) {
            if (f == 0 || !in.holds(edge)) continue;
            for (size_t k = 0; k < 4; ++k) w.sum[k] -= f * in.at(edge)[k];
            inside -= f;
        }
        w.divisor = b.renormalises() ? inside : (2 * R + 1) * 1024 - 2 * f;
        windows.push_back(w);
    }
    return windows;
}
// N is the type of the sums; weights and counts are float.
template <class N, class P>
std::vector<Window<N, float>> runningWindows(const Blur& b, const Line<P>& in, int64_t first, int64_t end) {
    const float ceiling = std::ceil(b.radius), f = ceiling - b.radius;
    const int64_t R = static_cast<int64_t>(ceiling);
    const float whole = static_cast<float>(2 * R + 1) - 2.0f * f;
    std::vector<Window<N, float>> windows;
    N sum[4] = {0, 0, 0, 0};
    float count = 0;
    const auto each = [](auto&& step) {
        for (size_t k = 0; k < 4; ++k) step(k);
    };
    int64_t trailing = first - 1 - R;
    for (int64_t i = std::max(trailing, in.first); i <= std::min(trailing + 2 * R, in.end() - 1); ++i) {
        each([&](size_t k) { sum[k] += static_cast<N>(in.at(i)[k]); });
        count += 1.0f;
    }
    for (int64_t x = first; x < end; ++x) {
        N edge[4] = {0, 0, 0, 0};
        float edge_w = 0;
        const int64_t leading = trailing + 2 * R + 1;
        if (in.holds(trailing)) {
            each([&](size_t k) { sum[k] -= static_cast<N>(in.at(trailing)[k]); });
            count -= 1.0f;
        }
        ++trailing;
        if (f != 0 && in.holds(trailing)) {
            each([&](size_t k) { edge[k] = static_cast<N>(in.at(trailing)[k]); });
            edge_w = f;
        }
        if (in.holds(leading)) {
            each([&](size_t k) { sum[k] += static_cast<N>(in.at(leading)[k]); });
            count += 1.0f;
            if (f != 0) {
                each([&](size_t k) { edge[k] += static_cast<N>(in.at(leading)[k]); });
                edge_w += f;
            }
        }
        Window<N, float> w;
        each([&](size_t k) { w.sum[k] = sum[k] - edge[k] * static_cast<N>(f); });
        w.divisor = b.renormalises() ? count - edge_w : whole;
        windows.push_back(w);
    }
    return windows;
}
inline std::vector<Window<float, float>> boxWindows(const Blur& b, const Line<RK_Pixel16>& in, int64_t first,
                                                    int64_t end) {
    return runningWindows<float>(b, in, first, end);
}
inline std::vector<Window<double, float>> boxWindows(const Blur& b, const Line<RK_PixelFloat>& in,
                                                     int64_t first, int64_t end) {
    return runningWindows<double>(b, in, first, end);
}

template <class P>
Line<P> boxStage(const Blur& b, const Line<P>& in, int64_t first, int64_t end, bool divides) {
    Line<P> out{first, {}};
    const auto windows = boxWindows(b, in, first, end);
    for (int64_t x = first; x < end; ++x)
        out.pixels.push_back(boxPixel(b, divides, windows[static_cast<size_t>(x - first)], in.orZero(x)));
    return out;
}
// The destination's line [first, end) of the source's `line`.
template <class P>
Line<P> boxLine(const Blur& b, Line<P> line, int64_t first, int64_t end) {
    const int64_t R = static_cast<int64_t>(std::ceil(b.radius)), n = b.passes, size = line.end();
    const auto kept = [&](int64_t low, int64_t high) {
        Line<P> part{low, {}};
        for (int64_t i = low; i < high; ++i) part.pixels.push_back(line.at(i));
        return part;
    };
    if (b.force_copy != 0 || b.premultipliesOnLoad())
        line = kept(std::max<int64_t>(0, first - n * R), std::min(size, end + n * R));
    for (int64_t k = 1; k < n; ++k)
        line = boxStage(b, line, std::max(-k * R, first - (n - k) * R),
                        std::min(size + k * R, end + (n - k) * R), false);
    return boxStage(b, line, first, end, b.dst_premultiplied == 0);
}

// ---- Gaussian -------------------------------------------------------------------------------------------

inline std::vector<int64_t> lineWeights(float radius) {
    std::vector<int64_t> w = {255};
    const int R = halfSide(double{radius});
    for (int i = 1; i <= R; ++i) w.push_back(toInt(gaussianValue(i / (double{radius} + 1.0)) * 255.0));
    return w;
}
// Sums are exact at 8 bits and float beyond; each term is added by itself.
template <class P>
Line<P> gaussianLine(const Blur& b, const Line<P>& in, int64_t first, int64_t end) {
    constexpr bool kBytes = sizeof(P) == 4, kReal = sizeof(P) == 16;
    using C = typename DepthOf<P>::D::Channel;
    using N = std::conditional_t<kBytes, int64_t, float>;
    const std::vector<int64_t> weights = lineWeights(b.radius);
    int64_t total = weights[0];
    for (size_t k = 1; k < weights.size(); ++k) total += 2 * weights[k];
    Line<P> result{first, {}};
    for (int64_t x = first; x < end; ++x) {
        N S[4] = {0, 0, 0, 0};
        int64_t inside = 0;
        const auto add = [&](int64_t i, int64_t weight) {
            if (!in.holds(i)) return;
            for (size_t k = 0; k < 4; ++k) {
                if constexpr (kReal)
                    S[k] += in.at(i)[k] * static_cast<float>(weight);
                else
                    S[k] += static_cast<N>(in.at(i)[k] * weight);
            }
            inside += weight;
        };
        add(x, weights[0]);
        for (size_t k = 1; k < weights.size(); ++k) {
            add(x + static_cast<int64_t>(k), weights[k]);
            add(x - static_cast<int64_t>(k), weights[k]);
        }
        const int64_t whole = b.renormalises() ? inside : total;
        const N D = static_cast<N>(whole), H = kReal ? N(0) : static_cast<N>(whole / 2);
        Channels<P> out = in.orZero(x);
        const bool divides = b.dst_premultiplied == 0;
        const N Sa = b.wants(0) ? S[0] : static_cast<N>(out[0]) * D;
        const bool none = D == 0 || (divides && Sa == 0);
        for (int k = 0; k < 4; ++k) {
            if (!b.wants(k)) continue;
            C& c = out[static_cast<size_t>(k)];
            if (none) {
                c = 0;
            } else if (!divides || k == 0) {
                c = cut<C>((S[k] + H) / D);
            } else if constexpr (kBytes) {
                c = static_cast<C>(std::min<int64_t>(255, (S[k] * 255 + Sa / 2) / Sa));
            } else if constexpr (kReal) {
                c = S[k] / Sa;
            } else {
                const float v = (S[k] * 32768.0f + Sa * 0.5f) / Sa;
                c = cut<C>(v > 32768.0f ? 32768.0f : v);
            }
        }
        result.pixels.push_back(out);
    }
    return result;
}

// ---- Worlds ---------------------------------------------------------------------------------------------

// A world as lines along its direction.
struct LinesOf {
    const RK_LayerDef& world;
    bool columns;

    int64_t count() const { return columns ? world.width : world.height; }
    int64_t length() const { return columns ? world.height : world.width; }
    int64_t originAlong() const { return columns ? world.origin_y : world.origin_x; }
    int64_t originAcross() const { return columns ? world.origin_x : world.origin_y; }
    template <class P>
    P& pixel(int64_t line, int64_t i) const {
        return columns ? at<P>(world, line, i) : at<P>(world, i, line);
    }
};

// The first `lines` lines of the destination; `filter(line, first, end)` gives one from the source's line.
template <class P, class Filter>
void blurLines(const Blur& b, const RK_LayerDef& src_world, const RK_LayerDef& dst_world, int64_t lines,
               Filter filter) {
    using D = typename DepthOf<P>::D;
    using C = typename D::Channel;
    const LinesOf src{src_world, b.src_direction != 0}, dst{dst_world, b.dst_direction != 0};
    const int64_t first = dst.originAlong() - src.originAlong(), end = first + dst.length();
    for (int64_t i = 0; i < std::min(lines, dst.count()); ++i) {
        const int64_t from = i + dst.originAcross() - src.originAcross();
        Line<P> out{first, std::vector<Channels<P>>(static_cast<size_t>(dst.length()))};
        if (from >= 0 && from < src.count()) {
            Line<P> in;
            for (int64_t x = 0; x < src.length(); ++x) {
                const P& p = src.pixel<P>(from, x);
                Channels<P> c = {p.alpha, p.red, p.green, p.blue};
                for (int k = 1; k < 4 && b.premultipliesOnLoad(); ++k)
                    if (b.wants(k)) c[size_t(k)] = static_cast<C>(D::mul(c[size_t(k)], p.alpha));
                in.pixels.push_back(c);
            }
            out = filter(in, first, end);
        }
        for (int64_t x = 0; x < dst.length(); ++x) {
            const Channels<P>& c = out.at(first + x);
            dst.pixel<P>(i, x) = {c[0], c[1], c[2], c[3]};
        }
    }
}
template <class P>
void boxBlur(const Blur& b, const RK_LayerDef& src, const RK_LayerDef& dst, int64_t lines = INT64_MAX) {
    blurLines<P>(b, src, dst, lines, [&](const Line<P>& line, int64_t first, int64_t end) {
        return boxLine(b, line, first, end);
    });
}
template <class P>
void gaussianBlur(const Blur& b, const RK_LayerDef& src, const RK_LayerDef& dst, int64_t lines = INT64_MAX) {
    blurLines<P>(b, src, dst, lines, [&](const Line<P>& line, int64_t first, int64_t end) {
        return gaussianLine(b, line, first, end);
    });
}

}  // namespace plain

#endif
