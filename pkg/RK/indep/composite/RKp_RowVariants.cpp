#include "RK/indep/composite/RKp_RowVariants.h"

template <>
const RKp_RowVariants<RK_Pixel8>& RKp_RowVariantsOf<RK_Pixel8>() {
    static constexpr RKp_RowVariants<RK_Pixel8> rows = {{nullptr, nullptr}, {nullptr, nullptr}};
    return rows;
}
template <>
const RKp_RowVariants<RK_Pixel16>& RKp_RowVariantsOf<RK_Pixel16>() {
    static constexpr RKp_RowVariants<RK_Pixel16> rows = {{nullptr, nullptr}, {nullptr, nullptr}};
    return rows;
}
template <>
const RKp_RowVariants<RK_PixelFloat>& RKp_RowVariantsOf<RK_PixelFloat>() {
    static constexpr RKp_RowVariants<RK_PixelFloat> rows = {{nullptr, nullptr}, {nullptr, nullptr}};
    return rows;
}
