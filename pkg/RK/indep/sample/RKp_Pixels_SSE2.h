// Pixels as vectors of wider numbers. Every build has SSE2; on 32 bits the arithmetic asks for it.
#ifndef RKP_PIXELS_SSE2_H
#define RKP_PIXELS_SSE2_H

#include <emmintrin.h>

#include <cstring>

#include "RK/indep/frame/RK.h"

// ---- 8 bits, as words ------------------------------------------------------------------------------------

// Two pixels as eight words; one pixel as four, then zeros.
inline __m128i RKp_TwoAsWords(const RK_Pixel8* p) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
}
inline __m128i RKp_OneAsWords(const RK_Pixel8* p) {
    int32_t bits;
    std::memcpy(&bits, p, sizeof bits);
    return _mm_unpacklo_epi8(_mm_cvtsi32_si128(bits), _mm_setzero_si128());
}
// The first word of each half in all of the half: of pixels, their alphas.
inline __m128i RKp_AlphaWords(__m128i pixels) {
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(pixels, 0), 0);
}
// Colours times alpha beside alpha itself: at most 65025.
inline __m128i RKp_PremultipliedWords(__m128i pixels) {
    const __m128i one = _mm_set_epi16(0, 0, 0, 1, 0, 0, 0, 1),
                  colours = _mm_set_epi16(-1, -1, -1, 0, -1, -1, -1, 0);
    return _mm_mullo_epi16(pixels, _mm_or_si128(_mm_and_si128(RKp_AlphaWords(pixels), colours), one));
}

// Four channels within 0..255 as dwords.
inline RK_Pixel8 RKp_AsPixel8(__m128i dwords) {
    const __m128i words = _mm_packs_epi32(dwords, dwords);
    const int32_t bits = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    RK_Pixel8 p;
    std::memcpy(&p, &bits, sizeof p);
    return p;
}

// ---- 16 bits, as dwords ----------------------------------------------------------------------------------

// Two pixels of channels within 0..65535. Packing saturates signed words: -32768..32767 stands for that.
inline __m128i RKp_PackedWords(__m128i first, __m128i second) {
    const __m128i bias = _mm_set1_epi32(32768);
    return _mm_xor_si128(_mm_packs_epi32(_mm_sub_epi32(first, bias), _mm_sub_epi32(second, bias)),
                         _mm_set1_epi16(-32768));
}
inline RK_Pixel16 RKp_AsPixel16(__m128i dwords) {
    RK_Pixel16 p;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(&p), RKp_PackedWords(dwords, dwords));
    return p;
}

// ---- As dwords and as doubles -----------------------------------------------------------------------------

inline __m128i RKp_AsDwords(const RK_Pixel8* p) {
    return _mm_unpacklo_epi16(RKp_OneAsWords(p), _mm_setzero_si128());
}
inline __m128i RKp_AsDwords(const RK_Pixel16* p) {
    return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
}

// alpha: twice alpha. ar: 1 in alpha's place, and red. gb: green and blue.
struct RKp_PixelDoubles {
    __m128d alpha, ar, gb;
};
inline RKp_PixelDoubles RKp_AsDoubles(__m128d ar, __m128d gb) {
    return {_mm_unpacklo_pd(ar, ar), _mm_move_sd(ar, _mm_set_sd(1.0)), gb};
}
inline RKp_PixelDoubles RKp_AsDoubles(__m128i dwords) {
    return RKp_AsDoubles(_mm_cvtepi32_pd(dwords),
                         _mm_cvtepi32_pd(_mm_shuffle_epi32(dwords, _MM_SHUFFLE(1, 0, 3, 2))));
}
inline RKp_PixelDoubles RKp_AsDoubles(const RK_Pixel8* p) { return RKp_AsDoubles(RKp_AsDwords(p)); }
inline RKp_PixelDoubles RKp_AsDoubles(const RK_Pixel16* p) { return RKp_AsDoubles(RKp_AsDwords(p)); }
inline RKp_PixelDoubles RKp_AsDoubles(const RK_PixelFloat* p) {
    const __m128 channels = _mm_loadu_ps(&p->alpha);
    return RKp_AsDoubles(_mm_cvtps_pd(channels), _mm_cvtps_pd(_mm_movehl_ps(channels, channels)));
}

#endif
