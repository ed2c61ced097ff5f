// The records of a mode, what is told of the modes, and the plan of a composite.
#include <cmath>

#include "RK/indep/composite/RKp_Modes.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"

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

// ---- The plan -------------------------------------------------------------------------------------------

namespace {

// What a class asks of the plan.
struct ClassPlan {
    uint8_t wrap_neutral, over_first, guard_alpha, merge_alpha;
    int32_t neutral;
};
constexpr int32_t kNoNeutral = -1, kBlack = 0, kWhite = 1, kGrey = 2;
constexpr ClassPlan kClassPlans[] = {
    {0, 0, 0, 0, kNoNeutral},  // RK_kModeRefused
    {0, 0, 0, 0, kNoNeutral},  // RK_kModePlain
    {0, 0, 1, 0, kNoNeutral},  // RK_kModeGuard
    {0, 1, 1, 0, kNoNeutral},  // RK_kModeOverFirst
    {1, 0, 1, 1, kBlack},      // RK_kModeWrapBlack
    {1, 0, 1, 1, kWhite},      // RK_kModeWrapWhite
    {1, 0, 1, 1, kGrey},       // RK_kModeWrapGrey
};
static_assert(RK_kModeWrapGrey == sizeof kClassPlans / sizeof kClassPlans[0] - 1, "one line for each class");

// The slots of each depth. The seven scans follow one another: premultiply and unmultiply by black, by white,
// by grey, and the alpha merge.
template <class P>
struct Slots;
template <>
struct Slots<RK_Pixel8> {
    static constexpr int32_t kScans = RKp_kSlot_Premul_Black8, kMakePlan = RKp_kSlot_MakePlan8;
    static constexpr int32_t kRow = RKp_kSlot_GetRow8, kMatteRow = RKp_kSlot_GetMatteRow8;
    static constexpr int32_t kLinearRow = RKp_kSlot_GetLinearRow8,
                             kLinearMatteRow = RKp_kSlot_GetLinearMatteRow8;
};
template <>
struct Slots<RK_Pixel16> {
    static constexpr int32_t kScans = RKp_kSlot_Premul_Black16, kMakePlan = RKp_kSlot_MakePlan16;
    static constexpr int32_t kRow = RKp_kSlot_GetRow16, kMatteRow = RKp_kSlot_GetMatteRow16;
    static constexpr int32_t kLinearRow = RKp_kSlot_GetLinearRow16,
                             kLinearMatteRow = RKp_kSlot_GetLinearMatteRow16;
};
template <>
struct Slots<RK_PixelFloat> {
    static constexpr int32_t kScans = RKp_kSlot_Premul_BlackFloat, kMakePlan = RKp_kSlot_MakePlanFloat;
    static constexpr int32_t kRow = RKp_kSlot_GetRowFloat, kMatteRow = RKp_kSlot_GetMatteRowFloat;
    static constexpr int32_t kLinearRow = RKp_kSlot_GetLinearRowFloat;
    static constexpr int32_t kLinearMatteRow = RKp_kSlot_GetLinearMatteRowFloat;
};

template <class P>
RKp_GetInnerBlendingFuncFunc<P>* lookup(bool has_matte, bool linear) {
    using S = Slots<P>;
    if (has_matte) return linear ? RKp_Slot<S::kLinearMatteRow>() : RKp_Slot<S::kMatteRow>();
    return linear ? RKp_Slot<S::kLinearRow>() : RKp_Slot<S::kRow>();
}

// The scans by the neutral of a class: black, white, grey.
template <class P>
struct ScanPair {
    RKp_ScanFunc<P>*pre, *post;
};
template <class P>
ScanPair<P> scans(int32_t neutral) {
    constexpr int32_t k = Slots<P>::kScans;
    const ScanPair<P> pairs[] = {{RKp_Slot<k>(), RKp_Slot<k + 1>()},
                                 {RKp_Slot<k + 2>(), RKp_Slot<k + 3>()},
                                 {RKp_Slot<k + 4>(), RKp_Slot<k + 5>()}};
    return neutral == kNoNeutral ? ScanPair<P>{nullptr, nullptr} : pairs[neutral];
}

}  // namespace

template <class P>
RK_BlendModeDescriptor<P>::RK_BlendModeDescriptor(RK_BlendingMode<P>& caller_mode, bool has_matte,
                                                  const RK_LinearBlendingTables* linear_tables) {
    RKp_Slot<Slots<P>::kMakePlan>()(this, caller_mode, has_matte, linear_tables);
}

template <class P>
void RK_BlendModeDescriptor<P>::Make_S(RK_BlendModeDescriptor* self, RK_BlendingMode<P>& caller_mode,
                                       bool has_matte, const RK_LinearBlendingTables* linear_tables) {
    self->mode = caller_mode;
    self->tables = linear_tables;
    RKp_GetInnerBlendingFuncFunc<P>* const find = lookup<P>(has_matte, linear_tables != nullptr);
    if (find == nullptr)
        RKp_Throw(RKp_VERIFICATION("Something went wrong attempting get the blending function."));

    RK_InnerBlendingFunc<P> row = {nullptr};
    const bool known = find(caller_mode.xfer, &row) == RK_kOK;
    self->mode_func = row.func;
    // Kept: behind, not over: the source lies under the destination before an over-first mode changes colour.
    RK_InnerBlendingFunc<P> behind = {nullptr};
    find(RK_Xfer_Behind, &behind);
    self->over_func = behind.func;

    const ClassPlan& plan =
        kClassPlans[known ? kModes[caller_mode.xfer - RK_kFirstMode].mode_class : RK_kModeRefused];
    self->wrap_neutral = plan.wrap_neutral;
    self->over_first = plan.over_first;
    self->guard_alpha = plan.guard_alpha;
    self->merge_alpha = plan.merge_alpha;

    const ScanPair<P> pair = scans<P>(plan.neutral);
    self->pre_scan = pair.pre;
    self->post_scan = pair.post;
    self->alpha_merge = RKp_Slot<Slots<P>::kScans + 6>();
}

#define RKP_INSTANTIATE(P)                                                                              \
    template RK_BlendingMode<P> RK_MakeBlendingMode<P>(const RK_CompositeModePlus&);                    \
    template RK_BlendModeDescriptor<P>::RK_BlendModeDescriptor(RK_BlendingMode<P>&, bool,               \
                                                               const RK_LinearBlendingTables*);         \
    template void RK_BlendModeDescriptor<P>::Make_S(RK_BlendModeDescriptor*, RK_BlendingMode<P>&, bool, \
                                                    const RK_LinearBlendingTables*)
RKP_INSTANTIATE(RK_Pixel8);
RKP_INSTANTIATE(RK_Pixel16);
RKP_INSTANTIATE(RK_PixelFloat);
