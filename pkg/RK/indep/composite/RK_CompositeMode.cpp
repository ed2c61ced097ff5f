// What is told of the modes, and the records that carry one.
#include <cmath>

#include "RK/indep/composite/RKp_Modes.h"

namespace {

constexpr RK_ModeInfo kModes[RKp_kModeCount] = {
#define RK_MODE(number, name, class_, flag, does) {#name, does, RK_kMode##class_, flag},
#include "RK/indep/composite/RKp_Modes.def"
};

}  // namespace

RK_Long RK_GetTransferFlags(RK_Long mode) { return RKp_IsMode(mode) ? kModes[mode - RK_kFirstMode].flag : 0; }

RK_Long RK_GetModeInfo(RK_Long mode, RK_ModeInfo* info) {
    if (!RKp_IsMode(mode) || info == nullptr) return RK_kBadParam;
    *info = kModes[mode - RK_kFirstMode];
    return RK_kOK;
}

// ---- Records --------------------------------------------------------------------------------------------

namespace {

// A number that 32 bits do not hold is no mode.
int32_t modeNumber(RK_Long mode) {
    const int32_t number = static_cast<int32_t>(mode);
    if (number != mode) return RK_Xfer_None;
    return number;
}

}  // namespace

// Of a seed the low 32 bits count.
RK_CompositeModePlus::RK_CompositeModePlus(RK_Long xfer_, float opacity_,
                                           const RK_LinearBlendingTables* tables_, bool rgb_only_,
                                           RK_Long rand_seed_)
    : xfer(modeNumber(xfer_)),
      rand_seed(static_cast<int32_t>(static_cast<uint32_t>(rand_seed_))),
      rgb_only(rgb_only_),
      tables(tables_),
      opacity(opacity_) {}

// A record that filled in the 8-bit opacity alone disagrees with itself by a whole 8-bit step.
RK_CompositeModePlus::RK_CompositeModePlus(const RK_CompositeMode& plain)
    : xfer(plain.xfer), rand_seed(plain.rand_seed), rgb_only(plain.rgb_only != 0) {
    const float a = static_cast<float>(plain.opacity) / 255.0f;
    const float b = static_cast<float>(plain.opacity16) * 3.0517578e-5f;
    opacity = static_cast<double>(std::fabs(a - b)) >= 0.00392156862745098 ? a : b;
}

template <class P>
RK_BlendingMode<P> RK_MakeBlendingMode(const RK_CompositeModePlus& mode) {
    RK_Channel<P> opacity;
    if constexpr (RKp_Depth<P>::kBits == 32)
        opacity = mode.opacity;
    else
        opacity = static_cast<RK_Channel<P>>(RKp_Truncate(mode.opacity * float{RKp_Depth<P>::kFull} + 0.5f));
    return {mode.xfer, mode.rand_seed, opacity, mode.rgb_only != 0};
}

template RK_BlendingMode<RK_Pixel8> RK_MakeBlendingMode<RK_Pixel8>(const RK_CompositeModePlus&);
template RK_BlendingMode<RK_Pixel16> RK_MakeBlendingMode<RK_Pixel16>(const RK_CompositeModePlus&);
template RK_BlendingMode<RK_PixelFloat> RK_MakeBlendingMode<RK_PixelFloat>(const RK_CompositeModePlus&);
