#include <emmintrin.h>

#include <cstring>

#include "RK/indep/world/RKp_Dither.h"

namespace {

// Four channels as whole numbers within 0..255.
__m128i rounded(__m128 x) {
    const __m128 v = _mm_mul_ps(x, _mm_set1_ps(255.0f));
    // In this order of operands the larger of NaN and 0 is 0.
    const __m128 held = _mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(255.0f));
    return _mm_cvtps_epi32(held);
}

struct Plain {
    __m128i pixel(const RK_PixelFloat& p) { return rounded(_mm_load_ps(&p.alpha)); }
};

struct Dithered {
    RKp_NoiseDraws noise;
    __m128i pixel(const RK_PixelFloat& p) {
        const float alpha = RKp_FloatNoise(noise.next()), red = RKp_FloatNoise(noise.next());
        const float blue = RKp_FloatNoise(noise.next()), green = RKp_FloatNoise(noise.next());
        const __m128 x = _mm_sub_ps(_mm_load_ps(&p.alpha), _mm_set1_ps(0.001953125f));
        return rounded(_mm_add_ps(x, _mm_set_ps(blue, green, red, alpha)));
    }
};

template <class Form>
void runRow(Form& form, const RK_PixelFloat* src, int32_t count, RK_Pixel8* out) {
    int32_t x = 0;
    for (; count - x >= 4; x += 4) {
        const __m128i p0 = form.pixel(src[x]), p1 = form.pixel(src[x + 1]);
        const __m128i p2 = form.pixel(src[x + 2]), p3 = form.pixel(src[x + 3]);
        const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(p0, p1), _mm_packs_epi32(p2, p3));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), bytes);
    }
    for (; x < count; ++x) {
        const __m128i p = form.pixel(src[x]);
        const int32_t bytes = _mm_cvtsi128_si32(_mm_packus_epi16(_mm_packs_epi32(p, p), p));
        std::memcpy(static_cast<void*>(out + x), &bytes, sizeof bytes);
    }
}

}  // namespace

void RKp_RowFloatTo8_SSE2(const RK_PixelFloat* src, int32_t count, bool dither, RK_Pixel8* out) {
    if (dither) {
        Dithered form;
        runRow(form, src, count, out);
    } else {
        Plain form;
        runRow(form, src, count, out);
    }
}
