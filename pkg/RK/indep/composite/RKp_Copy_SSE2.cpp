// RK_Xfer_Copy's rows, four pixels at a time, at 8 bits and at float. A row that changes nothing on its way
// is one block copy, which is the default's. Loads and stores take any alignment.
#include <emmintrin.h>

#include "RK/indep/composite/RKp_RowVariants.h"

namespace {

// ---- 8 bits: four pixels in a register, alpha in the low byte of each 32-bit lane ------------------------

using Int4 = __m128i;

inline Int4 load(const RK_Pixel8* p) { return _mm_loadu_si128(reinterpret_cast<const Int4*>(p)); }
inline void store(RK_Pixel8* p, Int4 v) { _mm_storeu_si128(reinterpret_cast<Int4*>(p), v); }
inline Int4 alphasOf(Int4 pixels) { return _mm_and_si128(pixels, _mm_set1_epi32(255)); }
inline Int4 coloursOf(Int4 pixels) { return _mm_andnot_si128(_mm_set1_epi32(255), pixels); }

// The rounded product over 255 in 32-bit lanes.
inline Int4 mul(Int4 x, Int4 y) {
    const Int4 t = _mm_add_epi32(_mm_madd_epi16(x, y), _mm_set1_epi32(128));
    return _mm_srli_epi32(_mm_add_epi32(t, _mm_srli_epi32(t, 8)), 8);
}

// The colours of four source pixels with the alphas of `out`.
inline void copyColours4(const RK_Pixel8* src, RK_Pixel8* out) {
    store(out, _mm_or_si128(coloursOf(load(src)), alphasOf(load(out))));
}

template <bool has_matte>
struct Scale8 {
    explicit Scale8(uint8_t opacity) : opacity_(_mm_set1_epi32(opacity)) {}
    void copy4(const RK_Pixel8* src, const RK_Pixel8* matte, RK_Pixel8* out) const {
        const Int4 s = load(src);
        Int4 sa = mul(alphasOf(s), opacity_);
        if (has_matte) sa = mul(sa, alphasOf(load(matte)));
        store(out, _mm_or_si128(coloursOf(s), sa));
    }

  private:
    Int4 opacity_;
};

// ---- Float: one pixel in a register, alpha in lane 0 ----------------------------------------------------

inline __m128 load(const RK_PixelFloat* p) { return _mm_loadu_ps(&p->alpha); }
inline void store(RK_PixelFloat* p, __m128 v) { _mm_storeu_ps(&p->alpha, v); }

inline void copyColours4(const RK_PixelFloat* src, RK_PixelFloat* out) {
    for (int k = 0; k < 4; ++k) store(out + k, _mm_move_ss(load(src + k), load(out + k)));
}

template <bool has_matte>
struct ScaleFloat {
    explicit ScaleFloat(float opacity) : opacity_(_mm_set_ss(opacity)) {}
    void copy4(const RK_PixelFloat* src, const RK_PixelFloat* matte, RK_PixelFloat* out) const {
        for (int k = 0; k < 4; ++k) {
            __m128 s = _mm_mul_ss(load(src + k), opacity_);
            if (has_matte) s = _mm_mul_ss(s, _mm_load_ss(&matte[k].alpha));
            store(out + k, s);
        }
    }

  private:
    __m128 opacity_;
};

// ---- Rows -----------------------------------------------------------------------------------------------

template <class P, bool has_matte>
struct ScaleOf;
template <bool has_matte>
struct ScaleOf<RK_Pixel8, has_matte> {
    using Type = Scale8<has_matte>;
};
template <bool has_matte>
struct ScaleOf<RK_PixelFloat, has_matte> {
    using Type = ScaleFloat<has_matte>;
};

inline bool isFull(uint8_t opacity) { return opacity == 255; }
inline bool isFull(float opacity) { return opacity == 1.0f; }

}  // namespace

// The default takes what fours leave over, and whole rows that nothing is done to.
template <class P, bool has_matte>
RK_Long RKp_CopyRow_SSE2(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                         const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out) {
    RK_Long done = 0;
    if (plan->mode.rgb_only) {
        for (; count - done >= 4; done += 4) copyColours4(src + done, out + done);
    } else if (has_matte || !isFull(plan->mode.opacity)) {
        // A full opacity changes no alpha, so it needs no form of its own.
        const typename ScaleOf<P, has_matte>::Type scale(plan->mode.opacity);
        for (; count - done >= 4; done += 4)
            scale.copy4(src + done, has_matte ? matte + done : nullptr, out + done);
    }
    return RKp_CopyRow_Static<P, has_matte>(count - done, plan, tables, src + done,
                                            has_matte ? matte + done : nullptr, out + done);
}

template RK_RowFunc<RK_Pixel8> RKp_CopyRow_SSE2<RK_Pixel8, false>;
template RK_RowFunc<RK_Pixel8> RKp_CopyRow_SSE2<RK_Pixel8, true>;
template RK_RowFunc<RK_PixelFloat> RKp_CopyRow_SSE2<RK_PixelFloat, false>;
template RK_RowFunc<RK_PixelFloat> RKp_CopyRow_SSE2<RK_PixelFloat, true>;
