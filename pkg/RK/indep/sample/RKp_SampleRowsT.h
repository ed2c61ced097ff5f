// Rows of samples over a sampler's form.
#ifndef RKP_SAMPLE_ROWS_T_H
#define RKP_SAMPLE_ROWS_T_H

#include <algorithm>

#include "RK/indep/sample/RK_SampleRow.h"
#include "RK/indep/sample/RKp_SpanRows.h"
#include "RK/indep/sample/RKp_SubpixelSample_StraightT.h"

template <class P>
void RKp_RowTranslateCalled(RK_SamplerTranslate<P>* sampler, const double weights[4], const RK_SampPB* pb,
                            RK_SampleWalk walk, int64_t count, P* out) {
    for (int64_t i = 0; i < count; ++i, walk.next()) sampler(nullptr, walk.x, walk.y, weights, pb, out + i);
}

// ---- The library's own, in place --------------------------------------------------------------------------

template <class P>
inline void RKp_UnitRow(const RK_LayerDef& src, const RK_SampleWalk& walk, int64_t count, P* out) {
    if constexpr (std::is_same_v<P, RK_PixelFloat>) {
        float unused = 0;
        RKp_SpanRow(src, walk.x, walk.y, RKp_BilinearWeights<float>(walk.x, walk.y), count, &unused, out);
    } else {
        RKp_SpanRow(src, walk.x, walk.y, count, out);
    }
}

// All four neighbours inside need no tests; they are told apart by one comparison for each axis.
template <class Form>
inline void RKp_RowTested(const RK_LayerDef& src, RK_SampleWalk walk, int64_t count,
                          typename Form::Pixel* out) {
    const auto columns = static_cast<uint32_t>(std::max(src.width - 1, 0));
    const auto rows = static_cast<uint32_t>(std::max(src.height - 1, 0));
    for (int64_t i = 0; i < count; ++i, walk.next()) {
        if (static_cast<uint32_t>(walk.x >> 16) < columns && static_cast<uint32_t>(walk.y >> 16) < rows) {
            out[i] = RKp_SampleNoClip<Form>(walk.x, walk.y, src);
        } else {
            bool all_inside;
            out[i] = RKp_SampleClipped<Form>(walk.x, walk.y, src, &all_inside);
        }
    }
}

template <class Form>
void RKp_RowClipped(RK_LayerDef src, RK_SampleWalk walk, int64_t count, typename Form::Pixel* out) {
    const bool unit = walk.isUnit() && (walk.x >> 16) + count <= INT16_MAX;
    const RKp_InsideRun inside(src, walk, unit ? count : 0);
    RKp_RowTested<Form>(src, walk, inside.low, out);
    RKp_UnitRow(src, walk.from(inside.low), inside.high - inside.low, out + inside.low);
    RKp_RowTested<Form>(src, walk.from(inside.high), count - inside.high, out + inside.high);
}
template <class Form>
void RKp_RowNoClip(RK_LayerDef src, RK_SampleWalk walk, int64_t count, typename Form::Pixel* out) {
    if (walk.isUnit()) return RKp_UnitRow(src, walk, count, out);
    for (int64_t i = 0; i < count; ++i, walk.next()) out[i] = RKp_SampleNoClip<Form>(walk.x, walk.y, src);
}
template <class Form>
void RKp_RowTranslate(RK_LayerDef src, const double weights[4], RK_SampleWalk walk, int64_t count,
                      typename Form::Pixel* out) {
    const RKp_Weights<double> own = RKp_BilinearWeights<double>(walk.x, walk.y);
    if (walk.isUnit()) {
        if constexpr (std::is_same_v<typename Form::Pixel, RK_PixelFloat>) {
            float unused = 0;
            return RKp_SpanRow(src, walk.x, walk.y, RKp_NarrowWeights(weights), count, &unused, out);
        } else if (weights[0] == own.w00 && weights[1] == own.w10 && weights[2] == own.w01 &&
                   weights[3] == own.w11) {
            return RKp_SpanRow(src, walk.x, walk.y, count, out);
        }
    }
    for (int64_t i = 0; i < count; ++i, walk.next())
        out[i] = RKp_SampleTranslate<Form>(walk.x, walk.y, weights, src);
}

#endif
