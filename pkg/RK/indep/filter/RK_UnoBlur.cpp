#include "RK/indep/filter/RK_UnoBlur.h"

#include <numeric>

#include "RK/indep/filter/RK_GaussianKernel.h"
#include "RK/indep/filter/RKp_UnoBlurLine.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

// ---- The kept weights -----------------------------------------------------------------------------------

struct Weights {
    int32_t radius;     // 16.16; 0 when there are none
    KIT_Handle kernel;  // `diameter` numbers
    int32_t diameter;
    int64_t total;
};
Weights g_weights = {0, nullptr, 0, 0};

constexpr int32_t kLargestGaussian = 0x7FFF0000;

int32_t reachOf(int32_t radius) { return static_cast<int32_t>((int64_t{radius} + 0xFFFF) >> 16); }

// Makes the kept weights those of the radius, which is above 0.
RK_Long needWeights(int32_t radius) {
    if (radius > kLargestGaussian) return RK_kBadParam;
    if (radius == g_weights.radius) return RK_kOK;
    RKp_DisposeUnoWeights();
    const size_t count = 2 * static_cast<size_t>(reachOf(radius)) + 1;
    KIT_Handle made = KIT_AllocateHandle(count * sizeof(int32_t), RKp_Text(RK_kMsg_GaussianWeights));
    if (made == nullptr) return RK_kOutOfMemory;
    auto* cells = static_cast<int32_t*>(*made);
    int32_t diameter = 0;
    const RK_Long error = RK_GaussianKernel(nullptr, radius * (1.0 / 65536.0),
                                            RK_kKernelOneRow | RK_kKernelNormalise, 1.0, &diameter, cells);
    if (error != RK_kOK) {
        KIT_FreeHandle(made);
        return error;
    }
    g_weights = {radius, made, diameter, std::accumulate(cells, cells + diameter, int64_t{0})};
    return RK_kOK;
}

// ---- Scans ----------------------------------------------------------------------------------------------

template <class S>
RK_Long gaussian(const RKp_LineSpan& span, int32_t radius, const S* src, S* dst) {
    const RK_Long error = needWeights(radius);
    if (error != RK_kOK) return error;
    RKp_GaussLine(span, static_cast<const int32_t*>(*g_weights.kernel), g_weights.diameter / 2,
                  g_weights.total, src, dst);
    return RK_kOK;
}

template <class S>
RK_Long boxes(int32_t mode, const RKp_LineSpan& span, int32_t radius, const S* src, S* dst) {
    const double r = radius * (1.0 / 65536.0);
    const double k = (mode == 0 ? 1.4 : 0.9) * r / 2.71;
    if (k <= 1.0) {
        if (mode != 1) return gaussian(span, radius, src, dst);
        // k at most 1 is a radius of at most 3.01.
        switch (((radius >> 1) + 0x8000) >> 16) {
            case 0: RKp_BoxLine<0>(span, src, dst); break;
            case 1: RKp_BoxLine<1>(span, src, dst); break;
            default: RKp_BoxLine<2>(span, src, dst); break;
        }
        return RK_kOK;
    }
    const auto w = static_cast<int64_t>(r * (mode == 0 ? 0.6 : 1.0)) + 3;
    const auto whole = static_cast<int64_t>(k);
    RKp_BoxesLine(span, w, whole + 1, static_cast<int32_t>((k - static_cast<double>(whole)) * 255), src, dst);
    return RK_kOK;
}

// What every scan begins with; then blur(span).
template <class S, class Blur>
RK_Long scan(int32_t first, int32_t last, int32_t radius, const S* src, S* dst, Blur blur) {
    const RKp_LineSpan span = {std::max(first, 0), last};
    if (span.end <= span.first) return RK_kOK;
    if (src == nullptr || dst == nullptr) return RKp_ReportBadParam(RKp_kSiteBlur);
    if (radius > 0) return blur(span);
    std::memcpy(RKp_Column(dst, span.first), RKp_Column(src, span.first),
                static_cast<size_t>(span.end - span.first) * sizeof(S));
    return RK_kOK;
}

template <class S>
RK_Long gaussianScan(int32_t first, int32_t last, int32_t radius, const S* src, S* dst) {
    return scan(first, last, radius, src, dst,
                [&](const RKp_LineSpan& span) { return gaussian(span, radius, src, dst); });
}
template <class S>
RK_Long boxScan(int32_t mode, int32_t first, int32_t last, int32_t radius, const S* src, S* dst) {
    return scan(first, last, radius, src, dst,
                [&](const RKp_LineSpan& span) { return boxes(mode, span, radius, src, dst); });
}

}  // namespace

void RKp_DisposeUnoWeights() {
    KIT_FreeHandle(g_weights.kernel);
    g_weights = {0, nullptr, 0, 0};
}

RK_Long RK_GBlurUnoScan(int32_t, RK_EffectRef, int32_t first, int32_t last, int32_t radius,
                        const uint8_t* src_line, uint8_t* dst_line) {
    return gaussianScan(first, last, radius, src_line, dst_line);
}
RK_Long RK_GBlurDeepUnoScan(int32_t, RK_EffectRef, int32_t first, int32_t last, int32_t radius,
                            const uint16_t* src_line, uint16_t* dst_line) {
    return gaussianScan(first, last, radius, src_line, dst_line);
}
RK_Long RK_BoxBlurUnoScan(int32_t mode, RK_EffectRef, int32_t first, int32_t last, int32_t radius,
                          const uint8_t* src_line, uint8_t* dst_line) {
    return boxScan(mode, first, last, radius, src_line, dst_line);
}
RK_Long RK_BoxBlurDeepUnoScan(int32_t mode, RK_EffectRef, int32_t first, int32_t last, int32_t radius,
                              const uint16_t* src_line, uint16_t* dst_line) {
    return boxScan(mode, first, last, radius, src_line, dst_line);
}
