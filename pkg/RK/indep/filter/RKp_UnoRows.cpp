// Legend: s, d samples; m a scaled source sample; n noise.
#include "RK/indep/filter/RKp_UnoRows.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

#include "RK/indep/filter/RKp_UnoModes.h"
#include "RK/indep/filter/RKp_UnoRows_AVX2.h"
#include "RK/indep/frame/RKp_HasAVX2.h"
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

// How many samples wide code has done.
template <class S>
RK_Long wideRow(int32_t place, RK_Long count, const S* s, const S* d, S* dst) {
    if constexpr (std::is_floating_point_v<S>)
        return 0;
    else
        return RKp_HasAVX2() ? RKp_WideUnoRow_AVX2(place, S{})(count, s, d, dst) : 0;
}

// dst = mode(src, dst), and dst = mode(a, b).
template <class S>
void accumulate(int32_t place, RK_Long count, const S* src, S* dst) {
    const RK_Long done = wideRow(place, count, src, dst, dst);
    kAccumulate<S>[place](count - done, src + done, dst + done);
}
template <class S>
void transfer(int32_t place, RK_Long count, const S* a, const S* b, S* dst) {
    const RK_Long done = wideRow(place, count, a, b, dst);
    kTransfer<S>[place](count - done, a + done, b + done, dst + done);
}
constexpr int32_t kSubtract = 1, kIntersect = 2, kAdd = 6;

// ---- Rows of one value ----------------------------------------------------------------------------------

// Products with a value that is the same for all samples are vectorised when it is read like a sample.
constexpr RK_Long kBlock = 512;
template <class S>
struct Even {
    explicit Even(S value) { std::fill(samples, samples + kBlock, value); }
    S samples[kBlock];
};
// run(first, count) for the blocks of a row.
template <class Count, class Run>
void inBlocks(Count count, Run run) {
    for (Count first = 0; first < count; first += kBlock)
        run(first, static_cast<RK_Long>(std::min<Count>(kBlock, count - first)));
}
// work(first, count, m) with the products of the row and the value, block by block.
template <class S, class Work>
void withProducts(RK_Long count, const S* src, S value, Work work) {
    const Even<S> even(value);
    inBlocks(count, [&](RK_Long first, RK_Long here) {
        S m[kBlock];
        transfer<S>(kIntersect, here, even.samples, src + first, m);
        work(first, here, m);
    });
}

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

void widenRow(RK_Long count, const uint8_t* src, uint16_t* dst) {
    for (RK_Long i = 0; i < count; ++i) dst[i] = RKp_UnoWidened(src[i]);
}

// d towards the limit by the share m. At 16 bits there are no words.
template <class S>
void shareRow(RK_Long count, const S* m, S limit, const uint32_t* words, S* dst) {
    for (RK_Long i = 0; i < count; ++i) {
        const S d = dst[i], room = static_cast<S>(std::max(limit, d) - d);
        const uint32_t noise = sizeof(S) == 1 ? words[i] : 0u;
        dst[i] = static_cast<S>(d + RKp_UnoDepth<S>::ditheredShare(m[i], room, noise));
    }
}

// dst = dither(a, b).
template <class S>
void ditherRow(RKp_NoiseTable* noise, RK_Long count, const S* a, const S* b, S* dst) {
    withNoise(noise, count, [=](RK_Long first, RK_Long end, const uint32_t* words) {
        RK_Long i = first;
        if constexpr (sizeof(S) == 1)
            if (RKp_HasAVX2()) i += RKp_DitherRow_AVX2(words, end - first, a + first, b + first, dst + first);
        for (; i < end; ++i) dst[i] = RKp_UnoDepth<S>::dither(a[i], b[i], words[i - first]);
    });
}

}  // namespace

template <class S>
RK_Long RKp_MaskAccumulate(RKp_NoiseTable* noise, int32_t mode, RK_Long count, const S* src, S* dst) {
    if (mode == RK_kUnoDither)
        ditherRow(noise, count, src, dst, dst);
    else if (count > 0)
        accumulate(placeOf(mode), count, src, dst);
    return RK_kOK;
}

