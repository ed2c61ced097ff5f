// The sums over an area sampler's box: pixels weigh by what of them the box covers, colours by alpha too.
#ifndef RKP_AREA_BOX_SSE2_H
#define RKP_AREA_BOX_SSE2_H

#include "RK/indep/sample/RKp_Footprint.h"
#include "RK/indep/sample/RKp_Pixels_SSE2.h"

// Every sum is made in the order in which pixels are added: rows top down, columns left to right.
struct RKp_AreaSums {
    __m128d ar = _mm_setzero_pd(), gb = _mm_setzero_pd();

    template <class P>
    void add(const P* p, double weight) {
        const RKp_PixelDoubles c = RKp_AsDoubles(p);
        const __m128d a = _mm_mul_pd(_mm_set1_pd(weight), c.alpha);
        ar = _mm_add_pd(ar, _mm_mul_pd(a, c.ar));
        gb = _mm_add_pd(gb, _mm_mul_pd(a, c.gb));
    }
};

template <class P>
inline const P* RKp_BoxRow(const RK_LayerDef& src, int32_t row, int32_t column) {
    return reinterpret_cast<const P*>(static_cast<const char*>(src.data) +
                                      static_cast<ptrdiff_t>(row) * src.rowbytes) +
           column;
}

// How a side of a box that is not empty covers pixels: from `begin` to `end`, the first and the last of them
// by so much of 0x10000, those between wholly.
struct RKp_BoxSide {
    RKp_BoxSide(int64_t low, int64_t high)
        : begin(static_cast<int32_t>(low >> 16)), end(static_cast<int32_t>((high + 0xFFFF) >> 16)) {
        const auto from = static_cast<int32_t>(low & 0xFFFF), to = static_cast<int32_t>(high & 0xFFFF);
        first = end - begin == 1 ? static_cast<int32_t>(high - low) : 0x10000 - from;
        last = to == 0 ? 0x10000 : to;
    }
    int32_t count() const { return end - begin; }
    int32_t begin, end, first, last;
};

template <class P>
inline RKp_AreaSums RKp_SumPixelByPixel(const RK_LayerDef& src, const RKp_BoxSide& columns,
                                        const RKp_BoxSide& rows) {
    RKp_AreaSums sums;
    const int32_t last = columns.count() - 1;
    double weight = rows.first * RKp_k2ToMinus32;
    for (int32_t row = rows.begin;;) {
        const P* const pixels = RKp_BoxRow<P>(src, row, columns.begin);
        const double whole = weight * 0x10000;
        sums.add(pixels, weight * columns.first);
        for (int32_t i = 1; i < last; ++i) sums.add(pixels + i, whole);
        if (last > 0) sums.add(pixels + last, weight * columns.last);
        if (++row >= rows.end) break;
        weight = row == rows.end - 1 ? rows.last * RKp_k2ToMinus32 : RKp_k2ToMinus16;
    }
    return sums;
}

// ---- 8 bits ----------------------------------------------------------------------------------------------

// Are all sums below 2^53, counted in the smallest coverage's units? Then none of their doubles is rounded,
// and their order is free. And do integer sums of whole pixels fit 32 bits?
inline bool RKp_SumsAreExact(const RKp_Footprint& box) {
    constexpr int64_t kLongest = 256, kMost = 1 << 15;
    const int64_t width = box.right - box.left, height = box.bottom - box.top;
    if (width > kLongest << 16 || height > kLongest << 16 || width * height > kMost << 32) return false;
    const auto zeros = [](int64_t a, int64_t b) {
        return __builtin_ctz(static_cast<unsigned>((a | b) & 0xFFFF) | 0x10000u);
    };
    // A pixel, premultiplied, is below 2^16.
    return (width * height) >> (zeros(box.left, box.right) + zeros(box.top, box.bottom)) <= int64_t{1} << 37;
}

// As integers, for sums that are exact.
RKp_AreaSums RKp_SumByRows(const RK_LayerDef& src, const RKp_BoxSide& columns, const RKp_BoxSide& rows);

// ---- The box ---------------------------------------------------------------------------------------------

// `box` lies inside the source and is not empty.
template <class P>
inline RKp_AreaSums RKp_SumBox(const RK_LayerDef& src, const RKp_Footprint& box) {
    const RKp_BoxSide columns(box.left, box.right), rows(box.top, box.bottom);
    if constexpr (sizeof(RK_Channel<P>) == 1) {
        // Few pixels are faster one by one.
        constexpr int64_t kMany = 24;
        if (int64_t{columns.count()} * rows.count() >= kMany && RKp_SumsAreExact(box))
            return RKp_SumByRows(src, columns, rows);
    }
    return RKp_SumPixelByPixel<P>(src, columns, rows);
}

#endif
