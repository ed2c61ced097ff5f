// The matte scans on 16 bytes and more at a time; heads up to an aligned `dst`, and tails, take the scalar
// form.
//
// This file is compiled with instructions that not every processor has, so all it defines is its own: no
// inline function or template of a shared header, of which the linker might keep the copy made here, for
// everybody.
//
// Legend: v pixels as they lie, a alphas, c, x colours, q quotients; M the matte.
#include "RK/indep/passes/RKp_MatteScans.h"

#include <tmmintrin.h>

#include "RK/indep/frame/RKp_HasAVX2.h"
#include "RK/indep/passes/RKp_MatteScans_AVX2.h"

namespace {

enum class Matte { Black, White, Grey };

inline __m128i choose(__m128i mask, __m128i where_set, __m128i elsewhere) {
    return _mm_or_si128(_mm_and_si128(mask, where_set), _mm_andnot_si128(mask, elsewhere));
}
inline __m128 choose(__m128 mask, __m128 where_set, __m128 elsewhere) {
    return _mm_or_ps(_mm_and_ps(mask, where_set), _mm_andnot_ps(mask, elsewhere));
}
inline bool all(__m128i mask) { return _mm_movemask_epi8(mask) == 0xFFFF; }
inline __m128i load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

// ---- 8 bits: four pixels in a vector, alpha in the low byte of each -------------------------------------

inline __m128i alphaMask8() { return _mm_set1_epi32(0x000000FF); }
inline __m128i colourMask8() { return _mm_set1_epi32(static_cast<int32_t>(0xFFFFFF00)); }

// mul8 in 16-bit lanes: (t * 257) >> 16 is (t + (t >> 8)) >> 8.
inline __m128i mul8(__m128i x, __m128i y) {
    const __m128i t = _mm_add_epi16(_mm_mullo_epi16(x, y), _mm_set1_epi16(128));
    return _mm_mulhi_epu16(t, _mm_set1_epi16(257));
}

// Two pixels in 16-bit lanes. Grey scales the distance from the middle by a above it and by inv a below it.
template <Matte M>
inline __m128i premultiplyLanes8(__m128i x, __m128i a) {
    if constexpr (M == Matte::Grey) {
        const __m128i middle = _mm_set1_epi16(128);
        const __m128i distance = _mm_sub_epi16(x, middle);
        const __m128i below = _mm_srai_epi16(distance, 15);
        const __m128i factor = _mm_xor_si128(a, _mm_srli_epi16(below, 8));
        return _mm_add_epi16(_mm_min_epi16(x, middle), mul8(_mm_abs_epi16(distance), factor));
    } else {
        // The alpha lane is multiplied by 255, which leaves it.
        return mul8(x, _mm_or_si128(a, _mm_set1_epi64x(255)));
    }
}

template <Matte M>
struct Premultiply8 {
    using Pixel = RK_Pixel8;
    static constexpr RK_Long kPixels = 4;

    template <bool in_place>
    static void run(const RK_Pixel8* src, RK_Pixel8* dst) {
        const __m128i v = load(src), zero = _mm_setzero_si128();
        const __m128i x = M == Matte::White ? _mm_xor_si128(v, colourMask8()) : v;
        // The alpha of each pixel in its three colour lanes, 0 in its own.
        const __m128i a01 = _mm_shuffle_epi8(v, _mm_setr_epi8(-1, -1, 0, -1, 0, -1, 0, -1,  //
                                                              -1, -1, 4, -1, 4, -1, 4, -1));
        const __m128i a23 = _mm_shuffle_epi8(v, _mm_setr_epi8(-1, -1, 8, -1, 8, -1, 8, -1,  //
                                                              -1, -1, 12, -1, 12, -1, 12, -1));
        const __m128i r = _mm_packus_epi16(premultiplyLanes8<M>(_mm_unpacklo_epi8(x, zero), a01),
                                           premultiplyLanes8<M>(_mm_unpackhi_epi8(x, zero), a23));
        if constexpr (M == Matte::Grey)
            store(dst, choose(alphaMask8(), v, r));
        else
            store(dst, M == Matte::White ? _mm_xor_si128(r, colourMask8()) : r);
    }
};

// The quotient (x * W + (a >> 1)) / a is x * W / a to the nearest integer, halves up. Being a multiple of 1 /
// a, what is no half lies at least 1 / 2a away from one, so an x * (W / a) that is a little inexact rounds
// alike. At 8 bits 1 / 2a is at least 0.00196 and the rounding in float below 0.0001: 0.001 on top sends the
// halves up. At 16 bits it is at least 2^-17, the rounding in double below 2^-36, and there are no halves,
// since no alpha divides by 2^16.

// One colour of four pixels in 32-bit lanes: that quotient, not yet cut to 255.
inline __m128i div8(__m128i x, __m128 full_by_a) {
    return _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(_mm_cvtepi32_ps(x), full_by_a), _mm_set1_ps(0.501f)));
}

