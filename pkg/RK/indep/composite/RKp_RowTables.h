// The four row tables of a depth, made from the list, and the lookups over them. RK_Rows8.cpp and its kin
// instantiate them; nobody else includes this.
#ifndef RKP_ROW_TABLES_H
#define RKP_ROW_TABLES_H

#include "RK/indep/composite/RKp_LinearRows.h"
#include "RK/indep/frame/RKp_Report.h"

template <class P, class Mode, int32_t mode, bool has_matte, bool linear>
constexpr RK_RowFunc<P>* RKp_RowOf() {
    if constexpr (Mode::kClass == RK_kModeRefused)
        return nullptr;
    else if constexpr (linear)
        return &RKp_LinearRow<P, Mode, mode>::template row<has_matte>;
    else
        return &Mode::template row<has_matte>;
}

// At the place of a mode, which is its number + 3; null where the mode is refused.
template <class P, bool has_matte, bool linear>
struct RKp_RowTable {
    static constexpr RK_RowFunc<P>* kRows[RKp_kModeCount] = {
#define RK_MODE(number, name, class_, flag, does) \
    RKp_RowOf<P, RKp_Mode##name<P>, number, has_matte, linear>(),
#include "RK/indep/composite/RKp_Modes.def"
    };
};

template <class P, bool has_matte, bool linear>
RK_Long RK_GetInnerBlendingFunc(RK_Long mode, RK_InnerBlendingFunc<P>* out) {
    RK_RowFunc<P>* const row =
        RKp_IsMode(mode) ? RKp_RowTable<P, has_matte, linear>::kRows[mode - RK_kFirstMode] : nullptr;
    if (row == nullptr) {
        KITp_ReportErrString(RK_kLocation, 8, RKp_Text(RK_kMsg_UnimplementedMode));
        return RK_kUnknownMode;
    }
    if (out == nullptr) return RK_kBadParam;
    out->func = row;
    return RK_kOK;
}

template <class P, bool has_matte>
RK_Long RKp_OverRow_Static(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                           const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out) {
    return RKp_OverScalar<P>::template row<has_matte>(count, plan, tables, src, matte, out);
}
template <class P, bool has_matte>
RK_Long RKp_CopyRow_Static(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                           const RK_LinearBlendingTables*, const P* src, const P* matte, P* out) {
    return RKp_CopyRow<P, has_matte>(count, plan, src, matte, out);
}

#define RKP_INSTANTIATE_ROWS_WITH(P, has_matte)                                                             \
    template RK_Long RK_GetInnerBlendingFunc<P, has_matte, false>(RK_Long, RK_InnerBlendingFunc<P>*);       \
    template RK_Long RK_GetInnerBlendingFunc<P, has_matte, true>(RK_Long, RK_InnerBlendingFunc<P>*);        \
    template RK_Long RKp_OverRow_Static<P, has_matte>(                                                      \
        RK_Long, const RK_BlendModeDescriptor<P>*, const RK_LinearBlendingTables*, const P*, const P*, P*); \
    template RK_Long RKp_CopyRow_Static<P, has_matte>(                                                      \
        RK_Long, const RK_BlendModeDescriptor<P>*, const RK_LinearBlendingTables*, const P*, const P*, P*)
#define RKP_INSTANTIATE_ROWS(P)          \
    RKP_INSTANTIATE_ROWS_WITH(P, false); \
    RKP_INSTANTIATE_ROWS_WITH(P, true)

#endif
