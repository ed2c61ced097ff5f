// Lines of the Gaussian blur side by side, and the arithmetic of their pixels.
//
// Legend: S a weighted sum, D the weight to divide by, H half of it, Sa the alpha's sum.
#ifndef RKP_GAUSSIAN_LINES_H
#define RKP_GAUSSIAN_LINES_H

#include <algorithm>

#include "RK/indep/filter/RKp_BlurJob.h"

template <class P>
struct RKp_GaussianLines {
    const P* in;
    P* out;
    ptrdiff_t in_step, out_step;      // along a line
    ptrdiff_t in_across, out_across;  // from line to line
    int32_t in_length, out_length, lines;
    int64_t shift;           // input pixel of output pixel 0
    const int32_t* weights;  // reach + 1 of them, from the middle outwards, 0 to 255
    const int32_t* within;   // their sums up to there, without the middle's
    int32_t reach, total;    // of all taps
    uint32_t flags;
    bool divide;  // by alpha
};

template <class P>
void RKp_GaussianPass(const RKp_GaussianLines<P>& lines);
// The same bytes.
template <class P>
void RKp_GaussianPass_SSE2(const RKp_GaussianLines<P>& lines);

// The taps around one place that lie in the line: those ahead of it and those behind, by their distance.
struct RKp_GaussianTaps {
    template <class P>
    RKp_GaussianTaps(const RKp_GaussianLines<P>& lines, int64_t place)
        : centre(place), has_centre(place >= 0 && place < lines.in_length) {
        const int64_t last = int64_t{lines.in_length} - 1, reach = std::max(lines.reach, 0);
        const auto first = [&](int64_t k) {
            return static_cast<int32_t>(std::clamp<int64_t>(k, 1, reach + 1));
        };
        const auto end = [&](int64_t k) { return static_cast<int32_t>(std::clamp<int64_t>(k, 0, reach)); };
        ahead = first(-place), ahead_end = end(last - place);
        behind = first(place - last), behind_end = end(place);
        const auto weight = [&](int32_t from, int32_t to) {
            return to < from ? 0 : lines.within[to] - lines.within[from - 1];
        };
        divisor =
            (lines.flags & RK_kBlurRenormalise) == 0
                ? lines.total
                : (has_centre ? lines.weights[0] : 0) + weight(ahead, ahead_end) + weight(behind, behind_end);
    }
    // pair(k) where tap k lies on both sides, then one(k, sign) where it is ahead (1) or behind (-1) alone.
    template <class Pair, class One>
    void forEach(Pair&& pair, One&& one) const {
        int32_t k = 1;
        if (has_centre)
            for (const int32_t both = std::min(ahead_end, behind_end); k <= both; ++k) pair(k);
        for (int32_t n = std::max(k, ahead); n <= ahead_end; ++n) one(n, 1);
        for (int32_t n = std::max(k, behind); n <= behind_end; ++n) one(n, -1);
    }

    int64_t centre;
    bool has_centre;
    int32_t ahead, ahead_end, behind, behind_end;
    int32_t divisor;
};

// ---- One pixel ------------------------------------------------------------------------------------------

template <class P>
struct RKp_GaussianDepth;