template <Matte M>
struct Unmultiply8 {
    using Pixel = RK_Pixel8;
    static constexpr RK_Long kPixels = 4;

    template <bool in_place>
    static void run(const RK_Pixel8* src, RK_Pixel8* dst) {
        const __m128i v = load(src), ones = _mm_set1_epi32(-1);
        const __m128i a = _mm_and_si128(v, alphaMask8());
        const __m128i clear = _mm_cmpeq_epi32(a, _mm_setzero_si128());
        // The rule leaves an opaque pixel as it is.
        if (all(_mm_cmpeq_epi8(_mm_or_si128(v, colourMask8()), ones))) {
            if (!in_place) store(dst, v);
            return;
        }
        if (in_place && all(clear)) {
            store(dst, _mm_setzero_si128());
            return;
        }
        // Black divides the colour, white its inverse, grey its distance from the middle.
        __m128i x = v, below = _mm_setzero_si128();
        if (M == Matte::White) x = _mm_xor_si128(v, colourMask8());
        if (M == Matte::Grey) {
            const __m128i distance = _mm_xor_si128(v, _mm_set1_epi8(-128));
            below = _mm_and_si128(_mm_cmpgt_epi8(_mm_setzero_si128(), distance), colourMask8());
            x = _mm_abs_epi8(distance);
        }
        const __m128 f = _mm_div_ps(_mm_set1_ps(255.0f), _mm_cvtepi32_ps(a));
        const __m128i red = div8(_mm_and_si128(_mm_srli_epi32(x, 8), alphaMask8()), f);
        const __m128i green = div8(_mm_and_si128(_mm_srli_epi32(x, 16), alphaMask8()), f);
        const __m128i blue = div8(_mm_srli_epi32(x, 24), f);
        // The packs cut to 255. Where a is 0 the conversion has failed, the lanes are negative and become 0.
        const __m128i planes = _mm_packus_epi16(_mm_packs_epi32(a, red), _mm_packs_epi32(green, blue));
        __m128i q = _mm_shuffle_epi8(planes, _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13,  //
                                                           2, 6, 10, 14, 3, 7, 11, 15));
        if (!in_place) q = _mm_or_si128(q, _mm_and_si128(clear, colourMask8()));
        if (M == Matte::White) q = _mm_xor_si128(q, colourMask8());
        if (M == Matte::Grey) {
            // 128 + min(q, 127) above the middle, 128 - min(q, 128) below it.
            const __m128i limit = _mm_sub_epi8(_mm_set1_epi32(0x7F7F7FFF), below);
            const __m128i distance = _mm_min_epu8(q, limit);
            const __m128i directed = _mm_sub_epi8(_mm_xor_si128(distance, below), below);
            q = _mm_add_epi8(directed, _mm_set1_epi32(static_cast<int32_t>(0x80808000)));
        }
        store(dst, in_place ? _mm_andnot_si128(clear, q) : q);
    }
};

// ---- 16 bits: two pixels in a vector, alpha in the low word of each -------------------------------------

inline __m128i colourMask16() { return _mm_set1_epi64x(static_cast<int64_t>(0xFFFFFFFFFFFF0000)); }
inline __m128i full16() { return _mm_set1_epi16(-32768); }
inline __m128i grey16() { return _mm_set1_epi16(16384); }
inline __m128i isBelow16(__m128i c) {
    return _mm_cmpgt_epi16(_mm_set1_epi16(16384 - 32768), _mm_xor_si128(c, full16()));
}

