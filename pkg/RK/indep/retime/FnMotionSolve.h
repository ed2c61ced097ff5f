// The arithmetic of one estimation step, apart from where its samples come from.
#ifndef FN_MOTION_SOLVE_H
#define FN_MOTION_SOLVE_H

#include "RK/indep/retime/HvVec2.h"

// Sums over a block's samples in walking order. e is target minus sample, gx and gy are the sample minus its left and
// lower neighbours.
struct FnGradientSums {
    int32_t n;
    float E1, E2;   // |e|, e * e
    float A, B, C;  // gx * gx, gx * gy, gy * gy
    float P, Q;     // e * gx, e * gy

    void Add(float e, float gx, float gy) {
        ++n;
        E2 += e * e;
        E1 += std::fabs(e);
        A += gx * gx;
        B += gx * gy;
        C += gy * gy;
        P += e * gx;
        Q += e * gy;
    }
};

struct FnSolution {
    bool done;  // nothing more to gain: the vector is undefined then
    float error;
};

// Moves v by the least-squares step, or makes it undefined. `total` is the number of samples that could have counted.
FnSolution FnSolveStep(const FnGradientSums& sums, int32_t total, float error_threshold, HvVec2* v);

struct FnSolution1D {
    float value;
    bool success;
    float sum_abs;
};

// The shift between two lists of n sums.
FnSolution1D FnSolve1D(const float* A, const float* B, int32_t n);

#endif
