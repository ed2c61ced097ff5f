#include "RK/indep/retime/FnTweenerStages.h"

template <class Stored, class Computed, int Scale>
void FnMotionEstimateGradientTweenerGenerateTemporalCandidates<Stored, Computed, Scale>::ProcessBand() {
    const FnVectorMap& field = *static_cast<const FnVectorMap*>(Map());
    const FnBand band = Band();
    const int32_t columns = std::min(field.Width(), width);
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y) {
        for (int32_t x = 0; x < columns; ++x) {
            const HvVec2 v = field.Row(y)[x];
            if (FnIsUndefined(v)) continue;
            const HvVec2 offset = extended ? v + v * factor : v * factor;
            const int32_t to_x = FnFloor(static_cast<float>(x) + 0.5f - offset.x);
            const int32_t to_y = FnFloor(static_cast<float>(y) + 0.5f + offset.y);
            if (to_x < 0 || to_x >= width || to_y < 0 || to_y >= height) continue;
            const int64_t to = Element(to_x, to_y);
            if (!a_->At(to).Holds(v) && !a_->Add(to, v)) return Abort(kFnNoMemory);
        }
    }
}

template class FnMotionEstimateGradientTweenerGenerateTemporalCandidates<float, float, 1>;
