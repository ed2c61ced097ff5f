#include "RK/indep/filter/RK_Convolve.h"

#include <algorithm>

#include "RK/host/KIT.h"
#include "RK/indep/filter/RKp_Convolve.h"
#include "RK/indep/filter/RKp_ConvolveTaps.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

// Pixels whose sums stand side by side while a kernel goes over them.
constexpr int32_t kMostPixels = 256;
// Progress is told when more pixels than this were done since the last time.
constexpr int64_t kPixelsBetweenReports = 0x800;

// The four kernels of a call and what they are divided by.
template <class P>
class Kernels {
  public:
    using Sum = RKp_ConvolveSum<P>;
    static constexpr bool kFloat = std::is_same_v<P, RK_PixelFloat>;

    Kernels(uint32_t flags, int32_t size, const int32_t* const kernels[4]) {
        // A size beyond 16 bits wraps; one whose half comes out negative has no entries.
        const auto half = static_cast<int16_t>(size >> 1);
        const bool one_row = (flags & RK_KERNEL_1D) != 0, upright = (flags & RK_KERNEL_VERTICAL) != 0;
        across_ = one_row && upright ? int16_t{0} : half;
        down_ = one_row && !upright ? int16_t{0} : half;
        for (int32_t c = 0; c < 4; ++c) entries_[c] = kernels[c];
        for (int32_t c = 0; c < 4; ++c) setDivisor(c, (flags & RK_KERNEL_NORMALISE) != 0);
        add_ = RKp_AddTaps<P>;
        if constexpr (!kFloat)
            if (KIT_G_CPU_DataP->has_sse2 != 0 && fitIn16Bits()) add_ = RKp_AddTaps_SSE2<P>;
    }

    // Half-sizes along x and y.
    int32_t across() const { return across_; }
    int32_t down() const { return down_; }

    // Adds to the sums of a run of pixels what the entries `first` to `last` of the kernel's row at distance
    // `row` give; distances are counted from the middle. `in` is the pixel that lies under the first of them
    // for the first pixel.
    void addRow(const P* in, int32_t pixels, int32_t row, int32_t first, int32_t last, Sum* sums) const {
        const int64_t start = int64_t{row + down_} * (2 * across_ + 1) + across_;
        Sum taps[4 * RKp_kMostTaps];
        while (first <= last) {
            const int32_t count = std::min(last - first + 1, RKp_kMostTaps);
            for (int32_t c = 0; c < 4; ++c) pack(c, start + first, count, taps + c);
            add_(in, pixels, taps, count, sums);
            in += count;
            first += count;
        }
    }

    // The sums divided and stored.
    void store(const Sum* sums, int32_t pixels, bool clamp, P* out) const {
        using Channel = typename RKp_Depth<P>::Channel;
        const auto channel = [&](int32_t i, int32_t c) {
            if constexpr (kFloat) {
                const float v = sums[4 * i + c] / divisor_[c];
                if (!clamp) return v;
                return v < 0.0f ? 0.0f : v > 1.0f ? 1.0f : v;  // NaN passes
            } else {
                const auto sum = static_cast<int32_t>(sums[4 * i + c]);
                // Half a unit away from zero keeps an exact quotient from coming out short; no other quotient
                // of 32-bit numbers comes that near to a whole one.
                const double away = sum < 0 ? -0.5 : 0.5;
                auto v = static_cast<int32_t>((static_cast<double>(sum) + away) * inverse_[c]);
                if (clamp) v = std::clamp<int32_t>(v, 0, RKp_Depth<P>::kFull);
                return static_cast<Channel>(v);
            }
        };
        for (int32_t i = 0; i < pixels; ++i)
            out[i] = {channel(i, 0), channel(i, 1), channel(i, 2), channel(i, 3)};
    }

  private:
    int64_t cells() const { return int64_t{2 * down_ + 1} * (2 * across_ + 1); }
    // Half-sizes that came out negative make a product of cells but no entries.
    int64_t entries() const { return down_ < 0 || across_ < 0 ? 0 : cells(); }

    void setDivisor(int32_t c, bool normalise) {
        int64_t divisor = cells() * 255;
        if (normalise) {
            divisor = 0;
            for (int64_t i = 0; i < entries(); ++i) divisor += entries_[c][i];
        }
        if constexpr (!kFloat)
            divisor = static_cast<int32_t>(static_cast<uint64_t>(divisor));  // wraps as the sums do
        if (divisor == 0) divisor = 1;
        // A kernel turned round and divided by 1 gives the same, INT32_MIN / -1 included, which is INT32_MIN.
        negative_[c] = !kFloat && divisor == -1;
        if (negative_[c]) divisor = 1;
        divisor_[c] = static_cast<float>(divisor);
        inverse_[c] = 1.0 / static_cast<double>(divisor);
    }
    bool fitIn16Bits() const {
        for (const int32_t* kernel : entries_)
            for (int64_t i = 0; i < entries(); ++i)
                if (kernel[i] < -INT16_MAX || kernel[i] > INT16_MAX) return false;
        return true;
    }
    void pack(int32_t c, int64_t first, int32_t count, Sum* taps) const {
        const int32_t* from = entries_[c] + first;
        for (int32_t t = 0; t < count; ++t) {
            if constexpr (kFloat) {
                taps[4 * t] = static_cast<float>(from[t]);
            } else {
                const auto entry = static_cast<uint32_t>(from[t]);
                taps[4 * t] = negative_[c] ? 0u - entry : entry;
            }
        }
    }

