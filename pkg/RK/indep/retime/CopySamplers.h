// Whole-map fills and copies.
#ifndef COPY_SAMPLERS_H
#define COPY_SAMPLERS_H

#include "RK/indep/retime/Imagers.h"

// Fills the region with one value.
template <class Stored, class Computed, int Scale>
class ColouredFrameGenerator : public Generator<FnTexture<Stored, Computed>> {
  public:
    explicit ColouredFrameGenerator(const Stored& fill) : value(fill) {}
    void ProcessBand() override {
        const FnBand band = this->Band();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            Stored* row = this->dest_->Row(y);
            for (int32_t x = this->Region().left; x < this->Region().right; ++x) row[x] = value;
        }
    }
    Stored value;
};

// Copies count pixels of a run: a block forward, one pixel repeated, or backward.
template <class Stored, class Computed>
struct SimpleLineCopier {
    static void Copy(Stored* out, const FnSourceRun<FnTexture<Stored, Computed>>& run, int64_t count) {
        if (run.step == 1) {
            std::memcpy(out, run.pixel, static_cast<size_t>(count) * sizeof(Stored));
        } else {
            const Stored* in = run.pixel;
            for (int64_t i = 0; i < count; ++i, in += run.step) out[i] = *in;
        }
    }
};

// The source under the region, its edge rules beyond its edges.
template <class Stored, class Computed>
class SimpleCopySampler : public Sampler<FnTexture<Stored, Computed>, FnTexture<Stored, Computed>> {
  public:
    void ProcessBand() override {
        const FnBand band = this->Band();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            const FnRun row = this->source_->axis[1].RunFrom(y);
            Stored* out = this->dest_->Row(y);
            for (int64_t x = this->Region().left; x < this->Region().right;) {
                const auto run = FnSourceRunFrom(*this->source_, row, x);
                const int64_t count = std::min<int64_t>(run.count, this->Region().right - x);
                SimpleLineCopier<Stored, Computed>::Copy(out + x, run, count);
                x += count;
            }
        }
    }
};

#endif
