// Summed-area tables, decimation and the behind scans once more.
#ifndef TEST_PLAIN_REDUCE_H
#define TEST_PLAIN_REDUCE_H

#include "test/plain/PlainCopy.h"

namespace plain {

// Alpha, red, green, blue.
struct Quad {
    double v[4] = {0, 0, 0, 0};
    Quad() = default;
    template <class Entry>
    explicit Quad(const Entry& e) : v{double{e.alpha}, double{e.red}, double{e.green}, double{e.blue}} {}
    void add(const Quad& q, double weight) {
        for (int k = 0; k < 4; ++k) v[k] += q.v[k] * weight;
    }
};

// The mean of the premultiplied pixels from the origin through each pixel; Entry is how cells are kept.
template <class P, class Entry>
std::vector<Entry> areaTable(const RK_LayerDef& w) {
    const double full = static_cast<double>(DepthOf<P>::D::W);
    const int stride = w.width + 1;
    std::vector<Quad> sums(static_cast<size_t>(stride) * static_cast<size_t>(w.height + 1));
    std::vector<Entry> cells;
    using Cell = decltype(Entry::alpha);
    for (int y = 0; y < w.height; ++y)
        for (int x = 0; x < w.width; ++x) {
            const P& p = at<P>(w, x, y);
            const double a = static_cast<double>(p.alpha);
            const double c[3] = {static_cast<double>(p.red), static_cast<double>(p.green),
                                 static_cast<double>(p.blue)};
            const auto sum = [&](int column, int row) -> Quad& {
                return sums[static_cast<size_t>(row + 1) * static_cast<size_t>(stride) +
                            static_cast<size_t>(column + 1)];
            };
            Quad cell;
            for (int k = 0; k < 4; ++k) {
                const double sample = a == 0 ? 0 : k == 0 ? a : a == full ? c[k - 1] : c[k - 1] * (a / full);
                sum(x, y).v[k] = sample + sum(x - 1, y).v[k] + sum(x, y - 1).v[k] - sum(x - 1, y - 1).v[k];
                cell.v[k] = sum(x, y).v[k] * (1.0 / ((x + 1.0) * (y + 1.0)));
            }
            cells.push_back({static_cast<Cell>(cell.v[0]), static_cast<Cell>(cell.v[1]),
                             static_cast<Cell>(cell.v[2]), static_cast<Cell>(cell.v[3])});
        }
    return cells;
}

template <class P>
P boxMean(const Quad& sum, double area) {
    using D = typename DepthOf<P>::D;
    using C = typename D::Channel;
    const double full = static_cast<double>(D::W), A = sum.v[0];
    if (!(A > 0)) return {};
    const auto kept = [&](double v) {
        if constexpr (D::kReal)
            return static_cast<C>(v);
        else
            return static_cast<C>(v < 0 ? 0 : v > full ? full : v + 0.5);
    };
    const double k = full / A;
    return {kept(std::min(std::max(A / area, 0.0), full)), kept(sum.v[1] * k), kept(sum.v[2] * k),
            kept(sum.v[3] * k)};
}

template <class P, class Entry>
P boxDraft(const std::vector<Entry>& cells, int width, int height, int64_t left, int64_t top, int64_t right,
           int64_t bottom) {
    const int64_t area = (right - left) * (bottom - top);
    const int64_t l = std::max<int64_t>(left, 0), t = std::max<int64_t>(top, 0);
    const int64_t r = std::min<int64_t>(right, width), b = std::min<int64_t>(bottom, height);
    if (area <= 0 || r <= l || b <= t) return {};
    Quad sum;
    const auto term = [&](int64_t x, int64_t y, double sign) {
        if (x * y != 0)
            sum.add(Quad(cells[static_cast<size_t>((y - 1) * width + x - 1)]),
                    sign * static_cast<double>(x * y));
    };
    term(r, b, 1), term(l, t, 1), term(l, b, -1), term(r, t, -1);
    return boxMean<P>(sum, static_cast<double>(area));
}

template <class P, class Entry>
P boxSmooth(const std::vector<Entry>& cells, int width, int height, float left, float top, float right,
            float bottom) {
    double l = left + 0.5, t = top + 0.5, r = right + 0.5, b = bottom + 0.5;
    const double area = (r - l) * (b - t);
    if (!(area > 0)) return {};
    l = std::max(l, 0.0), t = std::max(t, 0.0);
    if (r >= width) r = width - 1e-5;
    if (b >= height) b = height - 1e-5;
    if (r <= l || b <= t) return {};
    Quad sum;
    const auto corner = [&](double cx, double cy, double sign) {
        const int fx = static_cast<int>(std::floor(cx)), fy = static_cast<int>(std::floor(cy));
        for (int j = fy - 1; j <= fy; ++j)
            for (int i = fx - 1; i <= fx; ++i) {
                const double wx = i < fx ? 1 - (cx - fx) : cx - fx, wy = j < fy ? 1 - (cy - fy) : cy - fy;
                if (i < 0 || j < 0 || wx == 0 || wy == 0) continue;
                const Quad cell(
                    cells[static_cast<size_t>(j) * static_cast<size_t>(width) + static_cast<size_t>(i)]);
                for (int k = 0; k < 4; ++k) sum.v[k] += sign * cell.v[k] * ((i + 1.0) * (j + 1.0)) * wx * wy;
            }
    };
    corner(r, b, 1), corner(l, t, 1), corner(l, b, -1), corner(r, t, -1);
    return boxMean<P>(sum, area);
}

// ---- Decimation -----------------------------------------------------------------------------------------

template <class P>
P pairMean(const P& first, const P& second) {
    using D = typename DepthOf<P>::D;
    using C = typename D::Channel;
    const int64_t a0 = first.alpha, a1 = second.alpha, alpha = (a0 + a1) >> 1;
    const auto mix = [&](int64_t c0, int64_t c1) {
        if (a0 == a1) return static_cast<C>((c0 + c1) >> 1);
        const int64_t m = (D::mul(c0, a0) + D::mul(c1, a0)) >> 1;
        if (sizeof(P) == 4) return static_cast<C>(D::div(alpha, m));
        return static_cast<C>(m < alpha ? (((a0 + a1) >> 2) + m * 32768) / alpha : 32768);
    };
    return {static_cast<C>(alpha), mix(first.red, second.red), mix(first.green, second.green),
            mix(first.blue, second.blue)};
}
// Into `out`, of any size; the box leaves those alone that have no pair and are no kept last pixel.
template <class P>
void halfLine(const std::vector<P>& line, bool keep_odd, bool gauss, std::vector<P>& out) {
    using C = typename DepthOf<P>::D::Channel;
    for (size_t i = 0; i < out.size(); ++i) {
        if (!gauss) {
            if (2 * i + 1 < line.size()) {
                out[i] = pairMean(line[2 * i], line[2 * i + 1]);
            } else if (keep_odd && 2 * i + 1 == line.size()) {
                out[i] = line[2 * i];
                out[i].alpha = static_cast<C>(out[i].alpha >> 1);
            }
            continue;
        }
        static const float weights[] = {0.05f, 0.25f, 0.4f, 0.25f, 0.05f};
        float A = 0, R = 0, G = 0, B = 0;
        for (size_t k = 0; k < 5; ++k) {
            if (2 * i + k < 2 || 2 * i + k - 2 >= line.size()) continue;
            const P& p = line[2 * i + k - 2];
            if (p.alpha == 0) continue;
            const float a = weights[k] * static_cast<float>(p.alpha);
            A += a;
            R += a * static_cast<float>(p.red);
            G += a * static_cast<float>(p.green);
            B += a * static_cast<float>(p.blue);
        }
        const float inverse = 1.0f / A;
        const auto rounded_up = [](float v) { return static_cast<C>(v + 0.5f); };
        out[i] = A == 0 ? P{}
                        : P{rounded_up(A), rounded_up(R * inverse), rounded_up(G * inverse),
                            rounded_up(B * inverse)};
    }
}
// Rows of pixels.
template <class P>
using Rows = std::vector<std::vector<P>>;
template <class P>
Rows<P> turned(const Rows<P>& rows) {
    Rows<P> out(rows[0].size());
    for (const auto& row : rows)
        for (size_t x = 0; x < row.size(); ++x) out[x].push_back(row[x]);
    return out;
}
// Into `out`, of any size with pixels; what stands between the passes starts clear.
template <class P>
void halve(const Rows<P>& rows, bool keep_odd, bool gauss, Rows<P>& out) {
    const size_t w = rows[0].size(), h = rows.size(), W = out[0].size(), H = out.size();
    const bool vertical_first = h * W > w * H;
    const auto pass = [&](const Rows<P>& from, Rows<P>& to) {
        for (size_t y = 0; y < from.size(); ++y) halfLine(from[y], keep_odd, gauss, to[y]);
    };
    if (vertical_first) {
        Rows<P> half(w, std::vector<P>(H));
        pass(turned(rows), half);
        pass(turned(half), out);
    } else {
        Rows<P> half(h, std::vector<P>(W)), columns = turned(out);
        pass(rows, half);
        pass(turned(half), columns);
        out = turned(columns);
    }
}

// ---- Behind scans ---------------------------------------------------------------------------------------

// `sample(x, y)` reads the source.
template <class P, class Sample>
void behind(int count, const int32_t line[4], const int32_t steps[4], const RK_SampPB& pb, P* pixels,
            Sample sample) {
    using D = typename DepthOf<P>::D;
    using C = typename D::Channel;
    const int64_t n = pb.motion_samples, full = D::W;
    const int64_t o = sizeof(P) == 4 ? pb.comp_mode.opacity : pb.comp_mode.opacity16;
    if (n < 1) return;
    for (int64_t i = 0; i < count; ++i) {
        P& p = pixels[i];
        if (p.alpha >= full) continue;
        int64_t at[4];
        for (int k = 0; k < 4; ++k) at[k] = line[k] + i * steps[k];
        const int64_t dx = (at[2] - at[0]) / n, dy = (at[3] - at[1]) / n;
        int64_t A = 0, R = 0, G = 0, B = 0;
        for (int64_t k = 0; k < n; ++k) {
            const P s = sample(static_cast<int32_t>(at[0] + k * dx), static_cast<int32_t>(at[1] + k * dy));
            A += s.alpha;
            R += int64_t{s.red} * s.alpha, G += int64_t{s.green} * s.alpha, B += int64_t{s.blue} * s.alpha;
        }
        P mean{};
        if (A != 0)
            mean = {static_cast<C>(A / n), static_cast<C>(R / A), static_cast<C>(G / A),
                    static_cast<C>(B / A)};
        const int64_t a = mean.alpha, d = p.alpha;
        if (d == 0) {
            p = mean;
            if (o < full) p.alpha = static_cast<C>(sizeof(P) == 4 ? pb.fcm_table[o * 256 + a] : D::mul(o, a));
        } else if (a > 0) {
            const int64_t s = a * o * (full - d), t = d * full * full;
            const auto mix = [&](int64_t c, int64_t dc) {
                return static_cast<C>((c * s + dc * t) / (s + t));
            };
            p = {static_cast<C>((s + t) / (full * full)), mix(mean.red, p.red), mix(mean.green, p.green),
                 mix(mean.blue, p.blue)};
        }
    }
}

}  // namespace plain

#endif