// mul15 in 16-bit lanes, to the low 16 bits: product >> 15, one more when its low 15 bits and the term carry.
inline __m128i mul15(__m128i x, __m128i y) {
    const __m128i high = _mm_mulhi_epu16(x, y), low = _mm_mullo_epi16(x, y);
    const __m128i whole = _mm_or_si128(_mm_add_epi16(high, high), _mm_srli_epi16(low, 15));
    const __m128i rest = _mm_and_si128(low, _mm_set1_epi16(32767));
    return _mm_add_epi16(whole, _mm_srli_epi16(_mm_add_epi16(rest, _mm_set1_epi16(16383)), 15));
}

template <Matte M>
struct Premultiply16 {
    using Pixel = RK_Pixel16;
    static constexpr RK_Long kPixels = 2;

    template <bool in_place>
    static void run(const RK_Pixel16* src, RK_Pixel16* dst) {
        const __m128i v = load(src);
        const __m128i a = _mm_shuffle_epi8(v, _mm_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 8, 9, 8, 9, 8, 9, 8, 9));
        __m128i r;
        if constexpr (M == Matte::White) {
            r = _mm_sub_epi16(full16(), mul15(_mm_sub_epi16(full16(), v), a));
        } else {
            static_assert(M == Matte::Grey, "black has no vector form at this depth");
            const __m128i below = isBelow16(v), distance = _mm_sub_epi16(v, grey16());
            const __m128i factor = choose(below, _mm_sub_epi16(full16(), a), a);
            const __m128i size = _mm_sub_epi16(_mm_xor_si128(distance, below), below);
            r = _mm_add_epi16(choose(below, v, grey16()), mul15(size, factor));
        }
        store(dst, choose(colourMask16(), r, v));
    }
};

// Integers below 2^32 to and from double, by way of 2^52, whose unit in the last place is 1. Faster than
// conversions.
inline __m128d twoTo52() { return _mm_set1_pd(4503599627370496.0); }
inline __m128i twoTo52High() { return _mm_set1_epi32(0x43300000); }
inline __m128d lowLanes(__m128i x) {
    return _mm_sub_pd(_mm_castsi128_pd(_mm_unpacklo_epi32(x, twoTo52High())), twoTo52());
}
inline __m128d highLanes(__m128i x) {
    return _mm_sub_pd(_mm_castsi128_pd(_mm_unpackhi_epi32(x, twoTo52High())), twoTo52());
}
// To the nearest integer, in the low half of each lane.
inline __m128 nearest(__m128d x) { return _mm_castpd_ps(_mm_add_pd(x, twoTo52())); }

// 32768 / a of four pixels.
struct FullByAlpha16 {
    __m128d of01, of23;
    explicit FullByAlpha16(__m128i a)
        : of01(_mm_div_pd(_mm_set1_pd(32768.0), lowLanes(a))),
          of23(_mm_div_pd(_mm_set1_pd(32768.0), highLanes(a))) {}
};

// The quotient, cut to `limit`. Where a is 0 the product is infinite or NaN, and the minimum the limit.
inline __m128i div15(__m128i x, const FullByAlpha16& f, double limit) {
    const __m128d most = _mm_set1_pd(limit);
    const __m128d q01 = _mm_min_pd(_mm_mul_pd(lowLanes(x), f.of01), most);
    const __m128d q23 = _mm_min_pd(_mm_mul_pd(highLanes(x), f.of23), most);
    return _mm_castps_si128(_mm_shuffle_ps(nearest(q01), nearest(q23), _MM_SHUFFLE(2, 0, 2, 0)));
}

