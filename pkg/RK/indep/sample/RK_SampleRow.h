// Many samples along a line in one call.
#ifndef RK_SAMPLE_ROW_H
#define RK_SAMPLE_ROW_H

#include <algorithm>

#include "RK/indep/sample/RK_Samp.h"

// Positions along a line: each gains dx, dy. 16.16, wrapping at 32 bits.
struct RK_SampleWalk {
    int32_t x, y, dx, dy;

    // The same line from position `count` on.
    RK_SampleWalk from(int64_t count) const {
        const auto advanced = [count](int32_t at, int32_t step) {
            return static_cast<int32_t>(static_cast<uint32_t>(at) +
                                        static_cast<uint32_t>(step) * static_cast<uint32_t>(count));
        };
        return {advanced(x, dx), advanced(y, dy), dx, dy};
    }
    // One source pixel to the right each time, which keeps the fractions.
    bool isUnit() const { return dx == RK_kOnePixel && dy == 0; }
    void next() { *this = from(1); }
};

// Which samples of a unit walk have all four neighbours inside: those from `low` to `high`.
struct RKp_InsideRun {
    RKp_InsideRun(const RK_LayerDef& src, const RK_SampleWalk& walk, int64_t count) {
        const int64_t column = walk.x >> 16, line = walk.y >> 16;
        const int64_t end = line >= 0 && line + 1 < src.height ? int64_t{src.width} - 1 - column : 0;
        low = std::clamp<int64_t>(-column, 0, count);
        high = std::clamp(end, low, count);
    }
    int64_t low, high;
};

// Fills `count` pixels of `out` as `sampler`, called at one position of the walk after the other, would.
// Below 1: none.
template <class P>
using RK_RowSampler = void(RK_Sampler<P>* sampler, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count,
                           P* out);

// One call for each position.
template <class P>
void RKp_RowCalled(RK_Sampler<P>* sampler, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count, P* out) {
    for (int64_t i = 0; i < count; ++i, walk.next()) sampler(nullptr, walk.x, walk.y, pb, out + i);
}

// The fastest way: the library's own samplers are done in place, any other is called. What the slots hold is
// read now. `out` must lie apart from the source.
template <class P>
RK_RowSampler<P>* RKp_GetRowSampler(RK_Sampler<P>* sampler);

// The same for the translate sampler, along a walk that keeps its fractions.
template <class P>
using RK_RowTranslate = void(RK_SamplerTranslate<P>* sampler, const double weights[4], const RK_SampPB* pb,
                             RK_SampleWalk walk, int64_t count, P* out);
template <class P>
RK_RowTranslate<P>* RKp_GetRowTranslate(RK_SamplerTranslate<P>* sampler);

#endif
