#include "Masks.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "Failure.h"
#include "RK/indep/composite/RK_TrackMatte.h"
#include "RK/indep/filter/RK_MergeMaskAlpha.h"
#include "RK/indep/filter/RK_UnoBlur.h"

namespace {

template <class P>
P* RowOf(RK_World& world, int32_t y) {
    return reinterpret_cast<P*>(static_cast<uint8_t*>(world.record.data) +
                                static_cast<ptrdiff_t>(y) * world.record.rowbytes);
}

// work(S{}) with the type of the mask's samples.
template <class Work>
void WithSamples(const RK_UnoBuffer& mask, Work work) {
    if (mask.depth == 8)
        work(uint8_t{});
    else
        work(uint16_t{});
}

// ---- Blurs ----------------------------------------------------------------------------------------------

RK_Long Scan(MaskBlur blur, int32_t first, int32_t last, int32_t radius, const uint8_t* from, uint8_t* to) {
    if (blur == MaskBlur::Gaussian) return RK_GBlurUnoScan(0, nullptr, first, last, radius, from, to);
    return RK_BoxBlurUnoScan(blur == MaskBlur::Box ? 1 : 0, nullptr, first, last, radius, from, to);
}
RK_Long Scan(MaskBlur blur, int32_t first, int32_t last, int32_t radius, const uint16_t* from, uint16_t* to) {
    if (blur == MaskBlur::Gaussian) return RK_GBlurDeepUnoScan(0, nullptr, first, last, radius, from, to);
    return RK_BoxBlurDeepUnoScan(blur == MaskBlur::Box ? 1 : 0, nullptr, first, last, radius, from, to);
}

// Blurs lines of `length` samples in place.
template <class S>
class LineBlur {
  public:
    LineBlur(MaskBlur blur, double radius, int32_t length, const std::string& shown)
        : blur_(blur),
          radius_(static_cast<int32_t>(std::lround(radius * 65536))),
          blurred_(static_cast<size_t>(length + static_cast<int32_t>(std::ceil(radius)) + 3)),
          length_(length),
          shown_(shown) {}
    void operator()(S* line) {
        S* const end = line + length_;
        const auto some = [](S s) { return s != 0; };
        S* const first = std::find_if(line, end, some);
        if (first == end) return;
        S* last = end;
        while (last[-1] == 0) --last;
        std::fill(blurred_.begin(), blurred_.end(), S{0});
        CheckResult(Scan(blur_, static_cast<int32_t>(first - line), static_cast<int32_t>(last - line),
                         radius_, line, blurred_.data()),
                    shown_);
        std::copy_n(blurred_.begin(), length_, line);
    }

  private:
    const MaskBlur blur_;
    const int32_t radius_;
    std::vector<S> blurred_;
    const int32_t length_;
    const std::string& shown_;
};

// Columns that are taken out together, so that the memory is walked by rows.
constexpr int32_t kColumns = 64;

template <class S>
void BlurBothWays(RK_UnoBuffer& mask, MaskBlur blur, double radius, Progress& progress,
                  const std::string& shown) {
    const int64_t all = int64_t{mask.height} + mask.width;
    LineBlur<S> along(blur, radius, mask.width, shown);
    for (int32_t y = 0; y < mask.height; ++y) {
        along(mask.Row<S>(y));
        if (y % 64 == 63) progress.Report(y, all);
    }
    LineBlur<S> down(blur, radius, mask.height, shown);
    const auto height = static_cast<size_t>(mask.height);
    std::vector<S> lines(height * kColumns);
    for (int32_t x = 0; x < mask.width; x += kColumns) {
        const auto here = static_cast<size_t>(std::min(kColumns, mask.width - x));
        for (size_t y = 0; y < height; ++y)
            for (size_t k = 0; k < here; ++k)
                lines[k * height + y] = mask.Row<S>(static_cast<int32_t>(y))[static_cast<size_t>(x) + k];
        for (size_t k = 0; k < here; ++k) down(&lines[k * height]);
        for (size_t y = 0; y < height; ++y)
            for (size_t k = 0; k < here; ++k)
                mask.Row<S>(static_cast<int32_t>(y))[static_cast<size_t>(x) + k] = lines[k * height + y];
        progress.Report(int64_t{mask.height} + x, all);
    }
}

// ---- Grey -----------------------------------------------------------------------------------------------

uint8_t Moved(uint8_t m, uint8_t) { return m; }
uint16_t Moved(uint16_t m, uint16_t) { return m; }
float Moved(uint16_t m, float) { return static_cast<float>(m) * (1.0f / 32768.0f); }

template <class P, class S>
void DrawGrey(const RK_UnoBuffer& mask, decltype(P::alpha) full, RK_World& world) {
    for (int32_t y = 0; y < mask.height; ++y) {
        const S* from = mask.Row<S>(y);
        P* to = RowOf<P>(world, y);
        for (int32_t x = 0; x < mask.width; ++x) {
            const auto value = Moved(from[x], full);
            to[x] = {full, value, value, value};
        }
    }
}

}  // namespace

