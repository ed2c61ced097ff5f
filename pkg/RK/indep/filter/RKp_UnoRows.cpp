// Legend: s, d samples; m a scaled source sample; n noise.
#include "RK/indep/filter/RKp_UnoRows.h"

#include <iterator>
#include <type_traits>

#include "RK/indep/filter/RKp_UnoModes.h"
#include "RK/indep/world/RKp_ChannelConvert.h"

namespace {

// ---- Plain modes ----------------------------------------------------------------------------------------

template <class S>
using Verb = S (*)(S, S);
template <class S>
using AccumulateRow = void(RK_Long count, const S* src, S* dst);
template <class S>
using TransferRow = void(RK_Long count, const S* a, const S* b, S* dst);

template <class S, Verb<S> verb>
void accumulateRow(RK_Long count, const S* src, S* dst) {
    for (RK_Long i = 0; i < count; ++i) dst[i] = verb(src[i], dst[i]);
}
template <class S, Verb<S> verb>
void transferRow(RK_Long count, const S* a, const S* b, S* dst) {
    for (RK_Long i = 0; i < count; ++i) dst[i] = verb(a[i], b[i]);
}

constexpr int32_t kNumbers[] = {
#define RKP_UNO_MODE(number, verb) number,
    RKP_UNO_MODES(RKP_UNO_MODE)
#undef RKP_UNO_MODE
};
constexpr int32_t kModes = static_cast<int32_t>(std::size(kNumbers));
constexpr bool numbersCount() {
    for (int32_t i = 0; i < kModes; ++i)
        if (kNumbers[i] != i + 1) return false;
    return true;
}
static_assert(numbersCount(), "modes 1, 2, 3, ...");

// A mode's place in the tables; unknown numbers are unions.
int32_t placeOf(int32_t mode) { return mode >= 1 && mode <= kModes ? mode - 1 : 0; }

template <class S>
constexpr AccumulateRow<S>* kAccumulate[] = {
#define RKP_UNO_MODE(number, verb) accumulateRow<S, RKp_UnoDepth<S>::verb>,
    RKP_UNO_MODES(RKP_UNO_MODE)
#undef RKP_UNO_MODE
};
template <class S>
constexpr TransferRow<S>* kTransfer[] = {
#define RKP_UNO_MODE(number, verb) transferRow<S, RKp_UnoDepth<S>::verb>,
    RKP_UNO_MODES(RKP_UNO_MODE)
#undef RKP_UNO_MODE
};

// ---- Noise ----------------------------------------------------------------------------------------------

// run(first, end, words) for stretches of the samples whose words lie in a row in the table: sample i takes
// words[i - first]. A draw moves the cursor on and then reads.
template <class Run>
void withNoise(RKp_NoiseTable* noise, RK_Long count, Run run) {
    for (RK_Long first = 0; first < count;) {
        if (++noise->cursor == noise->end) noise->cursor = noise->begin;
        const RK_Long left = count - first, here = static_cast<RK_Long>(noise->end - noise->cursor);
        const RK_Long end = first + (left < here ? left : here);
        run(first, end, noise->cursor);
        noise->cursor += end - first - 1;
        first = end;
    }
}

// ---- Samples and weights in any range -------------------------------------------------------------------

template <class S>
bool inRange(int32_t x) {
    return x >= 0 && x <= RKp_UnoDepth<S>::kFull;
}
int64_t exactMul(int64_t a, int64_t b, uint8_t) {
    const int64_t t = a * b + 128;
    return (t + (t >> 8)) >> 8;
}
int64_t exactMul(int64_t a, int64_t b, uint16_t) { return (a * b + 16383) >> 15; }

// Shares with a limit or an opacity outside 0..full. At 16 bits the noise is 0 and not looked at.
template <class S>
S exactShare(int64_t m, S d, int64_t limit, uint32_t n) {
    if (d >= limit) return d;
    if constexpr (sizeof(S) == 1) {
        const int64_t u = m * (limit - d) + (n & 255u);
        return static_cast<S>(d + ((u + (u >> 8)) >> 8));
    } else {
        return static_cast<S>(d + (m * (limit - d) >> 15));
    }
}

}  // namespace

