// The straight area sampler over the pixel type. A form brings its Pixel, `limit`, `point` (the clipped point
// sampler) and the rounding of alpha and colour.
#ifndef RKP_AREA_SAMPLE_STRAIGHT_T_H
#define RKP_AREA_SAMPLE_STRAIGHT_T_H

#include "RK/indep/sample/RK_SampleRow.h"
#include "RK/indep/sample/RKp_AreaBox_SSE2.h"

// With one parameter block, at any position.
template <class Form>
class RKp_AreaSampler {
    using P = typename Form::Pixel;

  public:
    RKp_AreaSampler(void* ref, const RK_SampPB& pb)
        : ref_(ref), pb_(&pb), src_(*pb.src), edges_(RKp_ClampFootprint({0, 0, INT64_MAX, INT64_MAX}, src_)),
          x_radius_(pb.x_radius), y_radius_(pb.y_radius),
          quarter_(x_radius_ * RKp_k2ToMinus16 * y_radius_ * RKp_k2ToMinus16) {}

    P operator()(int32_t x, int32_t y) const {
        const RKp_AreaSums sums = sumsAt(x, y);
        const __m128d A = _mm_unpacklo_pd(sums.ar, sums.ar);
        if (_mm_cvtsd_f64(A) == 0) return P{};
        // The whole footprint's area, not the clipped one's: what hangs over the edge lowers alpha.
        const __m128d ar =
            _mm_div_pd(_mm_mul_pd(sums.ar, _mm_set_pd(1, 0.25)), _mm_move_sd(A, _mm_set_sd(quarter_)));
        // A limit stands for what is not less, so for NaN too.
        const __m128d alpha = _mm_min_sd(ar, _mm_set_sd(Form::limit));
        if (_mm_cvtsd_f64(alpha) == 0) return P{};
        return Form::rounded(_mm_move_sd(ar, alpha), _mm_div_pd(sums.gb, A));
    }

  private:
    RKp_AreaSums sumsAt(int32_t x, int32_t y) const {
        const RKp_Footprint box = RKp_MakeFootprint(x, y, *pb_);
        const bool narrow = x_radius_ <= RK_kHalfPixel, low = y_radius_ <= RK_kHalfPixel;
        if (!narrow && !low) {
            if (box.left >= 0 && box.top >= 0 && box.right <= edges_.right && box.bottom <= edges_.bottom)
                return RKp_SumBox<P>(src_, box);
            const RKp_Footprint inside = RKp_ClampFootprint(box, src_);
            return inside.isEmpty() ? RKp_AreaSums() : RKp_SumBox<P>(src_, inside);
        }
        RKp_AreaSums sums;
        const auto addPoint = [&](int32_t px, int32_t py, double weight) {
            P sample;
            Form::point()(ref_, px, py, pb_, &sample);
            sums.add(&sample, weight);
        };
        if (narrow && low) {
            addPoint(x, y,
                     static_cast<double>(box.right - box.left) * static_cast<double>(box.bottom - box.top) *
                         RKp_k2ToMinus32);
        } else if (low) {
            const double height = static_cast<double>(int64_t{y_radius_} * 2) * RKp_k2ToMinus32;
            RKp_ForCoverage(box.left, box.right, src_.width, [&](int32_t column, int32_t cover) {
                addPoint(RKp_WholePosition(column), y, cover * height);
            });
        } else {
            const double width = static_cast<double>(int64_t{x_radius_} * 2) * RKp_k2ToMinus32;
            RKp_ForCoverage(box.top, box.bottom, src_.height, [&](int32_t row, int32_t cover) {
                addPoint(x, RKp_WholePosition(row), cover * width);
            });
        }
        return sums;
    }

    void* ref_;
    const RK_SampPB* pb_;
    RK_LayerDef src_;
    RKp_Footprint edges_;  // the source's
    int32_t x_radius_, y_radius_;
    double quarter_;  // of the footprint's area
};

template <class Form>
inline typename Form::Pixel RKp_AreaSample(void* ref, int32_t x, int32_t y, const RK_SampPB& pb) {
    return RKp_AreaSampler<Form>(ref, pb)(x, y);
}
template <class Form>
void RKp_RowArea(const RK_SampPB& pb, RK_SampleWalk walk, int64_t count, typename Form::Pixel* out) {
    const RKp_AreaSampler<Form> sample(nullptr, pb);
    for (int64_t i = 0; i < count; ++i, walk.next()) out[i] = sample(walk.x, walk.y);
}

#endif
