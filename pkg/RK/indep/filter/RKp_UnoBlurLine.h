// The arithmetic of the mask blurs, on one line. Columns are counted from the line's left end; a span is
// first..end.
#ifndef RKP_UNO_BLUR_LINE_H
#define RKP_UNO_BLUR_LINE_H

#include <algorithm>
#include <cstring>

#include "RK/indep/frame/RK.h"

struct RKp_LineSpan {
    int64_t first, end;
    // Widened by w at both ends, as far as the line's left end.
    RKp_LineSpan widened(int64_t w) const { return {std::max<int64_t>(first - w, 0), end + w}; }
};

template <class S>
S* RKp_Column(S* line, int64_t column) {
    return line + static_cast<ptrdiff_t>(column);
}

// ---- Gaussian -------------------------------------------------------------------------------------------

constexpr int64_t RKp_kGaussBlock = 512;

// out[c], for a block of at most RKp_kGaussBlock columns, is the sum of src[n] * kernel[n - c + reach] over
// the span, divided by `total`. Weights are 0..65535 and sum up to `total`. Sums run in 32 bits for as many
// weights as these hold, and are then moved to 64.
template <class S>
void RKp_GaussBlock(const RKp_LineSpan& span, const int32_t* kernel, int64_t reach, int64_t total,
                    const RKp_LineSpan& block, const S* src, S* out) {
    constexpr int64_t kWeightsIn32 = sizeof(S) == 1 ? 0xFFFFFFFFll / 255 : 0xFFFFFFFFll / 65535;
    uint64_t sums[RKp_kGaussBlock] = {};
    uint32_t part[RKp_kGaussBlock] = {};
    const int64_t count = block.end - block.first;
    const auto flush = [&] {
        for (int64_t i = 0; i < count; ++i) sums[i] += part[i], part[i] = 0;
    };
    int64_t held = 0;
    for (int64_t k = 0; k <= 2 * reach; ++k) {
        // The columns of the block that meet the span under this weight.
        const int64_t shift = k - reach;
        const int64_t begin = std::max(block.first, span.first - shift) - block.first;
        const int64_t end = std::min(block.end, span.end - shift) - block.first;
        const auto weight = static_cast<uint16_t>(kernel[k]);
        if (begin >= end || weight == 0) continue;
        if (held + weight > kWeightsIn32) flush(), held = 0;
        held += weight;
        const S* from = RKp_Column(src, block.first + shift + begin);
        uint32_t* to = part + begin;
        for (int64_t i = 0; i < end - begin; ++i) to[i] += static_cast<uint32_t>(from[i]) * weight;
    }
    // Half a unit more keeps every quotient further above its whole number than the product can be wrong.
    const double share = 1.0 / static_cast<double>(total);
    S* const to = RKp_Column(out, block.first);
    if (total <= kWeightsIn32) {
        // By way of signed numbers, which processors convert.
        for (int64_t i = 0; i < count; ++i) {
            const double sum =
                static_cast<double>(static_cast<int32_t>(part[i] ^ 0x80000000u)) + 2147483648.5;
            to[i] = static_cast<S>(static_cast<int32_t>(sum * share));
        }
        return;
    }
    flush();
    for (int64_t i = 0; i < count; ++i) {
        const double sum = static_cast<double>(static_cast<int64_t>(sums[i])) + 0.5;
        to[i] = static_cast<S>(static_cast<int32_t>(sum * share));
    }
}

template <class S>
void RKp_GaussLine(const RKp_LineSpan& span, const int32_t* kernel, int64_t reach, int64_t total,
                   const S* src, S* dst) {
    const RKp_LineSpan all = span.widened(reach);
    for (int64_t c = all.first; c < all.end; c += RKp_kGaussBlock)
        RKp_GaussBlock(span, kernel, reach, total, {c, std::min(c + RKp_kGaussBlock, all.end)}, src, dst);
}

// ---- A single box ---------------------------------------------------------------------------------------

