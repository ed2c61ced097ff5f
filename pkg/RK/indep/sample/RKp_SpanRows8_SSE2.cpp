// Spans at 8 bits: the four channels of a pixel at a time.
//
// All sums are exact, so their order is free: a column's two pixels are weighed by the rows' weights first,
// then two columns by theirs. Legend: V a column's sums, S a sample's.
#include "RK/indep/sample/RKp_Pixels_SSE2.h"
#include "RK/indep/sample/RKp_SpanRows.h"
#include "RK/indep/sample/RKp_SpanRunsT.h"

namespace {

__m128i load(const RK_Pixel8* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

// Eight words as two pixels, or the first four as one.
void storeTwo(__m128i pixels, RK_Pixel8* out) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(pixels, pixels));
}
void storeOne(__m128i pixels, RK_Pixel8* out) {
    const int32_t pixel = _mm_cvtsi128_si32(_mm_packus_epi16(pixels, pixels));
    std::memcpy(out, &pixel, sizeof pixel);
}

class Lanes8 {
  public:
    Lanes8(int32_t x, int32_t y) : xf_(x & 0xFFFF), yf_(y & 0xFFFF) {}

    // V = top * 0x10000 + (bottom - top) * yf has 24 bits. Rounding to even is the conversion's own.
    void equal(const RKp_SpanSource<RK_Pixel8>& source, int64_t count, RK_Pixel8* out) const {
        struct Column {
            __m128d ar, gb;
        };
        const __m128i zero = _mm_setzero_si128();
        // The fraction as a signed word; from a half up it is negative, and counts from the bottom row.
        const bool upper = yf_ >= 0x8000;
        const __m128i fraction = _mm_set1_epi32(yf_ - (upper ? 0x10000 : 0));
        const __m128d right_weight = _mm_set1_pd(xf_ * 0x1p-32),
                      left_weight = _mm_set1_pd((0x10000 - xf_) * 0x1p-32);
        const auto doubles = [](__m128i v) {
            return Column{_mm_cvtepi32_pd(v), _mm_cvtepi32_pd(_mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)))};
        };
        const auto sample = [&](const Column& left, const Column& right) {
            const __m128d ar =
                _mm_add_pd(_mm_mul_pd(left.ar, left_weight), _mm_mul_pd(right.ar, right_weight));
            const __m128d gb =
                _mm_add_pd(_mm_mul_pd(left.gb, left_weight), _mm_mul_pd(right.gb, right_weight));
            return _mm_unpacklo_epi64(_mm_cvtpd_epi32(ar), _mm_cvtpd_epi32(gb));
        };
        RKp_ForColumns<Column>(
            count,
            [&](int64_t i, Column* first, Column* second) {
                const __m128i top = RKp_TwoAsWords(source.top + i),
                              bottom = RKp_TwoAsWords(source.bottom + i);
                const __m128i step = _mm_sub_epi16(bottom, top), base = upper ? bottom : top;
                *first = doubles(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(step, zero), fraction),
                                               _mm_unpacklo_epi16(zero, base)));
                *second = doubles(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(step, zero), fraction),
                                                _mm_unpackhi_epi16(zero, base)));
            },
            [&](int64_t i, const Column& left, const Column& right) {
                const __m128i pixel = sample(left, right);
                storeOne(_mm_packs_epi32(pixel, pixel), out + i);
            },
            [&](int64_t i, const Column& left, const Column& middle, const Column& right) {
                storeTwo(_mm_packs_epi32(sample(left, middle), sample(middle, right)), out + i);
            });
    }

    // Alpha, and each colour times alpha, are 16-bit words; V has 32 bits, S 48.
    void differing(const RKp_SpanSource<RK_Pixel8>& source, int64_t count, RK_Pixel8* out) const {
        // 0x10000 is no word: then the rows' weights are halved, and the columns' doubled.
        const int shift = yf_ == 0 ? 1 : 0;
        const __m128i top_weight = _mm_set1_epi16(static_cast<int16_t>((0x10000 - yf_) >> shift));
        const __m128i bottom_weight = _mm_set1_epi16(static_cast<int16_t>(yf_));
        const __m128i left_weight = _mm_set1_epi32((0x10000 - xf_) << shift),
                      right_weight = _mm_set1_epi32(xf_ << shift);
        const auto premultiplied = [](const RK_Pixel8* p) {
            return RKp_PremultipliedWords(RKp_TwoAsWords(p));
        };
        const auto sums = [&](__m128i left, __m128i right) {
            return _mm_add_epi64(_mm_mul_epu32(left, left_weight), _mm_mul_epu32(right, right_weight));
        };
        // Below 2^52: the bits of 2^52 as a double, or the number, is their sum.
        const __m128d two52 = _mm_set1_pd(0x1p52);
        const auto doubles = [two52](__m128i v) {
            return _mm_sub_pd(_mm_castsi128_pd(_mm_or_si128(v, _mm_castpd_si128(two52))), two52);
        };
        const __m128d alpha_scale = _mm_set_sd(0x1p-32);
        struct Sums {
            __m128d ag, rb;
        };
        const auto sample = [&](__m128i left, __m128i right) {
            return Sums{doubles(sums(left, right)),
                        doubles(sums(_mm_srli_epi64(left, 32), _mm_srli_epi64(right, 32)))};
        };
        const auto finished = [alpha_scale](const Sums& s, __m128d reciprocal) {
            const __m128i even = _mm_cvtpd_epi32(_mm_mul_pd(s.ag, _mm_move_sd(reciprocal, alpha_scale)));
            return _mm_unpacklo_epi32(even, _mm_cvtpd_epi32(_mm_mul_pd(s.rb, reciprocal)));
        };
        // An alpha that rounds to 0 leaves nothing; its colours may be anything, even no number.
        const auto packed = [](__m128i first, __m128i second) {
            const __m128i pixels = _mm_packs_epi32(first, second);
            return _mm_andnot_si128(_mm_cmpeq_epi16(RKp_AlphaWords(pixels), _mm_setzero_si128()), pixels);
        };
        RKp_ForColumns<__m128i>(
            count,
            [&](int64_t i, __m128i* first, __m128i* second) {
                const __m128i top = premultiplied(source.top + i), bottom = premultiplied(source.bottom + i);
                const __m128i t0 = _mm_mullo_epi16(top, top_weight), t1 = _mm_mulhi_epu16(top, top_weight);
                const __m128i b0 = _mm_mullo_epi16(bottom, bottom_weight),
                              b1 = _mm_mulhi_epu16(bottom, bottom_weight);
                *first = _mm_add_epi32(_mm_unpacklo_epi16(t0, t1), _mm_unpacklo_epi16(b0, b1));
                *second = _mm_add_epi32(_mm_unpackhi_epi16(t0, t1), _mm_unpackhi_epi16(b0, b1));
            },
            [&](int64_t i, __m128i left, __m128i right) {
                const Sums s = sample(left, right);
                const __m128i pixel = finished(s, _mm_div_pd(_mm_set1_pd(1.0), _mm_unpacklo_pd(s.ag, s.ag)));
                storeOne(packed(pixel, pixel), out + i);
            },
            [&](int64_t i, __m128i left, __m128i middle, __m128i right) {
                const Sums s = sample(left, middle), t = sample(middle, right);
                const __m128d reciprocals = _mm_div_pd(_mm_set1_pd(1.0), _mm_unpacklo_pd(s.ag, t.ag));
                storeTwo(packed(finished(s, _mm_unpacklo_pd(reciprocals, reciprocals)),
                                finished(t, _mm_unpackhi_pd(reciprocals, reciprocals))),
                         out + i);
            });
    }

    // Four samples at a time.
    static int64_t differingRun(const RKp_SpanSource<RK_Pixel8>& source, int64_t count) {
        int64_t i = 0;
        for (; i + 4 <= count; i += 4) {
            const __m128i top = load(source.top + i), bottom = load(source.bottom + i);
            const __m128i differ = _mm_or_si128(
                _mm_or_si128(_mm_xor_si128(top, bottom), _mm_xor_si128(top, load(source.top + i + 1))),
                _mm_xor_si128(top, load(source.bottom + i + 1)));
            const __m128i equal =
                _mm_cmpeq_epi32(_mm_and_si128(differ, _mm_set1_epi32(0xFF)), _mm_setzero_si128());
            if (_mm_movemask_epi8(equal) != 0) break;
        }
        return RKp_DifferingRun(source, count, i);
    }

  private:
    int32_t xf_, yf_;
};

}  // namespace

void RKp_SpanRow(const RK_LayerDef& src, int32_t x, int32_t y, int64_t count, RK_Pixel8* out) {
    RKp_SpanByRuns<Lanes8>(src, x, y, count, out);
}
