// The row scans of the transforms: one destination row of source pixels, gathered in the scratch line. Each gives the
// sum of the alphas that it wrote.
#ifndef RKP_TRANSFORM_SCANS_T_H
#define RKP_TRANSFORM_SCANS_T_H

#include <type_traits>

#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/sample/RKp_NNSampleT.h"
#include "RK/indep/sample/RKp_TransformSetup.h"

// What a row's scan reads, and where it writes.
template <class P>
struct RKp_ScanRow {
    const RK_LayerDef& src;
    const RK_SamplerBundle<P>& samplers;
    int32_t width;
    P* line;
};

inline RK_SampPB RKp_MakeSampPB(const RK_LayerDef& src, const RKp_Walk& walk) {
    RK_SampPB pb{};
    pb.x_radius = walk.x_radius;
    pb.y_radius = walk.y_radius;
    pb.area = walk.area;
    pb.src = &src;
    return pb;
}

inline int32_t RKp_Advance(int32_t position, int32_t step, int32_t count) {
    return static_cast<int32_t>(static_cast<uint32_t>(position) +
                                static_cast<uint32_t>(step) * static_cast<uint32_t>(count));
}

// Can the row's positions leave 16 bits, and so wrap?
inline bool RKp_RowLeavesRange(const RKp_Walk& walk, int32_t width) {
    const auto leaves = [width](int32_t from, int32_t step) {
        const double end = from + static_cast<double>(step) * width;
        return end < -32768.0 * 65536 || end > 32767.0 * 65536;
    };
    return leaves(walk.x, walk.dx) || leaves(walk.y, walk.dy);
}

// ---- Draft, at rest --------------------------------------------------------------------------------------

// What lies inside is one run: it is sought from both ends and fetched without tests.
template <class P>
RK_AlphaSum<P> RKp_ScanDraft(const RKp_ScanRow<P>& row, const RKp_Walk& start) {
    const int32_t x0 = RKp_Advance(start.x, RK_kHalfPixel, 1), y0 = RKp_Advance(start.y, RK_kHalfPixel, 1);
    const auto column = [&](int32_t i) { return RKp_Advance(x0, start.dx, i) >> 16; };
    const auto line = [&](int32_t i) { return RKp_Advance(y0, start.dy, i) >> 16; };
    const auto inside = [&](int32_t i) {
        const int32_t xi = column(i), yi = line(i);
        return xi >= 0 && xi < row.src.width && yi >= 0 && yi < row.src.height;
    };
    RK_AlphaSum<P> sum = 0;
    const auto fetch = [&](int32_t i) {
        const auto* pixels = reinterpret_cast<const P*>(static_cast<const char*>(row.src.data) +
                                                        static_cast<ptrdiff_t>(line(i)) * row.src.rowbytes);
        row.line[i] = pixels[column(i)];
        sum += row.line[i].alpha;
    };
    int32_t begin = 0, end = row.width;
    if (RKp_RowLeavesRange(start, row.width)) {
        for (; begin < end; ++begin) {
            row.line[begin] = P{};
            if (inside(begin)) fetch(begin);
        }
        return sum;
    }
    while (begin < end && !inside(begin)) row.line[begin++] = P{};
    while (begin < end && !inside(end - 1)) row.line[--end] = P{};
    for (; begin < end; ++begin) fetch(begin);
    return sum;
}

// ---- Best, at rest ---------------------------------------------------------------------------------------

template <class P>
RK_AlphaSum<P> RKp_ScanArea(const RKp_ScanRow<P>& row, RKp_Walk walk, const RK_SampPB& pb) {
    RK_AlphaSum<P> sum = 0;
    for (int32_t i = 0; i < row.width; ++i, walk.nextPixel()) {
        row.samplers.area(nullptr, walk.x, walk.y, &pb, row.line + i);
        sum += row.line[i].alpha;
    }
    return sum;
}

// From both ends with bounds tests until all four neighbours are inside; between the two without.
template <class P>
RK_AlphaSum<P> RKp_ScanBilinear(const RKp_ScanRow<P>& row, const RKp_Walk& walk, const RK_SampPB& pb) {
    RK_AlphaSum<P> sum = 0;
    const auto plus = [&](int32_t i) {
        uint8_t all_inside = 0;
        row.samplers.plus(nullptr, RKp_Advance(walk.x, walk.dx, i), RKp_Advance(walk.y, walk.dy, i), &pb, &all_inside,
                          row.line + i);
        sum += row.line[i].alpha;
        return all_inside != 0;
    };
    const bool every = RKp_RowLeavesRange(walk, row.width);
    int32_t begin = 0, end = row.width;
    while (begin < end)
        if (plus(begin++) && !every) break;
    while (begin < end)
        if (plus(--end)) break;
    if (begin >= end) return sum;

    const int32_t x = RKp_Advance(walk.x, walk.dx, begin), y = RKp_Advance(walk.y, walk.dy, begin);
    if (walk.dx == RK_kOnePixel && walk.dy == 0) {
        row.samplers.span(nullptr, end - begin, x, y, &pb, &sum, row.line + begin);
        return sum;
    }
    RKp_Walk inner = walk;
    inner.x = x;
    inner.y = y;
    for (; begin < end; ++begin, inner.nextPixel()) {
        row.samplers.no_clip(nullptr, inner.x, inner.y, &pb, row.line + begin);
        sum += row.line[begin].alpha;
    }
    return sum;
}

