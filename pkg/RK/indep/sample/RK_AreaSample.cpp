// The straight area samplers of every depth.
#include "RK/indep/sample/RK_AreaSample.h"

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RKp_AreaRows.h"
#include "RK/indep/sample/RKp_AreaSample_StraightT.h"
#include "RK/indep/sample/RKp_RoundingMode.h"

namespace {

// At most the limit, v < limit ? v : limit, in both.
__m128d atMost(__m128d v, double limit) { return _mm_min_pd(v, _mm_set1_pd(limit)); }
__m128d plusHalf(__m128d v) { return _mm_add_pd(v, _mm_set1_pd(0.5)); }

struct Common8 {
    using Pixel = RK_Pixel8;
    static constexpr double limit = 255;
    static RK_Sampler<RK_Pixel8>* point() { return RKp_Slot<RKp_kSlot_SubpixelSample_Straight>(); }
};
// The conversion's own rounding, which is to nearest here.
struct Even8 : Common8 {
    static RK_Pixel8 rounded(__m128d ar, __m128d gb) {
        return RKp_AsPixel8(
            _mm_unpacklo_epi64(_mm_cvtpd_epi32(atMost(ar, limit)), _mm_cvtpd_epi32(atMost(gb, limit))));
    }
};
// 0.5 added, and truncated.
__m128i truncated(__m128d ar, __m128d gb, double limit) {
    return _mm_unpacklo_epi64(_mm_cvttpd_epi32(plusHalf(atMost(ar, limit))),
                              _mm_cvttpd_epi32(plusHalf(atMost(gb, limit))));
}
struct Portable8 : Common8 {
    static RK_Pixel8 rounded(__m128d ar, __m128d gb) { return RKp_AsPixel8(truncated(ar, gb, limit)); }
};
struct Common16 {
    using Pixel = RK_Pixel16;
    static constexpr double limit = 32768;
    static RK_Sampler<RK_Pixel16>* point() { return RKp_Slot<RKp_kSlot_SubpixelSample_Straight16>(); }
};
struct Rounded16 : Common16 {
    static RK_Pixel16 rounded(__m128d ar, __m128d gb) {
        double v[4];
        _mm_storeu_pd(v, atMost(ar, limit));
        _mm_storeu_pd(v + 2, atMost(gb, limit));
        const auto round = [](double c) { return static_cast<uint16_t>(GEO_RoundDouble(c)); };
        return {round(v[0]), round(v[1]), round(v[2]), round(v[3])};
    }
};
struct Portable16 : Common16 {
    static RK_Pixel16 rounded(__m128d ar, __m128d gb) { return RKp_AsPixel16(truncated(ar, gb, limit)); }
};
struct PortableFloat {
    using Pixel = RK_PixelFloat;
    static constexpr double limit = 1;
    static RK_Sampler<RK_PixelFloat>* point() { return &RK_SubpixelCPlusPlusFloat; }
    // Only alpha is limited.
    static RK_PixelFloat rounded(__m128d ar, __m128d gb) {
        RK_PixelFloat p;
        _mm_storeu_ps(&p.alpha, _mm_movelh_ps(_mm_cvtpd_ps(ar), _mm_cvtpd_ps(gb)));
        return p;
    }
};

}  // namespace

template <>
RK_Long RK_AreaSample_CPlusPlus<RK_Pixel8>(RK_ProgressInfo* ref, int32_t x, int32_t y, const RK_SampPB* pb,
                                           RK_Pixel8* out) {
    *out = RKp_AreaSample<Portable8>(ref, x, y, *pb);
    return RK_kOK;
}
template <>
RK_Long RK_AreaSample_CPlusPlus<RK_Pixel16>(RK_ProgressInfo* ref, int32_t x, int32_t y, const RK_SampPB* pb,
                                            RK_Pixel16* out) {
    *out = RKp_AreaSample<Portable16>(ref, x, y, *pb);
    return RK_kOK;
}
template <>
RK_Long RK_AreaSample_CPlusPlus<RK_PixelFloat>(RK_ProgressInfo* ref, int32_t x, int32_t y,
                                               const RK_SampPB* pb, RK_PixelFloat* out) {
    *out = RKp_AreaSample<PortableFloat>(ref, x, y, *pb);
    return RK_kOK;
}

RK_Long RKp_AreaSample8_Static(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    RKp_RoundingToNearest([&] { *out = RKp_AreaSample<Even8>(ref, x, y, *pb); });
    return RK_kOK;
}
RK_Long RKp_AreaSample16_Static(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    *out = RKp_AreaSample<Rounded16>(ref, x, y, *pb);
    return RK_kOK;
}
RK_Long RKp_AreaSample8_Portable(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    return RK_AreaSample_CPlusPlus(static_cast<RK_ProgressInfo*>(ref), x, y, pb, out);
}
RK_Long RKp_AreaSample16_Portable(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    return RK_AreaSample_CPlusPlus(static_cast<RK_ProgressInfo*>(ref), x, y, pb, out);
}
RK_Long RK_AreaSampleFloat(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_PixelFloat* out) {
    return RK_AreaSample_CPlusPlus(static_cast<RK_ProgressInfo*>(ref), x, y, pb, out);
}

RK_Long RK_AreaSample_Straight(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    return RKp_Slot<RKp_kSlot_AreaSample>()(ref, x, y, pb, out);
}
RK_Long RK_AreaSample_Straight16(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    return RKp_Slot<RKp_kSlot_AreaSample16>()(ref, x, y, pb, out);
}

// ---- Rows ------------------------------------------------------------------------------------------------

namespace {

void rowEven8(RK_Sampler<RK_Pixel8>*, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count,
              RK_Pixel8* out) {
    RKp_RoundingToNearest([&] { RKp_RowArea<Even8>(*pb, walk, count, out); });
}
template <class Form, class P = typename Form::Pixel>
void row(RK_Sampler<P>*, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count, P* out) {
    RKp_RowArea<Form>(*pb, walk, count, out);
}

}  // namespace

RK_RowSampler<RK_Pixel8>* RKp_FindAreaRow(RK_Sampler<RK_Pixel8>* sampler) {
    if (sampler == &RKp_AreaSample8_Portable) return row<Portable8>;
    return sampler == &RKp_AreaSample8_Static ? rowEven8 : nullptr;
}
RK_RowSampler<RK_Pixel16>* RKp_FindAreaRow(RK_Sampler<RK_Pixel16>* sampler) {
    if (sampler == &RKp_AreaSample16_Portable) return row<Portable16>;
    return sampler == &RKp_AreaSample16_Static ? row<Rounded16> : nullptr;
}
RK_RowSampler<RK_PixelFloat>* RKp_FindAreaRow(RK_Sampler<RK_PixelFloat>* sampler) {
    return sampler == &RK_AreaSampleFloat ? row<PortableFloat> : nullptr;
}
