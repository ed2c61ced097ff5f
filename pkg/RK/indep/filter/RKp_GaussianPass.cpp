#include <algorithm>

#include "RK/indep/filter/RK_BlurFlags.h"
#include "RK/indep/filter/RKp_GaussianLine.h"
#include "RK/indep/frame/RKp_Depth.h"

// Legend: S a weighted sum, D the weight to divide by, H half of it.
namespace {

template <class P>
struct Arithmetic;

template <>
struct Arithmetic<RK_Pixel8> {
    // 255 * 255 * 65535 taps fit.
    using Sum = uint32_t;
    static Sum term(uint8_t c, int32_t w) { return static_cast<Sum>(c) * static_cast<Sum>(w); }
    static uint8_t mean(Sum S, int32_t D) {
        const auto d = static_cast<Sum>(D);
        return static_cast<uint8_t>((S + d / 2) / d);
    }
    static uint8_t colour(Sum S, Sum Sa) {
        return static_cast<uint8_t>(std::min<uint64_t>(255, (uint64_t{S} * 255 + Sa / 2) / Sa));
    }
};
template <>
struct Arithmetic<RK_Pixel16> {
    using Sum = float;
    static Sum term(uint16_t c, int32_t w) { return static_cast<float>(c * w); }
    static uint16_t mean(Sum S, int32_t D) {
        return static_cast<uint16_t>(RKp_Truncate((S + static_cast<float>(D / 2)) / static_cast<float>(D)));
    }
    static uint16_t colour(Sum S, Sum Sa) {
        const float c = (S * 32768.0f + Sa * 0.5f) / Sa;
        return static_cast<uint16_t>(RKp_Truncate(c > 32768.0f ? 32768.0f : c));
    }
};
template <>
struct Arithmetic<RK_PixelFloat> {
    using Sum = float;
    static Sum term(float c, int32_t w) { return c * static_cast<float>(w); }
    static float mean(Sum S, int32_t D) { return S / static_cast<float>(D); }
    static float colour(Sum S, Sum Sa) { return S / Sa; }
};

}  // namespace

template <class P>
void RKp_GaussianPass(const RKp_GaussianLine<P>& line) {
    using A = Arithmetic<P>;
    using Sum = typename A::Sum;
    const bool alpha = (line.flags & RK_kBlurAlpha) != 0, red = (line.flags & RK_kBlurRed) != 0,
               green = (line.flags & RK_kBlurGreen) != 0, blue = (line.flags & RK_kBlurBlue) != 0;
    const bool renormalise = (line.flags & RK_kBlurRenormalise) != 0;
    P* out = line.out;
    for (int32_t i = 0; i < line.out_length; ++i, out += line.out_step) {
        const int64_t centre = i + line.shift;
        struct {
            Sum a, r, g, b;
        } S = {};
        int32_t W = 0;
        const auto tap = [&](int64_t at, int32_t w) {
            if (at < 0 || at >= line.in_length) return;
            const P& p = line.in[static_cast<ptrdiff_t>(at) * line.in_step];
            S.a += A::term(p.alpha, w);
            S.r += A::term(p.red, w);
            S.g += A::term(p.green, w);
            S.b += A::term(p.blue, w);
            W += w;
        };
        tap(centre, line.weights[0]);
        for (int32_t k = 1; k <= line.reach; ++k) {
            tap(centre + k, line.weights[k]);
            tap(centre - k, line.weights[k]);
        }
        P p = {};
        if (centre >= 0 && centre < line.in_length)
            p = line.in[static_cast<ptrdiff_t>(centre) * line.in_step];
        const int32_t D = renormalise ? W : line.total;
        if (line.divide) {
            const Sum Sa = alpha ? S.a : A::term(p.alpha, D);
            const bool none = D == 0 || Sa == 0;
            if (alpha) p.alpha = none ? 0 : A::mean(Sa, D);
            if (red) p.red = none ? 0 : A::colour(S.r, Sa);
            if (green) p.green = none ? 0 : A::colour(S.g, Sa);
            if (blue) p.blue = none ? 0 : A::colour(S.b, Sa);
        } else {
            if (alpha) p.alpha = D == 0 ? 0 : A::mean(S.a, D);
            if (red) p.red = D == 0 ? 0 : A::mean(S.r, D);
            if (green) p.green = D == 0 ? 0 : A::mean(S.g, D);
            if (blue) p.blue = D == 0 ? 0 : A::mean(S.b, D);
        }
        *out = p;
    }
}

template void RKp_GaussianPass(const RKp_GaussianLine<RK_Pixel8>&);
template void RKp_GaussianPass(const RKp_GaussianLine<RK_Pixel16>&);
template void RKp_GaussianPass(const RKp_GaussianLine<RK_PixelFloat>&);