MaskPtr NewMask(int32_t width, int32_t height, int depth, const std::string& shown) {
    RK_UnoBuffer* made = nullptr;
    CheckResult((depth == 8 ? RK_NewUnoBuffer : RK_NewDeepUnoBuffer)(width, height, &made), shown);
    MaskPtr mask(made);
    std::memset(*mask->pixels, 0, static_cast<size_t>(mask->Rowbytes()) * static_cast<size_t>(height));
    return mask;
}

MaskPtr MaskOf(RK_World& world, RK_MaskKind kind, int32_t pad, Progress& progress, const std::string& shown) {
    const int32_t width = world.record.width, height = world.record.height;
    const bool deep = world.Depth() != 8;
    MaskPtr mask = NewMask(width + 2 * pad, height + 2 * pad, deep ? 16 : 8, shown);
    const auto take = [&](auto sample, auto pixel) {
        using S = decltype(sample);
        std::vector<decltype(pixel)> row(static_cast<size_t>(width));
        for (int32_t y = 0; y < height; ++y) {
            const RK_Long code = RK_PrepTrackMatteUniv(width, RowOf<decltype(pixel)>(world, y), 0, width,
                                                       static_cast<RK_Long>(kind), deep, row.data());
            CheckResult(code, shown);
            S* to = mask->Row<S>(y + pad) + pad;
            for (size_t x = 0; x < row.size(); ++x) to[x] = row[x].alpha;
            if (y % 64 == 63) progress.Report(y, height);
        }
    };
    if (deep)
        take(uint16_t{}, RK_Pixel16{});
    else
        take(uint8_t{}, RK_Pixel8{});
    return mask;
}

void BlurMaskBothWays(RK_UnoBuffer& mask, MaskBlur blur, double radius, Progress& progress,
                      const std::string& shown) {
    if (radius <= 0) return;
    WithSamples(mask, [&](auto s) { BlurBothWays<decltype(s)>(mask, blur, radius, progress, shown); });
}

WorldPtr GreyOf(const RK_UnoBuffer& mask, int depth) {
    WorldPtr world = NewWorld(mask.width, mask.height, depth, "the result");
    switch (depth) {
        case 8: DrawGrey<RK_Pixel8, uint8_t>(mask, 255, *world); break;
        case 16: DrawGrey<RK_Pixel16, uint16_t>(mask, 32768, *world); break;
        default: DrawGrey<RK_PixelFloat, uint16_t>(mask, 1.0f, *world); break;
    }
    return world;
}

void MergeMask(const RK_UnoBuffer& mask, Place at, RK_World& world, Progress& progress,
               const std::string& shown) {
    try {
        RK_MergeMaskAlpha(progress.Info(), static_cast<int16_t>(at.x), static_cast<int16_t>(at.y), nullptr,
                          &mask, nullptr, &world);
    } catch (RK_Long code) {
        CheckResult(code, shown);
    }
}
