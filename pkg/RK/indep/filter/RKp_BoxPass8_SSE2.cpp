// The box blur of depth 8 in vectors, premultiplied kept.
//
// Weights and numerators are told in the smallest units that keep them whole: 1024ths for most fractions of a
// radius, wholes for a whole radius, halves for a half. The quotient stays the same.
//
// Nothing here is shared with other files, not even an inline function: this one may be compiled with other
// switches.
#include <emmintrin.h>

#include <cstring>

#include "RK/indep/filter/RKp_BoxReader8.h"

namespace {

// All four channels side by side; kAll: every one is stored, otherwise those of a mask.
template <bool kAll>
class Lanes {
  public:
    static constexpr bool kRuns = true;
    using Sums = __m128i;    // four int32_t
    using Sample = __m128i;  // four int16_t
    using Weight = int32_t;
    struct Divisor {
        __m128i half;
        __m128d reciprocal;
    };

    Lanes(int32_t reach, float radius, uint32_t flags)
        : f_(static_cast<int32_t>((reach - radius) * 1024.0f)) {
        // The largest power of two that f and 1024 share, as what is left of 1024.
        shift_ = 10;
        while (shift_ > 0 && f_ % 2 == 0) f_ /= 2, --shift_;
        edge_ = _mm_set1_epi32(f_);
        one_ = _mm_set1_epi32(1 << shift_);
        for (uint32_t channel = 0; channel < 4; ++channel)
            if ((flags >> channel & 1) != 0) mask_ |= 0xFFu << channel * 8;
        full_ = full(reach);
        findShortDivision(full_);
    }

    Weight one() const { return 1 << shift_; }
    Weight edge() const { return f_; }
    Weight full(int32_t reach) const { return ((2 * reach + 1) << shift_) - 2 * f_; }
    Weight weigh(int64_t n) const { return static_cast<Weight>(n << shift_); }
    // A numerator n below 256 D is at least 1 / D away from the next multiple of D above it, in units of D;
    // the reciprocal is raised by so little that no product reaches that, and by enough that a multiple is
    // not missed.
    Divisor divisor(Weight D) const {
        return {_mm_set1_epi32(D / 2), _mm_set1_pd((1.0 + 1.0 / (int64_t{1} << 45)) / D)};
    }

    Sample read(const P* p) const {
        int32_t bytes;
        std::memcpy(&bytes, p, sizeof bytes);
        return low16(_mm_cvtsi32_si128(bytes));
    }
    void add(Sums& S, Sample p) const { S = _mm_add_epi32(S, _mm_unpacklo_epi16(p, _mm_setzero_si128())); }
    void slide(Sums& S, Sample behind, Sample ahead) const {
        const __m128i d = _mm_sub_epi16(ahead, behind);
        S = _mm_add_epi32(S, _mm_srai_epi32(_mm_unpacklo_epi16(d, d), 16));
    }
    void put(Sums S, const Divisor& D, const P* centre, P* out) const {
        store(_mm_sll_epi32(S, _mm_cvtsi32_si128(shift_)), D, centre, out);
    }
    void put(Sums S, Sample first, Sample last, const Divisor& D, const P* centre, P* out) const {
        const __m128i e = _mm_unpacklo_epi16(_mm_add_epi16(first, last), _mm_setzero_si128());
        const __m128i n =
            _mm_sub_epi32(_mm_sll_epi32(S, _mm_cvtsi32_si128(shift_)), _mm_madd_epi16(e, edge_));
        store(n, D, centre, out);
    }
    void putNone(const P* centre, P* out) const { keep(0, centre, out); }

    template <bool kEdges>
    int64_t run(Sums* S, const RKp_BoxRun<P>& run, Weight D, Weight grows) const {
        if (run.places < 8) return 0;
        const bool row = run.lines == 1;
        if (!row && (run.in_across != 1 || run.out_across != 1 || run.lines % 4 != 0)) return 0;
        if (grows == 0 && D == full_ && multiplier_ != 0) {
            row ? runLine<kEdges>(*S, run) : runColumns<kEdges>(S, run);
            return run.places;
        }
        const Weight last = D + grows * static_cast<Weight>(run.places - 1);
        const bool single = (D > last ? D : last) <= Quick::kMost;
        if (!row)
            return single ? wideColumns<kEdges, Quick>(S, run, D, grows)
                          : wideColumns<kEdges, Exact>(S, run, D, grows);
        return single ? wideLine<kEdges, Quick>(*S, run, D, grows)
                      : wideLine<kEdges, Exact>(*S, run, D, grows);
    }

