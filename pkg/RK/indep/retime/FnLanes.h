// The four channels of a pixel as one vector of floats, in the pixel's order: alpha, red, green, blue.
#ifndef FN_LANES_H
#define FN_LANES_H

#include <cstring>

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
// Interleaved with zeros, which is how small integers widen; converting them lane by lane costs three times as much.
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
    const Halves half = reinterpret_cast<Halves>(__builtin_shufflevector(packed, zero, 0, 16, 1, 17, 2, 18, 3, 19, 4,
                                                                         20, 5, 21, 6, 22, 7, 23));
    const Halves none = {};
    const Halves wide = __builtin_shufflevector(half, none, 0, 8, 1, 9, 2, 10, 3, 11);
    return __builtin_convertvector(reinterpret_cast<FnLaneInts>(wide), FnLanes);
}

// 0..full; NaN gives 0. The comparisons are masks of all bits.
inline FnLanes FnClampLanes(FnLanes v, float full) {
    const FnLanes zero = {}, high = FnSpread(full);
    v = reinterpret_cast<FnLanes>(reinterpret_cast<FnLaneInts>(v) & (v > zero));
    const FnLaneInts below = v < high;
    return reinterpret_cast<FnLanes>((reinterpret_cast<FnLaneInts>(v) & below) |
                                     (reinterpret_cast<FnLaneInts>(high) & ~below));
}

// Through the depth's rounding; a float pixel is stored as it is.
template <class Pixel>
void FnStoreLanes(FnLanes v, Pixel* out) {
    if constexpr (std::is_same_v<Pixel, FnPixelFloat>) {
        std::memcpy(out, &v, sizeof v);
    } else {
        const FnLanes magic = FnSpread(12582912.0f);  // leaves the integer nearest, ties to even, in the low bits
        const FnLaneInts bits = reinterpret_cast<FnLaneInts>(FnClampLanes(v, FnDepthOf<Pixel>::kFull) + magic);
        using Channel = typename Pixel::Channel;
        *out = FnMakePixel<Pixel>(static_cast<Channel>(bits[0]), static_cast<Channel>(bits[1]),
                                  static_cast<Channel>(bits[2]), static_cast<Channel>(bits[3]));
    }
}

#endif