    const int32_t* entries_[4];
    int32_t across_, down_;
    bool negative_[4];
    float divisor_[4];
    double inverse_[4];
    RKp_AddTapsFunc<P>* add_;
};

// One output row, in runs of pixels whose windows are cut alike: one pixel at a time near the ends.
template <class P>
void convolveRow(const Kernels<P>& kernels, const RK_WorldX<P>& src, int32_t y, bool clamp,
                 RK_WorldX<P>& dst) {
    const int64_t across = kernels.across(), down = kernels.down();
    const auto top = static_cast<int32_t>(std::max<int64_t>(-down, -int64_t{y}));
    const auto bottom = static_cast<int32_t>(std::min<int64_t>(down, int64_t{src.height()} - 1 - y));
    RKp_ConvolveSum<P> sums[4 * kMostPixels];
    int32_t pixels;
    for (int32_t x = 0; x < dst.width(); x += pixels) {
        const auto first = static_cast<int32_t>(std::max<int64_t>(-across, -int64_t{x}));
        const auto last = static_cast<int32_t>(std::min<int64_t>(across, int64_t{src.width()} - 1 - x));
        pixels = 1;
        if (x >= across && x + across < src.width())
            pixels = static_cast<int32_t>(
                std::min({int64_t{kMostPixels}, src.width() - across - x, int64_t{dst.width()} - x}));
        std::fill(sums, sums + 4 * pixels, RKp_ConvolveSum<P>{0});
        if (first <= last)
            for (int32_t row = top; row <= bottom; ++row)
                kernels.addRow(src.row(y + row) + (x + first), pixels, row, first, last, sums);
        kernels.store(sums, pixels, clamp, dst.row(y) + x);
    }
}

}  // namespace

template <class P>
RK_Long RKp_Convolve(RK_ProgressInfo* progress, RK_WorldX<P>* src, const GEO_Rect*, uint32_t flags,
                     int32_t size, const int32_t* a_kernel, const int32_t* r_kernel, const int32_t* g_kernel,
                     const int32_t* b_kernel, RK_WorldX<P>* dst) {
    if (src == nullptr || dst == nullptr || src->record.data == nullptr || dst->record.data == nullptr ||
        a_kernel == nullptr || r_kernel == nullptr || g_kernel == nullptr || b_kernel == nullptr ||
        size < 0 || size % 2 == 0)
        return RKp_ReportBadParam(RKp_kSiteConvolve);
    const int32_t* const entries[4] = {a_kernel, r_kernel, g_kernel, b_kernel};
    const Kernels<P> kernels(flags, size, entries);
    const bool clamp = (flags & RK_KERNEL_NO_CLAMP) == 0;
    int64_t since_report = 0;
    for (int32_t y = 0; y < dst->height(); ++y) {
        convolveRow(kernels, *src, y, clamp, *dst);
        since_report += dst->width();
        if (since_report <= kPixelsBetweenReports || progress == nullptr ||
            progress->progress_func == nullptr)
            continue;
        const RK_Long answer = progress->progress_func(progress->refcon, RK_Long{y} + 1, dst->height());
        if (answer != RK_kOK) return answer;
        since_report = 0;
    }
    return RK_kOK;
}

template RK_Long RKp_Convolve(RK_ProgressInfo*, RK_WorldX<RK_Pixel8>*, const GEO_Rect*, uint32_t, int32_t,
                              const int32_t*, const int32_t*, const int32_t*, const int32_t*,
                              RK_WorldX<RK_Pixel8>*);
template RK_Long RKp_Convolve(RK_ProgressInfo*, RK_WorldX<RK_Pixel16>*, const GEO_Rect*, uint32_t, int32_t,
                              const int32_t*, const int32_t*, const int32_t*, const int32_t*,
                              RK_WorldX<RK_Pixel16>*);
template RK_Long RKp_Convolve(RK_ProgressInfo*, RK_WorldX<RK_PixelFloat>*, const GEO_Rect*, uint32_t, int32_t,
                              const int32_t*, const int32_t*, const int32_t*, const int32_t*,
                              RK_WorldX<RK_PixelFloat>*);

RK_Long RK_Convolve(RK_ProgressInfo* progress, RK_LayerDef* src, const GEO_Rect* rect, uint32_t flags,
                    int32_t size, const int32_t* a_kernel, const int32_t* r_kernel, const int32_t* g_kernel,
                    const int32_t* b_kernel, RK_LayerDef* dst) {
    if (src == nullptr || dst == nullptr) return RKp_ReportBadParam(RKp_kSiteConvolve);
    const int32_t depth = RKp_WorldDepth(src);
    if (depth != RKp_WorldDepth(dst))
        return RKp_VERIFICATION("RK_Convolve requires source and dst worlds to be same depth");
    return RKp_AtBorder([&] {
        return RKp_ForDepth(depth, RKp_kBadDepthText, [&](auto tag) {
            using P = typename decltype(tag)::Pixel;
            RK_WorldX<P> from(src, false), to(dst, false);
            return RKp_Convolve<P>(progress, &from, rect, flags, size, a_kernel, r_kernel, g_kernel, b_kernel,
                                   &to);
        });
    });
}