template <class S>
void RKp_MaskTransfer(RKp_NoiseTable* noise, int32_t mode, RK_Long count, const S* a, const S* b, S* dst) {
    if constexpr (!std::is_floating_point_v<S>) {
        if (mode == RK_kUnoDither) return ditherRow(noise, count, a, b, dst);
    }
    if (count > 0) transfer(placeOf(mode), count, a, b, dst);
}

template <class S>
RK_Long RKp_MaskAccumulateWeighted(RKp_NoiseTable* noise, int32_t mode, int32_t limit, int32_t opacity,
                                   RK_Long count, const S* src, S* dst) {
    using D = RKp_UnoDepth<S>;
    const auto o = static_cast<S>(opacity), l = static_cast<S>(limit);
    const bool fits = inRange<S>(opacity);
    if (mode != RK_kUnoDither) {
        if (fits)
            withProducts(count, src, o, [=](RK_Long first, RK_Long here, const S* m) {
                accumulate(kAdd, here, m, dst + first);
            });
        else
            for (RK_Long i = 0; i < count; ++i)
                dst[i] = static_cast<S>(std::min<int64_t>(D::kFull, dst[i] + exactMul(src[i], opacity, S{})));
        return RK_kOK;
    }
    const bool shares = fits && inRange<S>(limit);
    constexpr bool kDraws = sizeof(S) == 1;
    const auto run = [=](RK_Long begin, RK_Long end, const uint32_t* words) {
        if (shares)
            withProducts(end - begin, src + begin, o, [&](RK_Long first, RK_Long here, const S* m) {
                shareRow(here, m, l, kDraws ? words + first : nullptr, dst + begin + first);
            });
        else
            for (RK_Long i = begin; i < end; ++i)
                dst[i] =
                    exactShare(exactMul(src[i], opacity, S{}), dst[i], limit, kDraws ? words[i - begin] : 0u);
    };
    if (kDraws)
        withNoise(noise, count, run);
    else
        run(0, count, nullptr);
    return RK_kOK;
}

RK_Long RKp_MaskAdd8To16(int32_t opacity, RK_Long count, const uint8_t* src, uint16_t* dst) {
    using D = RKp_UnoDepth<uint16_t>;
    if (inRange<uint8_t>(opacity)) {
        withProducts(count, src, static_cast<uint8_t>(opacity),
                     [=](RK_Long first, RK_Long here, const uint8_t* m) {
                         uint16_t wide[kBlock];
                         widenRow(here, m, wide);
                         accumulate<uint16_t>(kAdd, here, wide, dst + first);
                     });
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
    if (!inRange<S>(k)) {
        for (RK_Long i = 0; i < count; ++i) row[i] = static_cast<S>(exactMul(D::kFull - row[i], k, S{}));
        return;
    }
    // mul(~s, k) is the mode that subtracts s from k.
    const Even<S> even(static_cast<S>(k));
    inBlocks(count, [&](RK_Long first, RK_Long here) {
        transfer<S>(kSubtract, here, row + first, even.samples, row + first);
    });
}

template <class S>
void RKp_MaskFade(int32_t k, int64_t count, S* row) {
    if (!inRange<S>(k)) {
        for (int64_t i = 0; i < count; ++i) row[i] = static_cast<S>(exactMul(row[i], k, S{}));
        return;
    }
    const Even<S> even(static_cast<S>(k));
    inBlocks(count, [&](int64_t first, RK_Long here) {
        accumulate<S>(kIntersect, here, even.samples, row + static_cast<ptrdiff_t>(first));
    });
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

// (255 v + 16384) >> 15, low bits, in 16-bit lanes.
void narrowRow(RK_Long count, const uint16_t* src, const uint16_t* full, uint8_t* dst) {
    for (RK_Long i = 0; i < count; ++i)
        dst[i] = static_cast<uint8_t>(RKp_UnoDepth<uint16_t>::product(src[i], full[i], 16384u));
}

}  // namespace

RK_Long RKp_MaskNarrow16To8(uint16_t divisor, RK_Long count, const uint16_t* src, uint8_t* dst) {
    const Even<uint16_t> even(255);
    inBlocks(count, [&](RK_Long first, RK_Long here) {
        uint16_t v[kBlock];
        RKp_MaskDivide16(divisor, here, src + first, v);
        narrowRow(here, v, even.samples, dst + first);
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