  private:
    static __m128i divided(__m128i n, const Divisor& D) {
        n = _mm_add_epi32(n, D.half);
        const __m128d low = _mm_mul_pd(_mm_cvtepi32_pd(n), D.reciprocal);
        const __m128d high = _mm_mul_pd(_mm_cvtepi32_pd(_mm_shuffle_epi32(n, 0xEE)), D.reciprocal);
        return _mm_unpacklo_epi64(_mm_cvttpd_epi32(low), _mm_cvttpd_epi32(high));
    }
    void store(__m128i n, const Divisor& D, const P* centre, P* out) const {
        const __m128i q = divided(n, D);
        const __m128i words = _mm_packs_epi32(q, q);
        keep(static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words))), centre, out);
    }
    void keep(uint32_t bytes, const P* centre, P* out) const {
        if (!kAll) {
            uint32_t old;
            std::memcpy(&old, centre, sizeof old);
            bytes = (bytes & mask_) | (old & ~mask_);
        }
        std::memcpy(out, &bytes, sizeof bytes);
    }

    // ---- Sixteen bits --------------------------------------------------------------------------------

    // floor(n / D) as n * multiplier >> 16 >> multiplier_shift, where that is exact for each n up to 255 D +
    // D / 2 and those fit.
    void findShortDivision(Weight D) {
        const int64_t most = int64_t{255} * D + D / 2;
        if (D < 2 || most > 65535) return;
        int32_t s = 0;
        while ((int64_t{1} << (17 + s)) / D < 65535) ++s;
        const int64_t power = int64_t{1} << (16 + s), m = (power + D - 1) / D;
        if ((m * D - power) * most >= power) return;
        multiplier_ = static_cast<int32_t>(m);
        multiplier_shift_ = s;
        half_ = D / 2;
    }
    struct Short {
        __m128i shift, edge, multiplier, multiplier_shift;
    };
    Short shorts() const {
        return {_mm_cvtsi32_si128(shift_), _mm_set1_epi16(static_cast<int16_t>(f_)),
                _mm_set1_epi16(static_cast<int16_t>(multiplier_)), _mm_cvtsi32_si128(multiplier_shift_)};
    }
    // The sums of two pixels as 16-bit numerators but for the edges.
    __m128i shorten(__m128i S0, __m128i S1) const {
        const __m128i shift = _mm_cvtsi32_si128(shift_ + 16),
                      half = _mm_set1_epi16(static_cast<int16_t>(half_));
        const __m128i low = _mm_srai_epi32(_mm_sll_epi32(S0, shift), 16);
        const __m128i high = _mm_srai_epi32(_mm_sll_epi32(S1, shift), 16);
        return _mm_add_epi16(_mm_packs_epi32(low, high), half);
    }
    // And back: t as shorten() gives it, e the outermost pixels' sum.
    template <bool kEdges>
    __m128i lengthen(__m128i t, __m128i e) const {
        const __m128i zero = _mm_setzero_si128(), half = _mm_set1_epi16(static_cast<int16_t>(half_));
        const __m128i edge = _mm_set1_epi16(static_cast<int16_t>(f_));
        t = _mm_sub_epi16(t, half);
        if (kEdges) t = _mm_sub_epi16(t, _mm_mullo_epi16(e, edge));
        __m128i n = _mm_unpacklo_epi16(t, zero);
        if (kEdges) n = _mm_add_epi32(n, _mm_madd_epi16(_mm_unpacklo_epi16(e, zero), edge_));
        return _mm_srl_epi32(n, _mm_cvtsi32_si128(shift_));
    }
    template <bool kEdges>
    static __m128i quotient(__m128i t, __m128i e, const Short& s) {
        if (kEdges) t = _mm_sub_epi16(t, _mm_mullo_epi16(e, s.edge));
        return _mm_srl_epi16(_mm_mulhi_epu16(t, s.multiplier), s.multiplier_shift);
    }
    __m128i masked(__m128i q, __m128i centre) const {
        const __m128i mask = _mm_set1_epi32(static_cast<int32_t>(mask_));
        return _mm_or_si128(_mm_and_si128(mask, q), _mm_andnot_si128(mask, centre));
    }

    using Pixels = typename RKp_BoxRun<P>::Pixels;
    static const P* nth(const Pixels& p, int64_t i) { return p.at + static_cast<ptrdiff_t>(i) * p.step; }
    template <bool kEdges>
    void runLine(Sums& S, const RKp_BoxRun<P>& run) const {
        if (run.in_step != 1)
            run.out_step != 1 ? along<kEdges, true, true>(S, run) : along<kEdges, true, false>(S, run);
        else
            run.out_step != 1 ? along<kEdges, false, true>(S, run) : along<kEdges, false, false>(S, run);
    }
    // Four pixels at a time, by twos: the second's sum is the first's and its own step.
    template <bool kEdges, bool kInApart, bool kOutApart>
    void along(Sums& S, const RKp_BoxRun<P>& run) const {
        const Short s = shorts();
        Reader<kInApart> behind(run.behind), trailing(run.trailing), leading(run.leading), centre(run.centre);
        P* out = run.out;
        __m128i t = shorten(S, S), e = _mm_setzero_si128();
        const auto two = [&](__m128i gone, __m128i first, __m128i last) {
            __m128i d = _mm_sub_epi16(last, gone);
            if (kEdges) d = _mm_sll_epi16(d, s.shift);
            t = _mm_add_epi16(_mm_unpackhi_epi64(t, t), _mm_add_epi16(d, _mm_slli_si128(d, 8)));
            if (kEdges) e = _mm_add_epi16(first, last);
            return quotient<kEdges>(t, e, s);
        };
        int64_t left = run.places;
        for (; left >= 4; left -= 4, out += 4 * run.out_step) {
            const __m128i b = behind.four(), l = leading.four(), f = kEdges ? trailing.four() : b;
            const __m128i low = two(low16(b), low16(f), low16(l)),
                          high = two(high16(b), high16(f), high16(l));
            const __m128i made = _mm_packus_epi16(low, high);
            scatter4<kOutApart>(kAll ? made : masked(made, centre.four()), out, run.out_step);
        }
        for (; left > 0; --left, out += run.out_step) {
            const __m128i none = _mm_setzero_si128();
            const auto second = [&](Reader<kInApart>& of) {
                return _mm_unpacklo_epi64(none, read(of.one()));
            };
            const __m128i b = second(behind), f = second(trailing), q = two(b, f, second(leading));
            const __m128i bytes = _mm_packus_epi16(_mm_unpackhi_epi64(q, q), none);
            keep(static_cast<uint32_t>(_mm_cvtsi128_si32(bytes)), centre.one(), out);
        }
        S = lengthen<kEdges>(_mm_unpackhi_epi64(t, t), _mm_unpackhi_epi64(e, e));
    }

    // Four lines in two vectors.
    template <bool kEdges>
    void runColumns(Sums* S, const RKp_BoxRun<P>& run) const {
        const Short s = shorts();
        __m128i t[RKp_kBlurBlock / 2];
        for (int32_t j = 0; j < run.lines; j += 2) t[j / 2] = shorten(S[j], S[j + 1]);
        const P *behind = run.behind.at, *trailing = run.trailing.at, *leading = run.leading.at,
                *centre = run.centre.at;
        P* out = run.out;
        for (int64_t i = 0; i < run.places; ++i) {
            RKp_Prefetch(leading, run.leading.step, run.lines);
            RKp_Prefetch(out, run.out_step, run.lines);
            for (int32_t j = 0; j < run.lines; j += 4) {
                const __m128i b = load4(behind + j), l = load4(leading + j),
                              f = kEdges ? load4(trailing + j) : b;
                const auto two = [&](__m128i behind2, __m128i trailing2, __m128i leading2, __m128i& sums) {
                    __m128i d = _mm_sub_epi16(leading2, behind2);
                    if (kEdges) d = _mm_sll_epi16(d, s.shift);
                    sums = _mm_add_epi16(sums, d);
                    return quotient<kEdges>(sums, kEdges ? _mm_add_epi16(trailing2, leading2) : d, s);
                };
                const __m128i low = two(low16(b), low16(f), low16(l), t[j / 2]);
                const __m128i high = two(high16(b), high16(f), high16(l), t[j / 2 + 1]);
                const __m128i made = _mm_packus_epi16(low, high);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + j),
                                 kAll ? made : masked(made, load4(centre + j)));
            }
            behind += run.behind.step, trailing += run.trailing.step, leading += run.leading.step;
            centre += run.centre.step, out += run.out_step;
        }
        for (int32_t j = 0; j < run.lines; ++j) {
            const __m128i e =
                _mm_add_epi16(read(trailing - run.trailing.step + j), read(leading - run.leading.step + j));
            S[j] = lengthen<kEdges>(j % 2 == 0 ? t[j / 2] : _mm_unpackhi_epi64(t[j / 2], t[j / 2]), e);
        }
    }

    // ---- Thirty-two bits ------------------------------------------------------------------------------
    // For divisors that are too large for sixteen, or not the whole window's: each place has its own.

    // floor(n / D) in single precision. The reciprocal is raised by so much that after two roundings to
    // nearest no multiple of D is missed, and for a quotient below 256 and a D below 2^14 by so little that
    // no product reaches the next quotient.
    struct Quick {
        static constexpr Weight kMost = 16000;
        explicit Quick(Weight D)
            : half(_mm_set1_epi32(D / 2)),
              reciprocal(_mm_set1_ps((1.0f + 1.0f / (1 << 23)) / static_cast<float>(D))) {}
        __m128i quotient(__m128i n) const {
            return _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(_mm_add_epi32(n, half)), reciprocal));
        }
        __m128i half;
        __m128 reciprocal;
    };
    // In double precision, as for one pixel.
    struct Exact : Divisor {
        explicit Exact(Weight D)
            : Divisor{_mm_set1_epi32(D / 2), _mm_set1_pd((1.0 + 1.0 / (int64_t{1} << 45)) / D)} {}
        __m128i quotient(__m128i n) const { return divided(n, *this); }
    };

    // What four pixels add to their numerators, and what is taken off for the outermost ones.
    template <bool kEdges>
    struct Steps {
        __m128i d[4], e[4];
        Steps(const Lanes& a, __m128i behind, __m128i trailing, __m128i leading) {
            const __m128i zero = _mm_setzero_si128();
            const auto two = [&](int n, __m128i b, __m128i t, __m128i l) {
                const __m128i step = _mm_sub_epi16(l, b);
                d[n] = _mm_madd_epi16(_mm_unpacklo_epi16(step, zero), a.one_);
                d[n + 1] = _mm_madd_epi16(_mm_unpackhi_epi16(step, zero), a.one_);
                if (!kEdges) return;
                const __m128i ends = _mm_add_epi16(t, l);
                e[n] = _mm_madd_epi16(_mm_unpacklo_epi16(ends, zero), a.edge_);
                e[n + 1] = _mm_madd_epi16(_mm_unpackhi_epi16(ends, zero), a.edge_);
            };
            two(0, low16(behind), low16(trailing), low16(leading));
            two(2, high16(behind), high16(trailing), high16(leading));
        }
        // Moves T, the numerator but for the outermost pixels', by pixel n, and gives its own.
        __m128i numerator(int n, __m128i& T) const {
            T = _mm_add_epi32(T, d[n]);
            return kEdges ? _mm_sub_epi32(T, e[n]) : T;
        }
    };
    static __m128i packed(const __m128i q[4]) {
        return _mm_packus_epi16(_mm_packs_epi32(q[0], q[1]), _mm_packs_epi32(q[2], q[3]));
    }

    template <bool kEdges, class Division>
    int64_t wideLine(Sums& S, const RKp_BoxRun<P>& run, Weight D, Weight grows) const {
        if (run.in_step != 1)
            return run.out_step != 1 ? wide<kEdges, Division, true, true>(S, run, D, grows)
                                     : wide<kEdges, Division, true, false>(S, run, D, grows);
        return run.out_step != 1 ? wide<kEdges, Division, false, true>(S, run, D, grows)
                                 : wide<kEdges, Division, false, false>(S, run, D, grows);
    }
    template <bool kEdges, class Division, bool kInApart, bool kOutApart>
    int64_t wide(Sums& S, const RKp_BoxRun<P>& run, Weight D, Weight grows) const {
        const __m128i shift = _mm_cvtsi32_si128(shift_);
        __m128i T = _mm_sll_epi32(S, shift);
        Division by(D);
        Reader<kInApart> behind(run.behind), trailing(run.trailing), leading(run.leading), centre(run.centre);
        P* out = run.out;
        int64_t i = 0;
        for (; i + 4 <= run.places; i += 4, out += 4 * run.out_step) {
            const __m128i b = behind.four(), f = kEdges ? trailing.four() : b;
            const Steps<kEdges> steps(*this, b, f, leading.four());
            __m128i q[4];
            for (int n = 0; n < 4; ++n) {
                q[n] = by.quotient(steps.numerator(n, T));
                if (grows != 0) by = Division(D += grows);
            }
            const __m128i made = packed(q);
            scatter4<kOutApart>(kAll ? made : masked(made, centre.four()), out, run.out_step);
        }
        S = _mm_srl_epi32(T, shift);
        return i;
    }

    template <bool kEdges, class Division>
    int64_t wideColumns(Sums* S, const RKp_BoxRun<P>& run, Weight D, Weight grows) const {
        const __m128i shift = _mm_cvtsi32_si128(shift_);
        for (int32_t j = 0; j < run.lines; ++j) S[j] = _mm_sll_epi32(S[j], shift);
        Division by(D);
        for (int64_t i = 0; i < run.places; ++i) {
            const P *behind = nth(run.behind, i), *trailing = nth(run.trailing, i),
                    *leading = nth(run.leading, i), *centre = nth(run.centre, i);
            P* const out = run.out + static_cast<ptrdiff_t>(i) * run.out_step;
            RKp_Prefetch(leading, run.leading.step, run.lines);
            RKp_Prefetch(out, run.out_step, run.lines);
            for (int32_t j = 0; j < run.lines; j += 4) {
                const __m128i b = load4(behind + j);
                const Steps<kEdges> steps(*this, b, kEdges ? load4(trailing + j) : b, load4(leading + j));
                __m128i q[4];
                for (int n = 0; n < 4; ++n) q[n] = by.quotient(steps.numerator(n, S[j + n]));
                const __m128i made = packed(q);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + j),
                                 kAll ? made : masked(made, load4(centre + j)));
            }
            if (grows != 0) by = Division(D += grows);
        }
        for (int32_t j = 0; j < run.lines; ++j) S[j] = _mm_srl_epi32(S[j], shift);
        return run.places;
    }

    int32_t f_, shift_;
    __m128i edge_, one_;
    uint32_t mask_ = 0;
    Weight full_;
    int32_t multiplier_ = 0, multiplier_shift_ = 0, half_ = 0;
};

}  // namespace

template <>
void RKp_BoxPass_SSE2(const RKp_BoxStage<RK_Pixel8>& stage) {
    RKp_GuardBoxVectors(stage.divide);
    // Beyond, numerators do not fit.
    if (stage.reach > RKp_kBoxNarrowReach) return RKp_BoxPass(stage);
    if ((stage.flags & RK_kBlurAllChannels) == RK_kBlurAllChannels)
        RKp_WalkBox(stage, Lanes<true>(stage.reach, stage.radius, stage.flags));
    else
        RKp_WalkBox(stage, Lanes<false>(stage.reach, stage.radius, stage.flags));
}
