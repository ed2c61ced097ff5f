// One pass of the box blur over lines side by side.
//
// Places along the lines are counted from the source's first pixel, and may lie outside of it.
#ifndef RKP_BOX_LINE_H
#define RKP_BOX_LINE_H

#include "RK/indep/filter/RKp_BlurJob.h"

// Where a walk stopped: what it has counted, and the sums of each line.
struct RKp_BoxState {
    static constexpr int32_t kLines = 16;
    static constexpr size_t kSumBytes = 32;
    int64_t count;
    alignas(16) uint8_t sums[kLines * kSumBytes];
};

template <class P>
struct RKp_BoxStage {
    const P* in;                      // the pixel at in_first
    P* out;                           // the pixel at out_first
    int64_t in_first, out_first;      // places
    ptrdiff_t in_step, out_step;      // along a line
    ptrdiff_t in_across, out_across;  // from line to line
    RKp_Range from, to;
    // What is written now: all of `to`; or the next part of it, with `state` to go on from and at most
    // RKp_BoxState::kLines lines. The pixels of `from` that the part's windows reach must be there.
    RKp_Range part;
    RKp_BoxState* state;
    int32_t lines;  // 1 to RKp_kBlurBlock
    int32_t reach;  // the radius rounded up
    float radius;
    uint32_t flags;
    bool divide;  // by alpha
};

// Up to this reach a numerator of depth 8, 255.5 times the weight of the window at most, fits 31 bits.
constexpr int32_t RKp_kBoxNarrowReach = 4095;

template <class P>
void RKp_BoxPass(const RKp_BoxStage<P>& stage);

// The same in vectors, for stages that keep premultiplied. One that divides is reported, and throws 3.
template <class P>
void RKp_BoxPass_SSE2(const RKp_BoxStage<P>& stage);
// Does the latter.
void RKp_GuardBoxVectors(bool divides);

#endif
