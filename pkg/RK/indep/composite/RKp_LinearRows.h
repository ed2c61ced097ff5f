// The linear columns: a mode's plain row function, wrapped so that it blends in linear light.
#ifndef RKP_LINEAR_ROWS_H
#define RKP_LINEAR_ROWS_H

#include "RK/indep/composite/RKp_Modes.h"

// What every wrapper of a depth does for the mode: `mode` names the plain row function to run inside. The
// curves are not there yet: reports "Invalid tables for linearized blending", gives 3 and touches nothing.
template <class P, bool has_matte>
RK_Long RKp_RunLinearRow(int32_t mode, RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                         const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out);
// The same for one pixel, whose alpha after opacity is `sa`.
template <class P>
void RKp_RunLinearPixel(int32_t mode, const P* src, const RK_LinearBlendingTables* tables,
                        typename RKp_Depth<P>::Wide sa, P* dst);

// The row function of a mode in a linear column.
template <class P, class Mode, int32_t mode>
struct RKp_LinearRow {
    template <bool has_matte>
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                       const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out) {
        return RKp_RunLinearRow<P, has_matte>(mode, count, plan, tables, src, matte, out);
    }
};

// Replace blends nothing: at the integer depths its linear columns hold the plain functions.
template <>
struct RKp_LinearRow<RK_Pixel8, RKp_ModeReplace<RK_Pixel8>, RK_Xfer_Replace> : RKp_ModeReplace<RK_Pixel8> {};
template <>
struct RKp_LinearRow<RK_Pixel16, RKp_ModeReplace<RK_Pixel16>, RK_Xfer_Replace> : RKp_ModeReplace<RK_Pixel16> {
};

// Copy calls its plain body, without tables, at every depth.
template <class P>
struct RKp_LinearRow<P, RKp_ModeCopy<P>, RK_Xfer_Copy> {
    template <bool has_matte>
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const RK_LinearBlendingTables*,
                       const P* src, const P* matte, P* out) {
        return RKp_ModeCopy<P>::template row<has_matte>(count, plan, nullptr, src, matte, out);
    }
};

#endif
