// Affine and projective resampling.
#ifndef FN_MOVE_SAMPLER_H
#define FN_MOVE_SAMPLER_H

#include "RK/indep/retime/FnKernels.h"
#include "RK/indep/retime/Imagers.h"

// Destination (x, y) reads the source at (x + 0.5, y + 0.5, 1) times the matrix, a pixel-centre position, accumulated
// in float along the row. Modes: 0 nearest, 1 bilinear, 2 to 4 (with `flagged` only 2) the installed kernel. Any
// other mode, and a kernel mode without a ready kernel, writes nothing.
template <class Stored, class Computed, int Scale, class SourceMap = FnTexture<Stored, Computed>>
class FnMoveSampler : public Sampler<FnTexture<Stored, Computed>, SourceMap> {
  public:
    float matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};  // row vectors: m00 m01 m02, m10 ...
    int32_t mode = 0;
    float scale = 1.0f;  // carried, read by no mode
    bool flagged = false;
    bool projective = false;

    void SetKernels(const FnKernelManager* kernels) { kernels_ = kernels; }
    // Identity scaled on both axes.
    void SetScaling(float k) {
        for (int i = 0; i < 9; ++i) matrix[i] = i == 8 ? 1.0f : i % 4 == 0 ? k : 0.0f;
    }

    void PreRow() override {
        const bool wide = mode >= 2 && mode <= (flagged ? 2 : 4);
        kernel_ready_ = wide && kernels_ && kernels_->IsReady();
        if (!kernel_ready_) return;
        for (int32_t i = 0; i < this->Threads() && i < kMostThreads; ++i)
            if (!kernels_->Reserve(&scratch_[i])) this->Abort(kFnNoMemory);
        if (this->Threads() > kMostThreads) this->Abort(kFnNoMemory);
    }

    void ProcessBand() override {
        if (mode == 0)
            Walk([this](float u, float v, Stored& out) {
                out = FnStore<Stored>(FnCompute<Computed>(this->source_->Read(FnFloor(u), FnFloor(v))));
            });
        else if (mode == 1)
            Walk([this](float u, float v, Stored& out) {
                out = FnStore<Stored>(static_cast<Computed>(this->source_->Bilinear(u, v)));
            });
        else if (kernel_ready_)
            Walk([this](float u, float v, Stored& out) { out = FnStore<Stored>(AtKernel(u, v)); });
    }

  private:
    static constexpr int32_t kMostThreads = 256;

    template <class Write>
    void Walk(Write&& write) {
        const FnBand band = this->Band();
        const GEO_LRect region = this->Region();
        const float* m = matrix;
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            const float cx = static_cast<float>(region.left) + 0.5f, cy = static_cast<float>(y) + 0.5f;
            float u = cx * m[0] + cy * m[3] + m[6];
            float v = cx * m[1] + cy * m[4] + m[7];
            float w = cx * m[2] + cy * m[5] + m[8];
            Stored* out = this->dest_->Row(y);
            if (projective) {
                for (int32_t x = region.left; x < region.right; ++x, u += m[0], v += m[1], w += m[2])
                    write(u / w, v / w, out[x]);
            } else {
                for (int32_t x = region.left; x < region.right; ++x, u += m[0], v += m[1]) write(u, v, out[x]);
            }
        }
    }

    // Rows outer, columns inner, ascending: sum += (y tap * x tap) * pixel.
    Computed AtKernel(float u, float v) {
        FnKernelScratch& kernel = scratch_[FnThreadNumber()];
        const float x = u - 0.5f, y = v - 0.5f;
        kernels_->Lookup(x, y, &kernel);
        const int64_t left = int64_t{FnFloor(x)} - kernel.x.Reach(), top = int64_t{FnFloor(y)} - kernel.y.Reach();
        Computed sum{};
        for (int32_t j = 0; j < kernel.y.Count(); ++j)
            for (int32_t i = 0; i < kernel.x.Count(); ++i)
                sum = sum + FnCompute<Computed>(this->source_->Read(left + i, top + j)) *
                                (kernel.y.taps[j] * kernel.x.taps[i]);
        return sum;
    }

    const FnKernelManager* kernels_ = nullptr;
    bool kernel_ready_ = false;
    FnKernelScratch scratch_[kMostThreads];
};

// The same from a map of another type.
template <class Stored, class Computed, int Scale, class SourceStored, class SourceComputed>
class FnDualMoveSampler
    : public FnMoveSampler<Stored, Computed, Scale, FnTexture<SourceStored, SourceComputed>> {};

#endif