// The mean of 2 * half + 1 columns, rounded to nearest, halves up.
template <int32_t half, class S>
void RKp_BoxLine(const RKp_LineSpan& span, const S* src, S* dst) {
    constexpr int32_t kWindow = 2 * half + 1;
    const auto mean = [](int32_t sum) { return static_cast<S>((2 * sum + kWindow) / (2 * kWindow)); };
    // Columns whose window reaches past the span.
    const auto edge = [&](int64_t from, int64_t to) {
        for (int64_t c = from; c < to; ++c) {
            int32_t sum = 0;
            for (int64_t k = std::max(c - half, span.first); k < std::min(c + half + 1, span.end); ++k)
                sum += *RKp_Column(src, k);
            *RKp_Column(dst, c) = mean(sum);
        }
    };
    const RKp_LineSpan all = span.widened(half);
    const int64_t first = std::min(span.first + half, all.end), end = std::max(span.end - half, first);
    edge(all.first, first);
    const S* const from = RKp_Column(src, first - half);
    S* const out = RKp_Column(dst, first);
    for (int64_t i = 0; i < end - first; ++i) {
        int32_t sum = 0;
        for (int32_t k = 0; k < kWindow; ++k) sum += from[i + k];
        out[i] = mean(sum);
    }
    edge(end, all.end);
}

// ---- Repeated boxes -------------------------------------------------------------------------------------

// The mean of three, to nearest: (1024 * S + 1536) / 3072 is (S + 1) / 3, here in 16-bit lanes.
inline uint8_t RKp_MeanOf3(uint8_t a, uint8_t b, uint8_t c) {
    const auto t = static_cast<uint16_t>(a + b + c + 1);
    return static_cast<uint8_t>((static_cast<uint32_t>(t) * 43691u >> 16) >> 1);
}
// In float; sums of three fit exactly.
inline uint16_t RKp_MeanOf3(uint16_t a, uint16_t b, uint16_t c) {
    const auto sum = static_cast<float>(a + b + c);
    return static_cast<uint16_t>(static_cast<int32_t>((sum + 1.5f) / 3.0f));
}

// Each sample of the line becomes make(mean of it and its neighbours, it); beyond the ends lies zero. In
// place, in blocks whose old samples are kept aside.
template <class S, class Make>
void RKp_BoxOf3(S* line, int64_t count, Make make) {
    constexpr int64_t kBlock = 512;
    S old[kBlock + 2];
    S before = 0;
    for (int64_t b = 0; b < count; b += kBlock) {
        const int64_t here = std::min(kBlock, count - b);
        S* out = RKp_Column(line, b);
        old[0] = before;
        std::memcpy(old + 1, out, static_cast<size_t>(here) * sizeof(S));
        old[here + 1] = b + here < count ? out[here] : S{0};
        for (int64_t i = 0; i < here; ++i)
            out[i] = make(RKp_MeanOf3(old[i], old[i + 1], old[i + 2]), old[i + 1]);
        before = old[here];
    }
}

// `passes` boxes of three over the span widened by w; of the last only the share `fraction` / 255.
template <class S>
void RKp_BoxesLine(const RKp_LineSpan& span, int64_t w, int64_t passes, int32_t fraction, const S* src,
                   S* dst) {
    const RKp_LineSpan all = span.widened(w);
    S* line = RKp_Column(dst, all.first);
    const int64_t count = all.end - all.first;
    std::fill(line, RKp_Column(dst, span.first), S{0});
    std::memcpy(RKp_Column(dst, span.first), RKp_Column(src, span.first),
                static_cast<size_t>(span.end - span.first) * sizeof(S));
    std::fill(RKp_Column(dst, span.end), RKp_Column(dst, all.end), S{0});
    for (int64_t k = 1; k < passes; ++k) RKp_BoxOf3(line, count, [](S mean, S) { return mean; });
    RKp_BoxOf3(line, count, [fraction](S mean, S s) {
        return static_cast<S>((mean * fraction + s * (255 - fraction) + 127) / 255);
    });
}

#endif
