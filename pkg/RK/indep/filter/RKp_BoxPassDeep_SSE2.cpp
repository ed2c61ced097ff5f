// The box blur of depths 16 and 32 in vectors, premultiplied kept: the plain body's steps in its order, the
// channels side by side.
//
// Nothing here is shared with other files, not even an inline function: this one may be compiled with other
// switches.
#include <emmintrin.h>

#include "RK/indep/filter/RKp_BoxWalkT.h"

namespace {

// What both depths weigh alike.
struct FloatWeights {
    static constexpr bool kRuns = false;
    using Weight = float;
    FloatWeights(int32_t reach, float radius) : f(static_cast<float>(reach) - radius) {}
    Weight one() const { return 1.0f; }
    Weight edge() const { return f; }
    Weight full(int32_t reach) const { return static_cast<float>(int64_t{reach} * 2 + 1) - 2.0f * f; }
    Weight weigh(int64_t n) const { return static_cast<float>(n < 1 << 24 ? n : 1 << 24); }
    float f;
};

inline __m128i channelMask16(uint32_t flags) {
    const auto lane = [&](uint32_t bit) { return static_cast<int16_t>((flags & bit) != 0 ? -1 : 0); };
    return _mm_setr_epi16(lane(1), lane(2), lane(4), lane(8), 0, 0, 0, 0);
}
inline __m128i channelMask32(uint32_t flags) {
    const auto lane = [&](uint32_t bit) { return (flags & bit) != 0 ? -1 : 0; };
    return _mm_setr_epi32(lane(1), lane(2), lane(4), lane(8));
}
inline __m128i choose(__m128i mask, __m128i where_set, __m128i elsewhere) {
    return _mm_or_si128(_mm_and_si128(mask, where_set), _mm_andnot_si128(mask, elsewhere));
}

// kAll: every channel is stored, otherwise those of a mask.
template <bool kAll>
class Lanes16 : public FloatWeights {
  public:
    using P = RK_Pixel16;
    using Sums = __m128;
    using Sample = __m128;
    struct Divisor {
        __m128 weight, half;
    };

    Lanes16(int32_t reach, float radius, uint32_t flags)
        : FloatWeights(reach, radius), edge_(_mm_set1_ps(f)), mask_(channelMask16(flags)) {}

    Divisor divisor(Weight D) const { return {_mm_set1_ps(D), _mm_set1_ps(0.5f * D)}; }
    Sample read(const P* p) const {
        return _mm_cvtepi32_ps(_mm_unpacklo_epi16(load(p), _mm_setzero_si128()));
    }
    void add(Sums& S, Sample p) const { S = _mm_add_ps(S, p); }
    void slide(Sums& S, Sample behind, Sample ahead) const { S = _mm_add_ps(_mm_sub_ps(S, behind), ahead); }
    void put(Sums S, const Divisor& D, const P* centre, P* out) const {
        // To 32 bits, of which the low 16 are stored.
        const __m128i q = _mm_cvttps_epi32(_mm_div_ps(_mm_add_ps(S, D.half), D.weight));
        const __m128i words = _mm_shufflehi_epi16(_mm_shufflelo_epi16(q, 0x88), 0x88);
        store(_mm_shuffle_epi32(words, 0x88), centre, out);
    }
    void put(Sums S, Sample first, Sample last, const Divisor& D, const P* centre, P* out) const {
        put(_mm_sub_ps(S, _mm_mul_ps(_mm_add_ps(first, last), edge_)), D, centre, out);
    }
    void putNone(const P* centre, P* out) const { store(_mm_setzero_si128(), centre, out); }

  private:
    static __m128i load(const P* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
    void store(__m128i words, const P* centre, P* out) const {
        if (!kAll) words = choose(mask_, words, load(centre));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), words);
    }

    __m128 edge_;
    __m128i mask_;
};

// kAlpha: alpha alone, and red beside it for nothing.
enum class Form { All, Alpha, Any };
template <Form kForm>
class LanesFloat : public FloatWeights {
  public:
    using P = RK_PixelFloat;
    struct Sums {
        __m128d ar, gb;
    };
    using Sample = Sums;
    using Divisor = __m128d;

