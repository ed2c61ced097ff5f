// The row scans of transforms in motion, as those of RKp_TransformScansT.h.
#ifndef RKP_MOTION_SCANS_T_H
#define RKP_MOTION_SCANS_T_H

#include <algorithm>

#include "RK/indep/sample/RKp_TransformScansT.h"

// Samples at a time, and destination pixels at a time.
constexpr int32_t RKp_kMotionBatch = 128;

// ---- Linear ----------------------------------------------------------------------------------------------

// Of the path from a pixel's position under the first matrix to that under the last. Steps may have 33 bits;
// of what they lead to, 32 count.
inline RK_SampleWalk RKp_MotionPath(const RK_SampleWalk& first, const RK_SampleWalk& last, int64_t samples) {
    const auto step = [samples](int32_t from, int32_t to) {
        const int64_t way = int64_t{to} - from;
        // In double as exact as RKp_SmallQuotient.
        const int64_t s = samples < int64_t{1} << 20
                              ? static_cast<int64_t>(static_cast<double>(way) / static_cast<double>(samples))
                              : way / samples;
        return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(s)));
    };
    return {first.x, first.y, step(first.x, last.x), step(first.y, last.y)};
}

// fill(path, count, pixels) takes `count` samples along the path.
template <class P, class Fill>
RK_AlphaSum<P> RKp_ScanLinearMotion(const RKp_ScanRow<P>& row, RK_SampleWalk first, RK_SampleWalk last,
                                    int64_t samples, Fill&& fill) {
    P batch[RKp_kMotionBatch];
    for (int32_t i = 0; i < row.width; ++i, first.next(), last.next()) {
        const RK_SampleWalk path = RKp_MotionPath(first, last, samples);
        RKp_MotionSums<P> sums;
        for (int64_t k = 0; k < samples; k += RKp_kMotionBatch) {
            const int64_t count = std::min<int64_t>(samples - k, RKp_kMotionBatch);
            fill(path.from(k), count, batch);
            for (int64_t j = 0; j < count; ++j) sums.add(batch[j]);
        }
        row.line[i] = sums.mean(samples);
    }
    RK_AlphaSum<P> sum = 0;
    row.addAlphas(0, row.width, &sum);
    return sum;
}

template <class P>
void RKp_FillNearest(const RK_LayerDef& src, RK_SampleWalk path, int64_t count, P* out) {
    for (int64_t i = 0; i < count; ++i, path.next()) out[i] = RKp_NearestPixel<P>(path.x, path.y, src);
}

// ---- Sample after sample, over a run of destination pixels -----------------------------------------------

// fill(k, begin, count, pixels) takes sample k of `count` destination pixels from `begin` on. Samples are
// taken from `from` to `to`, which may be backward.
template <class P, class Fill>
RK_AlphaSum<P> RKp_ScanBySample(const RKp_ScanRow<P>& row, int64_t from, int64_t to, Fill&& fill) {
    P batch[RKp_kMotionBatch];
    const int64_t samples = from < to ? to - from : from - to, way = from < to ? 1 : -1;
    for (int32_t begin = 0; begin < row.width; begin += RKp_kMotionBatch) {
        const int32_t count = std::min(row.width - begin, RKp_kMotionBatch);
        RKp_MotionSums<P> sums[RKp_kMotionBatch];
        for (int64_t k = from; k != to; k += way) {
            fill(k, begin, count, batch);
            for (int32_t j = 0; j < count; ++j) sums[j].add(batch[j]);
        }
        for (int32_t j = 0; j < count; ++j) row.line[begin + j] = sums[j].mean(samples);
    }
    RK_AlphaSum<P> sum = 0;
    row.addAlphas(0, row.width, &sum);
    return sum;
}

// Unit steps under both matrices keep every sample's fraction along the row: weights can be made once.
inline bool RKp_KeepsFractions(const RKp_Walk& first, const RKp_Walk& last, int32_t width) {
    const auto unit = [](const RKp_Walk& w) { return w.dx == RK_kOnePixel && w.dy == 0; };
    return unit(first) && unit(last) && !first.reduces() && !RKp_RowLeavesRange(first, width) &&
           !RKp_RowLeavesRange(last, width);
}

// `path` is the row's first pixel's, `weights` four for each sample. Where all four neighbours are inside,
// the translate sampler is used, elsewhere the clipped one.
template <class P>
RK_AlphaSum<P> RKp_ScanUnitMotion(const RKp_ScanRow<P>& row, const RK_SampleWalk& path, const RK_SampPB& pb,
                                  int64_t samples, const double* weights) {
    const RKp_RowSamplers<P>& samplers = row.samplers;
    return RKp_ScanBySample<P>(row, 0, samples, [&](int64_t k, int32_t begin, int32_t count, P* out) {
        RK_SampleWalk walk = path.from(k);
        walk.dx = RK_kOnePixel;
        walk.dy = 0;
        walk = walk.from(begin);
        const RKp_InsideRun inside(row.src, walk, count);
        samplers.clipped(samplers.called.clipped, &pb, walk, inside.low, out);
        samplers.translate(samplers.called.translate, weights + k * 4, &pb, walk.from(inside.low),
                           inside.high - inside.low, out + inside.low);
        samplers.clipped(samplers.called.clipped, &pb, walk.from(inside.high), count - inside.high,
                         out + inside.high);
    });
}

// ---- General ---------------------------------------------------------------------------------------------

// `walks` are all matrices of the series at the row's start, `pbs` their blocks; both have `count`. The last
// matrix is sampled first.
template <class P>
RK_AlphaSum<P> RKp_ScanGeneralMotion(const RKp_ScanRow<P>& row, const RKp_Walk* walks, const RK_SampPB* pbs,
                                     int64_t count) {
    const bool reduces =
        std::any_of(walks, walks + count, [](const RKp_Walk& walk) { return walk.reduces(); });
    const RKp_RowSamplers<P>& samplers = row.samplers;
    RK_Sampler<P>* const sampler = reduces ? samplers.called.area : samplers.called.clipped;
    RK_RowSampler<P>* const sample = reduces ? samplers.area : samplers.clipped;
    return RKp_ScanBySample<P>(row, count - 1, -1, [&](int64_t k, int32_t begin, int32_t n, P* out) {
        sample(sampler, pbs + k, walks[k].line().from(begin), n, out);
    });
}

#endif
