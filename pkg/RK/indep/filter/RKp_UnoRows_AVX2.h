// The rows of the accumulation modes, 32 bytes at a time.
#ifndef RKP_UNO_ROWS_AVX2_H
#define RKP_UNO_ROWS_AVX2_H

#include "RK/indep/frame/RK.h"

// These do the samples from the first on, as many as whole steps of 32 bytes hold, and return their number.
// Samples are uint8_t or uint16_t; `dst` may be a source. Only for processors that have AVX2, which the
// processor record does not tell.

// dst = the mode of s and d: for each verb of RKP_UNO_MODES one of these.
template <class S>
using RKp_WideUnoRow = RK_Long(RK_Long count, const S* s, const S* d, S* dst);
// By the mode's place in that list; the last argument only tells the depth.
RKp_WideUnoRow<uint8_t>* RKp_WideUnoRow_AVX2(int32_t place, uint8_t);
RKp_WideUnoRow<uint16_t>* RKp_WideUnoRow_AVX2(int32_t place, uint16_t);
// The union of bytes, dithered by the low bytes of `words`, one for each sample.
RK_Long RKp_DitherRow_AVX2(const uint32_t* words, RK_Long count, const uint8_t* s, const uint8_t* d,
                           uint8_t* dst);

#endif
