#include <algorithm>

#include "RK/indep/filter/RKp_UnoPass.h"
#include "RK/indep/filter/RKp_UnoRows.h"
#include "RK/indep/frame/RKp_OverFuncs.h"

RK_Long RK_ConvertDeepUnoBuffer(RK_ProgressInfo* progress, const RK_UnoBuffer* src, const GEO_Rect& rect,
                                uint16_t divisor, RK_UnoBuffer* dst) {
    const bool src_stored = RKp_CheckUno(src), dst_stored = RKp_CheckUno(dst);
    if (!src_stored || !dst_stored) return RK_kBadParam;
    const int32_t depth = dst->depth;
    if (src->depth != 16 || (depth != 8 && depth != 16 && depth != 32)) return RK_kOK;
    if (divisor == 0) return RK_kBadParam;

    const int32_t left = std::max<int32_t>(rect.left, 0), top = std::max<int32_t>(rect.top, 0);
    const int32_t width = std::min({int32_t{rect.right}, src->width, dst->width}) - left;
    const int32_t height = std::min({int32_t{rect.bottom}, src->height, dst->height}) - top;
    if (width < 1 || height < 1) return RK_kOK;

    // run(row of the source, row of the destination) for each row.
    const auto forRows = [&](auto sample, auto run) {
        using S = decltype(sample);
        return RKp_ForUnoRows(RKp_Slot<RKp_kSlot_IterateGeneric>(), progress, height, [&](int32_t i) {
            run(src->Row<uint16_t>(top + i) + left, dst->Row<S>(top + i) + left);
        });
    };
    switch (depth) {
        case 8:
            return forRows(uint8_t{}, [=, narrow = RKp_Slot<RKp_kSlot_MaskNarrow16To8>()](
                                          auto from, auto to) { narrow(divisor, width, from, to); });
        case 16:
            return forRows(uint16_t{},
                           [=](auto from, auto to) { RKp_MaskDivide16(divisor, width, from, to); });
        default:
            return forRows(float{},
                           [=](auto from, auto to) { RKp_MaskDivide16ToFloat(divisor, width, from, to); });
    }
}
