// Row scans between straight and premultiplied colour, against a black, a white or a grey matte.
//
// All have the form RKp_ScanFunc<P>. Alpha goes from `src` to `dst` unchanged. `src` null, or equal to `dst`,
// works in place; otherwise the rows do not overlap. A count below 1 does nothing. The result is always 0.
//
// Premultiplying knows no special alpha. Unmultiplying has some, the same for every matte:
//   in place, alpha 0: the whole pixel becomes zero
//   in place, alpha full: the pixel is left alone
//   float, a denormal alpha: all three colours become 1.0, on both paths
// Kept: from `src` to `dst` an alpha of 0 goes through the matte's rule with a quotient of full: black gives
// full, white 0, grey full from the middle up and 0 below it.
#ifndef RKP_MATTE_SCANS_H
#define RKP_MATTE_SCANS_H

#include "RK/indep/frame/RK.h"

// clang-format off
template <class P> RK_Long RKp_Premul_Black(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Unmul_Black(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Premul_White(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Unmul_White(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Premul_Grey(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Unmul_Grey(RK_Long count, const P* src, P* dst);

// The vector forms give the same bits, save which of two NaNs a float channel inherits.
template <class P> RK_Long RKp_Premul_Black_SSSE3(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Unmul_Black_SSSE3(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Premul_White_SSSE3(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Unmul_White_SSSE3(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Premul_Grey_SSSE3(RK_Long count, const P* src, P* dst);
template <class P> RK_Long RKp_Unmul_Grey_SSSE3(RK_Long count, const P* src, P* dst);

// Instances stand in the sources of the same stem and nowhere else. At 16 bits premultiplying by black has no
// vector form.
#define RKP_MATTE_SCANS(declare, P)                                                   \
    declare RK_Long RKp_Premul_Black<P>(RK_Long count, const P* src, P* dst);         \
    declare RK_Long RKp_Unmul_Black<P>(RK_Long count, const P* src, P* dst);          \
    declare RK_Long RKp_Premul_White<P>(RK_Long count, const P* src, P* dst);         \
    declare RK_Long RKp_Unmul_White<P>(RK_Long count, const P* src, P* dst);          \
    declare RK_Long RKp_Premul_Grey<P>(RK_Long count, const P* src, P* dst);          \
    declare RK_Long RKp_Unmul_Grey<P>(RK_Long count, const P* src, P* dst);
RKP_MATTE_SCANS(extern template, RK_Pixel8)
RKP_MATTE_SCANS(extern template, RK_Pixel16)
RKP_MATTE_SCANS(extern template, RK_PixelFloat)

template <> RK_Long RKp_Premul_Black_SSSE3<RK_Pixel8>(RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst);
template <> RK_Long RKp_Premul_Black_SSSE3<RK_PixelFloat>(RK_Long count, const RK_PixelFloat* src, RK_PixelFloat* dst);
#define RKP_MATTE_SCANS_SSSE3(P)                                                               \
    template <> RK_Long RKp_Unmul_Black_SSSE3<P>(RK_Long count, const P* src, P* dst);         \
    template <> RK_Long RKp_Premul_White_SSSE3<P>(RK_Long count, const P* src, P* dst);        \
    template <> RK_Long RKp_Unmul_White_SSSE3<P>(RK_Long count, const P* src, P* dst);         \
    template <> RK_Long RKp_Premul_Grey_SSSE3<P>(RK_Long count, const P* src, P* dst);         \
    template <> RK_Long RKp_Unmul_Grey_SSSE3<P>(RK_Long count, const P* src, P* dst);
RKP_MATTE_SCANS_SSSE3(RK_Pixel8)
RKP_MATTE_SCANS_SSSE3(RK_Pixel16)
RKP_MATTE_SCANS_SSSE3(RK_PixelFloat)
#undef RKP_MATTE_SCANS_SSSE3
// clang-format on

#endif
