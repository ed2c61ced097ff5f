// Spans at float: the four channels of a pixel at a time, each step the sampler's own.
#include <xmmintrin.h>

#include "RK/indep/sample/RKp_SpanRows.h"
#include "RK/indep/sample/RKp_SubpixelSample_StraightT.h"

namespace {

__m128 load(const RK_PixelFloat* p) { return _mm_loadu_ps(&p->alpha); }
__m128 inAll(__m128 v) { return _mm_shuffle_ps(v, v, 0); }

}  // namespace

void RKp_SpanRow(const RK_LayerDef& src, int32_t x, int32_t y, const RKp_Weights<float>& weights,
                 int64_t count, float* alpha_sum, RK_PixelFloat* out) {
    if (count < 1) return;
    const RK_PixelFloat* const top = RKp_SourcePixel<RK_PixelFloat>(src, x >> 16, y >> 16);
    const RK_PixelFloat* const bottom = RKp_SourcePixel<RK_PixelFloat>(src, x >> 16, (y >> 16) + 1);
    const __m128 w00 = _mm_set1_ps(weights.w00), w10 = _mm_set1_ps(weights.w10),
                 w01 = _mm_set1_ps(weights.w01), w11 = _mm_set1_ps(weights.w11), one = _mm_set_ss(1.0f);
    // A column's two pixels; with 1 for alpha; their alphas in all lanes; do those differ?
    struct Column {
        __m128 top, bottom, top1, bottom1, top_alpha, bottom_alpha, differ;
    };
    const auto column = [&](int64_t i) {
        const __m128 t = load(top + i), b = load(bottom + i);
        return Column{t,        b,        _mm_move_ss(t, one), _mm_move_ss(b, one),
                      inAll(t), inAll(b), _mm_cmpneq_ss(t, b)};
    };
    const auto sum = [](__m128 p00, __m128 p10, __m128 p01, __m128 p11) {
        return _mm_add_ps(_mm_add_ps(_mm_add_ps(p00, p10), p01), p11);
    };
    __m128 total = _mm_set_ss(*alpha_sum);
    Column left = column(0);
    for (int64_t i = 0; i < count; ++i) {
        const Column right = column(i + 1);
        const __m128 differ =
            _mm_or_ps(_mm_or_ps(left.differ, right.differ), _mm_cmpneq_ss(left.top, right.top));
        __m128 result;
        if ((_mm_movemask_ps(differ) & 1) == 0) {
            result = sum(_mm_mul_ps(w00, left.top), _mm_mul_ps(w10, right.top), _mm_mul_ps(w01, left.bottom),
                         _mm_mul_ps(w11, right.bottom));
            result = _mm_move_ss(result, left.top);
        } else {
            const __m128 sums = sum(_mm_mul_ps(_mm_mul_ps(w00, left.top_alpha), left.top1),
                                    _mm_mul_ps(_mm_mul_ps(w10, right.top_alpha), right.top1),
                                    _mm_mul_ps(_mm_mul_ps(w01, left.bottom_alpha), left.bottom1),
                                    _mm_mul_ps(_mm_mul_ps(w11, right.bottom_alpha), right.bottom1));
            const __m128 A = inAll(sums);
            result = _mm_move_ss(_mm_mul_ps(sums, _mm_div_ps(_mm_set1_ps(1.0f), A)), sums);
            result = _mm_andnot_ps(_mm_cmpeq_ps(A, _mm_setzero_ps()), result);
        }
        _mm_storeu_ps(&out[i].alpha, result);
        total = _mm_add_ss(total, result);
        left = right;
    }
    *alpha_sum = _mm_cvtss_f32(total);
}
