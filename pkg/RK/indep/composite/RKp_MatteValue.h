// What a mask's pixel makes of itself as a matte.
#ifndef RKP_MATTE_VALUE_H
#define RKP_MATTE_VALUE_H

#include "RK/indep/composite/RK_TransferRect.h"
#include "RK/indep/frame/RKp_Depth.h"

// The value of one mask pixel: alpha, or alpha times luma.
template <class P, bool luma, bool inverted>
typename RKp_Depth<P>::Channel RKp_MatteValue(const P& m) {
    using D = RKp_Depth<P>;
    typename D::Wide value = m.alpha;
    if (luma) value = D::mul(value, D::luma(m.red, m.green, m.blue));
    return static_cast<typename D::Channel>(inverted ? D::inv(value) : value);
}

template <class P, bool luma, bool inverted>
void RKp_MatteAlphas(const P* mask, int64_t count, P* row) {
    for (int64_t x = 0; x < count; ++x) row[x].alpha = RKp_MatteValue<P, luma, inverted>(mask[x]);
}

// The alphas of `count` pixels of `row`, computed from as many of `mask`; the low two bits of `kind` count.
template <class P>
void RKp_MatteAlphas(uint32_t kind, const P* mask, int64_t count, P* row) {
    switch (kind & 3u) {
        case RK_kMaskAlpha: return RKp_MatteAlphas<P, false, false>(mask, count, row);
        case RK_kMaskInvertedAlpha: return RKp_MatteAlphas<P, false, true>(mask, count, row);
        case RK_kMaskLuma: return RKp_MatteAlphas<P, true, false>(mask, count, row);
        default: return RKp_MatteAlphas<P, true, true>(mask, count, row);
    }
}

template <class P>
void RKp_FillAlphas(P* row, int64_t begin, int64_t end, typename RKp_Depth<P>::Wide value) {
    for (int64_t x = begin; x < end; ++x) row[x].alpha = static_cast<typename RKp_Depth<P>::Channel>(value);
}

#endif
