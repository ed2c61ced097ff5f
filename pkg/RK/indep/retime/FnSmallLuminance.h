// A small luminance frame: the picture's luminance, blurred against aliasing, at the places of a scaled grid
// alone.
#ifndef FN_SMALL_LUMINANCE_H
#define FN_SMALL_LUMINANCE_H

#include "RK/indep/retime/BlurGeneralGauss.h"
#include "RK/indep/retime/FnLanes.h"
#include "RK/indep/retime/FnLuminance.h"

// Gives what luminance at full size, blurred by FnGaussBlur in an unclamped map and read by FnMoveSampler's
// nearest mode would. Pass 0 sums across at the columns that are read, four rows at a time; pass 1 down at
// the rows that are read.
template <class Stored, class Computed, int Scale>
class FnSmallLuminance : public Sampler<FnFloatMap, FnTexture<Stored, Computed>> {
  public:
    // ratio is the source's size over the destination's, above 0.
    FnSmallLuminance(const FnLuminanceWeights& luminance_weights, float source_ratio)
        : weights_(luminance_weights), ratio_(source_ratio) {}

    void Prepare() override {
        this->SetPassCount(2);
        const int64_t height = this->source_->Height();
        if (!taps_.Make(ratio_ / 3.0f) || !columns_.Allocate(this->dest_->Width()))
            return this->Abort(kFnNoMemory);
        const int64_t tall = height + 2 * int64_t{taps_.Reach()};
        if (tall > INT32_MAX || !scratch_.Resize(this->dest_->Width(), static_cast<int32_t>(tall)))
            return this->Abort(kFnNoMemory);
        float u = 0.5f * ratio_;
        for (int32_t x = 0; x < this->dest_->Width(); ++x, u += ratio_) columns_[x] = FnFloor(u);
    }
    void PassStart() override {
        line_length_ = int64_t{this->source_->Width()} + 2 * int64_t{taps_.Reach()};
        if (this->Pass() == 0 && !lines_.Allocate(kRows * line_length_ * this->Threads()))
            this->Abort(kFnNoMemory);
    }
    void ProcessBand() override {
        if (this->Pass() == 0)
            SumAcross();
        else
            SumDown();
    }
    void Finish() override {
        scratch_.Resize(0, 0);
        lines_.Free();
    }

  private:
    static constexpr int32_t kRows = 4;

    // Row R + y of the scratch is row y of the source; those beyond it stay 0.
    void SumAcross() {
        const int32_t height = this->source_->Height();
        const FnBand band = FnBandOf(0, (height - 1) / kRows + 1, FnThreadNumber(), this->Threads());
        float* line = lines_.data() + kRows * line_length_ * FnThreadNumber();
        for (int64_t i = 0; i < kRows * line_length_; ++i) line[i] = 0.0f;
        for (int32_t group = band.start; group < band.end && this->Check() == 0; ++group) {
            const int32_t y = group * kRows, rows = std::min(height - y, kRows);
            TakeLuminance(y, rows, line + kRows * int64_t{taps_.Reach()});
            float* out[kRows];
            for (int32_t j = 0; j < rows; ++j) out[j] = scratch_.Row(taps_.Reach() + y + j);
            for (int32_t x = 0; x < scratch_.Width(); ++x) {
                if (columns_[x] < 0 || columns_[x] >= this->source_->Width()) continue;
                const FnLanes sum = Sum(line + kRows * int64_t{columns_[x]});
                for (int32_t j = 0; j < rows; ++j) out[j][x] = sum[j];
            }
        }
    }
    FnLanes Sum(const float* in) const {
        FnLanes sum = {};
        for (int32_t i = 0; i <= 2 * taps_.Reach(); ++i, in += kRows) {
            FnLanes column;
            std::memcpy(&column, in, sizeof column);
            sum += FnSpread(taps_.Taps()[i]) * column;
        }
        return sum;
    }
    // The four rows from y on, column by column; the last row again for those past it.
    void TakeLuminance(int32_t y, int32_t rows, float* out) const {
        const Stored* in[kRows];
        for (int32_t j = 0; j < kRows; ++j) in[j] = this->source_->Row(y + std::min(j, rows - 1));
        const FnLanes red = FnSpread(weights_.red), green = FnSpread(weights_.green),
                      blue = FnSpread(weights_.blue);
        for (int32_t x = 0; x < this->source_->Width(); ++x, out += kRows) {
            const FnLanes p = FnLoad(in[0][x]), q = FnLoad(in[1][x]), r = FnLoad(in[2][x]),
                          s = FnLoad(in[3][x]);
            const FnLanes pq_red = __builtin_shufflevector(p, q, 0, 4, 1, 5);
            const FnLanes rs_red = __builtin_shufflevector(r, s, 0, 4, 1, 5);
            const FnLanes pq_blue = __builtin_shufflevector(p, q, 2, 6, 3, 7);
            const FnLanes rs_blue = __builtin_shufflevector(r, s, 2, 6, 3, 7);
            const FnLanes luminance = red * __builtin_shufflevector(pq_red, rs_red, 2, 3, 6, 7) +
                                      green * __builtin_shufflevector(pq_blue, rs_blue, 0, 1, 4, 5) +
                                      blue * __builtin_shufflevector(pq_blue, rs_blue, 2, 3, 6, 7);
            std::memcpy(out, &luminance, sizeof luminance);
        }
    }
    void SumDown() {
        const FnBand band = this->Band();
        const ptrdiff_t stride = scratch_.RowBytes() / static_cast<ptrdiff_t>(sizeof(float));
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            const int32_t from = FnFloor((static_cast<float>(y) + 0.5f) * ratio_);
            float* out = this->dest_->Row(y);
            if (from >= 0 && from < this->source_->Height())
                FnGaussBlur::Sum(taps_, scratch_.Row(from), stride, out, scratch_.Width());
            else
                for (int32_t x = 0; x < scratch_.Width(); ++x) out[x] = 0.0f;
        }
    }

    FnMotionEstimateLuminanceFrameGenerator<Stored, Computed, Scale> weights_;
    float ratio_;
    FnGaussTaps taps_;
    FnBuffer<int32_t> columns_;
    FnFloatMap scratch_;
    FnBuffer<float> lines_;  // one per thread: kRows values of each column, side by side
    int64_t line_length_ = 0;
};

#endif
