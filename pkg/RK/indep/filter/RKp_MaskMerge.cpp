// Legend: m a sample of the mask, a an alpha.
#include "RK/indep/filter/RKp_MaskMerge.h"

#include <algorithm>

#include "RK/indep/frame/RKp_Depth.h"

namespace {

// The rules. A mask of 0 and of full need no tests: the products give 0 and a.
uint8_t merged(uint8_t m, uint8_t a) { return static_cast<uint8_t>(RKp_Depth<RK_Pixel8>::mul(m, a)); }
uint16_t merged(uint16_t m, uint16_t a) { return static_cast<uint16_t>(RKp_Depth<RK_Pixel16>::mul(m, a)); }
// Kept: widened by a product of its own, not as channels are.
uint16_t merged(uint8_t m, uint16_t a) {
    return merged(static_cast<uint16_t>((uint32_t{m} * 0x808080u + 33200u) >> 16), a);
}
float merged(uint16_t m, float a) { return a * (static_cast<float>(m) * 3.0517578e-05f); }
float merged(uint8_t m, float a) { return a * (static_cast<float>(m) / 255.0f); }

}  // namespace

template <class M, class P>
RK_Long RKp_MaskMerge(void*, RK_Long first, RK_Long last, const M* mask_row, P* pixel_row) {
    for (RK_Long i = 0; i < first; ++i) pixel_row[i].alpha = 0;
    for (RK_Long i = std::max<RK_Long>(first, 0); i < last; ++i)
        pixel_row[i].alpha = merged(mask_row[i], pixel_row[i].alpha);
    return RK_kOK;
}

RKP_MASK_MERGE(template, uint8_t, RK_Pixel8)
RKP_MASK_MERGE(template, uint8_t, RK_Pixel16)
RKP_MASK_MERGE(template, uint16_t, RK_Pixel16)
RKP_MASK_MERGE(template, uint16_t, RK_PixelFloat)
RKP_MASK_MERGE(template, uint8_t, RK_PixelFloat)
