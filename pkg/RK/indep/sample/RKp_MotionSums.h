// The samples of one destination pixel along a motion; colours weigh by alpha.
#ifndef RKP_MOTION_SUMS_H
#define RKP_MOTION_SUMS_H

#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/sample/RKp_Pixels_SSE2.h"

// a / b truncated, for 0 <= a < 2^52 and 0 < b < 2^52: a double quotient of such numbers never rounds up to
// the next integer, and is faster than a 64-bit division.
inline int64_t RKp_SmallQuotient(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<double>(a) / static_cast<double>(b));
}

// At 8 and 16 bits.
template <class P>
class RKp_MotionSums {
    using D = RKp_Depth<P>;
    using C = typename D::Channel;

  public:
    // An alpha of 0 adds nothing.
    void add(const P& p) {
        const __m128i channels = RKp_AsDwords(&p), alpha = _mm_shuffle_epi32(channels, 0);
        const __m128i one_a =
            _mm_or_si128(_mm_and_si128(alpha, _mm_set_epi32(0, -1, 0, 0)), _mm_cvtsi32_si128(1));
        ag_ = _mm_add_epi64(ag_, _mm_mul_epu32(channels, one_a));
        rb_ = _mm_add_epi64(rb_, _mm_mul_epu32(_mm_srli_epi64(channels, 32), alpha));
    }
    P mean(int64_t samples) const {
        int64_t ag[2], rb[2];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(ag), ag_);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(rb), rb_);
        const int64_t a = ag[0], r = rb[0], g = ag[1], b = rb[1];
        if (a == 0) return P{};
        const auto quotient = [samples](int64_t n, int64_t d) {
            return samples <= kFew ? RKp_SmallQuotient(n, d) : n / d;
        };
        if (a == samples * D::kFull)
            return {static_cast<C>(D::kFull), opaque(quotient(r, samples)), opaque(quotient(g, samples)),
                    opaque(quotient(b, samples))};
        return {static_cast<C>(quotient(a, samples)), static_cast<C>(quotient(r, a)),
                static_cast<C>(quotient(g, a)), static_cast<C>(quotient(b, a))};
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
    __m128i ag_ = _mm_setzero_si128(), rb_ = _mm_setzero_si128();
};

template <>
class RKp_MotionSums<RK_PixelFloat> {
  public:
    void add(const RK_PixelFloat& p) {
        // 0 times a float need not be 0.
        if (p.alpha == 0) return;
        const __m128 channels = _mm_loadu_ps(&p.alpha);
        const __m128 weighted = _mm_mul_ps(channels, _mm_shuffle_ps(channels, channels, 0));
        argb_ = _mm_add_ps(argb_, _mm_move_ss(weighted, channels));
    }
    RK_PixelFloat mean(int64_t samples) const {
        float sums[4];
        _mm_storeu_ps(sums, argb_);
        const float a = sums[0];
        if (a == 0) return {};
        return {a / static_cast<float>(samples), sums[1] / a, sums[2] / a, sums[3] / a};
    }

  private:
    __m128 argb_ = _mm_setzero_ps();
};

#endif
