// The nearest sampler over the pixel type.
#ifndef RKP_NN_SAMPLE_T_H
#define RKP_NN_SAMPLE_T_H

#include "RK/indep/sample/RK_Samp.h"

template <class P>
inline P RKp_NearestPixel(int32_t x, int32_t y, const RK_LayerDef& src) {
    const int64_t xi = (int64_t{x} + RK_kHalfPixel) >> 16, yi = (int64_t{y} + RK_kHalfPixel) >> 16;
    if (xi < 0 || xi >= src.width || yi < 0 || yi >= src.height) return P{};
    const auto* row = reinterpret_cast<const P*>(static_cast<const char*>(src.data) +
                                                 static_cast<ptrdiff_t>(yi) * src.rowbytes);
    return row[xi];
}

#endif