template <>
struct RKp_GaussianDepth<RK_Pixel8> {
    // 255 * 255 * 65535 taps fit.
    using Sum = uint32_t;
    static Sum term(uint8_t c, int32_t w) { return static_cast<Sum>(c) * static_cast<Sum>(w); }
    // A channel times the weight of all taps.
    static Sum whole(uint8_t c, int32_t D) { return term(c, D); }
    static uint8_t mean(Sum S, int32_t D) {
        const auto d = static_cast<Sum>(D);
        return static_cast<uint8_t>((S + d / 2) / d);
    }
    static uint8_t colour(Sum S, Sum Sa) {
        return static_cast<uint8_t>(std::min<uint64_t>(255, (uint64_t{S} * 255 + Sa / 2) / Sa));
    }
};
template <>
struct RKp_GaussianDepth<RK_Pixel16> {
    using Sum = float;
    static Sum term(uint16_t c, int32_t w) { return static_cast<float>(c * w); }
    static Sum whole(uint16_t c, int32_t D) { return static_cast<float>(c) * static_cast<float>(D); }
    static uint16_t mean(Sum S, int32_t D) {
        return static_cast<uint16_t>(RKp_Truncate((S + static_cast<float>(D / 2)) / static_cast<float>(D)));
    }
    static uint16_t colour(Sum S, Sum Sa) {
        const float c = (S * 32768.0f + Sa * 0.5f) / Sa;
        return static_cast<uint16_t>(RKp_Truncate(c > 32768.0f ? 32768.0f : c));
    }
};
template <>
struct RKp_GaussianDepth<RK_PixelFloat> {
    using Sum = float;
    static Sum term(float c, int32_t w) { return c * static_cast<float>(w); }
    static Sum whole(float c, int32_t D) { return term(c, D); }
    static float mean(Sum S, int32_t D) { return S / static_cast<float>(D); }
    static float colour(Sum S, Sum Sa) { return S / Sa; }
};

template <class P>
struct RKp_GaussianSums {
    typename RKp_GaussianDepth<P>::Sum a, r, g, b;
};

// The sums around one place of the line that begins at `line`.
template <class P>
RKp_GaussianSums<P> RKp_SumTaps(const RKp_GaussianLines<P>& lines, const RKp_GaussianTaps& taps,
                                const P* line) {
    using A = RKp_GaussianDepth<P>;
    RKp_GaussianSums<P> S = {};
    const auto add = [&](int64_t at, int32_t w) {
        const P& p = line[static_cast<ptrdiff_t>(at) * lines.in_step];
        S.a += A::term(p.alpha, w);
        S.r += A::term(p.red, w);
        S.g += A::term(p.green, w);
        S.b += A::term(p.blue, w);
    };
    if (taps.has_centre) add(taps.centre, lines.weights[0]);
    taps.forEach(
        [&](int32_t k) {
            add(taps.centre + k, lines.weights[k]);
            add(taps.centre - k, lines.weights[k]);
        },
        [&](int32_t k, int32_t sign) { add(taps.centre + sign * k, lines.weights[k]); });
    return S;
}

// What the sums make of a pixel.
template <class P>
P RKp_GaussianPixel(const RKp_GaussianLines<P>& lines, int32_t D, const RKp_GaussianSums<P>& S, P p) {
    using A = RKp_GaussianDepth<P>;
    using C = decltype(p.alpha);
    const bool alpha = (lines.flags & RK_kBlurAlpha) != 0, red = (lines.flags & RK_kBlurRed) != 0,
               green = (lines.flags & RK_kBlurGreen) != 0, blue = (lines.flags & RK_kBlurBlue) != 0;
    if (lines.divide) {
        const auto Sa = alpha ? S.a : A::whole(p.alpha, D);
        const bool none = D == 0 || Sa == 0;
        if (alpha) p.alpha = none ? C{0} : A::mean(Sa, D);
        if (red) p.red = none ? C{0} : A::colour(S.r, Sa);
        if (green) p.green = none ? C{0} : A::colour(S.g, Sa);
        if (blue) p.blue = none ? C{0} : A::colour(S.b, Sa);
    } else {
        if (alpha) p.alpha = D == 0 ? C{0} : A::mean(S.a, D);
        if (red) p.red = D == 0 ? C{0} : A::mean(S.r, D);
        if (green) p.green = D == 0 ? C{0} : A::mean(S.g, D);
        if (blue) p.blue = D == 0 ? C{0} : A::mean(S.b, D);
    }
    return p;
}

// The pixel at a place of line j, from beginning to end.
template <class P>
P RKp_GaussianAt(const RKp_GaussianLines<P>& lines, const RKp_GaussianTaps& taps, int32_t j) {
    const P* const line = lines.in + j * lines.in_across;
    const P centre = taps.has_centre ? line[static_cast<ptrdiff_t>(taps.centre) * lines.in_step] : P{};
    return RKp_GaussianPixel(lines, taps.divisor, RKp_SumTaps(lines, taps, line), centre);
}

#endif
