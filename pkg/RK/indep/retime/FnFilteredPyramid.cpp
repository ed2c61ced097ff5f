#include "RK/indep/retime/FnFilteredPyramid.h"

#include <cmath>

#include "RK/indep/retime/BlurGeneralGauss.h"
#include "RK/indep/retime/ImageZoomers.h"
#include "RK/indep/retime/KernelSamplers.h"

template <class Stored, class Computed, int Scale>
void FnFilteredPyramid<Stored, Computed, Scale>::Prepare() {
    if (!explicit_kernel) return;
    if (!taps_.Allocate(kernel_size)) return this->Abort(kFnNoMemory);
    for (int32_t i = 0; i < kernel_size; ++i) {
        const float d = static_cast<float>(kernel_size / 2 - i);
        const float e = -(d * d) / (2.0f * kernel_variance);
        taps_[i] = static_cast<float>(std::exp(static_cast<double>(e)));
    }
    FnNormalise(taps_.data(), kernel_size);
}

template <class Stored, class Computed, int Scale>
void FnFilteredPyramid<Stored, Computed, Scale>::Run() {
    for (int32_t k = 1; k < LevelCount() && this->Check() == 0; ++k) {
        Map* level = k < stack_->Count() ? stack_->Level(k) : nullptr;
        if (!level || !level->HasPixels()) return this->Abort(kFnNoMemory);
        BuildLevel(stack_->Level(k - 1), level);
    }
}

template <class Stored, class Computed, int Scale>
void FnFilteredPyramid<Stored, Computed, Scale>::BuildLevel(Map* below, Map* level) {
    Map scratch;
    if (!scratch.ShapeLike(*below)) return this->Abort(kFnNoMemory);
    if (explicit_kernel) {
        BiKernelSampler<Map, Stored, Computed, Computed, Scale> blur(
            {taps_.data(), kernel_size, taps_.data(), kernel_size});
        blur.SetInterrupt(this->Interrupt());
        blur.process(below, &scratch);
    } else {
        const float sigma = static_cast<float>(kernel_size / 3);
        FnGaussBlur blur(sigma, sigma);
        blur.SetInterrupt(this->Interrupt());
        blur.process(below, &scratch);
    }
    if (this->Check() != 0) return;
    FnImageZoomSampler<Stored, Computed, Scale, Stored, Computed, Scale> halve;
    halve.SetSingleThreaded(true);
    halve.SetInterrupt(this->Interrupt());
    halve.process(&scratch, level);
}

template class FnFilteredPyramid<float, float, 1>;