// One colour of four pixels in 32-bit lanes.
template <Matte M>
inline __m128i unmultiplyLanes16(__m128i c, const FullByAlpha16& f) {
    if constexpr (M == Matte::White) {
        const __m128i full = _mm_set1_epi32(32768);
        return _mm_sub_epi32(
            full, div15(_mm_and_si128(_mm_sub_epi32(full, c), _mm_set1_epi32(0xFFFF)), f, 32768.0));
    } else if constexpr (M == Matte::Grey) {
        // Away from the middle by as much as there is room for.
        const __m128i grey = _mm_set1_epi32(16384), distance = _mm_sub_epi32(c, grey);
        const __m128i below = _mm_srai_epi32(distance, 31);
        const __m128i q = div15(_mm_sub_epi32(_mm_xor_si128(distance, below), below), f, 16384.0);
        return _mm_add_epi32(grey, _mm_sub_epi32(_mm_xor_si128(q, below), below));
    } else {
        return div15(c, f, 32768.0);
    }
}

template <Matte M>
struct Unmultiply16 {
    using Pixel = RK_Pixel16;
    static constexpr RK_Long kPixels = 4;

    template <bool in_place>
    static void run(const RK_Pixel16* src, RK_Pixel16* dst) {
        // Alpha and red of the four pixels, then green and blue, as pairs in 32-bit lanes.
        const __m128 v01 = _mm_castsi128_ps(load(src)), v23 = _mm_castsi128_ps(load(src + 2));
        const __m128i ar = _mm_castps_si128(_mm_shuffle_ps(v01, v23, _MM_SHUFFLE(2, 0, 2, 0)));
        const __m128i gb = _mm_castps_si128(_mm_shuffle_ps(v01, v23, _MM_SHUFFLE(3, 1, 3, 1)));
        const __m128i low = _mm_set1_epi32(0xFFFF), a = _mm_and_si128(ar, low);
        const __m128i opaque = _mm_cmpeq_epi32(a, _mm_set1_epi32(32768));
        const __m128i clear = _mm_cmpeq_epi32(a, _mm_setzero_si128());
        if (in_place) {
            if (all(opaque)) return;
            if (all(clear)) {
                store(dst, _mm_setzero_si128());
                store(dst + 2, _mm_setzero_si128());
                return;
            }
        }
        const FullByAlpha16 f(a);
        const __m128i red = unmultiplyLanes16<M>(_mm_srli_epi32(ar, 16), f);
        const __m128i green = unmultiplyLanes16<M>(_mm_and_si128(gb, low), f);
        const __m128i blue = unmultiplyLanes16<M>(_mm_srli_epi32(gb, 16), f);
        __m128i new_ar = _mm_or_si128(a, _mm_slli_epi32(red, 16));
        __m128i new_gb = _mm_or_si128(green, _mm_slli_epi32(blue, 16));
        if (in_place) {
            new_ar = _mm_andnot_si128(clear, choose(opaque, ar, new_ar));
            new_gb = _mm_andnot_si128(clear, choose(opaque, gb, new_gb));
        }
        store(dst, _mm_unpacklo_epi32(new_ar, new_gb));
        store(dst + 2, _mm_unpackhi_epi32(new_ar, new_gb));
    }
};

// ---- Float: a pixel is a vector, alpha its lowest lane --------------------------------------------------

inline __m128 alphaOf(__m128 v) { return _mm_shuffle_ps(v, v, 0); }
inline __m128 one() { return _mm_set1_ps(1.0f); }
inline __m128 half() { return _mm_set1_ps(0.5f); }

template <Matte M>
inline __m128 premultiplyLanesFloat(__m128 v, __m128 a) {
    if constexpr (M == Matte::White) {
        return _mm_sub_ps(one(), _mm_mul_ps(_mm_sub_ps(one(), v), a));
    } else if constexpr (M == Matte::Grey) {
        const __m128 above = _mm_add_ps(_mm_mul_ps(_mm_sub_ps(v, half()), a), half());
        const __m128 below = _mm_add_ps(v, _mm_mul_ps(_mm_sub_ps(one(), a), _mm_sub_ps(half(), v)));
        return choose(_mm_cmpge_ps(v, half()), above, below);
    } else {
        return _mm_mul_ps(v, a);
    }
}

template <Matte M>
struct PremultiplyFloat {
    using Pixel = RK_PixelFloat;
    static constexpr RK_Long kPixels = 1;

    template <bool in_place>
    static void run(const RK_PixelFloat* src, RK_PixelFloat* dst) {
        const __m128 v = _mm_loadu_ps(&src->alpha);
        _mm_storeu_ps(&dst->alpha, _mm_move_ss(premultiplyLanesFloat<M>(v, alphaOf(v)), v));
    }
};

