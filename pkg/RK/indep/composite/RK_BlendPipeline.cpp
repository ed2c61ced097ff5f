#include "RK/indep/composite/RK_BlendPipeline.h"

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

// The steps of one row, in the order of the plan; the first that fails ends them.
template <class P>
void runSteps(RK_Long count, const RK_BlendModeDescriptor<P>& plan, const P* src, const P* matte, P* out) {
    if (plan.wrap_neutral) {
        RKp_ThrowIf(plan.pre_scan(count, nullptr, out));
    } else if (plan.over_first) {
        RKp_ThrowIf(plan.over_func(count, &plan, plan.tables, src, matte, out));
    }
    RKp_ThrowIf(plan.mode_func(count, &plan, plan.tables, src, matte, out));
    if (plan.merge_alpha) RKp_ThrowIf(plan.alpha_merge(count, src, plan.mode.opacity, matte, out));
    // The way back divides by the alpha that was merged.
    if (plan.wrap_neutral) RKp_ThrowIf(plan.post_scan(count, nullptr, out));
}

}  // namespace

template <class P>
RK_Long RK_BlendPipeline(RK_ProgressInfo*, RK_Long count, const RK_BlendModeDescriptor<P>* plan, const P* src,
                         const P* matte, RK_Channel<P>* alpha_save, P* out) {
    if (plan == nullptr) return RKp_ReportBadParam(RKp_kSiteFill);
    if (plan->mode_func == nullptr) return RK_kUnknownMode;
    if (count < 1) return RK_kOK;
    const bool keeps_alpha = plan->guard_alpha && plan->mode.rgb_only;
    if (src == nullptr || out == nullptr || (keeps_alpha && alpha_save == nullptr))
        return RKp_ReportBadParam(RKp_kSiteFill);

    return RKp_AtBorder([&] {
        if (keeps_alpha)
            for (RK_Long x = 0; x < count; ++x) alpha_save[x] = out[x].alpha;
        runSteps(count, *plan, src, matte, out);
        if (keeps_alpha)
            for (RK_Long x = 0; x < count; ++x) out[x].alpha = alpha_save[x];
    });
}

template RK_API RK_Long RK_BlendPipeline(RK_ProgressInfo*, RK_Long, const RK_BlendModeDescriptor<RK_Pixel8>*,
                                         const RK_Pixel8*, const RK_Pixel8*, uint8_t*, RK_Pixel8*);
template RK_API RK_Long RK_BlendPipeline(RK_ProgressInfo*, RK_Long, const RK_BlendModeDescriptor<RK_Pixel16>*,
                                         const RK_Pixel16*, const RK_Pixel16*, uint16_t*, RK_Pixel16*);
template RK_API RK_Long RK_BlendPipeline(RK_ProgressInfo*, RK_Long,
                                         const RK_BlendModeDescriptor<RK_PixelFloat>*, const RK_PixelFloat*,
                                         const RK_PixelFloat*, float*, RK_PixelFloat*);
