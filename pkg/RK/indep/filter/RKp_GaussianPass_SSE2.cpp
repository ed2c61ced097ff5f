// The Gaussian in vectors: four pixels at a time that lie side by side in memory and have the same taps, be
// they neighbouring lines or places of one line. What is left over goes as in the plain body.
#include <emmintrin.h>

#include <cstring>

#include "RK/indep/filter/RKp_GaussianLines.h"

namespace {

// A depth has the sums of four pixels, and
//   void one(p, w)        adds w times the four pixels at p
//   void two(p, q, w)     and those at q
//   void means(D, out)    the four results where premultiplied is kept and all channels are named
//   RKp_GaussianSums<P> sums(n)  of pixel n
struct Four8 {
    using P = RK_Pixel8;
    // Up to this reach sums and half of their weight fit 31 bits.
    static constexpr int32_t kReach = 16000;
    __m128i s[4];

    static __m128i load(const P* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    // Bytes of both interleaved, so that one multiplication adds a tap on each side.
    void add(__m128i a, __m128i b, int32_t w) {
        const __m128i weight = _mm_set1_epi16(static_cast<int16_t>(w)), zero = _mm_setzero_si128();
        const __m128i low = _mm_unpacklo_epi8(a, b), high = _mm_unpackhi_epi8(a, b);
        s[0] = _mm_add_epi32(s[0], _mm_madd_epi16(_mm_unpacklo_epi8(low, zero), weight));
        s[1] = _mm_add_epi32(s[1], _mm_madd_epi16(_mm_unpackhi_epi8(low, zero), weight));
        s[2] = _mm_add_epi32(s[2], _mm_madd_epi16(_mm_unpacklo_epi8(high, zero), weight));
        s[3] = _mm_add_epi32(s[3], _mm_madd_epi16(_mm_unpackhi_epi8(high, zero), weight));
    }
    void one(const P* p, int32_t w) { add(load(p), _mm_setzero_si128(), w); }
    void two(const P* p, const P* q, int32_t w) { add(load(p), load(q), w); }

    // As the box blur's: the reciprocal is raised by so little that no product reaches the next quotient.
    static __m128i mean(__m128i S, __m128i half, __m128d reciprocal) {
        const __m128i n = _mm_add_epi32(S, half);
        const __m128d low = _mm_mul_pd(_mm_cvtepi32_pd(n), reciprocal);
        const __m128d high = _mm_mul_pd(_mm_cvtepi32_pd(_mm_shuffle_epi32(n, 0xEE)), reciprocal);
        return _mm_unpacklo_epi64(_mm_cvttpd_epi32(low), _mm_cvttpd_epi32(high));
    }
    void means(int32_t D, P* out) const {
        const __m128i half = _mm_set1_epi32(D / 2);
        const __m128d reciprocal = _mm_set1_pd((1.0 + 1.0 / (int64_t{1} << 45)) / D);
        const auto q = [&](int n) { return mean(s[n], half, reciprocal); };
        const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(q(0), q(1)), _mm_packs_epi32(q(2), q(3)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
    }
    RKp_GaussianSums<P> sums(int n) const {
        RKp_GaussianSums<P> made;
        std::memcpy(&made, &s[n], sizeof made);
        return made;
    }
};

// The sums of the float depths: each tap is multiplied, rounded and added by itself.
struct FourFloats {
    static constexpr int32_t kReach = INT32_MAX;
    __m128 s[4];
    void add(int n, __m128 p, __m128 w) { s[n] = _mm_add_ps(s[n], _mm_mul_ps(p, w)); }
    void copySums(int n, float* out) const { _mm_storeu_ps(out, s[n]); }
};

struct Four16 : FourFloats {
    using P = RK_Pixel16;
    static __m128 load(const P* p) {
        return _mm_cvtepi32_ps(
            _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128()));
    }
    void one(const P* p, int32_t w) {
        const __m128 weight = _mm_set1_ps(static_cast<float>(w));
        for (int n = 0; n < 4; ++n) add(n, load(p + n), weight);
    }
    void two(const P* p, const P* q, int32_t w) {
        one(p, w);
        one(q, w);
    }
    void means(int32_t D, P* out) const {
        const __m128 weight = _mm_set1_ps(static_cast<float>(D)),
                     half = _mm_set1_ps(static_cast<float>(D / 2));
        for (int n = 0; n < 4; ++n) {
            // To 32 bits, of which the low 16 are stored.
            const __m128i q = _mm_cvttps_epi32(_mm_div_ps(_mm_add_ps(s[n], half), weight));
            const __m128i words = _mm_shufflehi_epi16(_mm_shufflelo_epi16(q, 0x88), 0x88);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out + n), _mm_shuffle_epi32(words, 0x88));
        }
    }
    RKp_GaussianSums<P> sums(int n) const {
        RKp_GaussianSums<P> made;
        copySums(n, &made.a);
        return made;
    }
};