// The matte's rule around a division that `quotient` does.
template <Matte M, class Quotient>
inline __m128 unmultiplyLanesFloat(__m128 v, Quotient quotient) {
    if constexpr (M == Matte::White) {
        return _mm_sub_ps(one(), quotient(_mm_sub_ps(one(), v)));
    } else if constexpr (M == Matte::Grey) {
        // c - 0.5 and 0.5 - c have one size; a quotient that is not below 0.5, NaN too, ends at the far end.
        const __m128 sign = _mm_set1_ps(-0.0f);
        const __m128 q = quotient(_mm_andnot_ps(sign, _mm_sub_ps(v, half())));
        const __m128 near = _mm_cmplt_ps(q, half());
        const __m128 above = choose(near, _mm_add_ps(q, half()), one());
        const __m128 below = _mm_and_ps(near, _mm_sub_ps(half(), q));
        return choose(_mm_cmpge_ps(v, half()), above, below);
    } else {
        return quotient(v);
    }
}

template <Matte M>
struct UnmultiplyFloat {
    using Pixel = RK_PixelFloat;
    static constexpr RK_Long kPixels = 4;

    // A pixel of any alpha.
    template <bool in_place>
    static __m128 pixel(__m128 v) {
        const __m128 a = alphaOf(v), zero = _mm_setzero_ps();
        const __m128i exponent = _mm_and_si128(_mm_castps_si128(a), _mm_set1_epi32(0x7F800000));
        const __m128 tiny = _mm_castsi128_ps(_mm_cmpeq_epi32(exponent, _mm_setzero_si128()));
        const __m128 denormal = _mm_andnot_ps(_mm_cmpeq_ps(a, zero), tiny);
        const auto guarded = [&](__m128 x) { return choose(tiny, one(), _mm_div_ps(x, a)); };
        __m128 r = _mm_move_ss(choose(denormal, one(), unmultiplyLanesFloat<M>(v, guarded)), v);
        if (in_place) {
            r = choose(_mm_cmpeq_ps(a, one()), v, r);
            r = _mm_andnot_ps(_mm_cmpeq_ps(a, zero), r);
        }
        return r;
    }

    template <bool in_place>
    static void run(const RK_PixelFloat* src, RK_PixelFloat* dst) {
        __m128 v[4];
        for (int i = 0; i < 4; ++i) v[i] = _mm_loadu_ps(&src[i].alpha);
        const __m128 a = _mm_movelh_ps(_mm_unpacklo_ps(v[0], v[1]), _mm_unpacklo_ps(v[2], v[3]));
        const __m128 opaque = _mm_cmpeq_ps(a, one()), clear = _mm_cmpeq_ps(a, _mm_setzero_ps());
        const __m128i exponent = _mm_and_si128(_mm_castps_si128(a), _mm_set1_epi32(0x7F800000));
        const __m128i tiny = _mm_cmpeq_epi32(exponent, _mm_setzero_si128());
        if (in_place) {
            if (_mm_movemask_ps(opaque) == 15) return;
            if (_mm_movemask_ps(clear) == 15) {
                for (int i = 0; i < 4; ++i) _mm_storeu_ps(&dst[i].alpha, _mm_setzero_ps());
                return;
            }
        }
        const __m128 special = in_place ? _mm_or_ps(_mm_castsi128_ps(tiny), opaque) : _mm_castsi128_ps(tiny);
        if (_mm_movemask_ps(special) == 0) {
            for (int i = 0; i < 4; ++i) {
                const __m128 by = alphaOf(v[i]);
                const __m128 r = unmultiplyLanesFloat<M>(v[i], [&](__m128 x) { return _mm_div_ps(x, by); });
                _mm_storeu_ps(&dst[i].alpha, _mm_move_ss(r, v[i]));
            }
        } else {
            for (int i = 0; i < 4; ++i) _mm_storeu_ps(&dst[i].alpha, pixel<in_place>(v[i]));
        }
    }
};

// ---- Rows -----------------------------------------------------------------------------------------------

