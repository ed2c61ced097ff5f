// The samples of one destination pixel along a motion; colours weigh by alpha.
#ifndef RKP_MOTION_SUMS_H
#define RKP_MOTION_SUMS_H

#include <type_traits>

#include "RK/indep/frame/RKp_Depth.h"

// a / b truncated, for 0 <= a < 2^52 and 0 < b < 2^52: a double quotient of such numbers never rounds up to
// the next integer, and is faster than a 64-bit division.
inline int64_t RKp_SmallQuotient(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<double>(a) / static_cast<double>(b));
}

template <class P>
class RKp_MotionSums {
    static constexpr bool kFloat = std::is_same_v<P, RK_PixelFloat>;
    using D = RKp_Depth<P>;
    using C = typename D::Channel;
    using Sum = std::conditional_t<kFloat, float, int64_t>;

  public:
    void add(const P& p) {
        // Out of reach for integers, where it changes nothing; 0 times a float need not be 0.
        if (kFloat && p.alpha == 0) return;
        const Sum a = p.alpha;
        a_ += a;
        r_ += p.red * a;
        g_ += p.green * a;
        b_ += p.blue * a;
    }
    P mean(int64_t samples) const {
        if (a_ == 0) return P{};
        const Sum n = static_cast<Sum>(samples);
        if constexpr (kFloat) {
            return {a_ / n, r_ / a_, g_ / a_, b_ / a_};
        } else {
            const auto quotient = [samples](Sum a, Sum b) {
                return samples <= kFew ? RKp_SmallQuotient(a, b) : a / b;
            };
            if (a_ == n * D::kFull)
                return {static_cast<C>(D::kFull), opaque(quotient(r_, n)), opaque(quotient(g_, n)),
                        opaque(quotient(b_, n))};
            return {static_cast<C>(quotient(a_, n)), static_cast<C>(quotient(r_, a_)),
                    static_cast<C>(quotient(g_, a_)), static_cast<C>(quotient(b_, a_))};
        }
    }

  private:
    // So many products of two channels stay below 2^52.
    static constexpr int64_t kFew = int64_t{1} << 20;

    // A mean of colours times full, divided by full as the depth's multiply does.
    static C opaque(int64_t c) {
        if constexpr (D::kBits == 8) {
            return static_cast<uint8_t>((c + 0x80 + ((c + 0x80) >> 8)) >> 8);
        } else {
            return static_cast<uint16_t>((c + 16383) >> 15);
        }
    }
    Sum a_ = 0, r_ = 0, g_ = 0, b_ = 0;
};

#endif
