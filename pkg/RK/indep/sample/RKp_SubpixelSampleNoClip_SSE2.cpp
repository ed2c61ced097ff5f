// The 8-bit no-clip sampler with SSE2: four channels of one pixel at a time, in single precision.
#include <emmintrin.h>

#include <cstring>

#include "RK/indep/sample/RK_SubpixelSample.h"

namespace {

__m128 channels(uint32_t pixel) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_cvtsi32_si128(static_cast<int32_t>(pixel));
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero));
}

// v + 0.5 truncated and saturated to 0..255.
uint32_t store(__m128 v) {
    const __m128i words = _mm_packs_epi32(_mm_cvttps_epi32(_mm_add_ps(v, _mm_set1_ps(0.5f))), _mm_setzero_si128());
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
}

__m128 mix(__m128 y, __m128 x, float a) { return _mm_add_ps(y, _mm_mul_ps(_mm_sub_ps(x, y), _mm_set1_ps(a))); }

// The pixel's colours, with 1 for its alpha, times its weighted alpha.
__m128 weighted(uint32_t pixel, float w) {
    const __m128 one_in_alpha = _mm_move_ss(channels(pixel), _mm_set_ss(1.0f));
    return _mm_mul_ps(_mm_set1_ps(w * static_cast<float>(pixel & 0xFF)), one_in_alpha);
}

uint32_t sample(uint32_t p00, uint32_t p10, uint32_t p01, uint32_t p11, float u, float v) {
    const uint32_t alpha = p00 & 0xFF;
    if ((((p00 ^ p10) | (p00 ^ p01) | (p00 ^ p11)) & 0xFF) == 0) {
        if (alpha == 0) return 0;
        return store(mix(mix(channels(p00), channels(p01), v), mix(channels(p10), channels(p11), v), u));
    }
    const float w11 = u * v, w10 = u - w11, w01 = v - w11, w00 = ((1.0f - w11) - w10) - w01;
    const __m128 sum = _mm_add_ps(_mm_add_ps(_mm_add_ps(weighted(p00, w00), weighted(p10, w10)), weighted(p01, w01)),
                                  weighted(p11, w11));
    const float A = _mm_cvtss_f32(sum);
    if (A < 0.5f) return 0;
    return store(_mm_mul_ps(sum, _mm_move_ss(_mm_set1_ps(1.0f / A), _mm_set_ss(1.0f))));
}

}  // namespace

RK_Long RKp_SubpixelSampleNoClip_SSE2(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    const RK_LayerDef& src = *pb->src;
    const char* top = static_cast<const char*>(src.data) + static_cast<ptrdiff_t>(y >> 16) * src.rowbytes +
                      static_cast<ptrdiff_t>(x >> 16) * 4;
    uint32_t p00;
    std::memcpy(&p00, top, sizeof p00);
    uint32_t result = p00;
    if (((x | y) & 0xFFFF) != 0) {
        uint32_t above[2], below[2];
        std::memcpy(above, top, sizeof above);
        std::memcpy(below, top + src.rowbytes, sizeof below);
        if (p00 != above[1] || p00 != below[0] || p00 != below[1]) {
            const float u = static_cast<float>(x & 0xFFFF) * 1.52587890625e-05f;
            const float v = static_cast<float>(y & 0xFFFF) * 1.52587890625e-05f;
            result = sample(p00, above[1], below[0], below[1], u, v);
        }
    }
    std::memcpy(out, &result, sizeof result);
    return RK_kOK;
}
