#include "RK/indep/composite/RK_MatteRow.h"

#include <algorithm>

#include "RK/indep/composite/RKp_CompositeArea.h"
#include "RK/indep/composite/RKp_MatteValue.h"

template <class P>
const P* RK_MatteRow(const RK_Mask& mask, int32_t y, int32_t left, int32_t count, P* matte_row) {
    const uint32_t kind = mask.mask_kind & 3u;
    const int64_t mask_row = int64_t{y} - mask.mask_y;
    const int64_t first = int64_t{left} - mask.mask_x;  // the mask's column at `left`
    if (kind == RK_kMaskAlpha) return RKp_PixelAt<const P>(mask.world, first, mask_row);

    const auto full = RKp_Depth<P>::kFull;
    if (mask_row < 0 || mask_row >= RKp_UsableHeight(mask.world)) {
        // Kept: a row outside shows everything, for plain luma too, though columns outside do not.
        RKp_FillAlphas(matte_row, 0, count, full);
        return matte_row;
    }

    const int64_t room = count;
    const int32_t begin = static_cast<int32_t>(std::clamp(-first, int64_t{0}, room));
    const int32_t end =
        static_cast<int32_t>(std::clamp(RKp_UsableWidth(mask.world) - first, int64_t{begin}, room));
    const auto outside = kind == RK_kMaskLuma ? decltype(full){0} : full;
    RKp_FillAlphas(matte_row, 0, begin, outside);
    if (begin < end) {
        const P* inside = RKp_PixelAt<const P>(mask.world, first + begin, mask_row);
        RKp_MatteAlphas(kind, inside, end - begin, matte_row + begin);
    }
    RKp_FillAlphas(matte_row, end, count, outside);
    return matte_row;
}

template const RK_Pixel8* RK_MatteRow(const RK_Mask&, int32_t, int32_t, int32_t, RK_Pixel8*);
template const RK_Pixel16* RK_MatteRow(const RK_Mask&, int32_t, int32_t, int32_t, RK_Pixel16*);
template const RK_PixelFloat* RK_MatteRow(const RK_Mask&, int32_t, int32_t, int32_t, RK_PixelFloat*);
