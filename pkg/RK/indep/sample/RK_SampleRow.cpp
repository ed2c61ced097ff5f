// Which samplers are done in place.
#include "RK/indep/sample/RK_SampleRow.h"

#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RKp_AreaRows.h"
#include "RK/indep/sample/RKp_RoundingMode.h"
#include "RK/indep/sample/RKp_SampleRowsT.h"

namespace {

// The 8-bit default forms round to nearest whatever the caller's mode; it is asked once a row.
void clipped8(RK_Sampler<RK_Pixel8>*, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count,
              RK_Pixel8* out) {
    RKp_RoundingToNearest([&] { RKp_RowClipped<RKp_Default8>(*pb->src, walk, count, out); });
}
void noClip8(RK_Sampler<RK_Pixel8>*, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count, RK_Pixel8* out) {
    RKp_RoundingToNearest([&] { RKp_RowNoClip<RKp_Default8>(*pb->src, walk, count, out); });
}
void translate8(RK_SamplerTranslate<RK_Pixel8>*, const double weights[4], const RK_SampPB* pb,
                RK_SampleWalk walk, int64_t count, RK_Pixel8* out) {
    RKp_RoundingToNearest([&] { RKp_RowTranslate<RKp_Given8>(*pb->src, weights, walk, count, out); });
}

template <class Form, class P = typename Form::Pixel>
void clipped(RK_Sampler<P>*, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count, P* out) {
    RKp_RowClipped<Form>(*pb->src, walk, count, out);
}
template <class Form, class P = typename Form::Pixel>
void noClip(RK_Sampler<P>*, const RK_SampPB* pb, RK_SampleWalk walk, int64_t count, P* out) {
    RKp_RowNoClip<Form>(*pb->src, walk, count, out);
}
template <class Form, class P = typename Form::Pixel>
void translate(RK_SamplerTranslate<P>*, const double weights[4], const RK_SampPB* pb, RK_SampleWalk walk,
               int64_t count, P* out) {
    RKp_RowTranslate<Form>(*pb->src, weights, walk, count, out);
}

}  // namespace

template <>
RK_RowSampler<RK_Pixel8>* RKp_GetRowSampler(RK_Sampler<RK_Pixel8>* sampler) {
    if (sampler == &RK_SubpixelSample_Straight) return clipped8;
    if (sampler == &RK_SubpixelSampleNoClip_Straight) return noClip8;
    if (sampler == &RK_AreaSample_Premul) return RKp_RowAreaPremul;
    if (auto* const area = RKp_FindAreaRow(sampler)) return area;
    return RKp_RowCalled<RK_Pixel8>;
}
template <>
RK_RowSampler<RK_Pixel16>* RKp_GetRowSampler(RK_Sampler<RK_Pixel16>* sampler) {
    if (sampler == &RK_SubpixelSample_Straight16) return clipped<RKp_Default16>;
    if (sampler == &RK_SubpixelSampleNoClip_Straight16) return noClip<RKp_Default16>;
    if (auto* const area = RKp_FindAreaRow(sampler)) return area;
    return RKp_RowCalled<RK_Pixel16>;
}
template <>
RK_RowSampler<RK_PixelFloat>* RKp_GetRowSampler(RK_Sampler<RK_PixelFloat>* sampler) {
    if (sampler == &RK_SubpixelCPlusPlusFloat) return clipped<RKp_PortableFloat>;
    if (sampler == &RK_SubpixelCPlusPlusNoClipFloat) return noClip<RKp_PortableFloat>;
    if (auto* const area = RKp_FindAreaRow(sampler)) return area;
    return RKp_RowCalled<RK_PixelFloat>;
}

template <>
RK_RowTranslate<RK_Pixel8>* RKp_GetRowTranslate(RK_SamplerTranslate<RK_Pixel8>* sampler) {
    return sampler == &RK_SubpixelSampleTranslateNoClip_Straight ? translate8
                                                                 : RKp_RowTranslateCalled<RK_Pixel8>;
}
template <>
RK_RowTranslate<RK_Pixel16>* RKp_GetRowTranslate(RK_SamplerTranslate<RK_Pixel16>* sampler) {
    return sampler == &RK_SubpixelSampleTranslateNoClip_Straight16 ? translate<RKp_Given16>
                                                                   : RKp_RowTranslateCalled<RK_Pixel16>;
}
template <>
RK_RowTranslate<RK_PixelFloat>* RKp_GetRowTranslate(RK_SamplerTranslate<RK_PixelFloat>* sampler) {
    return sampler == &RK_SubpixelSampleTranslateNoClipCPlusPlusFloat ? translate<RKp_PortableFloat>
                                                                      : RKp_RowTranslateCalled<RK_PixelFloat>;
}
