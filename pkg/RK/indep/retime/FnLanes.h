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
template <class Pixel>
FnLanes FnLoad(const Pixel& p) {
    typedef typename Pixel::Channel Packed __attribute__((vector_size(sizeof(Pixel))));
    Packed packed;
    std::memcpy(&packed, &p, sizeof packed);
    return __builtin_convertvector(__builtin_convertvector(packed, FnLaneInts), FnLanes);
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
        typedef typename Pixel::Channel Packed __attribute__((vector_size(sizeof(Pixel))));
        const FnLanes magic = FnSpread(12582912.0f);  // leaves the integer nearest, ties to even
        const FnLanes rounded = (FnClampLanes(v, FnDepthOf<Pixel>::kFull) + magic) - magic;
        const Packed packed = __builtin_convertvector(__builtin_convertvector(rounded, FnLaneInts), Packed);
        std::memcpy(out, &packed, sizeof packed);
    }
}

#endif
