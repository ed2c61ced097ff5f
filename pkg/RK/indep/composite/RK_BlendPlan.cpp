// The plan of a composite.
#include "RK/indep/composite/RKp_Modes.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

constexpr RK_ModeClass kClasses[RKp_kModeCount] = {
#define RK_MODE(number, name, class_, flag, does) RK_kMode##class_,
#include "RK/indep/composite/RKp_Modes.def"
};

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
    RKp_ScanFunc<P>* pre;
    RKp_ScanFunc<P>* post;
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
    const bool known = find(caller_mode.xfer, &row) == RK_kOK && RKp_IsMode(caller_mode.xfer);
    self->mode_func = row.func;
    // Kept: behind, not over: the source lies under the destination before an over-first mode changes colour.
    RK_InnerBlendingFunc<P> behind = {nullptr};
    find(RK_Xfer_Behind, &behind);
    self->over_func = behind.func;

    const ClassPlan& plan = kClassPlans[known ? kClasses[caller_mode.xfer - RK_kFirstMode] : RK_kModeRefused];
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
    template RK_BlendModeDescriptor<P>::RK_BlendModeDescriptor(RK_BlendingMode<P>&, bool,               \
                                                               const RK_LinearBlendingTables*);         \
    template void RK_BlendModeDescriptor<P>::Make_S(RK_BlendModeDescriptor*, RK_BlendingMode<P>&, bool, \
                                                    const RK_LinearBlendingTables*)
RKP_INSTANTIATE(RK_Pixel8);
RKP_INSTANTIATE(RK_Pixel16);
RKP_INSTANTIATE(RK_PixelFloat);
