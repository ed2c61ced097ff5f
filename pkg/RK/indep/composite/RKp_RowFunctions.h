// The row loop of every mode that treats pixels one by one.
#ifndef RKP_ROW_FUNCTIONS_H
#define RKP_ROW_FUNCTIONS_H

#include "RK/indep/composite/RK_Xfer.h"
#include "RK/indep/composite/RKp_BlendDepth.h"

// A source alpha times an opacity, which is not full.
template <class P>
typename RKp_Depth<P>::Wide RKp_Scaled(typename RKp_Depth<P>::Wide sa, RK_Channel<P> opacity) {
    return RKp_Depth<P>::keep(RKp_Depth<P>::mul(sa, opacity));
}

// The source alpha of a row's pixel: first the opacity, then the matte.
template <class P, bool has_matte, bool scaled>
typename RKp_Depth<P>::Wide RKp_RowAlpha(const P& src, RK_Channel<P> opacity, const P* matte) {
    typename RKp_Depth<P>::Wide sa = src.alpha;
    if constexpr (scaled) sa = RKp_Scaled<P>(sa, opacity);
    if constexpr (has_matte) sa = RKp_Scaled<P>(sa, matte->alpha);
    return sa;
}

template <class P, bool has_matte, bool scaled, class Step>
void RKp_RowLoop(RK_Long count, RK_Channel<P> opacity, const P* src, const P* matte, P* out, Step&& step) {
    for (RK_Long i = 0; i < count; ++i)
        step(src[i], RKp_RowAlpha<P, has_matte, scaled>(src[i], opacity, has_matte ? matte + i : nullptr),
             out[i]);
}

// Calls step(src, sa, out) for each pixel, in order; sa is not tested. The opacity is read once, and a full
// one has its own loop.
template <class P, bool has_matte, class Step>
RK_Long RKp_ForRow(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const P* src, const P* matte, P* out,
                   Step&& step) {
    if (count < 1) return RK_kOK;
    const RK_Channel<P> opacity = plan->mode.opacity;
    if (RKp_Depth<P>::isFullOpacity(opacity))
        RKp_RowLoop<P, has_matte, false>(count, opacity, src, matte, out, step);
    else
        RKp_RowLoop<P, has_matte, true>(count, opacity, src, matte, out, step);
    return RK_kOK;
}

// The row function of such a mode: onRow(s, sa, d) for each pixel.
template <class P, class Mode>
struct RKp_PixelRow {
    // A source of alpha 0 is passed over, and no memory is touched: by one pixel alone, and on a row.
    static constexpr bool kTestsClear = true;
    static constexpr bool kRowTestsClear = true;

    template <bool has_matte>
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const RK_LinearBlendingTables*,
                       const P* src, const P* matte, P* out) {
        using Wide = typename RKp_Depth<P>::Wide;
        return RKp_ForRow<P, has_matte>(count, plan, src, matte, out, [](const P& s, Wide sa, P& d) {
            if (Mode::kRowTestsClear && sa == 0) return;
            // Copies: the rows may be one, and the compiler need not fear it between channels.
            const P source = s;
            P result = d;
            Mode::onRow(source, sa, result);
            d = result;
        });
    }
};

#endif
