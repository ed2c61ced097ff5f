#include "RK/indep/filter/RK_PaintSpot.h"

#include <algorithm>
#include <cstring>

#include "RK/indep/filter/RK_Convolve.h"
#include "RK/indep/filter/RKp_Draw.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldDepth.h"

namespace {

// The four channels of a pixel as numbers of 16 bits each, in one word.
uint64_t spread(const RK_Pixel8& p) {
    uint32_t word;
    std::memcpy(&word, &p, sizeof word);
    const uint64_t pairs = (word | uint64_t{word} << 16) & 0x0000FFFF0000FFFFu;
    return (pairs | pairs << 8) & 0x00FF00FF00FF00FFu;
}
RK_Pixel8 gathered(uint64_t channels) {
    const uint64_t pairs = (channels | channels >> 8) & 0x0000FFFF0000FFFFu;
    const auto word = static_cast<uint32_t>(pairs | pairs >> 16);
    RK_Pixel8 p;
    std::memcpy(&p, &word, sizeof p);
    return p;
}

// (d * (255 - k) + c * k) / 255 of all four channels, for k of 0..255: the sum t is at most 65025, and t /
// 255 is (t + 1 + (t >> 8)) >> 8 then; no channel's steps reach the next one.
RK_Pixel8 mixed(const RK_Pixel8& d, uint64_t c, uint32_t k) {
    constexpr uint64_t kOnes = 0x0001000100010001u, kLow = 0x00FF00FF00FF00FFu;
    const uint64_t t = spread(d) * (255 - k) + c * k;
    return gathered(((t + kOnes + ((t >> 8) & kLow)) >> 8) & kLow);
}

// The same for any k, wrapping.
uint8_t mixedWrapping(uint32_t d, uint32_t c, uint32_t k) {
    return static_cast<uint8_t>(std::min((d * (255u - k) + c * k) / 255u, 255u));
}

void paintRow(int32_t count, const uint32_t* kernel, const RK_Pixel8& colour, RK_Pixel8* row) {
    const uint64_t c = spread(colour);
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t k = kernel[i];
        RK_Pixel8& d = row[i];
        if (k <= 255) {
            d = mixed(d, c, k);
        } else {
            d = {mixedWrapping(d.alpha, colour.alpha, k), mixedWrapping(d.red, colour.red, k),
                 mixedWrapping(d.green, colour.green, k), mixedWrapping(d.blue, colour.blue, k)};
        }
    }
}

// Of the places centre - half .. centre + half those within 0..size: from `first` up to `last`.
struct Part {
    Part(int32_t centre, int32_t half, int32_t size)
        : origin(int64_t{centre} - half),
          first(std::max<int64_t>(origin, 0)),
          last(std::min<int64_t>(int64_t{centre} + half + 1, size)) {}
    int64_t origin, first, last;
};

}  // namespace

RK_Long RK_PaintSpot(RK_EffectRef, int32_t x, int32_t y, uint32_t flags, int32_t size, const uint32_t* kernel,
                     RK_Pixel8 colour, RK_LayerDef* world) {
    if (world == nullptr || world->data == nullptr || kernel == nullptr || size < 0 || size % 2 == 0 ||
        RKp_WorldDepth(world) != 8)
        return RKp_ReportBadParam(RKp_kSitePaintSpot);
    const int32_t half = size >> 1;
    const bool line = (flags & RK_KERNEL_1D) != 0, upright = line && (flags & RK_KERNEL_VERTICAL) != 0;
    const Part columns(x, upright ? 0 : half, world->width),
        rows(y, line && !upright ? 0 : half, world->height);
    if (columns.first >= columns.last) return RK_kOK;
    const int64_t stride = upright ? 1 : size;
    for (int64_t v = rows.first; v < rows.last; ++v) {
        const uint32_t* entries =
            kernel + static_cast<ptrdiff_t>((v - rows.origin) * stride + (columns.first - columns.origin));
        paintRow(static_cast<int32_t>(columns.last - columns.first), entries, colour,
                 RKp_PixelAt<RK_Pixel8>(*world, columns.first, v));
    }
    return RK_kOK;
}
