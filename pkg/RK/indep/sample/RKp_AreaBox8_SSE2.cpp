// Boxes at 8 bits in integers.
#include "RK/indep/sample/RKp_AreaBox_SSE2.h"

namespace {

// Premultiplied pixels as integers, apart by what they weigh.
class RowSums {
  public:
    // `count` pixels of one row.
    void add(const RK_Pixel8* pixels, int32_t count) {
        const __m128i zero = _mm_setzero_si128();
        const auto one = [zero](const RK_Pixel8* p) {
            return _mm_unpacklo_epi16(RKp_PremultipliedWords(RKp_OneAsWords(p)), zero);
        };
        left_ = _mm_add_epi32(left_, one(pixels));
        if (count == 1) return;
        right_ = _mm_add_epi32(right_, one(pixels + count - 1));
        int32_t i = 1;
        for (; i + 2 < count; i += 2) {
            const __m128i two = RKp_PremultipliedWords(RKp_TwoAsWords(pixels + i));
            whole_ = _mm_add_epi32(whole_, _mm_unpacklo_epi16(two, zero));
            whole_ = _mm_add_epi32(whole_, _mm_unpackhi_epi16(two, zero));
        }
        if (i + 1 < count) whole_ = _mm_add_epi32(whole_, one(pixels + i));
    }
    void addTo(RKp_AreaSums* sums, const RKp_BoxSide& columns, double weight) const {
        const __m128d first = _mm_set1_pd(weight * columns.first), last = _mm_set1_pd(weight * columns.last),
                      whole = _mm_set1_pd(weight * 0x10000);
        sums->ar = plus(plus(plus(sums->ar, left_, first), whole_, whole), right_, last);
        sums->gb = plus(plus(plus(sums->gb, upper(left_), first), upper(whole_), whole), upper(right_), last);
    }

  private:
    static __m128i upper(__m128i v) { return _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)); }
    static __m128d plus(__m128d sum, __m128i v, __m128d weight) {
        return _mm_add_pd(sum, _mm_mul_pd(_mm_cvtepi32_pd(v), weight));
    }
    __m128i left_ = _mm_setzero_si128(), whole_ = _mm_setzero_si128(), right_ = _mm_setzero_si128();
};

}  // namespace

RKp_AreaSums RKp_SumByRows(const RK_LayerDef& src, const RKp_BoxSide& columns, const RKp_BoxSide& rows) {
    RKp_AreaSums sums;
    const auto addRow = [&](int32_t row, RowSums* to) {
        to->add(RKp_BoxRow<RK_Pixel8>(src, row, columns.begin), columns.count());
    };
    const auto addEdge = [&](int32_t row, int32_t cover) {
        RowSums edge;
        addRow(row, &edge);
        edge.addTo(&sums, columns, cover * RKp_k2ToMinus32);
    };
    RowSums whole;
    int32_t begin = rows.begin, end = rows.end;
    if (rows.first != 0x10000) addEdge(begin++, rows.first);
    if (rows.last != 0x10000 && begin < end) addEdge(--end, rows.last);
    for (; begin < end; ++begin) addRow(begin, &whole);
    whole.addTo(&sums, columns, RKp_k2ToMinus16);
    return sums;
}
