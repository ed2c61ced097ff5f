// What becomes of a sampled row.
#ifndef RKP_TRANSFORM_FINISH_H
#define RKP_TRANSFORM_FINISH_H

#include <cstring>

#include "RK/indep/composite/RK_BlendPipeline.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/sample/RK_Samp.h"

// Blends `line`, whose alphas sum to `sum`, onto `out`. Rows without alpha are left out, but for the modes that act on
// them; rows of full alpha under Over are copied.
template <class P>
RK_Long RKp_FinishRow(const RK_BlendModeDescriptor<P>& plan, int32_t width, RK_AlphaSum<P> sum, const P* line,
                      const P* matte, RK_Channel<P>* alpha_save, P* out) {
    using D = RKp_Depth<P>;
    const int32_t xfer = plan.mode.xfer;
    // Kept: Copy and MatteMix are not in this list, so an empty row under them leaves the destination.
    const bool acts_on_nothing = xfer == RK_Xfer_Replace || xfer == RK_Xfer_StencilAlpha ||
                                 xfer == RK_Xfer_StencilLuma || xfer == RK_Xfer_PremulOver;
    if (sum == 0 && !acts_on_nothing) return RK_kOK;
    const bool opaque = sum == static_cast<RK_AlphaSum<P>>(width) * static_cast<RK_AlphaSum<P>>(D::kFull);
    if (opaque && xfer == RK_Xfer_Over && matte == nullptr && plan.mode.rgb_only == 0 &&
        D::isFullOpacity(plan.mode.opacity)) {
        std::memcpy(out, line, static_cast<size_t>(width) * sizeof(P));
        return RK_kOK;
    }
    return RK_BlendPipeline<P>(nullptr, width, &plan, line, matte, alpha_save, out);
}

#endif
