#include "RK/indep/passes/RKp_AlphaMerge.h"

namespace {

// The source alpha of pixel i comes from alpha(i).
template <class P, class Alpha>
inline void unite(RK_Long count, P* dst, Alpha alpha) {
    using D = RKp_Depth<P>;
    for (RK_Long i = 0; i < count; ++i)
        dst[i].alpha = static_cast<typename D::Channel>(D::unite(dst[i].alpha, alpha(i)));
}

}  // namespace

template <class P>
RK_Long RKp_AlphaMerge(RK_Long count, const P* src, typename RKp_Depth<P>::Channel opacity, const P* matte,
                       P* dst) {
    using D = RKp_Depth<P>;
    if (opacity == 0) return RK_kOK;
    const auto scaled = [=](RK_Long i) { return D::keep(D::mul(src[i].alpha, opacity)); };
    if (D::isFullOpacity(opacity)) {
        if (matte == nullptr)
            unite(count, dst, [=](RK_Long i) { return src[i].alpha; });
        else
            unite(count, dst, [=](RK_Long i) { return D::keep(D::mul(src[i].alpha, matte[i].alpha)); });
    } else {
        if (matte == nullptr)
            unite(count, dst, scaled);
        else
            unite(count, dst, [=](RK_Long i) { return D::keep(D::mul(matte[i].alpha, scaled(i))); });
    }
    return RK_kOK;
}

RKP_ALPHA_MERGE(template, RKp_AlphaMerge, RK_Pixel8)
RKP_ALPHA_MERGE(template, RKp_AlphaMerge, RK_Pixel16)
RKP_ALPHA_MERGE(template, RKp_AlphaMerge, RK_PixelFloat)
