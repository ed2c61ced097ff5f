// The arithmetic of the box blur: what a sum, its outermost pixels and a weight give, at each depth.
//
// Legend: S a running sum, e the outermost pixels' sum, f what an outermost pixel counts less than 1, D the
// weight to divide by, n the numerator S - e * f; at depth 8 weights and numerators are in 1024ths.
#ifndef RKP_BOX_ARITHMETIC_H
#define RKP_BOX_ARITHMETIC_H

#include <algorithm>

#include "RK/indep/filter/RK_BlurFlags.h"
#include "RK/indep/frame/RKp_Depth.h"

// I: int32_t, or int64_t where the window's sums do not fit.
template <class P, class I>
struct RKp_BoxDepth;

template <class I>
struct RKp_BoxDepth<RK_Pixel8, I> {
    using Sum = I;
    using Number = I;
    using Weight = I;
    RKp_BoxDepth(int32_t reach, float radius)
        : f(static_cast<I>(RKp_Truncate((static_cast<float>(reach) - radius) * 1024.0f))) {}

    static Weight one() { return 1024; }
    static Weight weigh(int64_t n) { return static_cast<I>(n * 1024); }
    Weight full(int32_t reach) const { return static_cast<I>((int64_t{reach} * 2 + 1) * 1024 - 2 * f); }
    static Number number(Sum S) { return S * 1024; }
    Number number(Sum S, Sum e) const { return S * 1024 - e * f; }
    static uint8_t mean(Number n, Weight D) { return static_cast<uint8_t>((n + D / 2) / D); }
    // The alpha to divide by, in the units of n.
    static Number divisor(Number n) { return (n + 127) / 255; }
    static uint8_t colour(Number n, Number t) {
        return static_cast<uint8_t>(std::min<Number>(255, (n + t / 2) / t));
    }
    I f;
};

template <class I>
struct RKp_BoxDepth<RK_Pixel16, I> {
    using Sum = float;
    using Number = float;
    using Weight = float;
    RKp_BoxDepth(int32_t reach, float radius) : f(static_cast<float>(reach) - radius) {}

    static Weight one() { return 1.0f; }
    // Counted one by one, a float stays at 2^24.
    static Weight weigh(int64_t n) { return static_cast<float>(std::min<int64_t>(n, 1 << 24)); }
    Weight full(int32_t reach) const { return static_cast<float>(int64_t{reach} * 2 + 1) - 2.0f * f; }
    static Number number(Sum S) { return S; }
    Number number(Sum S, Sum e) const { return S - e * f; }
    static uint16_t mean(Number n, Weight D) {
        return static_cast<uint16_t>(RKp_Truncate((n + 0.5f * D) / D));
    }
    static Number divisor(Number n) { return 3.0517578e-05f * n; }
    static uint16_t colour(Number n, Number t) {
        const float c = (n + 0.5f * t) / t;
        return static_cast<uint16_t>(RKp_Truncate(c > 32768.0f ? 32768.0f : c));
    }
    float f;
};

template <class I>
struct RKp_BoxDepth<RK_PixelFloat, I> {
    using Sum = double;
    using Number = double;
    using Weight = float;
    RKp_BoxDepth(int32_t reach, float radius) : f(static_cast<float>(reach) - radius) {}

    static Weight one() { return 1.0f; }
    static Weight weigh(int64_t n) { return static_cast<float>(std::min<int64_t>(n, 1 << 24)); }
    Weight full(int32_t reach) const { return static_cast<float>(int64_t{reach} * 2 + 1) - 2.0f * f; }
    static Number number(Sum S) { return S; }
    Number number(Sum S, Sum e) const { return S - e * static_cast<double>(f); }
    static float mean(Number n, Weight D) { return held(n / static_cast<double>(D)); }
    static Number divisor(Number n) { return n; }
    static float colour(Number n, Number t) { return held(n / t); }
    // NaN passes.
    static float held(double c) { return static_cast<float>(c > 1.0 ? 1.0 : c < 1e-30 ? 0.0 : c); }
    float f;
};

// Which channels are blurred: the two common sets, told apart at compile time, and any other.
enum class RKp_BlurForm { Alpha, All, Any };
inline RKp_BlurForm RKp_FormOf(uint32_t flags) {
    const uint32_t channels = flags & RK_kBlurAllChannels;
    return channels == RK_kBlurAlpha         ? RKp_BlurForm::Alpha
           : channels == RK_kBlurAllChannels ? RKp_BlurForm::All
                                             : RKp_BlurForm::Any;
}

