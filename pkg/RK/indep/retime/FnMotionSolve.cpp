#include "RK/indep/retime/FnMotionSolve.h"

namespace {

FnSolution GiveUp(HvVec2* v) {
    *v = kFnUndefined;
    return {true, 0.0f};
}

// The unit vector along which the eigenvalue l1 (or l2) acts.
// Kept: with B = 0 the axes are assigned without looking at A and C.
HvVec2 Axis(float A, float B, float l1, float l2, bool of_l1) {
    if (B == 0.0f) return (l1 > l2) == of_l1 ? HvVec2{0.0f, 1.0f} : HvVec2{1.0f, 0.0f};
    const float q = ((of_l1 ? l1 : l2) - A) / B;
    const float length = std::sqrt(1.0f + q * q);
    return {1.0f / length, q / length};
}

}  // namespace

FnSolution FnSolveStep(const FnGradientSums& sums, int32_t total, float error_threshold, HvVec2* v) {
    if (sums.n <= total / 6) return GiveUp(v);
    const float n = static_cast<float>(sums.n);
    const float m = sums.E1 / n;
    if (m < error_threshold) return {false, 0.0f};

    const float A = sums.A / n, B = sums.B / n, C = sums.C / n, P = sums.P / n, Q = sums.Q / n, E2 = sums.E2 / n;
    const float T = A + C;
    const float radicand = T * T - 4.0f * (C * A - B * B);
    const float D = std::sqrt(radicand < 0.0f ? 0.0f : radicand);
    const float l1 = (D + T) * 0.5f, l2 = (T - D) * 0.5f;
    const bool first_is_big = !(std::fabs(l2) > std::fabs(l1));
    const float big = std::fabs(first_is_big ? l1 : l2), small = std::fabs(first_is_big ? l2 : l1);
    const float cond = small == 0.0f ? FLT_MAX : big / small;

    float dx, dy;
    if (cond <= 10.0f) {
        // The regularisation grows with the mean squared error and with the ill-conditioning.
        const float k = cond * 0.1f * E2;
        const float a = A + k, c = C + k;
        const float inverse = 1.0f / (a * c - B * B);
        dx = (c * P - B * Q) * inverse;
        dy = (a * Q - B * P) * inverse;
    } else {
        // An aperture problem: move along the strong gradient only.
        if (big <= 0.0f) return GiveUp(v);
        const HvVec2 axis = Axis(A, B, l1, l2, first_is_big);
        const float s = (axis.x * P + axis.y * Q) / big;
        dx = s * axis.x;
        dy = s * axis.y;
    }
    v->x -= dx;
    v->y -= dy;
    if (!std::isfinite(v->x) || !std::isfinite(v->y)) return GiveUp(v);
    return {false, m};
}

FnSolution1D FnSolve1D(const float* A, const float* B, int32_t n) {
    float g2 = 0.0f, ge = 0.0f, sum_abs = 0.0f;
    for (int32_t i = 0; i + 2 <= n; ++i) {
        const float g = A[i] - A[i + 1], e = A[i] - B[i];
        g2 += g * g;
        ge += g * e;
        sum_abs += std::fabs(e);
    }
    if (sum_abs == 0.0f) return {0.0f, true, sum_abs};
    if (g2 == 0.0f) return {0.0f, false, sum_abs};
    return {ge / g2, true, sum_abs};
}
