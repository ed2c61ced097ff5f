// Gaussian blur of a map of floats, rows first.
#ifndef BLUR_GENERAL_GAUSS_H
#define BLUR_GENERAL_GAUSS_H

#include <cmath>

#include "RK/indep/retime/FnBuffer.h"
#include "RK/indep/retime/FnKernels.h"
#include "RK/indep/retime/Imagers.h"

// The taps of one axis: -R..R, R = trunc((sigma + 2) * 3). A sigma not above 0 has none and copies.
class FnGaussTaps {
  public:
    // False when memory is short.
    bool Make(float sigma) {
        reach_ = 0;
        taps_.Free();
        if (!(sigma > 0.0f)) return true;
        const int32_t reach = FnTruncate((sigma + 2.0f) * 3.0f);
        if (reach < 0 || reach > kGreatestReach || !taps_.Allocate(2 * int64_t{reach} + 1)) return false;
        reach_ = reach;
        for (int32_t i = -reach; i <= reach; ++i) {
            const float d = static_cast<float>(i);
            const float e = -(d * d) / (2.0f * sigma * sigma);
            taps_[i + reach] = static_cast<float>(std::exp(static_cast<double>(e)));
        }
        FnNormalise(taps_.data(), 2 * reach + 1);
        return true;
    }
    int32_t Reach() const { return reach_; }
    const float* Taps() const { return taps_.data(); }
    bool Copies() const { return !taps_; }

  private:
    static constexpr int32_t kGreatestReach = 1 << 24;
    FnBuffer<float> taps_;
    int32_t reach_ = 0;
};

// Pass 0 blurs rows into a scratch map that reaches beyond the region, reading the source by its edge rules;
// pass 1 blurs the scratch's columns into the destination. Each sum runs from -R to R.
template <class Stored, class Computed, int, int, int, int Scale, int>
class BlurGeneralGauss : public Sampler<FnTexture<Stored, Computed>, FnTexture<Stored, Computed>> {
  public:
    BlurGeneralGauss(float x_sigma, float y_sigma) : x_sigma_(x_sigma), y_sigma_(y_sigma) {}
    // Both sigmas are divided by it first.
    float x_scale = 1.0f;

    // out[k] = the sum over i of taps[i] * in[i * stride + k], for k below count.
    static void Sum(const FnGaussTaps& gauss, const Stored* in, ptrdiff_t stride, Stored* out,
                    int32_t count) {
        const int32_t taps = 2 * gauss.Reach() + 1;
        constexpr int32_t kWidth = 16;
        int32_t k = 0;
        for (; k + kWidth <= count; k += kWidth) {
            Computed sums[kWidth] = {};
            for (int32_t i = 0; i < taps; ++i) {
                const float tap = gauss.Taps()[i];
                const Stored* from = in + i * stride + k;
                for (int32_t n = 0; n < kWidth; ++n) sums[n] += tap * from[n];
            }
            std::memcpy(out + k, sums, sizeof sums);
        }
        for (; k < count; ++k) {
            Computed sum = 0.0f;
            for (int32_t i = 0; i < taps; ++i) sum += gauss.Taps()[i] * in[i * stride + k];
            out[k] = sum;
        }
    }

    void Prepare() override {
        this->SetPassCount(2);
        const GEO_LRect& region = this->Region();
        if (!x_.Make(x_sigma_ / x_scale) || !y_.Make(y_sigma_ / x_scale)) return this->Abort(kFnNoMemory);
        const int64_t height = int64_t{region.bottom} - region.top + 2 * int64_t{y_.Reach()};
        if (height > INT32_MAX || !scratch_.Resize(region.right - region.left, static_cast<int32_t>(height)))
            this->Abort(kFnNoMemory);
    }
    void PassStart() override {
        line_length_ = int64_t{scratch_.Width()} + 2 * int64_t{x_.Reach()};
        if (this->Pass() == 0 && !lines_.Allocate(line_length_ * this->Threads())) this->Abort(kFnNoMemory);
    }
    void ProcessBand() override {
        if (this->Pass() == 0)
            BlurRows();
        else
            BlurColumns();
    }
    void Finish() override {
        scratch_.Resize(0, 0);
        lines_.Free();
    }

  private:
    // Row y of the scratch stands for row region.top - R + y.
    void BlurRows() {
        const FnBand band = FnBandOf(0, scratch_.Height(), FnThreadNumber(), this->Threads());
        Stored* line = lines_.data() + line_length_ * FnThreadNumber();
        const int64_t top = int64_t{this->Region().top} - y_.Reach();
        const int64_t left = int64_t{this->Region().left} - x_.Reach();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            const FnRun row = this->source_->axis[1].RunFrom(top + y);
            for (int64_t x = 0; x < line_length_;) {
                const auto run = FnSourceRunFrom(*this->source_, row, left + x);
                const int64_t count = std::min(run.count, line_length_ - x);
                for (int64_t i = 0; i < count; ++i) line[x + i] = run.pixel[i * run.step];
                x += count;
            }
            if (x_.Copies())
                std::memcpy(scratch_.Row(y), line, static_cast<size_t>(line_length_) * sizeof(Stored));
            else
                Sum(x_, line, 1, scratch_.Row(y), scratch_.Width());
        }
    }
    void BlurColumns() {
        const FnBand band = this->Band();
        const ptrdiff_t stride = scratch_.RowBytes() / static_cast<ptrdiff_t>(sizeof(Stored));
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            Stored* out = this->dest_->Row(y) + this->Region().left;
            const Stored* in = scratch_.Row(y - this->Region().top);
            if (y_.Copies())
                std::memcpy(out, in, static_cast<size_t>(scratch_.Width()) * sizeof(Stored));
            else
                Sum(y_, in, stride, out, scratch_.Width());
        }
    }

    float x_sigma_, y_sigma_;
    FnGaussTaps x_, y_;
    FnTexture<Stored, Computed> scratch_;
    FnBuffer<Stored> lines_;  // one per thread
    int64_t line_length_ = 0;
};

using FnGaussBlur = BlurGeneralGauss<float, float, 1, 1, 1, 1, 0>;

#endif