    LanesFloat(int32_t reach, float radius, uint32_t flags)
        : FloatWeights(reach, radius),
          edge_(_mm_set1_pd(static_cast<double>(f))),
          mask_(channelMask32(flags)) {}

    Divisor divisor(Weight D) const { return _mm_set1_pd(static_cast<double>(D)); }
    Sample read(const P* p) const {
        const __m128 v = _mm_loadu_ps(&p->alpha);
        return {_mm_cvtps_pd(v), kBoth ? _mm_cvtps_pd(_mm_movehl_ps(v, v)) : _mm_setzero_pd()};
    }
    void add(Sums& S, const Sample& p) const {
        S.ar = _mm_add_pd(S.ar, p.ar);
        if (kBoth) S.gb = _mm_add_pd(S.gb, p.gb);
    }
    void slide(Sums& S, const Sample& behind, const Sample& ahead) const {
        S.ar = _mm_add_pd(_mm_sub_pd(S.ar, behind.ar), ahead.ar);
        if (kBoth) S.gb = _mm_add_pd(_mm_sub_pd(S.gb, behind.gb), ahead.gb);
    }
    void put(const Sums& S, Divisor D, const P* centre, P* out) const {
        const __m128 ar = held(_mm_div_pd(S.ar, D));
        store(_mm_movelh_ps(ar, kBoth ? held(_mm_div_pd(S.gb, D)) : ar), centre, out);
    }
    void put(const Sums& S, const Sample& first, const Sample& last, Divisor D, const P* centre,
             P* out) const {
        const auto less = [&](__m128d s, __m128d a, __m128d b) {
            return _mm_sub_pd(s, _mm_mul_pd(_mm_add_pd(a, b), edge_));
        };
        put({less(S.ar, first.ar, last.ar), kBoth ? less(S.gb, first.gb, last.gb) : S.gb}, D, centre, out);
    }
    void putNone(const P* centre, P* out) const { store(_mm_setzero_ps(), centre, out); }

  private:
    static constexpr bool kBoth = kForm != Form::Alpha;
    // Held to 0..1; the minimum gives its second operand for NaN.
    static __m128 held(__m128d c) {
        c = _mm_min_pd(_mm_set1_pd(1.0), c);
        return _mm_cvtpd_ps(_mm_andnot_pd(_mm_cmplt_pd(c, _mm_set1_pd(1e-30)), c));
    }
    void store(__m128 v, const P* centre, P* out) const {
        if (kForm != Form::All)
            v = _mm_castsi128_ps(
                choose(mask_, _mm_castps_si128(v), _mm_castps_si128(_mm_loadu_ps(&centre->alpha))));
        _mm_storeu_ps(&out->alpha, v);
    }

    __m128d edge_;
    __m128i mask_;
};

}  // namespace

template <>
void RKp_BoxPass_SSE2(const RKp_BoxStage<RK_Pixel16>& stage) {
    RKp_GuardBoxVectors(stage.divide);
    if ((stage.flags & RK_kBlurAllChannels) == RK_kBlurAllChannels)
        RKp_WalkBox(stage, Lanes16<true>(stage.reach, stage.radius, stage.flags));
    else
        RKp_WalkBox(stage, Lanes16<false>(stage.reach, stage.radius, stage.flags));
}

template <>
void RKp_BoxPass_SSE2(const RKp_BoxStage<RK_PixelFloat>& stage) {
    RKp_GuardBoxVectors(stage.divide);
    switch (stage.flags & RK_kBlurAllChannels) {
        case RK_kBlurAllChannels:
            return RKp_WalkBox(stage, LanesFloat<Form::All>(stage.reach, stage.radius, stage.flags));
        case RK_kBlurAlpha:
            return RKp_WalkBox(stage, LanesFloat<Form::Alpha>(stage.reach, stage.radius, stage.flags));
        default: return RKp_WalkBox(stage, LanesFloat<Form::Any>(stage.reach, stage.radius, stage.flags));
    }
}
