// Rows of masks: the bodies behind the mask accumulation slots, and what the other operations do to a row.
//
// A count below 1 does nothing. Source and destination rows are apart or the same. Results are always 0.
#ifndef RKP_UNO_ROWS_H
#define RKP_UNO_ROWS_H

#include "RK/indep/filter/RK_UnoBuffer.h"
#include "RK/indep/frame/RKp_SlotTypes.h"

// dst = mode(src, dst). Mode -1 draws from `noise` and moves its cursor, once per sample; the others do not
// look at it, and it may be null.
template <class S>
RK_Long RKp_MaskAccumulate(RKp_NoiseTable* noise, int32_t mode, RK_Long count, const S* src, S* dst);

// dst + mul(src, opacity), at most full, for every mode but -1, which takes the share mul(src, opacity) of
// what dst lacks to `limit`; at or above that dst stays. Limit and opacity are in units of full, in any
// range. Mode -1 draws once per sample at 8 bits, never at 16.
template <class S>
RK_Long RKp_MaskAccumulateWeighted(RKp_NoiseTable* noise, int32_t mode, int32_t limit, int32_t opacity,
                                   RK_Long count, const S* src, S* dst);

// min(full, dst + the source times `opacity`, widened); 255 is full opacity.
RK_Long RKp_MaskAdd8To16(int32_t opacity, RK_Long count, const uint8_t* src, uint16_t* dst);

// The sample divided by `divisor`, which is not 0, and moved to 8 bits; low bits.
RK_Long RKp_MaskNarrow16To8(uint16_t divisor, RK_Long count, const uint16_t* src, uint8_t* dst);
// The same without a move, and to float.
void RKp_MaskDivide16(uint16_t divisor, RK_Long count, const uint16_t* src, uint16_t* dst);
void RKp_MaskDivide16ToFloat(uint16_t divisor, RK_Long count, const uint16_t* src, float* dst);

// dst = mode(a, b), at float too.
template <class S>
void RKp_MaskTransfer(RKp_NoiseTable* noise, int32_t mode, RK_Long count, const S* a, const S* b, S* dst);

// mul(full - s, k), and mul(s, k); k in units of full, in any range. Low bits.
template <class S>
void RKp_MaskInvertAndFade(int32_t k, RK_Long count, S* row);
template <class S>
void RKp_MaskFade(int32_t k, int64_t count, S* row);

// clang-format off
extern template RK_Long RKp_MaskAccumulate(RKp_NoiseTable*, int32_t, RK_Long, const uint8_t*, uint8_t*);
extern template RK_Long RKp_MaskAccumulate(RKp_NoiseTable*, int32_t, RK_Long, const uint16_t*, uint16_t*);
extern template RK_Long RKp_MaskAccumulateWeighted(RKp_NoiseTable*, int32_t, int32_t, int32_t, RK_Long, const uint8_t*, uint8_t*);
extern template RK_Long RKp_MaskAccumulateWeighted(RKp_NoiseTable*, int32_t, int32_t, int32_t, RK_Long, const uint16_t*, uint16_t*);
extern template void RKp_MaskTransfer(RKp_NoiseTable*, int32_t, RK_Long, const uint8_t*, const uint8_t*, uint8_t*);
extern template void RKp_MaskTransfer(RKp_NoiseTable*, int32_t, RK_Long, const uint16_t*, const uint16_t*, uint16_t*);
extern template void RKp_MaskTransfer(RKp_NoiseTable*, int32_t, RK_Long, const float*, const float*, float*);
extern template void RKp_MaskInvertAndFade(int32_t, RK_Long, uint8_t*);
extern template void RKp_MaskInvertAndFade(int32_t, RK_Long, uint16_t*);
extern template void RKp_MaskFade(int32_t, int64_t, uint8_t*);
extern template void RKp_MaskFade(int32_t, int64_t, uint16_t*);
// clang-format on

#endif
