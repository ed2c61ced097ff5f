// The blurs of one mask line once more, on a whole line of zeros with the span in it.
#ifndef TEST_PLAIN_FILTER_MASK_BLUR_H
#define TEST_PLAIN_FILTER_MASK_BLUR_H

#include "test/plain/filter/PlainBlur.h"

namespace plain {

// Samples [first, first + samples.size()) of a line; what lies beside them is 0.
template <class C>
struct Span {
    int64_t first = 0;
    std::vector<C> samples;
    int64_t end() const { return first + static_cast<int64_t>(samples.size()); }
    int64_t at(int64_t i) const {
        return i < first || i >= end() ? 0 : samples[static_cast<size_t>(i - first)];
    }
};
// The span widened by w, but not past column 0, each sample made by `value(column)`.
template <class C, class Value>
Span<C> widened(const Span<C>& in, int64_t w, Value value) {
    Span<C> out{std::max<int64_t>(0, in.first - w), {}};
    for (int64_t c = out.first; c < in.end() + w; ++c) out.samples.push_back(static_cast<C>(value(c)));
    return out;
}

template <class C>
Span<C> gaussianSpan(const Span<C>& in, double r) {
    const int64_t R = static_cast<int64_t>(std::ceil(r));
    const std::vector<int32_t> kernel = gaussianKernel(r, 3, 1.0);
    int64_t weight = 0;
    for (const int32_t k : kernel) weight += k;
    return widened(in, R, [&](int64_t c) {
        int64_t sum = 0;
        for (int64_t n = std::max(in.first, c - R); n <= std::min(in.end() - 1, c + R); ++n)
            sum += in.at(n) * kernel[static_cast<size_t>(n - c + R)];
        return sum / weight;
    });
}
// The mean of 2 * R + 1 samples.
template <class C>
int64_t boxMeanAt(const Span<C>& in, int64_t c, int64_t R) {
    int64_t S = 0;
    for (int64_t n = std::max(in.first, c - R); n <= std::min(in.end() - 1, c + R); ++n) S += in.at(n);
    const int64_t taps = 2 * R + 1;
    if (sizeof(C) == 1) return (1024 * S + 512 * taps) / (1024 * taps);
    const float D = static_cast<float>(taps);
    return toInt((static_cast<float>(S) + 0.5f * D) / D);
}
template <class C>
Span<C> repeatedBoxSpan(const Span<C>& in, double r, double a, double k) {
    Span<C> now = widened(in, static_cast<int64_t>(r * a) + 3, [&](int64_t c) { return in.at(c); }),
            before = now;
    const int64_t passes = static_cast<int64_t>(k) + 1;
    for (int64_t i = 0; i < passes; ++i) {
        before = now;
        for (int64_t c = now.first; c < now.end(); ++c)
            now.samples[static_cast<size_t>(c - now.first)] = static_cast<C>(boxMeanAt(before, c, 1));
    }
    const int64_t x = static_cast<int64_t>((k - static_cast<double>(passes - 1)) * 255);
    return widened(now, 0, [&](int64_t c) { return (now.at(c) * x + before.at(c) * (255 - x) + 127) / 255; });
}

// A scan of the span [first, last) of `src`; what it writes, in its place.
template <class C>
Span<C> spanOf(int64_t first, int64_t last, const C* src) {
    Span<C> in{std::max<int64_t>(0, first), {}};
    for (int64_t c = in.first; c < last; ++c) in.samples.push_back(src[c]);
    return in;
}
template <class C>
Span<C> gaussianScan(int64_t first, int64_t last, int32_t radius, const C* src) {
    const Span<C> in = spanOf(first, last, src);
    return radius <= 0 || in.samples.empty() ? in : gaussianSpan(in, radius / 65536.0);
}
template <class C>
Span<C> boxScan(int mode, int64_t first, int64_t last, int32_t radius, const C* src) {
    const Span<C> in = spanOf(first, last, src);
    if (radius <= 0 || in.samples.empty()) return in;
    const double r = radius / 65536.0, a = mode == 0 ? 0.6 : 1.0, b = mode == 0 ? 1.4 : 0.9, k = b * r / 2.71;
    if (k > 1.0) return repeatedBoxSpan(in, r, a, k);
    if (mode != 1) return gaussianSpan(in, r);
    const int64_t half = ((radius >> 1) + 0x8000) >> 16;
    return widened(in, half, [&](int64_t c) { return boxMeanAt(in, c, half); });
}

}  // namespace plain

#endif
