// RK_Xfer_Over's rows: sixteen pixels at a time at 8 bits, four at float. Kernels stand in the unnamed
// namespace and use intrinsics alone: nothing that other sources share may be emitted with these
// instructions. Loads and stores take any alignment, and cost no more where an address happens to be aligned.
//
// Legend: s, d source and destination; sa, da their alphas, sa after opacity and matte; a the result's alpha;
// p the premultiplied destination, v the premultiplied result.
#include <tmmintrin.h>

#include "RK/indep/composite/RKp_RowVariants.h"

namespace {

// ---- 8 bits: the channels of eight pixels apart, in 16-bit lanes ----------------------------------------

using Int8 = __m128i;

inline Int8 load(const RK_Pixel8* p) { return _mm_loadu_si128(reinterpret_cast<const Int8*>(p)); }
inline void store(RK_Pixel8* p, Int8 v) { _mm_storeu_si128(reinterpret_cast<Int8*>(p), v); }
inline Int8 each(int value) { return _mm_set1_epi16(static_cast<int16_t>(value)); }
inline bool allSet(Int8 mask) { return _mm_movemask_epi8(mask) == 0xFFFF; }
inline Int8 inv(Int8 x) { return _mm_xor_si128(x, each(255)); }

// (t + (t >> 8)) >> 8, as one product.
inline Int8 over255(Int8 t) { return _mm_mulhi_epu16(t, each(257)); }
// The rounded product over 255.
inline Int8 mul(Int8 x, Int8 y) { return over255(_mm_add_epi16(_mm_mullo_epi16(x, y), each(128))); }

// p moved towards s by sa. The default's signed product, wrapped where s < p, comes to one more in the
// rounding term there: (p * inv(sa) + s * sa + 128 + (s < p)) over 255, for all values.
inline Int8 lerp(Int8 p, Int8 s, Int8 sa, Int8 inv_sa) {
    const Int8 down = _mm_cmpgt_epi16(p, s);
    const Int8 part = _mm_sub_epi16(_mm_add_epi16(_mm_mullo_epi16(s, sa), each(128)), down);
    return over255(_mm_add_epi16(part, _mm_mullo_epi16(p, inv_sa)));
}

// The channels of eight pixels.
struct Channels8 {
    Int8 alpha, red, green, blue;
};
inline Channels8 split(Int8 pixels0, Int8 pixels4) {
    // Alpha and red of four pixels, then their green and blue.
    const Int8 pairs = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    const Int8 p0 = _mm_shuffle_epi8(pixels0, pairs), p4 = _mm_shuffle_epi8(pixels4, pairs);
    const Int8 alpha_red = _mm_unpacklo_epi64(p0, p4), green_blue = _mm_unpackhi_epi64(p0, p4);
    return {_mm_and_si128(alpha_red, each(255)), _mm_srli_epi16(alpha_red, 8),
            _mm_and_si128(green_blue, each(255)), _mm_srli_epi16(green_blue, 8)};
}
inline void storePixels(RK_Pixel8* p, Int8 alpha, const Int8* colours) {
    const Int8 alpha_red = _mm_or_si128(alpha, _mm_slli_epi16(colours[0], 8));
    const Int8 green_blue = _mm_or_si128(colours[1], _mm_slli_epi16(colours[2], 8));
    store(p, _mm_unpacklo_epi16(alpha_red, green_blue));
    store(p + 4, _mm_unpackhi_epi16(alpha_red, green_blue));
}
inline Int8 loadAlphas(const RK_Pixel8* p) {
    const Int8 low_byte = _mm_set1_epi32(255);
    return _mm_packs_epi32(_mm_and_si128(load(p), low_byte), _mm_and_si128(load(p + 4), low_byte));
}

// floor(65536 / a) for a of 2 to 255; 65535 for 1.
inline Int8 inverse(Int8 a) {
    const Int8 zero = _mm_setzero_si128(), middle = _mm_set1_epi32(32768);
    const __m128 one = _mm_set1_ps(65536.0f);
    const __m128 low = _mm_div_ps(one, _mm_cvtepi32_ps(_mm_unpacklo_epi16(a, zero)));
    const __m128 high = _mm_div_ps(one, _mm_cvtepi32_ps(_mm_unpackhi_epi16(a, zero)));
    // Moved into the signed range, which is all that packing knows, and back.
    const Int8 packed = _mm_packs_epi32(_mm_sub_epi32(_mm_cvttps_epi32(low), middle),
                                        _mm_sub_epi32(_mm_cvttps_epi32(high), middle));
    return _mm_xor_si128(packed, each(-32768));
}

// What the alphas of eight pixels come to.
struct Alphas8 {
    Int8 result;          // their union
    Int8 sa, inv_sa, da;  // as the formulas take them
    Int8 divisor, inverse_divisor;
};
// Two ways are exceptions: a clear source changes nothing, and one on nothing keeps its colour. The union is
// their alpha too, and the formulas give their colours, undivided, when the one's destination and the other's
// source are taken as full.
inline Alphas8 meet(Int8 sa, Int8 da) {
    const Int8 zero = _mm_setzero_si128(), inv_sa = inv(sa);
    const Int8 result = inv(mul(inv_sa, inv(da)));
    const Int8 clear = _mm_srli_epi16(_mm_cmpeq_epi16(sa, zero), 8);
    const Int8 undivided = _mm_srli_epi16(_mm_cmpeq_epi16(_mm_min_epi16(sa, da), zero), 8);
    const Int8 divisor = _mm_or_si128(result, undivided), on_nothing = _mm_xor_si128(undivided, clear);
    return {result,
            _mm_or_si128(sa, on_nothing),
            _mm_andnot_si128(on_nothing, inv_sa),
            _mm_or_si128(da, clear),
            divisor,
            inverse(divisor)};
}

// The six colours of sixteen pixels side by side: each step has six independent operations, which hide its
// latency.
#define RKP_SIX for (int k = 0; k < 6; ++k)

// Onto pixels of any alpha. A premultiplied v is divided as the divide table has it, v * 255 + (a >> 1) over
// a: the product with the floored inverse is that quotient or 1 less, and the remainder tells which. v never
// exceeds a, so the quotient is a byte.
inline void blend16(const Int8* s, const Int8* d, const Alphas8* f, RK_Pixel8* out) {
    Int8 half[2], below[2], p[6], v[6], rest[6], q[6];
    for (int h = 0; h < 2; ++h) {
        half[h] = _mm_srli_epi16(f[h].divisor, 1);
        below[h] = _mm_sub_epi16(f[h].divisor, each(1));
    }
    RKP_SIX p[k] = mul(d[k], f[k / 3].da);
    RKP_SIX v[k] = lerp(p[k], s[k], f[k / 3].sa, f[k / 3].inv_sa);
    RKP_SIX rest[k] = _mm_add_epi16(_mm_mullo_epi16(v[k], each(255)), half[k / 3]);
    RKP_SIX q[k] = _mm_mulhi_epu16(rest[k], f[k / 3].inverse_divisor);
    RKP_SIX rest[k] = _mm_sub_epi16(rest[k], _mm_mullo_epi16(q[k], f[k / 3].divisor));
    RKP_SIX q[k] = _mm_sub_epi16(q[k], _mm_cmpgt_epi16(rest[k], below[k / 3]));
    storePixels(out, f[0].result, q);
    storePixels(out + 8, f[1].result, q + 3);
}

// Onto opaque pixels.
inline void blendOpaque16(const Int8* s, const Int8* d, Int8 sa0, Int8 sa8, RK_Pixel8* out) {
    const Int8 sa[2] = {sa0, sa8}, inv_sa[2] = {inv(sa0), inv(sa8)};
    Int8 v[6];
    RKP_SIX v[k] = lerp(d[k], s[k], sa[k / 3], inv_sa[k / 3]);
    storePixels(out, each(255), v);
    storePixels(out + 8, each(255), v + 3);
}
#undef RKP_SIX

// Sixteen pixels, whose source alphas sa are not all 0.
inline void over16(const Channels8& s0, const Channels8& s8, Int8 sa0, Int8 sa8, RK_Pixel8* out) {
    const Channels8 d0 = split(load(out), load(out + 4)), d8 = split(load(out + 8), load(out + 12));
    const Int8 s[6] = {s0.red, s0.green, s0.blue, s8.red, s8.green, s8.blue};
    const Int8 d[6] = {d0.red, d0.green, d0.blue, d8.red, d8.green, d8.blue};
    if (allSet(_mm_cmpeq_epi16(_mm_and_si128(d0.alpha, d8.alpha), each(255))))
        return blendOpaque16(s, d, sa0, sa8, out);
    const Alphas8 f[2] = {meet(sa0, d0.alpha), meet(sa8, d8.alpha)};
    blend16(s, d, f, out);
}

// `any` and `every` are pixels ORed and ANDed together.
inline bool alphasSet(Int8 mask) { return (_mm_movemask_epi8(mask) & 0x1111) == 0x1111; }
inline bool allClear(Int8 any) { return alphasSet(_mm_cmpeq_epi8(any, _mm_setzero_si128())); }
inline bool allOpaque(Int8 every) { return alphasSet(_mm_cmpeq_epi8(every, _mm_set1_epi8(-1))); }

// Pixels that begin the row and are clear, by 32.
inline RK_Long clearRun(RK_Long count, const RK_Pixel8* src) {
    RK_Long i = 0;
    for (; count - i >= 32; i += 32) {
        Int8 any = load(src + i);
        for (int k = 4; k < 32; k += 4) any = _mm_or_si128(any, load(src + i + k));
        if (!allClear(any)) break;
    }
    return i;
}
// Pixels that begin the row and are opaque, by 32; they are copied.
inline RK_Long copyOpaqueRun(RK_Long count, const RK_Pixel8* src, RK_Pixel8* out) {
    RK_Long i = 0;
    for (; count - i >= 32; i += 32) {
        Int8 s[8], every = _mm_set1_epi8(-1);
        for (int k = 0; k < 8; ++k) every = _mm_and_si128(every, s[k] = load(src + i + 4 * k));
        if (!allOpaque(every)) break;
        for (int k = 0; k < 8; ++k) store(out + i + 4 * k, s[k]);
    }
    return i;
}

// Pixels done of a row whose source alphas stand as they are, by sixteen. Most pixels of most layers are
// clear or opaque, in long runs.
inline RK_Long overPlainRow(RK_Long count, const RK_Pixel8* src, RK_Pixel8* out) {
    RK_Long i = 0;
    while (count - i >= 16) {
        const RK_Pixel8* const s = src + i;
        const Int8 p0 = load(s), p4 = load(s + 4), p8 = load(s + 8), p12 = load(s + 12);
        // The first pixel tells which test is worth while.
        const uint8_t first = s->alpha;
        if (first == 0 && allClear(_mm_or_si128(_mm_or_si128(p0, p4), _mm_or_si128(p8, p12)))) {
            i += 16;
            i += clearRun(count - i, src + i);
        } else if (first == 255 && allOpaque(_mm_and_si128(_mm_and_si128(p0, p4), _mm_and_si128(p8, p12)))) {
            store(out + i, p0);
            store(out + i + 4, p4);
            store(out + i + 8, p8);
            store(out + i + 12, p12);
            i += 16;
            i += copyOpaqueRun(count - i, src + i, out + i);
        } else {
            const Channels8 s0 = split(p0, p4), s8 = split(p8, p12);
            over16(s0, s8, s0.alpha, s8.alpha, out + i);
            i += 16;
        }
    }
    return i;
}

// The same of a row whose alphas are scaled.
template <bool has_matte>
inline RK_Long overScaledRow(RK_Long count, uint8_t opacity, const RK_Pixel8* src, const RK_Pixel8* matte,
                             RK_Pixel8* out) {
    const Int8 o = each(opacity);
    RK_Long i = 0;
    for (; count - i >= 16; i += 16) {
        const Channels8 s0 = split(load(src + i), load(src + i + 4));
        const Channels8 s8 = split(load(src + i + 8), load(src + i + 12));
        Int8 sa0 = mul(s0.alpha, o), sa8 = mul(s8.alpha, o);
        if (has_matte) {
            sa0 = mul(sa0, loadAlphas(matte + i));
            sa8 = mul(sa8, loadAlphas(matte + i + 8));
        }
        if (!allSet(_mm_cmpeq_epi16(_mm_or_si128(sa0, sa8), _mm_setzero_si128())))
            over16(s0, s8, sa0, sa8, out + i);
    }
    return i;
}

// A full opacity leaves every alpha as it is, so a matte's row needs no form without it.
template <bool has_matte>
RK_Long overRow(RK_Long count, uint8_t opacity, const RK_Pixel8* src, const RK_Pixel8* matte,
                RK_Pixel8* out) {
    if (!has_matte && opacity == 255) return overPlainRow(count, src, out);
    return overScaledRow<has_matte>(count, opacity, src, matte, out);
}

// ---- Float: the channels of four pixels apart -----------------------------------------------------------

using Float4 = __m128;

inline Float4 load(const RK_PixelFloat* p) { return _mm_loadu_ps(&p->alpha); }
inline void store(RK_PixelFloat* p, Float4 v) { _mm_storeu_ps(&p->alpha, v); }
inline Float4 choose(Float4 mask, Float4 yes, Float4 no) {
    return _mm_or_ps(_mm_and_ps(mask, yes), _mm_andnot_ps(mask, no));
}
inline Float4 alphasOf(Float4 p0, Float4 p1, Float4 p2, Float4 p3) {
    return _mm_movelh_ps(_mm_unpacklo_ps(p0, p1), _mm_unpacklo_ps(p2, p3));
}
// Lanes that are zero or a denormal.
inline Float4 zeroOrDenormal(Float4 x) {
    const __m128i exponent = _mm_and_si128(_mm_castps_si128(x), _mm_set1_epi32(0x7F800000));
    return _mm_castsi128_ps(_mm_cmpeq_epi32(exponent, _mm_setzero_si128()));
}

// The channels of four pixels; turned, the pixels themselves.
struct Pixels4 {
    Float4 alpha, red, green, blue;
};
inline Pixels4 turn(Float4 p0, Float4 p1, Float4 p2, Float4 p3) {
    _MM_TRANSPOSE4_PS(p0, p1, p2, p3);
    return {p0, p1, p2, p3};
}
inline void store4(RK_PixelFloat* p, Float4 p0, Float4 p1, Float4 p2, Float4 p3) {
    store(p, p0);
    store(p + 1, p1);
    store(p + 2, p2);
    store(p + 3, p3);
}

// v of one channel.
inline Float4 mix(Float4 s, Float4 d, Float4 sa, Float4 da) {
    const Float4 p = _mm_mul_ps(d, da);
    return _mm_add_ps(p, _mm_mul_ps(_mm_sub_ps(s, p), sa));
}
inline Pixels4 choose(Float4 mask, const Pixels4& yes, const Pixels4& no) {
    return {choose(mask, yes.alpha, no.alpha), choose(mask, yes.red, no.red),
            choose(mask, yes.green, no.green), choose(mask, yes.blue, no.blue)};
}

template <bool has_matte>
inline void over4(const RK_PixelFloat* src, const RK_PixelFloat* matte, Float4 opacity, RK_PixelFloat* out) {
    const Float4 zero = _mm_setzero_ps(), one = _mm_set1_ps(1.0f);
    const Float4 s0 = load(src), s1 = load(src + 1), s2 = load(src + 2), s3 = load(src + 3);
    Float4 sa = _mm_mul_ps(alphasOf(s0, s1, s2, s3), opacity);
    if (has_matte)
        sa = _mm_mul_ps(sa, alphasOf(load(matte), load(matte + 1), load(matte + 2), load(matte + 3)));
    const Float4 clear = _mm_cmpeq_ps(sa, zero);
    if (_mm_movemask_ps(clear) == 15) return;
    const Float4 opaque = _mm_cmpeq_ps(sa, one);
    if (_mm_movemask_ps(opaque) == 15) {
        return store4(out, _mm_move_ss(s0, one), _mm_move_ss(s1, one), _mm_move_ss(s2, one),
                      _mm_move_ss(s3, one));
    }

    Pixels4 s = turn(s0, s1, s2, s3);
    s.alpha = sa;
    const Pixels4 d = turn(load(out), load(out + 1), load(out + 2), load(out + 3));
    const Float4 on_opaque = _mm_cmpeq_ps(d.alpha, one);
    Pixels4 r = {one, mix(s.red, d.red, sa, d.alpha), mix(s.green, d.green, sa, d.alpha),
                 mix(s.blue, d.blue, sa, d.alpha)};
    if (_mm_movemask_ps(on_opaque) != 15) {
        // On an opaque pixel the alpha is 1 and the quotient by it exact.
        const Float4 rest = _mm_mul_ps(_mm_sub_ps(one, sa), _mm_sub_ps(one, d.alpha));
        r.alpha = choose(on_opaque, one, _mm_sub_ps(one, rest));
        r.red = _mm_div_ps(r.red, r.alpha);
        r.green = _mm_div_ps(r.green, r.alpha);
        r.blue = _mm_div_ps(r.blue, r.alpha);
        const Float4 guarded = zeroOrDenormal(r.alpha);
        if (_mm_movemask_ps(guarded) != 0) r = choose(guarded, {r.alpha, one, one, one}, r);
    }
    const Float4 copied = _mm_or_ps(opaque, _mm_cmpeq_ps(d.alpha, zero));
    if (_mm_movemask_ps(copied) != 0) r = choose(copied, s, r);
    if (_mm_movemask_ps(clear) != 0) r = choose(clear, d, r);
    r = turn(r.alpha, r.red, r.green, r.blue);
    store4(out, r.alpha, r.red, r.green, r.blue);
}

// Pixels done, by four. A full opacity leaves every alpha as it is.
template <bool has_matte>
RK_Long overRow(RK_Long count, float opacity, const RK_PixelFloat* src, const RK_PixelFloat* matte,
                RK_PixelFloat* out) {
    const Float4 o = _mm_set1_ps(opacity);
    RK_Long i = 0;
    for (; count - i >= 4; i += 4) over4<has_matte>(src + i, has_matte ? matte + i : nullptr, o, out + i);
    return i;
}

}  // namespace

// The default takes what is left over.
template <class P, bool has_matte>
RK_Long RKp_OverRow_SSSE3(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                          const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out) {
    const RK_Long done = overRow<has_matte>(count, plan->mode.opacity, src, matte, out);
    return RKp_OverRow_Static<P, has_matte>(count - done, plan, tables, src + done,
                                            has_matte ? matte + done : nullptr, out + done);
}

template RK_RowFunc<RK_Pixel8> RKp_OverRow_SSSE3<RK_Pixel8, false>;
template RK_RowFunc<RK_Pixel8> RKp_OverRow_SSSE3<RK_Pixel8, true>;
template RK_RowFunc<RK_PixelFloat> RKp_OverRow_SSSE3<RK_PixelFloat, false>;
template RK_RowFunc<RK_PixelFloat> RKp_OverRow_SSSE3<RK_PixelFloat, true>;
