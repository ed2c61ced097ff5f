// Averages over pictures: a sum in float, and its way back into a picture.
#ifndef FN_ACCUMULATORS_H
#define FN_ACCUMULATORS_H

#include <cmath>

#include "RK/indep/retime/Imagers.h"

// Adds a picture to the accumulator, which is zero when it is new, and counts it. Premultiplying, the colour is
// multiplied by alpha / M first.
template <class Stored, class Computed, int Scale>
class FnIntAccumulator final : public GeneralSampler<FnIntAccumulator<Stored, Computed, Scale>, FnAccumulatorMap,
                                                     FnTexture<Stored, Computed>> {
  public:
    void Finish() override { count += 1.0f; }
    void Pixel(const Stored& in, FnPixelSum& out, int32_t) {
        const Computed c = FnCompute<Computed>(in);
        float r = c.r, g = c.g, b = c.b;
        if (premultiply) {
            const float k = c.a / FnDepth<Scale>::kFull;
            r = c.r * k, g = c.g * k, b = c.b * k;
        }
        out.r += r, out.g += g, out.b += b, out.a += c.a;
    }
    float count = 0.0f;
    bool premultiply = false;
};

// Stores accumulator / divisor, each channel clamped to 0..M at every depth; a divisor of no size gives zeros.
// Premultiplied sums get their colour multiplied by M / alpha, where alpha is not 0, and clamped again.
template <class Stored, class Computed, int Scale>
class FnFloatDeaccumulator final : public GeneralSampler<FnFloatDeaccumulator<Stored, Computed, Scale>,
                                                         FnTexture<Stored, Computed>, FnAccumulatorMap> {
  public:
    explicit FnFloatDeaccumulator(float by) : divisor(by) {}
    void Pixel(const FnPixelSum& in, Stored& out, int32_t) {
        constexpr float M = FnDepth<Scale>::kFull;
        const float scale = std::fabs(divisor) > 2.3509887e-38f ? 1.0f / divisor : 0.0f;
        const float a = FnClamp(in.a * scale, 0.0f, M);
        float r = FnClamp(in.r * scale, 0.0f, M);
        float g = FnClamp(in.g * scale, 0.0f, M);
        float b = FnClamp(in.b * scale, 0.0f, M);
        if (premultiply && a != 0.0f) {
            const float k = M / a;
            r = FnClamp(r * k, 0.0f, M), g = FnClamp(g * k, 0.0f, M), b = FnClamp(b * k, 0.0f, M);
        }
        out = FnStore<Stored>(FnMakePixel<Computed>(a, r, g, b));
    }
    float divisor;
    bool premultiply = false;
};

#endif
