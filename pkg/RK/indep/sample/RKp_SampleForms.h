// The forms of the straight bilinear samplers: which numbers weigh, what counts as nothing, how a result is
// rounded.
#ifndef RKP_SAMPLE_FORMS_H
#define RKP_SAMPLE_FORMS_H

#include <type_traits>

#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/sample/RKp_Rounding.h"

template <class W>
struct RKp_Weights {
    W w00, w10, w01, w11;
};

// Of a position's fractions. Integer weights count 2^-32; they are exactly the double ones.
template <class W>
inline RKp_Weights<W> RKp_BilinearWeights(int32_t x, int32_t y) {
    if constexpr (std::is_integral_v<W>) {
        const W u = x & 0xFFFF, v = y & 0xFFFF;
        const W w11 = u * v, w10 = (u << 16) - w11, w01 = (v << 16) - w11;
        return {(W{1} << 32) - w11 - w10 - w01, w10, w01, w11};
    } else {
        const W u = static_cast<W>(x & 0xFFFF) * static_cast<W>(1.52587890625e-05);
        const W v = static_cast<W>(y & 0xFFFF) * static_cast<W>(1.52587890625e-05);
        const W w11 = u * v;
        const W w10 = u - w11;
        const W w01 = v - w11;
        return {((static_cast<W>(1) - w11) - w10) - w01, w10, w01, w11};
    }
}

// Weight: of weights, and of what they weigh. Sum: of products of a weight, an alpha and a colour.
// kShortcuts: whole positions and four equal neighbours are answered without arithmetic, and equal alphas of
// 0 give the zero pixel. isZero(A) decides the zero pixel between differing alphas; Quotient divides a sum by
// A; store() rounds.

template <class A, class S>
struct RKp_Reciprocal {
    explicit RKp_Reciprocal(A a) : reciprocal(S{1} / static_cast<S>(a)) {}
    template <class Sum>
    S operator()(Sum sum) const {
        return static_cast<S>(sum) * reciprocal;
    }
    S reciprocal;
};
template <class A, class S>
struct RKp_TrueQuotient {
    explicit RKp_TrueQuotient(A a) : divisor(static_cast<S>(a)) {}
    S operator()(S sum) const { return sum / divisor; }
    S divisor;
};

// The double arithmetic of the default forms, done in integers where it is exact. A position's weights have
// 32 bits after the point, so times a channel, or at 8 bits times alpha and colour, they and their sums fit a
// double without rounding: 8 bits and 16 bits between equal alphas need no double, and a factor of 2^32 in
// sum and divisor cancels.
struct RKp_Default8 {
    using Pixel = RK_Pixel8;
    using Weight = int64_t;
    using Sum = int64_t;
    using Quotient = RKp_Reciprocal<int64_t, double>;
    static constexpr bool kShortcuts = true;
    static bool isZero(int64_t A) { return A <= int64_t{1} << 31; }
    static uint8_t store(double v) { return static_cast<uint8_t>(RKp_RoundToEven(v)); }
    static uint8_t store(int64_t v) {
        return static_cast<uint8_t>((v + ((int64_t{1} << 31) - 1) + ((v >> 32) & 1)) >> 32);
    }
};
struct RKp_Default16 {
    using Pixel = RK_Pixel16;
    using Weight = int64_t;
    using Sum = double;
    using Quotient = RKp_TrueQuotient<int64_t, double>;
    static constexpr bool kShortcuts = true;
    static bool isZero(int64_t A) { return A < int64_t{1} << 31; }
    static uint16_t store(double v) { return static_cast<uint16_t>(RKp_TruncateDouble(v + 0.5)); }
    static uint16_t store(int64_t v) { return static_cast<uint16_t>((v + (int64_t{1} << 31)) >> 32); }
};
// The same with weights from a caller, who may give any.
struct RKp_Given8 {
    using Pixel = RK_Pixel8;
    using Weight = double;
    using Sum = double;
    using Quotient = RKp_Reciprocal<double, double>;
    static constexpr bool kShortcuts = true;
    static bool isZero(double A) { return RKp_RoundToEven(A) == 0; }
    static uint8_t store(double v) { return static_cast<uint8_t>(RKp_RoundToEven(v)); }
};
struct RKp_Given16 {
    using Pixel = RK_Pixel16;
    using Weight = double;
    using Sum = double;
    using Quotient = RKp_TrueQuotient<double, double>;
    static constexpr bool kShortcuts = true;
    static bool isZero(double A) { return A < 0.5; }
    static uint16_t store(double v) { return static_cast<uint16_t>(RKp_TruncateDouble(v + 0.5)); }
};
struct RKp_Portable8 {
    using Pixel = RK_Pixel8;
    using Weight = float;
    using Sum = float;
    using Quotient = RKp_Reciprocal<float, float>;
    static constexpr bool kShortcuts = false;
    static bool isZero(float A) { return A == 0.0f; }
    static uint8_t store(float v) { return static_cast<uint8_t>(RKp_Truncate(v + 0.5f)); }
};
struct RKp_Portable16 {
    using Pixel = RK_Pixel16;
    using Weight = float;
    using Sum = float;
    // Kept: at this depth one division for each colour, not a product with the reciprocal.
    using Quotient = RKp_TrueQuotient<float, float>;
    static constexpr bool kShortcuts = false;
    static bool isZero(float A) { return A == 0.0f; }
    static uint16_t store(float v) { return static_cast<uint16_t>(RKp_Truncate(v + 0.5f)); }
};
struct RKp_PortableFloat {
    using Pixel = RK_PixelFloat;
    using Weight = float;
    using Sum = float;
    using Quotient = RKp_Reciprocal<float, float>;
    static constexpr bool kShortcuts = false;
    static bool isZero(float A) { return A == 0.0f; }
    static float store(float v) { return v; }
};

#endif
