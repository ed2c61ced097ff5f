#include "RK/indep/composite/RKp_LinearRows.h"

#include "RK/indep/frame/RKp_Report.h"

namespace {

constexpr const char* kInvalidTables = "Invalid tables for linearized blending";

}  // namespace

template <class P, bool has_matte>
RK_Long RKp_RunLinearRow(int32_t, RK_Long count, const RK_BlendModeDescriptor<P>*,
                         const RK_LinearBlendingTables*, const P*, const P*, P*) {
    return count < 1 ? RK_kOK : RKp_VERIFICATION(kInvalidTables);
}
template <class P>
void RKp_RunLinearPixel(int32_t, const P*, const RK_LinearBlendingTables*, typename RKp_Depth<P>::Wide, P*) {
    RKp_VERIFICATION(kInvalidTables);
}

#define RKP_INSTANTIATE(P)                                                                               \
    template RK_Long RKp_RunLinearRow<P, false>(int32_t, RK_Long, const RK_BlendModeDescriptor<P>*,      \
                                                const RK_LinearBlendingTables*, const P*, const P*, P*); \
    template RK_Long RKp_RunLinearRow<P, true>(int32_t, RK_Long, const RK_BlendModeDescriptor<P>*,       \
                                               const RK_LinearBlendingTables*, const P*, const P*, P*);  \
    template void RKp_RunLinearPixel<P>(int32_t, const P*, const RK_LinearBlendingTables*,               \
                                        RKp_Depth<P>::Wide, P*)
RKP_INSTANTIATE(RK_Pixel8);
RKP_INSTANTIATE(RK_Pixel16);
RKP_INSTANTIATE(RK_PixelFloat);