struct Four32 : FourFloats {
    using P = RK_PixelFloat;
    void one(const P* p, int32_t w) {
        const __m128 weight = _mm_set1_ps(static_cast<float>(w));
        for (int n = 0; n < 4; ++n) add(n, _mm_loadu_ps(&p[n].alpha), weight);
    }
    void two(const P* p, const P* q, int32_t w) {
        one(p, w);
        one(q, w);
    }
    void means(int32_t D, P* out) const {
        const __m128 weight = _mm_set1_ps(static_cast<float>(D));
        for (int n = 0; n < 4; ++n) _mm_storeu_ps(&out[n].alpha, _mm_div_ps(s[n], weight));
    }
    RKp_GaussianSums<P> sums(int n) const {
        RKp_GaussianSums<P> made;
        copySums(n, &made.a);
        return made;
    }
};

// The four pixels whose first has its line at `line`.
template <class Four, class P>
void four(const RKp_GaussianLines<P>& lines, const RKp_GaussianTaps& taps, const P* line, P* out) {
    // Only where there is a pixel: others may be out of any address.
    const auto at = [&](int64_t place) { return line + static_cast<ptrdiff_t>(place) * lines.in_step; };
    Four S = {};
    if (taps.has_centre) S.one(at(taps.centre), lines.weights[0]);
    taps.forEach([&](int32_t k) { S.two(at(taps.centre + k), at(taps.centre - k), lines.weights[k]); },
                 [&](int32_t k, int32_t sign) { S.one(at(taps.centre + sign * k), lines.weights[k]); });
    if (!lines.divide && taps.divisor != 0 && (lines.flags & RK_kBlurAllChannels) == RK_kBlurAllChannels)
        return S.means(taps.divisor, out);
    for (int n = 0; n < 4; ++n)
        out[n] =
            RKp_GaussianPixel(lines, taps.divisor, S.sums(n), taps.has_centre ? at(taps.centre)[n] : P{});
}

template <class Four, class P>
void pass(const RKp_GaussianLines<P>& lines) {
    const bool fits = lines.reach <= Four::kReach;
    // Neighbouring lines, or neighbouring places whose taps all lie in the line.
    const int32_t abreast = fits && lines.in_across == 1 && lines.out_across == 1 ? lines.lines / 4 * 4 : 0;
    const bool along = fits && lines.lines == 1 && lines.in_step == 1;
    const int64_t reach = std::max(lines.reach, 0), inner = reach, inner_end = lines.in_length - reach;
    P* out = lines.out;
    for (int32_t i = 0; i < lines.out_length; ++i, out += lines.out_step) {
        const int64_t place = i + lines.shift;
        const RKp_GaussianTaps taps(lines, place);
        if (along && place >= inner && place + 4 <= inner_end && i + 4 <= lines.out_length) {
            if (lines.out_step == 1) {
                four<Four>(lines, taps, lines.in, out);
            } else {
                P made[4];
                four<Four>(lines, taps, lines.in, made);
                for (int n = 0; n < 4; ++n) out[n * lines.out_step] = made[n];
            }
            i += 3, out += 3 * lines.out_step;
            continue;
        }
        for (int32_t j = 0; j < abreast; j += 4) four<Four>(lines, taps, lines.in + j, out + j);
        for (int32_t j = abreast; j < lines.lines; ++j)
            out[j * lines.out_across] = RKp_GaussianAt(lines, taps, j);
    }
}

}  // namespace

template <>
void RKp_GaussianPass_SSE2(const RKp_GaussianLines<RK_Pixel8>& lines) {
    pass<Four8>(lines);
}
template <>
void RKp_GaussianPass_SSE2(const RKp_GaussianLines<RK_Pixel16>& lines) {
    pass<Four16>(lines);
}
template <>
void RKp_GaussianPass_SSE2(const RKp_GaussianLines<RK_PixelFloat>& lines) {
    pass<Four32>(lines);
}
