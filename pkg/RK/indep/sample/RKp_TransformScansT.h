// The row scans of the transforms: one destination row of source pixels, gathered in the scratch line. Each gives the
// sum of the alphas that it wrote.
#ifndef RKP_TRANSFORM_SCANS_T_H
#define RKP_TRANSFORM_SCANS_T_H

#include "RK/indep/sample/RK_SampleRow.h"
#include "RK/indep/sample/RKp_MotionSums.h"
#include "RK/indep/sample/RKp_NNSampleT.h"
#include "RK/indep/sample/RKp_TransformSetup.h"

// A bundle, and how to fill whole rows with its samplers.
template <class P>
struct RKp_RowSamplers {
    explicit RKp_RowSamplers(const RK_SamplerBundle<P>& bundle)
        : called(bundle), clipped(RKp_GetRowSampler(bundle.clipped)), area(RKp_GetRowSampler(bundle.area)),
          no_clip(RKp_GetRowSampler(bundle.no_clip)), translate(RKp_GetRowTranslate(bundle.translate)),
          plus_is_clipped(RKp_PlusIsClipped(bundle)) {}
    RK_SamplerBundle<P> called;
    RK_RowSampler<P> *clipped, *area, *no_clip;
    RK_RowTranslate<P>* translate;
    bool plus_is_clipped;
};

// What a row's scan reads, and where it writes.
template <class P>
struct RKp_ScanRow {
    const RK_LayerDef& src;
    const RKp_RowSamplers<P>& samplers;
    int32_t width;
    P* line;

    // The alphas of the pixels from `begin` to `end`, in that order, which may be backward.
    void addAlphas(int32_t begin, int32_t end, RK_AlphaSum<P>* sum) const {
        RK_AlphaSum<P> s = *sum;
        for (; begin < end; ++begin) s += line[begin].alpha;
        while (begin > end) s += line[--begin].alpha;
        *sum = s;
    }
};

inline RK_SampPB RKp_MakeSampPB(const RK_LayerDef& src, const RKp_Walk& walk) {
    RK_SampPB pb{};
    pb.x_radius = walk.x_radius;
    pb.y_radius = walk.y_radius;
    pb.area = walk.area;
    pb.src = &src;
    return pb;
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
    RK_SampleWalk walk = start.line();
    walk.x = static_cast<int32_t>(static_cast<uint32_t>(walk.x) + RK_kHalfPixel);
    walk.y = static_cast<int32_t>(static_cast<uint32_t>(walk.y) + RK_kHalfPixel);
    const RK_LayerDef src = row.src;
    const auto inside = [&](int32_t x, int32_t y) {
        return static_cast<uint32_t>(x >> 16) < static_cast<uint32_t>(src.width) &&
               static_cast<uint32_t>(y >> 16) < static_cast<uint32_t>(src.height);
    };
    const auto fetch = [&](int32_t x, int32_t y) {
        const auto* pixels = reinterpret_cast<const P*>(static_cast<const char*>(src.data) +
                                                        static_cast<ptrdiff_t>(y >> 16) * src.rowbytes);
        return pixels[x >> 16];
    };
    P* const line = row.line;
    RK_AlphaSum<P> sum = 0;
    int32_t begin = 0, end = row.width;
    if (RKp_RowLeavesRange(start, row.width)) {
        for (; begin < end; ++begin, walk.next()) {
            line[begin] = inside(walk.x, walk.y) ? fetch(walk.x, walk.y) : P{};
            sum += line[begin].alpha;
        }
        return sum;
    }
    for (; begin < end && !inside(walk.x, walk.y); ++begin, walk.next()) line[begin] = P{};
    for (; begin < end; --end) {
        const RK_SampleWalk last = walk.from(int64_t{end} - 1 - begin);
        if (inside(last.x, last.y)) break;
        line[end - 1] = P{};
    }
    for (; begin < end; ++begin, walk.next()) {
        line[begin] = fetch(walk.x, walk.y);
        sum += line[begin].alpha;
    }
    return sum;
}

// ---- Best, at rest ---------------------------------------------------------------------------------------

template <class P>
RK_AlphaSum<P> RKp_ScanArea(const RKp_ScanRow<P>& row, const RKp_Walk& walk, const RK_SampPB& pb) {
    row.samplers.area(row.samplers.called.area, &pb, walk.line(), row.width, row.line);
    RK_AlphaSum<P> sum = 0;
    row.addAlphas(0, row.width, &sum);
    return sum;
}

inline bool RKp_AllInside(const RK_LayerDef& src, int32_t x, int32_t y) {
    const int32_t xi = x >> 16, yi = y >> 16;
    return xi >= 0 && xi + 1 < src.width && yi >= 0 && yi + 1 < src.height;
}
// Are all four neighbours inside? As the Plus samplers tell it: not at a whole position.
inline bool RKp_PlusReports(const RK_LayerDef& src, int32_t x, int32_t y) {
    return ((x | y) & 0xFFFF) != 0 && RKp_AllInside(src, x, y);
}

// From both ends with bounds tests until all four neighbours are inside; between the two without.
template <class P>
RK_AlphaSum<P> RKp_ScanBilinear(const RKp_ScanRow<P>& row, const RKp_Walk& start, const RK_SampPB& pb) {
    const RK_SampleWalk walk = start.line();
    const RKp_RowSamplers<P>& samplers = row.samplers;
    const bool every = RKp_RowLeavesRange(start, row.width);
    int32_t begin = 0, end = row.width;
    RK_AlphaSum<P> sum = 0;
    if (samplers.plus_is_clipped) {
        // The ends are sought first and sampled then.
        const auto reports = [&](int32_t i) {
            const RK_SampleWalk at = walk.from(i);
            return RKp_PlusReports(row.src, at.x, at.y);
        };
        while (begin < end)
            if (reports(begin++) && !every) break;
        while (begin < end)
            if (reports(--end)) break;
        samplers.clipped(samplers.called.clipped, &pb, walk, begin, row.line);
        samplers.clipped(samplers.called.clipped, &pb, walk.from(end), row.width - end, row.line + end);
    } else {
        const auto plus = [&](int32_t i) {
            const RK_SampleWalk at = walk.from(i);
            uint8_t all_inside = 0;
            samplers.called.plus(nullptr, at.x, at.y, &pb, &all_inside, row.line + i);
            return all_inside != 0;
        };
        while (begin < end)
            if (plus(begin++) && !every) break;
        while (begin < end)
            if (plus(--end)) break;
    }
    row.addAlphas(0, begin, &sum);
    row.addAlphas(row.width, end, &sum);
    if (begin >= end) return sum;

    const RK_SampleWalk inner = walk.from(begin);
    if (walk.dx == RK_kOnePixel && walk.dy == 0) {
        samplers.called.span(nullptr, end - begin, inner.x, inner.y, &pb, &sum, row.line + begin);
    } else {
        samplers.no_clip(samplers.called.no_clip, &pb, inner, end - begin, row.line + begin);
        row.addAlphas(begin, end, &sum);
    }
    return sum;
}

#endif