// The plain body's arithmetic, as RKp_BoxWalkT.h wants it.
template <class P, class I, RKp_BlurForm kForm, bool kDivide>
class RKp_BoxPlain {
  public:
    static constexpr bool kRuns = false;
    using Depth = RKp_BoxDepth<P, I>;
    using Sum = typename Depth::Sum;
    using Number = typename Depth::Number;
    using Weight = typename Depth::Weight;
    using Divisor = Weight;
    struct Sample {
        Sum a, r, g, b;
    };
    using Sums = Sample;

    RKp_BoxPlain(int32_t reach, float radius, uint32_t flags) : depth_(reach, radius), flags_(flags) {}

    Weight one() const { return Depth::one(); }
    Weight edge() const { return depth_.f; }
    Weight full(int32_t reach) const { return depth_.full(reach); }
    Weight weigh(int64_t n) const { return Depth::weigh(n); }
    Divisor divisor(Weight D) const { return D; }

    Sample read(const P* p) const {
        if (kForm == RKp_BlurForm::Alpha) return {static_cast<Sum>(p->alpha), 0, 0, 0};
        return {static_cast<Sum>(p->alpha), static_cast<Sum>(p->red), static_cast<Sum>(p->green),
                static_cast<Sum>(p->blue)};
    }
    void add(Sums& S, const Sample& p) const {
        S.a += p.a;
        if (kForm == RKp_BlurForm::Alpha) return;
        S.r += p.r, S.g += p.g, S.b += p.b;
    }
    // First what goes, then what comes: the order tells in floating point.
    void slide(Sums& S, const Sample& behind, const Sample& ahead) const {
        S.a -= behind.a;
        S.a += ahead.a;
        if (kForm == RKp_BlurForm::Alpha) return;
        S.r -= behind.r, S.g -= behind.g, S.b -= behind.b;
        S.r += ahead.r, S.g += ahead.g, S.b += ahead.b;
    }
    void put(const Sums& S, Divisor D, const P* centre, P* out) const {
        store(D, centre, out, [&](Sum Sample::*c) { return Depth::number(S.*c); });
    }
    void put(const Sums& S, const Sample& first, const Sample& last, Divisor D, const P* centre,
             P* out) const {
        store(D, centre, out, [&](Sum Sample::*c) { return depth_.number(S.*c, first.*c + last.*c); });
    }
    void putNone(const P* centre, P* out) const {
        P p = *centre;
        if (kDivide && (red() || green() || blue())) {
            p = P{};
        } else {
            if (alpha()) p.alpha = 0;
            if (red()) p.red = 0;
            if (green()) p.green = 0;
            if (blue()) p.blue = 0;
        }
        *out = p;
    }

  private:
    bool flag(uint32_t bit, bool in_alpha) const {
        return kForm == RKp_BlurForm::All || (kForm == RKp_BlurForm::Alpha ? in_alpha : (flags_ & bit) != 0);
    }
    bool alpha() const { return flag(RK_kBlurAlpha, true); }
    bool red() const { return flag(RK_kBlurRed, false); }
    bool green() const { return flag(RK_kBlurGreen, false); }
    bool blue() const { return flag(RK_kBlurBlue, false); }

    // number(channel) gives a numerator.
    template <class NumberOf>
    void store(Weight D, const P* centre, P* out, NumberOf&& number) const {
        P p = *centre;
        if constexpr (kDivide) {
            const Number n = number(&Sample::a), t = Depth::divisor(n);
            if (t == 0) return putNone(centre, out);
            if (alpha()) p.alpha = Depth::mean(n, D);
            if (red()) p.red = Depth::colour(number(&Sample::r), t);
            if (green()) p.green = Depth::colour(number(&Sample::g), t);
            if (blue()) p.blue = Depth::colour(number(&Sample::b), t);
        } else {
            if (alpha()) p.alpha = Depth::mean(number(&Sample::a), D);
            if (red()) p.red = Depth::mean(number(&Sample::r), D);
            if (green()) p.green = Depth::mean(number(&Sample::g), D);
            if (blue()) p.blue = Depth::mean(number(&Sample::b), D);
        }
        *out = p;
    }

    Depth depth_;
    uint32_t flags_;
};

#endif
