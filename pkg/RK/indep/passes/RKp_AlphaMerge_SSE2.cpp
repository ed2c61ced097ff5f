// The alpha merge on 16 bytes at a time; heads up to an aligned `dst`, and tails, take the scalar form.
//
// Nothing here is shared with other files, not even an inline function: this one may be compiled with other
// switches.
//
// Legend: da alpha of `dst`, sa of `src`, ma of `matte`, o opacity.
#include "RK/indep/passes/RKp_AlphaMerge.h"

#include <emmintrin.h>

namespace {

inline __m128i load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
inline __m128i choose(__m128i mask, __m128i where_set, __m128i elsewhere) {
    return _mm_or_si128(_mm_and_si128(mask, where_set), _mm_andnot_si128(mask, elsewhere));
}

// Each depth: kPixels pixels in a vector; the products and inverses hold in the alpha lanes, others carry
// anything.
struct Lanes8 {
    using Pixel = RK_Pixel8;
    using Vector = __m128i;
    static constexpr RK_Long kPixels = 4;
    static Vector load(const Pixel* p) { return _mm_and_si128(::load(p), _mm_set1_epi32(0xFF)); }
    static Vector opacity(uint8_t o) { return _mm_set1_epi32(o); }
    static bool isFull(uint8_t o) { return o == 255; }
    // mul8: (t * 257) >> 16 is (t + (t >> 8)) >> 8.
    static Vector mul(Vector a, Vector b) {
        const Vector t = _mm_add_epi16(_mm_mullo_epi16(a, b), _mm_set1_epi16(128));
        return _mm_mulhi_epu16(t, _mm_set1_epi16(257));
    }
    static Vector inv(Vector a) { return _mm_xor_si128(a, _mm_set1_epi32(0xFF)); }
    static void storeAlpha(Vector a, Pixel* p) { store(p, choose(_mm_set1_epi32(0xFF), a, ::load(p))); }
};

struct Lanes16 {
    using Pixel = RK_Pixel16;
    using Vector = __m128i;
    static constexpr RK_Long kPixels = 8;
    // The alphas of pixels 0, 2, 4, 6, 1, 3, 5, 7.
    static Vector load(const Pixel* p) {
        const __m128i v01 = ::load(p), v23 = ::load(p + 2), v45 = ::load(p + 4), v67 = ::load(p + 6);
        const __m128i even = _mm_unpacklo_epi32(_mm_unpacklo_epi16(v01, v23), _mm_unpacklo_epi16(v45, v67));
        const __m128i odd = _mm_unpacklo_epi32(_mm_unpackhi_epi16(v01, v23), _mm_unpackhi_epi16(v45, v67));
        return _mm_unpacklo_epi64(even, odd);
    }
    static Vector opacity(uint16_t o) { return _mm_set1_epi16(static_cast<int16_t>(o)); }
    static bool isFull(uint16_t o) { return o == 32768; }
    // mul15, to the low 16 bits: product >> 15, one more when its low 15 bits and the term 16383 carry.
    static Vector mul(Vector a, Vector b) {
        const Vector high = _mm_mulhi_epu16(a, b), low = _mm_mullo_epi16(a, b);
        const Vector whole = _mm_or_si128(_mm_add_epi16(high, high), _mm_srli_epi16(low, 15));
        const Vector rest = _mm_and_si128(low, _mm_set1_epi16(32767));
        return _mm_add_epi16(whole, _mm_srli_epi16(_mm_add_epi16(rest, _mm_set1_epi16(16383)), 15));
    }
    static Vector inv(Vector a) { return _mm_sub_epi16(_mm_set1_epi16(-32768), a); }
    static void storeAlpha(Vector a, Pixel* p) {
        const __m128i mask = _mm_set1_epi64x(0xFFFF);
        store(p, choose(mask, a, ::load(p)));
        store(p + 2, choose(mask, _mm_srli_epi64(a, 16), ::load(p + 2)));
        store(p + 4, choose(mask, _mm_srli_epi64(a, 32), ::load(p + 4)));
        store(p + 6, choose(mask, _mm_srli_epi64(a, 48), ::load(p + 6)));
    }
};

struct LanesFloat {
    using Pixel = RK_PixelFloat;
    using Vector = __m128;
    static constexpr RK_Long kPixels = 4;
    static Vector load(const Pixel* p) { return _mm_setr_ps(p[0].alpha, p[1].alpha, p[2].alpha, p[3].alpha); }
    static Vector opacity(float o) { return _mm_set1_ps(o); }
    static bool isFull(float o) { return o == 1.0f; }
    static Vector mul(Vector a, Vector b) { return _mm_mul_ps(a, b); }
    static Vector inv(Vector a) { return _mm_sub_ps(_mm_set1_ps(1.0f), a); }
    static void storeAlpha(Vector a, Pixel* p) {
        _mm_store_ss(&p[0].alpha, a);
        _mm_store_ss(&p[1].alpha, _mm_shuffle_ps(a, a, 1));
        _mm_store_ss(&p[2].alpha, _mm_shuffle_ps(a, a, 2));
        _mm_store_ss(&p[3].alpha, _mm_shuffle_ps(a, a, 3));
    }
};

// Whole vectors of the first `count` pixels; gives how many pixels they were.
template <class L, bool scaled, bool with_matte, class P = typename L::Pixel>
inline RK_Long vectors(RK_Long count, const P* src, typename L::Vector opacity, const P* matte, P* dst) {
    RK_Long i = 0;
    for (; count - i >= L::kPixels; i += L::kPixels) {
        typename L::Vector s = L::load(src + i);
        if (scaled) s = L::mul(s, opacity);
        if (with_matte) s = L::mul(L::load(matte + i), s);
        L::storeAlpha(L::inv(L::mul(L::inv(L::load(dst + i)), L::inv(s))), dst + i);
    }
    return i;
}

template <class L, class Channel, class P = typename L::Pixel>
inline RK_Long merge(RK_Long count, const P* src, Channel opacity, const P* matte, P* dst) {
    if (count < 1 || opacity == 0) return RK_kOK;
    const auto rest = [&](RK_Long from, RK_Long n) {
        if (n > 0) RKp_AlphaMerge<P>(n, src + from, opacity, matte ? matte + from : nullptr, dst + from);
    };
    const uintptr_t to_aligned = (0 - reinterpret_cast<uintptr_t>(dst)) & 15;
    RK_Long done = to_aligned % sizeof(P) == 0 ? static_cast<RK_Long>(to_aligned / sizeof(P)) : 0;
    if (done > count) done = count;
    rest(0, done);

    const auto o = L::opacity(opacity);
    const P* const m = matte ? matte + done : nullptr;
    const RK_Long left = count - done;
    if (L::isFull(opacity))
        done += m ? vectors<L, false, true>(left, src + done, o, m, dst + done)
                  : vectors<L, false, false>(left, src + done, o, m, dst + done);
    else
        done += m ? vectors<L, true, true>(left, src + done, o, m, dst + done)
                  : vectors<L, true, false>(left, src + done, o, m, dst + done);
    rest(done, count - done);
    return RK_kOK;
}

}  // namespace

template <>
RK_Long RKp_AlphaMerge_SSE2<RK_Pixel8>(RK_Long count, const RK_Pixel8* src, uint8_t opacity,
                                       const RK_Pixel8* matte, RK_Pixel8* dst) {
    return merge<Lanes8>(count, src, opacity, matte, dst);
}
template <>
RK_Long RKp_AlphaMerge_SSE2<RK_Pixel16>(RK_Long count, const RK_Pixel16* src, uint16_t opacity,
                                        const RK_Pixel16* matte, RK_Pixel16* dst) {
    return merge<Lanes16>(count, src, opacity, matte, dst);
}
template <>
RK_Long RKp_AlphaMerge_SSE2<RK_PixelFloat>(RK_Long count, const RK_PixelFloat* src, float opacity,
                                           const RK_PixelFloat* matte, RK_PixelFloat* dst) {
    return merge<LanesFloat>(count, src, opacity, matte, dst);
}
