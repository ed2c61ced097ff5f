// One fixed kernel applied at every pixel.
#ifndef KERNEL_SAMPLERS_H
#define KERNEL_SAMPLERS_H

#include "RK/indep/retime/Imagers.h"

// Separable taps; a count of 1 with the tap 1 leaves an axis alone. Centred on index count / 2.
struct FnFixedKernel {
    const float* x_taps;
    int32_t x_count;
    const float* y_taps;
    int32_t y_count;
};

// Rows outer, columns inner, ascending: sum += (y tap * x tap) * sample, read by the source's edge rules.
template <class Map, class Stored, class Computed, class Sum, int Scale>
class KernelSampler : public Sampler<Map, Map> {
  public:
    explicit KernelSampler(const FnFixedKernel& fixed) : kernel(fixed) {}
    void ProcessBand() override {
        const FnBand band = this->Band();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y)
            for (int32_t x = this->Region().left; x < this->Region().right; ++x) this->dest_->Row(y)[x] = At(x, y);
    }
    FnFixedKernel kernel;

  private:
    Stored At(int32_t x, int32_t y) const {
        const int64_t left = int64_t{x} - kernel.x_count / 2, top = int64_t{y} - kernel.y_count / 2;
        Sum sum{};
        for (int32_t j = 0; j < kernel.y_count; ++j)
            for (int32_t i = 0; i < kernel.x_count; ++i)
                sum = sum + FnCompute<Computed>(this->source_->Read(left + i, top + j)) *
                                (kernel.y_taps[j] * kernel.x_taps[i]);
        return FnStore<Stored>(sum);
    }
};

// Counts only samples whose mask is not 0 and divides by the sum of the weights used; 0 where that sum is 0.
template <class Map, class Stored, class Computed, class Sum, int Scale, class MaskMap>
class KernelSamplerMasked : public Sampler<Map, Map> {
  public:
    KernelSamplerMasked(const FnFixedKernel& fixed, const MaskMap* mask) : kernel(fixed), mask_(mask) {}
    void ProcessBand() override {
        const FnBand band = this->Band();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y)
            for (int32_t x = this->Region().left; x < this->Region().right; ++x) this->dest_->Row(y)[x] = At(x, y);
    }
    FnFixedKernel kernel;

  private:
    static bool IsSet(float mask) { return mask != 0.0f; }
    template <class Base>
    static bool IsSet(const FnRGBCol<Base>& mask) {
        return mask.r != 0 || mask.g != 0 || mask.b != 0;
    }
    Stored At(int32_t x, int32_t y) const {
        const int64_t left = int64_t{x} - kernel.x_count / 2, top = int64_t{y} - kernel.y_count / 2;
        Sum sum{};
        float used = 0.0f;
        for (int32_t j = 0; j < kernel.y_count; ++j) {
            for (int32_t i = 0; i < kernel.x_count; ++i) {
                if (!IsSet(mask_->Read(left + i, top + j))) continue;
                const float weight = kernel.y_taps[j] * kernel.x_taps[i];
                sum = sum + FnCompute<Computed>(this->source_->Read(left + i, top + j)) * weight;
                used += weight;
            }
        }
        return used == 0.0f ? Stored{} : FnStore<Stored>(sum / used);
    }
    const MaskMap* mask_;
};

// A horizontal, then a vertical pass, through a scratch map shaped like the source.
template <class Map, class Stored, class Computed, class Sum, int Scale>
class BiKernelSampler : public Imager {
  public:
    explicit BiKernelSampler(const FnFixedKernel& fixed) : kernel(fixed) {}
    void process(const Map* source, Map* dest) {
        static const float kOne = 1.0f;
        Map scratch;
        if (!scratch.ShapeLike(*source)) return Abort(kFnNoMemory);
        KernelSampler<Map, Stored, Computed, Sum, Scale> across({kernel.x_taps, kernel.x_count, &kOne, 1});
        across.SetInterrupt(Interrupt());
        across.process(source, &scratch);
        if (Check() != 0) return;
        KernelSampler<Map, Stored, Computed, Sum, Scale> down({&kOne, 1, kernel.y_taps, kernel.y_count});
        down.SetInterrupt(Interrupt());
        down.process(&scratch, dest);
    }
    FnFixedKernel kernel;
};

#endif
