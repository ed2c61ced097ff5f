// Premultiplication of 8-bit rows, 32 bytes at a time.
#ifndef RKP_MATTE_SCANS_AVX2_H
#define RKP_MATTE_SCANS_AVX2_H

#include "RK/indep/frame/RK.h"

// These do the pixels from the first on, as many as whole steps of 32 bytes hold, and return their number.
// `dst` may be `src`. Only for processors that have AVX2.
RK_Long RKp_PremulBlack8_AVX2(RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst);
RK_Long RKp_PremulWhite8_AVX2(RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst);
RK_Long RKp_PremulGrey8_AVX2(RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst);

#endif
