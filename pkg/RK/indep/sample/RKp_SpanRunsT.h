// A span cut into runs of samples between equal alphas and runs between differing ones.
#ifndef RKP_SPAN_RUNS_T_H
#define RKP_SPAN_RUNS_T_H

#include <cstring>

#include "RK/indep/sample/RKp_SubpixelSample_StraightT.h"

// The two source rows under a run.
template <class P>
struct RKp_SpanSource {
    const P *top, *bottom;

    RKp_SpanSource from(int64_t column) const { return {top + column, bottom + column}; }
    // Sample i has columns i and i + 1.
    bool hasEqualAlphas(int64_t i) const {
        const auto alpha = top[i].alpha;
        return alpha == bottom[i].alpha && alpha == top[i + 1].alpha && alpha == bottom[i + 1].alpha;
    }
};

template <class P>
int64_t RKp_EqualRun(const RKp_SpanSource<P>& source, int64_t count) {
    const auto alpha = source.top[0].alpha;
    int64_t i = 0;
    while (i <= count && source.top[i].alpha == alpha && source.bottom[i].alpha == alpha) ++i;
    return i - 1;
}
template <class P>
int64_t RKp_DifferingRun(const RKp_SpanSource<P>& source, int64_t count, int64_t known = 1) {
    int64_t i = known;
    while (i < count && !source.hasEqualAlphas(i)) ++i;
    return i;
}

// Between alphas of 0: equal pixels are taken as they are.
template <class P>
void RKp_ClearRun(const RKp_SpanSource<P>& source, int64_t count, P* out) {
    for (int64_t i = 0; i < count; ++i) {
        const P& p = source.top[i];
        const bool same = RKp_SamePixel(p, source.top[i + 1]) && RKp_SamePixel(p, source.bottom[i]) &&
                          RKp_SamePixel(p, source.bottom[i + 1]);
        out[i] = same ? p : P{};
    }
}

// Lanes(x, y) holds the weights of the fractions; equal() and differing() fill a run of at least one sample;
// differingRun() is RKp_DifferingRun, or as much of it as is found fast.
template <class Lanes, class P>
void RKp_SpanByRuns(const RK_LayerDef& src, int32_t x, int32_t y, int64_t count, P* out) {
    if (count < 1) return;
    const P* top = RKp_SourcePixel<P>(src, x >> 16, y >> 16);
    if (RKp_IsWhole(x, y)) {
        std::memcpy(out, top, static_cast<size_t>(count) * sizeof(P));
        return;
    }
    const RKp_SpanSource<P> row = {top, RKp_SourcePixel<P>(src, x >> 16, (y >> 16) + 1)};
    const Lanes lanes(x, y);
    for (int64_t i = 0, run; i < count; i += run) {
        const RKp_SpanSource<P> source = row.from(i);
        if (!source.hasEqualAlphas(0)) {
            run = lanes.differingRun(source, count - i);
            lanes.differing(source, run, out + i);
        } else {
            run = RKp_EqualRun(source, count - i);
            source.top[0].alpha == 0 ? RKp_ClearRun(source, run, out + i) : lanes.equal(source, run, out + i);
        }
    }
}

// The samples of a run from its columns, which are loaded in pairs: load(column, &first, &second), then
// one(i, left, right) for sample i, or two(i, left, middle, right) for it and the next. Nothing beside the
// run's columns is read.
template <class Column, class Load, class One, class Two>
inline void RKp_ForColumns(int64_t count, Load&& load, One&& one, Two&& two) {
    Column a, b;
    load(0, &a, &b);
    one(0, a, b);
    int64_t i = 1;
    for (; i + 1 < count; i += 2) {
        Column c, d;
        load(i + 1, &c, &d);
        two(i, b, c, d);
        b = d;
    }
    if (i < count) {
        load(i, &a, &b);
        one(i, a, b);
    }
}

#endif