template <class S>
RK_Long RKp_MaskAccumulate(RKp_NoiseTable* noise, int32_t mode, RK_Long count, const S* src, S* dst) {
    if (mode == RK_kUnoDither)
        withNoise(noise, count, [=](RK_Long first, RK_Long end, const uint32_t* words) {
            for (RK_Long i = first; i < end; ++i)
                dst[i] = RKp_UnoDepth<S>::dither(src[i], dst[i], words[i - first]);
        });
    else
        kAccumulate<S>[placeOf(mode)](count, src, dst);
    return RK_kOK;
}

template <class S>
void RKp_MaskTransfer(RKp_NoiseTable* noise, int32_t mode, RK_Long count, const S* a, const S* b, S* dst) {
    if constexpr (!std::is_floating_point_v<S>) {
        if (mode == RK_kUnoDither)
            return withNoise(noise, count, [=](RK_Long first, RK_Long end, const uint32_t* words) {
                for (RK_Long i = first; i < end; ++i)
                    dst[i] = RKp_UnoDepth<S>::dither(a[i], b[i], words[i - first]);
            });
    }
    kTransfer<S>[placeOf(mode)](count, a, b, dst);
}

template <class S>
RK_Long RKp_MaskAccumulateWeighted(RKp_NoiseTable* noise, int32_t mode, int32_t limit, int32_t opacity,
                                   RK_Long count, const S* src, S* dst) {
    using D = RKp_UnoDepth<S>;
    const auto o = static_cast<S>(opacity), l = static_cast<S>(limit);
    const bool fits = inRange<S>(opacity);
    if (mode != RK_kUnoDither) {
        if (fits)
            for (RK_Long i = 0; i < count; ++i) dst[i] = D::add(D::mul(src[i], o), dst[i]);
        else
            for (RK_Long i = 0; i < count; ++i)
                dst[i] = static_cast<S>(std::min<int64_t>(D::kFull, dst[i] + exactMul(src[i], opacity, S{})));
        return RK_kOK;
    }
    const bool shares = fits && inRange<S>(limit);
    const auto run = [=](RK_Long first, RK_Long end, const uint32_t* words) {
        if (shares)
            for (RK_Long i = first; i < end; ++i) {
                const S d = dst[i], room = static_cast<S>(std::max(l, d) - d);
                dst[i] = static_cast<S>(
                    d + D::ditheredShare(D::mul(src[i], o), room, words ? words[i - first] : 0u));
            }
        else
            for (RK_Long i = first; i < end; ++i)
                dst[i] =
                    exactShare(exactMul(src[i], opacity, S{}), dst[i], limit, words ? words[i - first] : 0u);
    };
    if (sizeof(S) == 1)
        withNoise(noise, count, run);
    else
        run(0, count, nullptr);
    return RK_kOK;
}

RK_Long RKp_MaskAdd8To16(int32_t opacity, RK_Long count, const uint8_t* src, uint16_t* dst) {
    using D = RKp_UnoDepth<uint16_t>;
    if (inRange<uint8_t>(opacity)) {
        const auto o = static_cast<uint8_t>(opacity);
        for (RK_Long i = 0; i < count; ++i)
            dst[i] = D::add(RKp_8To16(RKp_UnoDepth<uint8_t>::mul(src[i], o)), dst[i]);
        return RK_kOK;
    }
    for (RK_Long i = 0; i < count; ++i) {
        const int64_t t = exactMul(src[i], opacity, uint8_t{}) * 32768 + 128;
        const int64_t widened = t >= 0 ? t / 255 : (t - 254) / 255;
        dst[i] = static_cast<uint16_t>(std::min<int64_t>(D::kFull, dst[i] + widened));
    }
    return RK_kOK;
}

// ---- One row --------------------------------------------------------------------------------------------