template <class P>
using Scan = RK_Long(RK_Long count, const P* src, P* dst);

// A form of wider steps that may go before the blocks; gives how many pixels it did. Null: none.
template <class P>
using Wide = RK_Long(RK_Long count, const P* src, P* dst);

// Whole blocks of the first `count` pixels; gives how many they were.
template <class Block, bool in_place, class P>
inline RK_Long blocks(RK_Long count, const P* src, P* dst) {
    RK_Long i = 0;
    for (; count - i >= Block::kPixels; i += Block::kPixels) Block::template run<in_place>(src + i, dst + i);
    return i;
}

template <class Block, class P>
inline RK_Long scan(RK_Long count, const P* src, P* dst, Scan<P>* scalar, Wide<P>* wide) {
    if (count < 1) return RK_kOK;
    const bool in_place = src == nullptr || src == dst;
    const auto rest = [&](RK_Long from, RK_Long n) {
        if (n > 0) scalar(n, in_place ? nullptr : src + from, dst + from);
    };
    // A row that no whole number of pixels aligns has no head.
    const uintptr_t to_aligned = (0 - reinterpret_cast<uintptr_t>(dst)) & 15;
    RK_Long done = to_aligned % sizeof(P) == 0 ? static_cast<RK_Long>(to_aligned / sizeof(P)) : 0;
    if (done > count) done = count;
    rest(0, done);
    if (wide && RKp_HasAVX2()) done += wide(count - done, in_place ? dst + done : src + done, dst + done);
    done += in_place ? blocks<Block, true>(count - done, dst + done, dst + done)
                     : blocks<Block, false>(count - done, src + done, dst + done);
    rest(done, count - done);
    return RK_kOK;
}

}  // namespace

#define SCAN_AFTER(wide, name, P, Block)                           \
    template <>                                                    \
    RK_Long name##_SSSE3<P>(RK_Long count, const P* src, P* dst) { \
        return scan<Block, P>(count, src, dst, name<P>, wide);     \
    }
#define SCAN(name, P, Block) SCAN_AFTER(nullptr, name, P, Block)
SCAN_AFTER(RKp_PremulBlack8_AVX2, RKp_Premul_Black, RK_Pixel8, Premultiply8<Matte::Black>)
SCAN(RKp_Unmul_Black, RK_Pixel8, Unmultiply8<Matte::Black>)
SCAN_AFTER(RKp_PremulWhite8_AVX2, RKp_Premul_White, RK_Pixel8, Premultiply8<Matte::White>)
SCAN(RKp_Unmul_White, RK_Pixel8, Unmultiply8<Matte::White>)
SCAN_AFTER(RKp_PremulGrey8_AVX2, RKp_Premul_Grey, RK_Pixel8, Premultiply8<Matte::Grey>)
SCAN(RKp_Unmul_Grey, RK_Pixel8, Unmultiply8<Matte::Grey>)

SCAN(RKp_Unmul_Black, RK_Pixel16, Unmultiply16<Matte::Black>)
SCAN(RKp_Premul_White, RK_Pixel16, Premultiply16<Matte::White>)
SCAN(RKp_Unmul_White, RK_Pixel16, Unmultiply16<Matte::White>)
SCAN(RKp_Premul_Grey, RK_Pixel16, Premultiply16<Matte::Grey>)
SCAN(RKp_Unmul_Grey, RK_Pixel16, Unmultiply16<Matte::Grey>)

SCAN(RKp_Premul_Black, RK_PixelFloat, PremultiplyFloat<Matte::Black>)
SCAN(RKp_Unmul_Black, RK_PixelFloat, UnmultiplyFloat<Matte::Black>)
SCAN(RKp_Premul_White, RK_PixelFloat, PremultiplyFloat<Matte::White>)
SCAN(RKp_Unmul_White, RK_PixelFloat, UnmultiplyFloat<Matte::White>)
SCAN(RKp_Premul_Grey, RK_PixelFloat, PremultiplyFloat<Matte::Grey>)
SCAN(RKp_Unmul_Grey, RK_PixelFloat, UnmultiplyFloat<Matte::Grey>)
#undef SCAN
#undef SCAN_AFTER
