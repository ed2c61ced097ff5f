#include "RK/indep/filter/RKp_UnoRows_AVX2.h"

#include <immintrin.h>

namespace {

using Lanes = __m256i;

Lanes load(const void* from) { return _mm256_loadu_si256(static_cast<const Lanes*>(from)); }
void store(void* to, Lanes x) { _mm256_storeu_si256(static_cast<Lanes*>(to), x); }

template <class S>
struct Depth;

template <>
struct Depth<uint8_t> {
    static Lanes sum(Lanes a, Lanes b) { return _mm256_add_epi8(a, b); }
    static Lanes difference(Lanes a, Lanes b) { return _mm256_sub_epi8(a, b); }
    // Bytes widened to 256 times themselves: the high half of a product of two is their product.
    static Lanes low(Lanes x) { return _mm256_unpacklo_epi8(_mm256_setzero_si256(), x); }
    static Lanes high(Lanes x) { return _mm256_unpackhi_epi8(_mm256_setzero_si256(), x); }
    // (t * 257) >> 16 is (t + (t >> 8)) >> 8.
    static Lanes over255(Lanes t) { return _mm256_mulhi_epu16(t, _mm256_set1_epi16(257)); }
    static Lanes rounded(Lanes s, Lanes d) {
        return over255(_mm256_add_epi16(_mm256_mulhi_epu16(s, d), _mm256_set1_epi16(128)));
    }
    static Lanes mul(Lanes s, Lanes d) {
        return _mm256_packus_epi16(rounded(low(s), low(d)), rounded(high(s), high(d)));
    }
    // mul8 never meets a tie.
    static Lanes mulUp(Lanes s, Lanes d) { return mul(s, d); }
    static Lanes larger(Lanes s, Lanes d) { return _mm256_max_epu8(s, d); }
    static Lanes smaller(Lanes s, Lanes d) { return _mm256_min_epu8(s, d); }
    // What a has above b, or 0.
    static Lanes above(Lanes a, Lanes b) { return _mm256_subs_epu8(a, b); }
    static Lanes full() { return _mm256_set1_epi8(-1); }
};

template <>
struct Depth<uint16_t> {
    static Lanes sum(Lanes a, Lanes b) { return _mm256_add_epi16(a, b); }
    static Lanes difference(Lanes a, Lanes b) { return _mm256_sub_epi16(a, b); }
    // (s * d + term) >> 15: of the product the high half twice, and what its low half and the term carry, by
    // way of their mean.
    static Lanes product(Lanes s, Lanes d, int16_t term) {
        const Lanes high = _mm256_mulhi_epu16(s, d), low = _mm256_mullo_epi16(s, d);
        const Lanes mean = _mm256_avg_epu16(low, _mm256_set1_epi16(static_cast<int16_t>(term - 1)));
        return sum(sum(high, high), _mm256_srli_epi16(mean, 14));
    }
    static Lanes mul(Lanes s, Lanes d) { return product(s, d, 16383); }
    static Lanes mulUp(Lanes s, Lanes d) { return product(s, d, 16384); }
    static Lanes larger(Lanes s, Lanes d) { return _mm256_max_epu16(s, d); }
    static Lanes smaller(Lanes s, Lanes d) { return _mm256_min_epu16(s, d); }
    static Lanes above(Lanes a, Lanes b) { return _mm256_subs_epu16(a, b); }
    static Lanes full() { return _mm256_set1_epi16(INT16_MIN); }
};

// The verbs of RKP_UNO_MODES.
template <class D>
struct Unite {
    static Lanes of(Lanes s, Lanes d) { return D::difference(D::sum(s, d), D::mul(s, d)); }
};
template <class D>
struct Subtract {
    static Lanes of(Lanes s, Lanes d) { return D::difference(d, D::mulUp(s, d)); }
};
template <class D>
struct Intersect {
    static Lanes of(Lanes s, Lanes d) { return D::mul(s, d); }
};
template <class D>
struct Lighten {
    static Lanes of(Lanes s, Lanes d) { return D::larger(s, d); }
};
template <class D>
struct Darken {
    static Lanes of(Lanes s, Lanes d) { return D::smaller(s, d); }
};
template <class D>
struct Difference {
    static Lanes of(Lanes s, Lanes d) { return _mm256_or_si256(D::above(s, d), D::above(d, s)); }
};
// full less what both leave of it.
template <class D>
struct Add {
    static Lanes of(Lanes s, Lanes d) {
        return D::difference(D::full(), D::above(D::above(D::full(), s), d));
    }
};

template <class S, class Mode>
RK_Long row(RK_Long count, const S* s, const S* d, S* dst) {
    constexpr RK_Long kStep = 32 / static_cast<RK_Long>(sizeof(S));
    RK_Long i = 0;
    for (; i + kStep <= count; i += kStep) store(dst + i, Mode::of(load(s + i), load(d + i)));
    return i;
}

template <class S, class D = Depth<S>>
constexpr RKp_WideUnoRow<S>* kRows[] = {row<S, Unite<D>>,   row<S, Subtract<D>>, row<S, Intersect<D>>,
                                        row<S, Lighten<D>>, row<S, Darken<D>>,   row<S, Difference<D>>,
                                        row<S, Add<D>>};

// ---- Dither ---------------------------------------------------------------------------------------------

// The low bytes of words[0..7] and words[16..23], in the order in which bytes are widened.
Lanes noise(const uint32_t* words) {
    const auto pair = [](const uint32_t* at) {
        const auto* from = reinterpret_cast<const __m128i*>(at);
        const Lanes both = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(from)),
                                                   _mm_loadu_si128(from + 4), 1);
        return _mm256_and_si256(both, _mm256_set1_epi32(255));
    };
    return _mm256_packus_epi32(pair(words), pair(words + 4));
}

}  // namespace

RKp_WideUnoRow<uint8_t>* RKp_WideUnoRow_AVX2(int32_t place, uint8_t) { return kRows<uint8_t>[place]; }
RKp_WideUnoRow<uint16_t>* RKp_WideUnoRow_AVX2(int32_t place, uint16_t) { return kRows<uint16_t>[place]; }

RK_Long RKp_DitherRow_AVX2(const uint32_t* words, RK_Long count, const uint8_t* s, const uint8_t* d,
                           uint8_t* dst) {
    using D = Depth<uint8_t>;
    const Lanes full = _mm256_set1_epi8(-1);
    const auto part = [](Lanes from_s, Lanes from_d, const uint32_t* at) {
        return D::over255(_mm256_add_epi16(_mm256_mulhi_epu16(from_s, from_d), noise(at)));
    };
    RK_Long i = 0;
    for (; i + 32 <= count; i += 32) {
        const Lanes a = _mm256_xor_si256(load(s + i), full), b = _mm256_xor_si256(load(d + i), full);
        const Lanes left = _mm256_packus_epi16(part(D::low(a), D::low(b), words + i),
                                               part(D::high(a), D::high(b), words + i + 8));
        store(dst + i, _mm256_xor_si256(left, full));
    }
    return i;
}
