// Legend: v pixels as they lie, alpha in the low byte of each; x what a matte scales, by factors of 0..255.
#include "RK/indep/passes/RKp_MatteScans_AVX2.h"

#include <immintrin.h>

namespace {

using Lanes = __m256i;

inline Lanes colourMask() { return _mm256_set1_epi32(static_cast<int32_t>(0xFFFFFF00)); }

// mul8 in 16-bit lanes: (t * 257) >> 16 is (t + (t >> 8)) >> 8.
inline Lanes mul8(Lanes x, Lanes y) {
    const Lanes t = _mm256_add_epi16(_mm256_mullo_epi16(x, y), _mm256_set1_epi16(128));
    return _mm256_mulhi_epu16(t, _mm256_set1_epi16(257));
}
inline Lanes scaled(Lanes x, Lanes factors) {
    const Lanes zero = _mm256_setzero_si256();
    return _mm256_packus_epi16(mul8(_mm256_unpacklo_epi8(x, zero), _mm256_unpacklo_epi8(factors, zero)),
                               mul8(_mm256_unpackhi_epi8(x, zero), _mm256_unpackhi_epi8(factors, zero)));
}

// The alpha of each pixel for its colours, and 255 for itself, which leaves it.
inline Lanes alphas(Lanes v) {
    const Lanes places = _mm256_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12,  //
                                          0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12);
    return _mm256_or_si256(_mm256_shuffle_epi8(v, places), _mm256_set1_epi32(0xFF));
}

inline Lanes black(Lanes v) { return scaled(v, alphas(v)); }

inline Lanes white(Lanes v) {
    return _mm256_xor_si256(scaled(_mm256_xor_si256(v, colourMask()), alphas(v)), colourMask());
}

// The distance from the middle is scaled by a above it and by the inverse of a below. The alpha byte's middle
// is 0.
inline Lanes grey(Lanes v) {
    const Lanes middle = _mm256_set1_epi32(static_cast<int32_t>(0x80808000));
    const Lanes distance = _mm256_or_si256(_mm256_subs_epu8(v, middle), _mm256_subs_epu8(middle, v));
    const Lanes not_above = _mm256_cmpeq_epi8(_mm256_max_epu8(v, middle), middle);
    const Lanes factors = _mm256_xor_si256(alphas(v), _mm256_and_si256(not_above, colourMask()));
    return _mm256_add_epi8(_mm256_min_epu8(v, middle), scaled(distance, factors));
}

template <Lanes (*pixels)(Lanes)>
inline RK_Long row(RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst) {
    RK_Long i = 0;
    for (; count - i >= 8; i += 8)
        _mm256_storeu_si256(reinterpret_cast<Lanes*>(dst + i),
                            pixels(_mm256_loadu_si256(reinterpret_cast<const Lanes*>(src + i))));
    return i;
}

}  // namespace

RK_Long RKp_PremulBlack8_AVX2(RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst) {
    return row<black>(count, src, dst);
}
RK_Long RKp_PremulWhite8_AVX2(RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst) {
    return row<white>(count, src, dst);
}
RK_Long RKp_PremulGrey8_AVX2(RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst) {
    return row<grey>(count, src, dst);
}
