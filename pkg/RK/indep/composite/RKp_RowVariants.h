// The rows that may have a vector form: Over (SSSE3) and Copy (SSE2), at 8 bits and at float.
#ifndef RKP_ROW_VARIANTS_H
#define RKP_ROW_VARIANTS_H

#include "RK/indep/composite/RK_Xfer.h"

// The default bodies, always linked: what runs without a vector form, and what a vector form calls for the
// pixels before and after its own. Copy's is also the row of Replace. `tables` is not read. Instantiated for
// every depth in RK_Rows8.cpp and its kin, never elsewhere: a vector source must not emit them with its own
// instructions.
template <class P, bool has_matte>
RK_Long RKp_OverRow_Static(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                           const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out);
template <class P, bool has_matte>
RK_Long RKp_CopyRow_Static(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                           const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out);

// The vector forms, at 8 bits and at float. Each gives the bytes of the default.
template <class P, bool has_matte>
RK_Long RKp_OverRow_SSSE3(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                          const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out);
template <class P, bool has_matte>
RK_Long RKp_CopyRow_SSE2(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                         const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out);

// The vector forms of a depth, at the place of has_matte. Null: none. The row of the mode takes one when the
// processor record, read at the call, has its flag.
template <class P>
struct RKp_RowVariants {
    RK_RowFunc<P>* over_ssse3[2];
    RK_RowFunc<P>* copy_sse2[2];
};
template <class P>
const RKp_RowVariants<P>& RKp_RowVariantsOf();
template <>
const RKp_RowVariants<RK_Pixel8>& RKp_RowVariantsOf<RK_Pixel8>();
template <>
const RKp_RowVariants<RK_Pixel16>& RKp_RowVariantsOf<RK_Pixel16>();
template <>
const RKp_RowVariants<RK_PixelFloat>& RKp_RowVariantsOf<RK_PixelFloat>();

#endif
