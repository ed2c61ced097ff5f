// Spans at 16 bits, as RKp_SpanRows8_SSE2.cpp tells. Between differing alphas the products of alpha and
// colour are rounded, so there the doubles and their order are the sampler's own.
#include "RK/indep/sample/RKp_Pixels_SSE2.h"
#include "RK/indep/sample/RKp_SpanRows.h"
#include "RK/indep/sample/RKp_SpanRunsT.h"

namespace {

__m128i loadTwo(const RK_Pixel16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

void storeOne(__m128i pixel, RK_Pixel16* out) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), RKp_PackedWords(pixel, pixel));
}
void storeTwo(__m128i first, __m128i second, RK_Pixel16* out) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), RKp_PackedWords(first, second));
}

class Lanes16 {
  public:
    Lanes16(int32_t x, int32_t y) : x_(x), y_(y) {}

    void equal(const RKp_SpanSource<RK_Pixel16>& source, int64_t count, RK_Pixel16* out) const {
        const int32_t xf = x_ & 0xFFFF, yf = y_ & 0xFFFF;
        const int shift = yf == 0 ? 1 : 0;
        const __m128i top_weight = _mm_set1_epi16(static_cast<int16_t>((0x10000 - yf) >> shift));
        const __m128i bottom_weight = _mm_set1_epi16(static_cast<int16_t>(yf));
        const __m128i left_weight = _mm_set1_epi32((0x10000 - xf) << shift),
                      right_weight = _mm_set1_epi32(xf << shift);
        const __m128i half = _mm_set_epi32(0, INT32_MIN, 0, INT32_MIN), high = _mm_set_epi32(-1, 0, -1, 0);
        const auto sums = [&](__m128i left, __m128i right) {
            return _mm_add_epi64(_mm_add_epi64(_mm_mul_epu32(left, left_weight), half),
                                 _mm_mul_epu32(right, right_weight));
        };
        const auto sample = [&](__m128i left, __m128i right) {
            const __m128i even = sums(left, right);
            const __m128i odd = sums(_mm_srli_epi64(left, 32), _mm_srli_epi64(right, 32));
            return _mm_or_si128(_mm_srli_epi64(even, 32), _mm_and_si128(odd, high));
        };
        RKp_ForColumns<__m128i>(
            count,
            [&](int64_t i, __m128i* first, __m128i* second) {
                const __m128i top = loadTwo(source.top + i), bottom = loadTwo(source.bottom + i);
                const __m128i t0 = _mm_mullo_epi16(top, top_weight), t1 = _mm_mulhi_epu16(top, top_weight);
                const __m128i b0 = _mm_mullo_epi16(bottom, bottom_weight),
                              b1 = _mm_mulhi_epu16(bottom, bottom_weight);
                *first = _mm_add_epi32(_mm_unpacklo_epi16(t0, t1), _mm_unpacklo_epi16(b0, b1));
                *second = _mm_add_epi32(_mm_unpackhi_epi16(t0, t1), _mm_unpackhi_epi16(b0, b1));
            },
            [&](int64_t i, __m128i left, __m128i right) { storeOne(sample(left, right), out + i); },
            [&](int64_t i, __m128i left, __m128i middle, __m128i right) {
                storeTwo(sample(left, middle), sample(middle, right), out + i);
            });
    }

    void differing(const RKp_SpanSource<RK_Pixel16>& source, int64_t count, RK_Pixel16* out) const {
        // Weighed as the left and as the right column of a sample; in the place of alpha stands its weight.
        struct Products {
            __m128d ar, gb;
        };
        struct Column {
            Products left_top, left_bottom, right_top, right_bottom;
        };
        const RKp_Weights<double> w = RKp_BilinearWeights<double>(x_, y_);
        const __m128d w00 = _mm_set1_pd(w.w00), w10 = _mm_set1_pd(w.w10), w01 = _mm_set1_pd(w.w01),
                      w11 = _mm_set1_pd(w.w11), half = _mm_set1_pd(0.5);
        const auto product = [](const RKp_PixelDoubles& c, __m128d weight) {
            const __m128d a = _mm_mul_pd(weight, c.alpha);
            return Products{_mm_mul_pd(a, c.ar), _mm_mul_pd(a, c.gb)};
        };
        const auto column = [&](int64_t at) {
            const RKp_PixelDoubles top = RKp_AsDoubles(source.top + at),
                                   bottom = RKp_AsDoubles(source.bottom + at);
            return Column{product(top, w00), product(bottom, w01), product(top, w10), product(bottom, w11)};
        };
        const auto sum = [](__m128d p00, __m128d p10, __m128d p01, __m128d p11) {
            return _mm_add_pd(_mm_add_pd(_mm_add_pd(p00, p10), p01), p11);
        };
        Column left = column(0);
        for (int64_t i = 0; i < count; ++i) {
            const Column right = column(i + 1);
            const __m128d ar =
                sum(left.left_top.ar, right.right_top.ar, left.left_bottom.ar, right.right_bottom.ar);
            const __m128d gb =
                sum(left.left_top.gb, right.right_top.gb, left.left_bottom.gb, right.right_bottom.gb);
            left = right;
            const __m128d A = _mm_unpacklo_pd(ar, ar);
            const __m128i first = _mm_cvttpd_epi32(_mm_add_pd(_mm_move_sd(_mm_div_pd(ar, A), ar), half));
            const __m128i second = _mm_cvttpd_epi32(_mm_add_pd(_mm_div_pd(gb, A), half));
            const __m128i none = _mm_castpd_si128(_mm_cmplt_pd(A, half));
            storeOne(_mm_andnot_si128(none, _mm_unpacklo_epi64(first, second)), out + i);
        }
    }

    static int64_t differingRun(const RKp_SpanSource<RK_Pixel16>& source, int64_t count) {
        return RKp_DifferingRun(source, count);
    }

  private:
    int32_t x_, y_;
};

}  // namespace

void RKp_SpanRow(const RK_LayerDef& src, int32_t x, int32_t y, int64_t count, RK_Pixel16* out) {
    RKp_SpanByRuns<Lanes16>(src, x, y, count, out);
}
