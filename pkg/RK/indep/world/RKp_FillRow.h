// One pixel stored along a row.
#ifndef RKP_FILL_ROW_H
#define RKP_FILL_ROW_H

#include "RK/indep/frame/RK.h"

// The pixel is taken by value: the row's own stores cannot change it, and the compiler makes the loop a
// vector one.
template <class P>
void RKp_FillRow(P* row, int32_t count, P pixel) {
    for (int32_t i = 0; i < count; ++i) row[i] = pixel;
}

#endif