// ---- Motion ----------------------------------------------------------------------------------------------

// The samples of one destination pixel; colours weigh by alpha.
template <class P>
class RKp_MotionSums {
  public:
    void add(const P& p) {
        if (p.alpha == 0) return;
        const Sum a = p.alpha;
        a_ += a;
        r_ += p.red * a;
        g_ += p.green * a;
        b_ += p.blue * a;
    }
    P mean(int64_t samples) const {
        if (a_ == 0) return P{};
        const Sum n = static_cast<Sum>(samples);
        using D = RKp_Depth<P>;
        using C = typename D::Channel;
        if constexpr (!std::is_same_v<P, RK_PixelFloat>) {
            if (a_ == n * D::kFull) {
                return {static_cast<C>(D::kFull), opaque(r_ / n), opaque(g_ / n), opaque(b_ / n)};
            }
        }
        return {static_cast<C>(a_ / n), static_cast<C>(r_ / a_), static_cast<C>(g_ / a_), static_cast<C>(b_ / a_)};
    }

  private:
    using Sum = std::conditional_t<std::is_same_v<P, RK_PixelFloat>, float, int64_t>;

    // A mean of colours times full, divided by full as the depth's multiply does.
    static typename RKp_Depth<P>::Channel opaque(int64_t c) {
        if constexpr (RKp_Depth<P>::kBits == 8) {
            return static_cast<uint8_t>((c + 0x80 + ((c + 0x80) >> 8)) >> 8);
        } else {
            return static_cast<uint16_t>((c + 16383) >> 15);
        }
    }
    Sum a_ = 0, r_ = 0, g_ = 0, b_ = 0;
};

// Of the path from a pixel's position under the first matrix to that under the last.
struct RKp_MotionPath {
    RKp_MotionPath(const RKp_Walk& first, const RKp_Walk& last, int64_t samples)
        : x0(first.x), y0(first.y), dx((int64_t{last.x} - first.x) / samples),
          dy((int64_t{last.y} - first.y) / samples) {}
    int32_t x(int64_t k) const { return static_cast<int32_t>(static_cast<uint32_t>(x0 + k * dx)); }
    int32_t y(int64_t k) const { return static_cast<int32_t>(static_cast<uint32_t>(y0 + k * dy)); }
    int64_t x0, y0, dx, dy;
};

// sample(path, k, &pixel) takes sample k.
template <class P, class Sample>
RK_AlphaSum<P> RKp_ScanLinearMotion(const RKp_ScanRow<P>& row, RKp_Walk first, RKp_Walk last, int64_t samples,
                                    Sample&& sample) {
    RK_AlphaSum<P> sum = 0;
    for (int32_t i = 0; i < row.width; ++i, first.nextPixel(), last.nextPixel()) {
        const RKp_MotionPath path(first, last, samples);
        RKp_MotionSums<P> sums;
        for (int64_t k = 0; k < samples; ++k) {
            P pixel;
            sample(path, k, &pixel);
            sums.add(pixel);
        }
        row.line[i] = sums.mean(samples);
        sum += row.line[i].alpha;
    }
    return sum;
}

inline bool RKp_AllInside(const RK_LayerDef& src, int32_t x, int32_t y) {
    const int32_t xi = x >> 16, yi = y >> 16;
    return xi >= 0 && xi + 1 < src.width && yi >= 0 && yi + 1 < src.height;
}

// Unit steps under both matrices keep every sample's fraction along the row: weights can be made once.
inline bool RKp_KeepsFractions(const RKp_Walk& first, const RKp_Walk& last, int32_t width) {
    const auto unit = [](const RKp_Walk& w) { return w.dx == RK_kOnePixel && w.dy == 0; };
    return unit(first) && unit(last) && !first.reduces() && !RKp_RowLeavesRange(first, width) &&
           !RKp_RowLeavesRange(last, width);
}

// `walks` are all matrices of the series at the row's start, `pbs` their blocks; both have `count`. `now` has room for
// as many walks. The last matrix is sampled first.
template <class P>
RK_AlphaSum<P> RKp_ScanGeneralMotion(const RKp_ScanRow<P>& row, const RKp_Walk* walks, const RK_SampPB* pbs,
                                     int64_t count, RKp_Walk* now) {
    bool reduces = false;
    for (int64_t k = 0; k < count; ++k) {
        now[k] = walks[k];
        reduces = reduces || walks[k].reduces();
    }
    RK_Sampler<P>* const sampler = reduces ? row.samplers.area : row.samplers.clipped;
    RK_AlphaSum<P> sum = 0;
    for (int32_t i = 0; i < row.width; ++i) {
        RKp_MotionSums<P> sums;
        for (int64_t k = count - 1; k >= 0; --k) {
            P pixel;
            sampler(nullptr, now[k].x, now[k].y, pbs + k, &pixel);
            now[k].nextPixel();
            sums.add(pixel);
        }
        row.line[i] = sums.mean(count);
        sum += row.line[i].alpha;
    }
    return sum;
}

#endif