template <class S>
void RKp_MaskInvertAndFade(int32_t k, RK_Long count, S* row) {
    using D = RKp_UnoDepth<S>;
    // mul(~s, k) is the mode that subtracts s from k.
    if (inRange<S>(k))
        for (RK_Long i = 0; i < count; ++i) row[i] = D::subtract(row[i], static_cast<S>(k));
    else
        for (RK_Long i = 0; i < count; ++i) row[i] = static_cast<S>(exactMul(D::kFull - row[i], k, S{}));
}

template <class S>
void RKp_MaskFade(int32_t k, int64_t count, S* row) {
    using D = RKp_UnoDepth<S>;
    if (inRange<S>(k))
        for (int64_t i = 0; i < count; ++i) row[i] = D::mul(row[i], static_cast<S>(k));
    else
        for (int64_t i = 0; i < count; ++i) row[i] = static_cast<S>(exactMul(row[i], k, S{}));
}

// ---- Conversion -----------------------------------------------------------------------------------------

namespace {

// work(quotient) with the function that divides; powers of two up to 16, the usual ones, shift.
template <class Work>
void withQuotient(uint16_t divisor, Work work) {
    switch (divisor) {
        case 1: return work([](uint16_t s) { return s; });
        case 4: return work([](uint16_t s) { return static_cast<uint16_t>(s >> 2); });
        case 8: return work([](uint16_t s) { return static_cast<uint16_t>(s >> 3); });
        case 16: return work([](uint16_t s) { return static_cast<uint16_t>(s >> 4); });
        default:
            // Truncating the float quotient is exact: one of 16-bit numbers that is not whole stays further
            // below the next whole number than a float can round.
            return work([by = static_cast<float>(divisor)](uint16_t s) {
                return static_cast<uint16_t>(static_cast<int32_t>(static_cast<float>(s) / by));
            });
    }
}

}  // namespace

RK_Long RKp_MaskNarrow16To8(uint16_t divisor, RK_Long count, const uint16_t* src, uint8_t* dst) {
    withQuotient(divisor, [=](auto quotient) {
        for (RK_Long i = 0; i < count; ++i) dst[i] = RKp_16To8(quotient(src[i]));
    });
    return RK_kOK;
}
void RKp_MaskDivide16(uint16_t divisor, RK_Long count, const uint16_t* src, uint16_t* dst) {
    withQuotient(divisor, [=](auto quotient) {
        for (RK_Long i = 0; i < count; ++i) dst[i] = quotient(src[i]);
    });
}
void RKp_MaskDivide16ToFloat(uint16_t divisor, RK_Long count, const uint16_t* src, float* dst) {
    withQuotient(divisor, [=](auto quotient) {
        for (RK_Long i = 0; i < count; ++i) dst[i] = RKp_16ToFloat(quotient(src[i]));
    });
}

// clang-format off
template RK_Long RKp_MaskAccumulate(RKp_NoiseTable*, int32_t, RK_Long, const uint8_t*, uint8_t*);
template RK_Long RKp_MaskAccumulate(RKp_NoiseTable*, int32_t, RK_Long, const uint16_t*, uint16_t*);
template RK_Long RKp_MaskAccumulateWeighted(RKp_NoiseTable*, int32_t, int32_t, int32_t, RK_Long, const uint8_t*, uint8_t*);
template RK_Long RKp_MaskAccumulateWeighted(RKp_NoiseTable*, int32_t, int32_t, int32_t, RK_Long, const uint16_t*, uint16_t*);
template void RKp_MaskTransfer(RKp_NoiseTable*, int32_t, RK_Long, const uint8_t*, const uint8_t*, uint8_t*);
template void RKp_MaskTransfer(RKp_NoiseTable*, int32_t, RK_Long, const uint16_t*, const uint16_t*, uint16_t*);
template void RKp_MaskTransfer(RKp_NoiseTable*, int32_t, RK_Long, const float*, const float*, float*);
template void RKp_MaskInvertAndFade(int32_t, RK_Long, uint8_t*);
template void RKp_MaskInvertAndFade(int32_t, RK_Long, uint16_t*);
template void RKp_MaskFade(int32_t, int64_t, uint8_t*);
template void RKp_MaskFade(int32_t, int64_t, uint16_t*);
// clang-format on
