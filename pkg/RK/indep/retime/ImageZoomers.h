// Scaling maps up and down.
#ifndef IMAGE_ZOOMERS_H
#define IMAGE_ZOOMERS_H

#include "RK/indep/retime/Imagers.h"

// Destination (x, y) reads source (x / sx + 0.5, y / sy + 0.5), sx and sy being destination over source size unless
// they are given: truncated, by the source's edge rules, or bilinear.
template <class Stored, class Computed, int Scale, class SourceStored, class SourceComputed, int SourceScale>
class FnImageZoomSampler : public Sampler<FnTexture<Stored, Computed>, FnTexture<SourceStored, SourceComputed>> {
  public:
    float x_scale = 1.0f, y_scale = 1.0f;
    bool flip_rows = false;  // reads for row height - 1 - y
    bool use_scales = false;
    bool bilinear = false;

    void PreRow() override {
        if (use_scales) return;
        x_scale = static_cast<float>(this->dest_->Width()) / static_cast<float>(this->source_->Width());
        y_scale = static_cast<float>(this->dest_->Height()) / static_cast<float>(this->source_->Height());
    }
    void ProcessBand() override {
        const FnBand band = this->Band();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            const int32_t from = flip_rows ? this->dest_->Height() - 1 - y : y;
            const float py = static_cast<float>(from) / y_scale + 0.5f;
            Stored* out = this->dest_->Row(y);
            for (int32_t x = this->Region().left; x < this->Region().right; ++x) {
                const float px = static_cast<float>(x) / x_scale + 0.5f;
                if (bilinear)
                    out[x] = FnStore<Stored>(static_cast<Computed>(this->source_->Bilinear(px, py)));
                else
                    out[x] = FnStore<Stored>(
                        FnCompute<Computed>(this->source_->Read(FnTruncate(px), FnTruncate(py))));
            }
        }
    }
};

// Destination (x, y) reads source (x * x_ratio, y * y_ratio), truncated.
template <class Stored, class Computed>
class ImageZoomerBase : public Sampler<FnTexture<Stored, Computed>, FnTexture<Stored, Computed>> {
  public:
    ImageZoomerBase(float ratio_x, float ratio_y) : x_ratio(ratio_x), y_ratio(ratio_y) {}
    void ProcessBand() override {
        const FnBand band = this->Band();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            Stored* out = this->dest_->Row(y);
            for (int32_t x = this->Region().left; x < this->Region().right; ++x) out[x] = At(x, y);
        }
    }
    float x_ratio, y_ratio;

  protected:
    virtual Stored At(int32_t x, int32_t y) const { return Nearest(x, y); }
    const Stored& Nearest(int32_t x, int32_t y) const {
        return this->source_->Read(FnTruncate(static_cast<float>(x) * x_ratio),
                                   FnTruncate(static_cast<float>(y) * y_ratio));
    }
};

// Vectors: bilinear at (x * x_ratio + 0.5, y * y_ratio + 0.5) unless `nearest`; with `scale_vectors` a defined vector
// is divided by the ratios. Undefined ones mix by plain arithmetic, and only a result whose x is exactly the
// undefined value passes unscaled.
template <class Stored, class Computed>
class ImageZoomerGP : public ImageZoomerBase<Stored, Computed> {
  public:
    using ImageZoomerBase<Stored, Computed>::ImageZoomerBase;
    bool nearest = false;
    bool scale_vectors = false;

  protected:
    Stored At(int32_t x, int32_t y) const override {
        Stored v = nearest ? this->Nearest(x, y)
                           : this->source_->Bilinear(static_cast<float>(x) * this->x_ratio + 0.5f,
                                                     static_cast<float>(y) * this->y_ratio + 0.5f);
        if (scale_vectors && !FnIsUndefined(v)) v.x /= this->x_ratio, v.y /= this->y_ratio;
        return v;
    }
};

#endif
