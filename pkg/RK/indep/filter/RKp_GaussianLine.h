// One line of the Gaussian blur.
#ifndef RKP_GAUSSIAN_LINE_H
#define RKP_GAUSSIAN_LINE_H

#include "RK/indep/frame/RK.h"

template <class P>
struct RKp_GaussianLine {
    const P* in;
    P* out;
    ptrdiff_t in_step, out_step;
    int32_t in_length, out_length;
    int64_t shift;           // input pixel of output pixel 0
    const int32_t* weights;  // reach + 1 of them, from the middle outwards, 0 to 255
    int32_t reach, total;    // of all taps
    uint32_t flags;
    bool divide;  // by alpha
};

template <class P>
void RKp_GaussianPass(const RKp_GaussianLine<P>& line);

#endif
