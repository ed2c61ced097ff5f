// Convolution and the paint spot once more: every destination pixel walks its whole window.
#ifndef TEST_PLAIN_FILTER_CONVOLVE_H
#define TEST_PLAIN_FILTER_CONVOLVE_H

#include <algorithm>

#include "test/plain/PlainArithmetic.h"

namespace plain {

constexpr uint32_t kKernelRow = 1, kKernelNormalise = 2, kKernelNoClamp = 4, kKernelVertical = 0x20;

// Half the window's sides.
struct Halves {
    int32_t x, y;
};
inline Halves halves(uint32_t flags, int32_t size) {
    const int32_t h = static_cast<int16_t>(size >> 1);
    if ((flags & kKernelRow) == 0) return {h, h};
    return (flags & kKernelVertical) != 0 ? Halves{0, h} : Halves{h, 0};
}

inline int32_t wrapped(int64_t v) {
    const uint32_t low = static_cast<uint32_t>(static_cast<uint64_t>(v) & 0xFFFFFFFFu);
    return low < 0x80000000u ? static_cast<int32_t>(low)
                             : static_cast<int32_t>(static_cast<int64_t>(low) - 0x100000000);
}
// Sums of weights wrap in the integer depths and are exact at float.
template <class D>
int64_t kernelDivisor(uint32_t flags, const Halves& half, const int32_t* kernel) {
    const int64_t cells = (2 * half.y + 1) * (2 * half.x + 1);
    if ((flags & kKernelNormalise) == 0) return cells * 255;
    int64_t sum = 0;
    for (int64_t i = 0; i < cells; ++i) sum += kernel[i];
    if (!D::kReal) sum = wrapped(sum);
    return sum == 0 ? 1 : sum;
}

// `take` gives a pixel's channel.
template <class P, class Take>
typename DepthOf<P>::D::Channel convolved(const RK_LayerDef& src, int x, int y, uint32_t flags, int32_t size,
                                          const int32_t* kernel, Take take) {
    using D = typename DepthOf<P>::D;
    using C = typename D::Channel;
    const Halves half = halves(flags, size);
    const int64_t divisor = kernelDivisor<D>(flags, half, kernel);
    std::conditional_t<D::kReal, float, int32_t> sum = 0;
    for (int32_t j = -half.y; j <= half.y; ++j)
        for (int32_t i = -half.x; i <= half.x; ++i, ++kernel) {
            if (y + j < 0 || y + j >= src.height || x + i < 0 || x + i >= src.width) continue;
            const C c = take(at<P>(src, x + i, y + j));
            if constexpr (D::kReal)
                sum = sum + (c * static_cast<float>(*kernel));
            else
                sum = wrapped(int64_t{sum} + int64_t{c} * *kernel);
        }
    const bool clamps = (flags & kKernelNoClamp) == 0;
    if constexpr (D::kReal) {
        const float v = sum / static_cast<float>(divisor);
        if (clamps && v < 0.0f) return 0.0f;
        return clamps && v > 1.0f ? 1.0f : v;
    } else {
        int64_t v = wrapped(sum / divisor);
        if (clamps) v = v < 0 ? 0 : v > D::W ? D::W : v;
        return static_cast<C>(D::keep(v));
    }
}
// The first `rows` rows of `dst`; kernels for alpha, red, green, blue.
template <class P>
void convolve(const RK_LayerDef& src, uint32_t flags, int32_t size, const int32_t* const kernels[4],
              const RK_LayerDef& dst, int rows) {
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < dst.width; ++x)
            at<P>(dst, x, y) = {
                convolved<P>(src, x, y, flags, size, kernels[0], [](const P& p) { return p.alpha; }),
                convolved<P>(src, x, y, flags, size, kernels[1], [](const P& p) { return p.red; }),
                convolved<P>(src, x, y, flags, size, kernels[2], [](const P& p) { return p.green; }),
                convolved<P>(src, x, y, flags, size, kernels[3], [](const P& p) { return p.blue; })};
}

inline void paintSpot(int32_t x, int32_t y, uint32_t flags, int32_t size, const uint32_t* kernel,
                      RK_Pixel8 colour, const RK_LayerDef& world) {
    const int64_t h = size >> 1;
    const bool row = (flags & kKernelRow) != 0, vertical = (flags & kKernelVertical) != 0;
    const int64_t hx = row && vertical ? 0 : h, hy = row && !vertical ? 0 : h;
    for (int64_t py = y - hy; py <= y + hy; ++py)
        for (int64_t px = x - hx; px <= x + hx; ++px) {
            const uint32_t k = *kernel++;
            if (px < 0 || py < 0 || px >= world.width || py >= world.height) continue;
            const auto mixed = [&](uint32_t d, uint32_t c) {
                return static_cast<uint8_t>(std::min((d * (255u - k) + c * k) / 255u, 255u));
            };
            RK_Pixel8& p = at<RK_Pixel8>(world, px, py);
            p = {mixed(p.alpha, colour.alpha), mixed(p.red, colour.red), mixed(p.green, colour.green),
                 mixed(p.blue, colour.blue)};
        }
}

}  // namespace plain

#endif
