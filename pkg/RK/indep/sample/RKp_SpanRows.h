// Rows whose samples lie one source pixel apart, so that all have the weights of the first: each column's
// share is worked out once and used for the two samples beside it. The bytes are those of the default (at
// float, the portable) samplers. All four neighbours of every sample must lie inside. The 8-bit row counts on
// rounding to nearest.
#ifndef RKP_SPAN_ROWS_H
#define RKP_SPAN_ROWS_H

#include "RK/indep/sample/RKp_SampleForms.h"

void RKp_SpanRow(const RK_LayerDef& src, int32_t x, int32_t y, int64_t count, RK_Pixel8* out);
void RKp_SpanRow(const RK_LayerDef& src, int32_t x, int32_t y, int64_t count, RK_Pixel16* out);
// With the weights given, for there a span's and a translation's are narrowed at different steps. The alphas
// are added to `alpha_sum`, one after the other.
void RKp_SpanRow(const RK_LayerDef& src, int32_t x, int32_t y, const RKp_Weights<float>& weights,
                 int64_t count, float* alpha_sum, RK_PixelFloat* out);

#endif
