// Pixels of depth 8 by fours, for the vector body of the box blur alone: its own, not shared with other
// files.
#ifndef RKP_BOX_READER_8_H
#define RKP_BOX_READER_8_H

#include <emmintrin.h>

#include <cstring>

#include "RK/indep/filter/RKp_BoxWalkT.h"

namespace {

using P = RK_Pixel8;

inline __m128i low16(__m128i bytes) { return _mm_unpacklo_epi8(bytes, _mm_setzero_si128()); }
inline __m128i high16(__m128i bytes) { return _mm_unpackhi_epi8(bytes, _mm_setzero_si128()); }
inline __m128i load4(const P* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

// Goes along a line.
template <bool kApart>
struct Reader {
    explicit Reader(const RKp_BoxRun<P>::Pixels& p) : at(p.at), step(p.step) {}
    __m128i four() {
        const P* const first = at;
        at += 4 * step;
        if (!kApart) return load4(first);
        const auto one = [&](int n) {
            int32_t bytes;
            std::memcpy(&bytes, first + n * step, sizeof bytes);
            return _mm_cvtsi32_si128(bytes);
        };
        return _mm_unpacklo_epi64(_mm_unpacklo_epi32(one(0), one(1)), _mm_unpacklo_epi32(one(2), one(3)));
    }
    const P* one() {
        const P* const first = at;
        at += step;
        return first;
    }
    const P* at;
    ptrdiff_t step;
};

template <bool kApart>
inline void scatter4(__m128i pixels, P* p, ptrdiff_t step) {
    if (!kApart) return _mm_storeu_si128(reinterpret_cast<__m128i*>(p), pixels);
    for (int n = 0; n < 4; ++n, pixels = _mm_srli_si128(pixels, 4)) {
        const int32_t bytes = _mm_cvtsi128_si32(pixels);
        std::memcpy(p + n * step, &bytes, sizeof bytes);
    }
}

}  // namespace

#endif
