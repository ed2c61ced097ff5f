#include "RK/indep/filter/RKp_ConvolveTaps.h"

#include <cstring>

namespace {

// The channels of one pixel, or of one tap, or its sums.
template <class P>
struct LanesOf {
    typedef uint32_t Type __attribute__((vector_size(16)));
};
template <>
struct LanesOf<RK_PixelFloat> {
    typedef float Type __attribute__((vector_size(16)));
};
template <class P>
using Lanes = typename LanesOf<P>::Type;

typedef uint8_t Bytes __attribute__((vector_size(16)));
typedef uint16_t Halves __attribute__((vector_size(16)));
typedef uint32_t Words __attribute__((vector_size(16)));
typedef uint64_t Longs __attribute__((vector_size(16)));

// Small integers widen by being interleaved with zeros.
inline Words widened(Halves h) {
    return reinterpret_cast<Words>(__builtin_shufflevector(h, Halves{}, 0, 8, 1, 9, 2, 10, 3, 11));
}
inline Words lanes(const RK_Pixel8& p) {
    uint32_t four;
    std::memcpy(&four, &p, sizeof four);
    const Bytes bytes = reinterpret_cast<Bytes>(Words{four, 0, 0, 0});
    return widened(reinterpret_cast<Halves>(
        __builtin_shufflevector(bytes, Bytes{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23)));
}
inline Words lanes(const RK_Pixel16& p) {
    uint64_t four;
    std::memcpy(&four, &p, sizeof four);
    return widened(reinterpret_cast<Halves>(Longs{four, 0}));
}
inline Lanes<RK_PixelFloat> lanes(const RK_PixelFloat& p) {
    Lanes<RK_PixelFloat> v;
    std::memcpy(&v, &p, sizeof v);
    return v;
}

// So many pixels at once, their sums held in registers.
template <int32_t together, class P>
void addTaps(const P* in, const RKp_ConvolveSum<P>* taps, int32_t count, RKp_ConvolveSum<P>* sums) {
    Lanes<P> sum[together];
    std::memcpy(sum, sums, sizeof sum);
    for (int32_t t = 0; t < count; ++t) {
        Lanes<P> tap;
        std::memcpy(&tap, taps + 4 * t, sizeof tap);
        for (int32_t i = 0; i < together; ++i) sum[i] += lanes(in[t + i]) * tap;
    }
    std::memcpy(sums, sum, sizeof sum);
}

}  // namespace

template <class P>
void RKp_AddTaps(const P* in, int32_t pixels, const RKp_ConvolveSum<P>* taps, int32_t count,
                 RKp_ConvolveSum<P>* sums) {
    int32_t i = 0;
    for (; pixels - i >= 8; i += 8) addTaps<8>(in + i, taps, count, sums + 4 * i);
    for (; i < pixels; ++i) addTaps<1>(in + i, taps, count, sums + 4 * i);
}

template void RKp_AddTaps(const RK_Pixel8*, int32_t, const uint32_t*, int32_t, uint32_t*);
template void RKp_AddTaps(const RK_Pixel16*, int32_t, const uint32_t*, int32_t, uint32_t*);
template void RKp_AddTaps(const RK_PixelFloat*, int32_t, const float*, int32_t, float*);
