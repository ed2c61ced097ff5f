#include "RK/indep/retime/FnSmoothVectors.h"

template <class Stored, class Computed, int Divisor>
float FnMotionEstimateGradientSmoothVectorsOperations<Stored, Computed, Divisor>::Difference(const HvVec2& v,
                                                                                             int32_t x,
                                                                                             int32_t y) const {
    const FnFloatMap& reference = *parameters.reference;
    const bool undefined = FnIsUndefined(v);
    const float px = undefined ? 0.0f : static_cast<float>(x) + 0.5f - v.x;
    const float py = undefined ? 0.0f : static_cast<float>(y) + 0.5f + v.y;
    const bool inside = px >= 0.0f && px <= static_cast<float>(reference.Width()) && py >= 0.0f &&
                        py <= static_cast<float>(reference.Height());
    const float r = inside ? reference.Bilinear(px, py) : 0.0f;
    return std::fabs(r - parameters.target->Row(y)[x]);
}

namespace {

// The first of the least, or the first of all when no cost is below the start value.
template <class Cost>
HvVec2 LeastOf(const FnCandidateSet& candidates, Cost&& cost_of) {
    HvVec2 best = candidates[0];
    float least = FLT_MAX;
    for (const HvVec2& c : candidates) {
        const float cost = cost_of(c);
        if (cost < least) least = cost, best = c;
    }
    return best;
}

}  // namespace

// ---- First assignment -----------------------------------------------------------------------------------

template <class Stored, class Computed, int Divisor>
void FnMotionEstimateGradientSmoothVectorsInitialAssignment<Stored, Computed, Divisor>::ProcessBand() {
    const FnBand band = this->Band();
    FnRandom random;
    for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
        HvVec2* row = this->Vectors().Row(y);
        for (int32_t x = 0; x < this->Map()->Width(); ++x) row[x] = Choose(*this->a_, x, y, random);
    }
}

template <class Stored, class Computed, int Divisor>
HvVec2 FnMotionEstimateGradientSmoothVectorsInitialAssignment<Stored, Computed, Divisor>::Choose(
    const FnVectorMap& field, int32_t x, int32_t y, FnRandom& random) const {
    static const int kAcross[8] = {-1, -1, -1, 0, 0, 1, 1, 1};
    static const int kDown[8] = {-1, 0, 1, -1, 1, -1, 0, 1};
    const FnMotionEstimateGradientBlockParameters& blocks = this->parameters.blocks;
    const int32_t step_x = blocks.block_width - blocks.overlap / 2;
    const int32_t step_y = blocks.block_height - blocks.overlap / 2;
    FnCandidateSet candidates;
    for (int i = 0; i < 8; ++i) {
        const int64_t from_x = int64_t{x} + kAcross[i] * step_x, from_y = int64_t{y} + kDown[i] * step_y;
        if (from_x >= 0 && from_y >= 0 && from_x < field.Width() && from_y < field.Height())
            candidates.Add(field.Row(static_cast<int32_t>(from_y))[from_x]);
    }
    const HvVec2 own = field.Row(y)[x];
    candidates.Add(own);
    candidates.RemoveDuplicates();
    if (candidates.Count() == 0) return own;
    const HvVec2 first = candidates[0];
    if (candidates.Count() == 1) return first;
    candidates.Shuffle(random);
    if (this->IsMasked(x, y)) return first;
    // Its own error weight is 1.
    return LeastOf(candidates, [&](const HvVec2& c) {
        return this->Difference(c, x, y) * 1.0f / this->kDivisor * 65535.0f;
    });
}

// ---- One pass -------------------------------------------------------------------------------------------

template <class Stored, class Computed, int Divisor>
void FnMotionEstimateGradientSmoothVectorsSinglePass<Stored, Computed, Divisor>::ProcessBand() {
    const FnBand band = this->Band();
    FnRandom random;
    for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
        HvVec2* row = this->Vectors().Row(y);
        for (int32_t x = 0; x < this->Map()->Width(); ++x) Element(x, y, row[x], random);
    }
}

template <class Stored, class Computed, int Divisor>
void FnMotionEstimateGradientSmoothVectorsSinglePass<Stored, Computed, Divisor>::Element(int32_t x, int32_t y,
                                                                                         HvVec2& vector,
                                                                                         FnRandom& random) const {
    FnCandidateSet candidates;
    if (monitor->Gather(x, y, &candidates) == 0) return;
    candidates.Add(vector);
    candidates.RemoveDuplicates();
    if (candidates.Count() == 0) return;
    if (candidates.Count() == 1) {
        vector = candidates[0];
        return;
    }
    candidates.Shuffle(random);
    const float error_weight = this->parameters.error_weight, smooth_weight = this->parameters.smooth_weight;
    const HvVec2 mean = monitor->LocalMean(x, y);
    const bool masked = this->IsMasked(x, y);
    vector = LeastOf(candidates, [&](const HvVec2& c) {
        const float match = masked ? error_weight / this->kDivisor * 65535.0f * this->kDivisor
                                   : this->Difference(c, x, y) * error_weight / this->kDivisor * 65535.0f;
        return FnL1(mean - c) * smooth_weight * 8.0f + match;
    });
}

// ---- The whole ------------------------------------------------------------------------------------------

template <class Stored, class Computed, int Divisor>
void FnMotionEstimateGradientSmoothVectors<Stored, Computed, Divisor>::Run() {
    FnVectorMap& map = this->Vectors();
    if (!this->parameters.target || !this->parameters.target->HasPixels()) {
        map.Fill({0.0f, 0.0f});
        return;
    }
    FnMotionEstimateGradientSmoothVectorsInitialAssignment<Stored, Computed, Divisor> assign(this->parameters);
    assign.SetInterrupt(this->Interrupt());
    assign.Process(&map, this->a_);
    if (this->Check() != 0) return;

    FnMotionEstimateGradientChangedNeighboursMonitor monitor;
    monitor.SetInterrupt(this->Interrupt());
    monitor.StartAfresh();
    monitor.ProcessMap(&map);
    FnMotionEstimateGradientSmoothVectorsSinglePass<Stored, Computed, Divisor> pass(this->parameters);
    pass.SetInterrupt(this->Interrupt());
    pass.monitor = &monitor;
    for (int32_t i = 0; i < this->parameters.passes && this->Check() == 0; ++i) {
        pass.ProcessMap(&map);
        if (this->Check() == 0 && i + 1 < this->parameters.passes) monitor.ProcessMap(&map);
    }
}

template class FnMotionEstimateGradientSmoothVectorsInitialAssignment<float, float, 123>;
template class FnMotionEstimateGradientSmoothVectorsSinglePass<float, float, 123>;
template class FnMotionEstimateGradientSmoothVectors<float, float, 123>;
