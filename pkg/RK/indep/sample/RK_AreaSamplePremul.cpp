// The premultiplied area sampler: integers throughout.
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RKp_AreaBox_SSE2.h"
#include "RK/indep/sample/RKp_AreaRows.h"

namespace {

// Channels times coverage; a coverage of 0x10000 counts a channel 256 times.
class Sums {
  public:
    // A row of a box, whose sums fit 32 bits since no box is wider than 65536.
    void addRow(const RK_Pixel8* pixels, const RKp_BoxSide& columns, int32_t row_cover) {
        const int32_t last = columns.count() - 1;
        __m128i sums = counted(RKp_OneAsWords(pixels), cover(columns.first, row_cover));
        if (last > 0)
            sums =
                _mm_add_epi32(sums, counted(RKp_OneAsWords(pixels + last), cover(columns.last, row_cover)));
        int32_t i = 1;
        for (; i + 1 < last; i += 2)
            sums = _mm_add_epi32(sums, counted(RKp_TwoAsWords(pixels + i), row_cover));
        if (i < last) sums = _mm_add_epi32(sums, counted(RKp_OneAsWords(pixels + i), row_cover));
        ar_ = _mm_add_epi64(ar_, _mm_unpacklo_epi32(sums, _mm_setzero_si128()));
        gb_ = _mm_add_epi64(gb_, _mm_unpackhi_epi32(sums, _mm_setzero_si128()));
    }
    void add(const RK_Pixel8& p, int32_t coverage) { addRow(&p, RKp_BoxSide(0, 0x10000), coverage); }
    // (sum + h) / d of every channel, at most 255, truncated; 0 < d, h < d. Sums are below 2^49, so that a
    // double quotient does not reach the next integer.
    RK_Pixel8 means(int32_t d, int32_t h) const {
        const auto mean = [d, h](__m128i sums) {
            // The bits of 2^52 as a double, or a number below it, are their sum.
            const __m128d two52 = _mm_set1_pd(0x1p52);
            const __m128d v =
                _mm_sub_pd(_mm_castsi128_pd(_mm_or_si128(sums, _mm_castpd_si128(two52))), two52);
            const __m128d quotient = _mm_div_pd(_mm_add_pd(v, _mm_set1_pd(h)), _mm_set1_pd(d));
            return _mm_cvttpd_epi32(_mm_min_pd(quotient, _mm_set1_pd(255)));
        };
        return RKp_AsPixel8(_mm_unpacklo_epi64(mean(ar_), mean(gb_)));
    }
    // The same for d below 0.
    RK_Pixel8 overNegative(int64_t d, int64_t h) const {
        int64_t argb[4];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(argb), ar_);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(argb + 2), gb_);
        if (argb[0] == 0) return {};
        const auto mean = [d, h](int64_t sum) {
            return static_cast<uint8_t>(std::min<int64_t>(255, (sum + h) / d));
        };
        const uint8_t alpha = mean(argb[0]);
        return alpha != 0 ? RK_Pixel8{alpha, mean(argb[1]), mean(argb[2]), mean(argb[3])} : RK_Pixel8{};
    }

    // Partial times extent; a whole step has the extent itself.
    static int32_t cover(int64_t partial, int64_t extent) {
        return static_cast<int32_t>(partial * extent / 65536);
    }

  private:
    // One or two pixels' channels * coverage >> 8, added up as dwords.
    static __m128i counted(__m128i words, int32_t coverage) {
        const __m128i whole = _mm_slli_epi16(words, 8);
        const __m128i part = coverage == 0x10000
                                 ? whole
                                 : _mm_mulhi_epu16(whole, _mm_set1_epi16(static_cast<int16_t>(coverage)));
        return _mm_add_epi32(_mm_unpacklo_epi16(part, _mm_setzero_si128()),
                             _mm_unpackhi_epi16(part, _mm_setzero_si128()));
    }
    __m128i ar_ = _mm_setzero_si128(), gb_ = _mm_setzero_si128();
};

RK_Pixel8 sampleAt(void* ref, int32_t x, int32_t y, const RK_SampPB& pb) {
    const RK_LayerDef& src = *pb.src;
    // The box is cut to the source before the radii choose a case.
    const RKp_Footprint box = RKp_ClampFootprint(RKp_MakeFootprint(x, y, pb), src);
    if (box.isEmpty()) return {};

    const bool narrow = pb.x_radius <= RK_kHalfPixel, low = pb.y_radius <= RK_kHalfPixel;
    const int64_t width = box.right - box.left, height = box.bottom - box.top;
    Sums sums;
    const auto addPoint = [&](int32_t px, int32_t py, int32_t coverage) {
        RK_Pixel8 sample;
        RKp_Slot<RKp_kSlot_SubpixelSample_Premul>()(ref, px, py, &pb, &sample);
        sums.add(sample, coverage);
    };
    if (narrow && low) {
        addPoint(x, y, Sums::cover(width, height));
    } else if (low) {
        const auto row = static_cast<int32_t>(box.top + (height >> 1) - 32768);
        RKp_ForCoverage(box.left, box.right, src.width, [&](int32_t column, int32_t part) {
            addPoint(RKp_WholePosition(column), row, Sums::cover(part, height));
        });
    } else if (narrow) {
        const auto column = static_cast<int32_t>(box.left + (width >> 1) - 32768);
        RKp_ForCoverage(box.top, box.bottom, src.height, [&](int32_t row, int32_t part) {
            addPoint(column, RKp_WholePosition(row), Sums::cover(part, width));
        });
    } else {
        const RKp_BoxSide columns(box.left, box.right), rows(box.top, box.bottom);
        for (int32_t row = rows.begin; row < rows.end; ++row) {
            const int32_t row_cover = row == rows.begin     ? rows.first
                                      : row == rows.end - 1 ? rows.last
                                                            : 0x10000;
            sums.addRow(RKp_BoxRow<RK_Pixel8>(src, row, columns.begin), columns, row_cover);
        }
    }

    const int32_t d = (pb.area >> 8) + ((pb.area >> 7) & 1), h = d >> 1;
    if (d > 0) {
        const RK_Pixel8 mean = sums.means(d, h);
        return mean.alpha != 0 ? mean : RK_Pixel8{};
    }
    return d == 0 ? RK_Pixel8{} : sums.overNegative(d, h);
}

}  // namespace

RK_Long RK_AreaSample_Premul(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    *out = sampleAt(ref, x, y, *pb);
    return RK_kOK;
}

void RKp_RowAreaPremul(RK_Sampler<RK_Pixel8>*, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count,
                       RK_Pixel8* out) {
    for (int64_t i = 0; i < count; ++i, walk.next()) out[i] = sampleAt(nullptr, walk.x, walk.y, *pb);
}
