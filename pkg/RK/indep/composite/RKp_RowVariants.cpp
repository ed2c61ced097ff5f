#include "RK/indep/composite/RKp_RowVariants.h"

template <>
const RKp_RowVariants<RK_Pixel8>& RKp_RowVariantsOf<RK_Pixel8>() {
    static constexpr RKp_RowVariants<RK_Pixel8> rows = {
        {RKp_OverRow_SSSE3<RK_Pixel8, false>, RKp_OverRow_SSSE3<RK_Pixel8, true>},
        {RKp_CopyRow_SSE2<RK_Pixel8, false>, RKp_CopyRow_SSE2<RK_Pixel8, true>}};
    return rows;
}
template <>
const RKp_RowVariants<RK_Pixel16>& RKp_RowVariantsOf<RK_Pixel16>() {
    static constexpr RKp_RowVariants<RK_Pixel16> rows = {{nullptr, nullptr}, {nullptr, nullptr}};
    return rows;
}
template <>
const RKp_RowVariants<RK_PixelFloat>& RKp_RowVariantsOf<RK_PixelFloat>() {
    static constexpr RKp_RowVariants<RK_PixelFloat> rows = {
        {RKp_OverRow_SSSE3<RK_PixelFloat, false>, RKp_OverRow_SSSE3<RK_PixelFloat, true>},
        {RKp_CopyRow_SSE2<RK_PixelFloat, false>, RKp_CopyRow_SSE2<RK_PixelFloat, true>}};
    return rows;
}
