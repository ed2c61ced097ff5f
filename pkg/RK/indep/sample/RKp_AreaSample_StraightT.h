// The straight area sampler over the pixel type. A form brings its Pixel, `limit`, `point` (the clipped point sampler)
// and the rounding of alpha and colour.
#ifndef RKP_AREA_SAMPLE_STRAIGHT_T_H
#define RKP_AREA_SAMPLE_STRAIGHT_T_H

#include <algorithm>

#include "RK/indep/sample/RK_Samp.h"

// The four edges of a footprint, 16.16, moved half a pixel so that source pixel i covers [i, i + 1).
struct RKp_Footprint {
    int64_t left, top, right, bottom;
};
inline RKp_Footprint RKp_MakeFootprint(int32_t x, int32_t y, const RK_SampPB& pb) {
    return {int64_t{x} - pb.x_radius + 32768, int64_t{y} - pb.y_radius + 32768, int64_t{x} + pb.x_radius + 32768,
            int64_t{y} + pb.y_radius + 32768};
}
// Cut to the source.
inline RKp_Footprint RKp_ClampFootprint(const RKp_Footprint& f, const RK_LayerDef& src) {
    const int64_t width = int64_t{std::max(src.width, 0)} << 16, height = int64_t{std::max(src.height, 0)} << 16;
    return {std::clamp<int64_t>(f.left, 0, width), std::clamp<int64_t>(f.top, 0, height),
            std::clamp<int64_t>(f.right, 0, width), std::clamp<int64_t>(f.bottom, 0, height)};
}

// How the pixels from `begin` to `end`, both 16.16, are covered: calls visit(i, coverage) for each, with 0x10000 for
// a whole one. Pixels outside [0, size) are left out.
template <class Visit>
inline void RKp_ForCoverage(int64_t begin, int64_t end, int32_t size, Visit&& visit) {
    const int64_t first_fraction = begin & 0xFFFF, last_fraction = end & 0xFFFF;
    const int64_t last = end >> 16;
    int64_t i = begin >> 16;
    if (first_fraction != 0) {
        if (i >= 0 && i < size) visit(static_cast<int32_t>(i), static_cast<int32_t>(0x10000 - first_fraction));
        ++i;
    }
    const int64_t whole_end = std::min<int64_t>(last, size);
    for (i = std::max<int64_t>(i, 0); i < whole_end; ++i) visit(static_cast<int32_t>(i), 0x10000);
    if (last_fraction != 0 && last >= 0 && last < size)
        visit(static_cast<int32_t>(last), static_cast<int32_t>(last_fraction));
}

// The position of pixel i; beyond what 16.16 holds it wraps.
inline int32_t RKp_WholePosition(int32_t i) { return static_cast<int32_t>(static_cast<uint32_t>(i) << 16); }

constexpr double RKp_k2ToMinus16 = 1.52587890625e-05;
constexpr double RKp_k2ToMinus32 = RKp_k2ToMinus16 * RKp_k2ToMinus16;

struct RKp_AreaSums {
    double A = 0, R = 0, G = 0, B = 0;

    template <class P>
    void add(const P& p, double weight) {
        const double a = weight * static_cast<double>(p.alpha);
        A += a;
        R += a * static_cast<double>(p.red);
        G += a * static_cast<double>(p.green);
        B += a * static_cast<double>(p.blue);
    }
};

template <class Form>
inline RKp_AreaSums RKp_SumFootprint(void* ref, int32_t x, int32_t y, const RK_SampPB& pb) {
    using P = typename Form::Pixel;
    const RK_LayerDef& src = *pb.src;
    const RKp_Footprint box = RKp_MakeFootprint(x, y, pb);
    const bool narrow = pb.x_radius <= RK_kHalfPixel, low = pb.y_radius <= RK_kHalfPixel;
    RKp_AreaSums sums;
    const auto addPoint = [&](int32_t px, int32_t py, double weight) {
        P sample;
        Form::point()(ref, px, py, &pb, &sample);
        sums.add(sample, weight);
    };
    if (narrow && low) {
        addPoint(x, y,
                 static_cast<double>(box.right - box.left) * static_cast<double>(box.bottom - box.top) *
                     RKp_k2ToMinus32);
    } else if (low) {
        const double height = static_cast<double>(int64_t{pb.y_radius} * 2) * RKp_k2ToMinus32;
        RKp_ForCoverage(box.left, box.right, src.width,
                        [&](int32_t column, int32_t cover) { addPoint(RKp_WholePosition(column), y, cover * height); });
    } else if (narrow) {
        const double width = static_cast<double>(int64_t{pb.x_radius} * 2) * RKp_k2ToMinus32;
        RKp_ForCoverage(box.top, box.bottom, src.height,
                        [&](int32_t row, int32_t cover) { addPoint(x, RKp_WholePosition(row), cover * width); });
    } else {
        const RKp_Footprint inside = RKp_ClampFootprint(box, src);
        if (inside.left >= inside.right || inside.top >= inside.bottom) return sums;
        RKp_ForCoverage(inside.top, inside.bottom, src.height, [&](int32_t row, int32_t row_cover) {
            const auto* pixels = reinterpret_cast<const P*>(static_cast<const char*>(src.data) +
                                                            static_cast<ptrdiff_t>(row) * src.rowbytes);
            const double row_weight = row_cover * RKp_k2ToMinus32;
            RKp_ForCoverage(inside.left, inside.right, src.width, [&](int32_t column, int32_t cover) {
                sums.add(pixels[column], cover * row_weight);
            });
        });
    }
    return sums;
}

template <class Form>
inline typename Form::Pixel RKp_AreaSample(void* ref, int32_t x, int32_t y, const RK_SampPB& pb) {
    using P = typename Form::Pixel;
    const RKp_AreaSums sums = RKp_SumFootprint<Form>(ref, x, y, pb);
    if (sums.A == 0) return P{};
    // The whole footprint's area, not the clipped one's: what hangs over the edge lowers alpha.
    const double mean = sums.A * 0.25 / (pb.x_radius * RKp_k2ToMinus16 * pb.y_radius * RKp_k2ToMinus16);
    const double alpha = mean < Form::limit ? mean : Form::limit;
    if (alpha == 0) return P{};
    return P{Form::alpha(alpha), Form::colour(sums.R / sums.A), Form::colour(sums.G / sums.A),
             Form::colour(sums.B / sums.A)};
}

#endif
