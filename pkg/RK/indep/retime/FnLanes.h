// The four channels of a pixel as one vector of floats, in the pixel's order: alpha, red, green, blue.
#ifndef FN_LANES_H
#define FN_LANES_H

#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "RK/indep/retime/FnColours.h"

typedef float FnLanes __attribute__((vector_size(16)));
typedef int32_t FnLaneInts __attribute__((vector_size(16)));

inline FnLanes FnSpread(float v) { return FnLanes{v, v, v, v}; }
inline FnLanes FnMix(FnLanes a, FnLanes b, FnLanes f) { return a + (b - a) * f; }

inline FnLanes FnLoad(const FnPixelFloat& p) {
    FnLanes lanes;
    std::memcpy(&lanes, &p, sizeof lanes);
    return lanes;
}
// Interleaved with zeros, which is how small integers widen; converting them lane by lane costs three times
// as much.
inline FnLanes FnLoad(const FnPixel16& p) {
    typedef uint16_t Halves __attribute__((vector_size(16)));
    uint64_t four;
    std::memcpy(&four, &p, sizeof four);
    typedef uint64_t Words __attribute__((vector_size(16)));
    const Halves packed = reinterpret_cast<Halves>(Words{four, 0}), zero = {};
    const Halves wide = __builtin_shufflevector(packed, zero, 0, 8, 1, 9, 2, 10, 3, 11);
    return __builtin_convertvector(reinterpret_cast<FnLaneInts>(wide), FnLanes);
}
inline FnLanes FnLoad(const FnPixel8& p) {
    typedef uint8_t Bytes __attribute__((vector_size(16)));
    typedef uint16_t Halves __attribute__((vector_size(16)));
    typedef uint32_t Words __attribute__((vector_size(16)));
    uint32_t four;
    std::memcpy(&four, &p, sizeof four);
    const Bytes packed = reinterpret_cast<Bytes>(Words{four, 0, 0, 0}), zero = {};
    const Halves half = reinterpret_cast<Halves>(
        __builtin_shufflevector(packed, zero, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    const Halves none = {};
    const Halves wide = __builtin_shufflevector(half, none, 0, 8, 1, 9, 2, 10, 3, 11);
    return __builtin_convertvector(reinterpret_cast<FnLaneInts>(wide), FnLanes);
}

// Two pixels that lie side by side, read together.
template <class Pixel>
struct FnLanePair {
    FnLanes first, second;
};
template <class Pixel>
FnLanePair<Pixel> FnLoadPair(const Pixel* p) {
    return {FnLoad(p[0]), FnLoad(p[1])};
}
#ifdef __SSE2__
inline FnLanePair<FnPixel16> FnLoadPair(const FnPixel16* p) {
    const __m128i packed = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), zero = _mm_setzero_si128();
    return {_mm_cvtepi32_ps(_mm_unpacklo_epi16(packed, zero)),
            _mm_cvtepi32_ps(_mm_unpackhi_epi16(packed, zero))};
}
inline FnLanePair<FnPixel8> FnLoadPair(const FnPixel8* p) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i packed = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), zero);
    return {_mm_cvtepi32_ps(_mm_unpacklo_epi16(packed, zero)),
            _mm_cvtepi32_ps(_mm_unpackhi_epi16(packed, zero))};
}
#endif

// 0..full; NaN gives 0. The comparisons are masks of all bits.
inline FnLanes FnClampLanes(FnLanes v, float full) {
#ifdef __SSE2__
    return _mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(full));  // of a NaN, the second
#else
    const FnLanes zero = {}, high = FnSpread(full);
    v = reinterpret_cast<FnLanes>(reinterpret_cast<FnLaneInts>(v) & (v > zero));
    const FnLaneInts below = v < high;
    return reinterpret_cast<FnLanes>((reinterpret_cast<FnLaneInts>(v) & below) |
                                     (reinterpret_cast<FnLaneInts>(high) & ~below));
#endif
}

// Through the depth's rounding; a float pixel is stored as it is.
template <class Pixel>
void FnStoreLanes(FnLanes v, Pixel* out) {
    if constexpr (std::is_same_v<Pixel, FnPixelFloat>) {
        std::memcpy(out, &v, sizeof v);
    } else {
        const FnLanes magic =
            FnSpread(12582912.0f);  // leaves the integer nearest, ties to even, in the low bits
        const FnLaneInts bits =
            reinterpret_cast<FnLaneInts>(FnClampLanes(v, FnDepthOf<Pixel>::kFull) + magic);
        using Channel = typename Pixel::Channel;
        *out = FnMakePixel<Pixel>(static_cast<Channel>(bits[0]), static_cast<Channel>(bits[1]),
                                  static_cast<Channel>(bits[2]), static_cast<Channel>(bits[3]));
    }
}

// The same for four pixels in a row.
template <class Pixel>
void FnStoreFour(const FnLanes* v, Pixel* out) {
    for (int i = 0; i < 4; ++i) FnStoreLanes(v[i], &out[i]);
}
#ifdef __SSE2__
// What the depth's rounding leaves, as integers.
template <class Pixel>
__m128i FnRoundLanes(FnLanes v) {
    const __m128i shifted =
        _mm_castps_si128(_mm_add_ps(FnClampLanes(v, FnDepthOf<Pixel>::kFull), _mm_set1_ps(12582912.0f)));
    return _mm_sub_epi32(shifted, _mm_set1_epi32(0x4B400000));
}
inline void FnStoreFour(const FnLanes* v, FnPixel8* out) {
    const __m128i low = _mm_packs_epi32(FnRoundLanes<FnPixel8>(v[0]), FnRoundLanes<FnPixel8>(v[1]));
    const __m128i high = _mm_packs_epi32(FnRoundLanes<FnPixel8>(v[2]), FnRoundLanes<FnPixel8>(v[3]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
}
// The pack has signed numbers, so that 32768 is moved to 0 and back.
inline void FnStoreFour(const FnLanes* v, FnPixel16* out) {
    const __m128i full = _mm_set1_epi32(0x8000), top = _mm_set1_epi16(INT16_MIN);
    for (int i = 0; i < 4; i += 2) {
        const __m128i two = _mm_packs_epi32(_mm_sub_epi32(FnRoundLanes<FnPixel16>(v[i]), full),
                                            _mm_sub_epi32(FnRoundLanes<FnPixel16>(v[i + 1]), full));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_xor_si128(two, top));
    }
}
#endif

#endif
