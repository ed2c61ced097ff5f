// Two taps at once by the multiply that adds pairs of signed 16-bit products.
#include <emmintrin.h>

#include "RK/indep/filter/RKp_ConvolveTaps.h"

namespace {

using Int4 = __m128i;

// A pair's weights, channel by channel: tap 0 and tap 1 of alpha, of red, of green, of blue.
struct Pairs {
    Int4 weights[RKp_kMostTaps / 2];
    int32_t whole;   // pairs
    bool left_over;  // then a last tap stands in weights[whole], with 0 beside it
    Int4 sum;        // of all the weights, channel by channel
};

Int4 paired(Int4 first, Int4 second) {
    const Int4 both = _mm_packs_epi32(first, second);
    return _mm_unpacklo_epi16(both, _mm_unpackhi_epi64(both, both));
}
Pairs pairsOf(const uint32_t* taps, int32_t count) {
    const auto tap = [taps](int32_t t) {
        return _mm_loadu_si128(reinterpret_cast<const Int4*>(taps + 4 * t));
    };
    Pairs p;
    p.whole = count / 2;
    p.left_over = count % 2 != 0;
    p.sum = _mm_setzero_si128();
    for (int32_t t = 0; t < count; ++t) p.sum = _mm_add_epi32(p.sum, tap(t));
    for (int32_t k = 0; k < p.whole; ++k) p.weights[k] = paired(tap(2 * k), tap(2 * k + 1));
    if (p.left_over) p.weights[p.whole] = paired(tap(count - 1), _mm_setzero_si128());
    return p;
}

template <class P>
struct Group;

template <>
struct Group<RK_Pixel8> {
    // What the sums must get beside the products.
    static Int4 offset(const Pairs&) { return _mm_setzero_si128(); }
    // Adds the products of the pixels at p, and at q, with one pair.
    static void add4(const RK_Pixel8* p, const RK_Pixel8* q, Int4 weights, Int4 sum[4]) {
        const Int4 zero = _mm_setzero_si128();
        const Int4 a = _mm_loadu_si128(reinterpret_cast<const Int4*>(p));
        const Int4 b = _mm_loadu_si128(reinterpret_cast<const Int4*>(q));
        const Int4 low = _mm_unpacklo_epi8(a, b), high = _mm_unpackhi_epi8(a, b);
        sum[0] = _mm_add_epi32(sum[0], _mm_madd_epi16(_mm_unpacklo_epi8(low, zero), weights));
        sum[1] = _mm_add_epi32(sum[1], _mm_madd_epi16(_mm_unpackhi_epi8(low, zero), weights));
        sum[2] = _mm_add_epi32(sum[2], _mm_madd_epi16(_mm_unpacklo_epi8(high, zero), weights));
        sum[3] = _mm_add_epi32(sum[3], _mm_madd_epi16(_mm_unpackhi_epi8(high, zero), weights));
    }
};

// Pixels are taken less 32768, which the offset gives back; sums that pass 32 bits on the way wrap back.
template <>
struct Group<RK_Pixel16> {
    static Int4 offset(const Pairs& pairs) { return _mm_slli_epi32(pairs.sum, 15); }
    static void add4(const RK_Pixel16* p, const RK_Pixel16* q, Int4 weights, Int4 sum[4]) {
        const Int4 half = _mm_set1_epi16(INT16_MIN);
        for (int32_t k = 0; k < 4; k += 2) {
            const Int4 a = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const Int4*>(p + k)), half);
            const Int4 b = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const Int4*>(q + k)), half);
            sum[k] = _mm_add_epi32(sum[k], _mm_madd_epi16(_mm_unpacklo_epi16(a, b), weights));
            sum[k + 1] = _mm_add_epi32(sum[k + 1], _mm_madd_epi16(_mm_unpackhi_epi16(a, b), weights));
        }
    }
};

}  // namespace

template <class P>
void RKp_AddTaps_SSE2(const P* in, int32_t pixels, const RKp_ConvolveSum<P>* taps, int32_t count,
                      RKp_ConvolveSum<P>* sums) {
    int32_t i = 0;
    if (pixels >= 4) {
        const Pairs pairs = pairsOf(taps, count);
        const Int4 offset = Group<P>::offset(pairs);
        for (; pixels - i >= 4; i += 4) {
            Int4 sum[4];
            Int4* const out = reinterpret_cast<Int4*>(sums + 4 * i);
            for (int32_t k = 0; k < 4; ++k) sum[k] = _mm_add_epi32(_mm_loadu_si128(out + k), offset);
            const P* p = in + i;
            for (int32_t k = 0; k < pairs.whole; ++k, p += 2) Group<P>::add4(p, p + 1, pairs.weights[k], sum);
            if (pairs.left_over) Group<P>::add4(p, p, pairs.weights[pairs.whole], sum);
            for (int32_t k = 0; k < 4; ++k) _mm_storeu_si128(out + k, sum[k]);
        }
    }
    if (i < pixels) RKp_AddTaps(in + i, pixels - i, taps, count, sums + 4 * i);
}

template void RKp_AddTaps_SSE2(const RK_Pixel8*, int32_t, const uint32_t*, int32_t, uint32_t*);
template void RKp_AddTaps_SSE2(const RK_Pixel16*, int32_t, const uint32_t*, int32_t, uint32_t*);
