// The premultiplied sampler: integer arithmetic throughout.
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RKp_SubpixelSample_StraightT.h"

namespace {

// Which of the two columns (or rows) of neighbours take part.
enum Sides { kNone = 0, kFirst = 1, kSecond = 2, kBoth = 3 };

// By the whole coordinate, against a source of `size` pixels.
Sides sidesInside(int32_t x, int32_t size) {
    if (x > 0) {
        const int64_t last = (int64_t{size} - 1) * 65536;
        if (x < last) return kBoth;
        return last <= int64_t{x} - 0x10000 ? kNone : kFirst;
    }
    if (x < -65535) return kNone;
    return (x & 0xFFFF) != 0 ? kSecond : kFirst;
}

RK_Pixel8 sampleAt(int32_t x, int32_t y, const RK_LayerDef& src) {
    if (src.width < 1 || src.height < 1) return {};
    if (RKp_IsWhole(x, y)) return RKp_WholePixelClipped<RK_Pixel8>(src, x, y);
    const Sides columns = sidesInside(x, src.width), rows = sidesInside(y, src.height);
    if (columns == kNone || rows == kNone) return {};

    const int32_t xi = x >> 16, yi = y >> 16;
    const auto neighbour = [&](Sides column, Sides row) {
        const bool taken = (columns & column) != 0 && (rows & row) != 0;
        return taken ? *RKp_SourcePixel<RK_Pixel8>(src, xi + (column == kSecond), yi + (row == kSecond)) : RK_Pixel8{};
    };
    const RK_Pixel8 p00 = neighbour(kFirst, kFirst), p10 = neighbour(kSecond, kFirst);
    const RK_Pixel8 p01 = neighbour(kFirst, kSecond), p11 = neighbour(kSecond, kSecond);
    if (RKp_SamePixel(p00, p10) && RKp_SamePixel(p00, p01) && RKp_SamePixel(p00, p11)) return p00;

    // Kept: three weights are truncated, the fourth takes the rest.
    const double xf = x & 0xFFFF, yf = y & 0xFFFF, scale = 1.52587890625e-05;
    const auto w11 = static_cast<int32_t>(xf * yf * scale);
    const auto w10 = static_cast<int32_t>((65536.0 - yf) * xf * scale);
    const auto w01 = static_cast<int32_t>((65536.0 - xf) * yf * scale);
    const int32_t w00 = 65536 - w10 - (w01 + w11);
    const auto mixed = [&](uint8_t RK_Pixel8::*c) {
        return static_cast<uint8_t>((p00.*c * w00 + p10.*c * w10 + p01.*c * w01 + p11.*c * w11 + 32768) >> 16);
    };
    return {mixed(&RK_Pixel8::alpha), mixed(&RK_Pixel8::red), mixed(&RK_Pixel8::green), mixed(&RK_Pixel8::blue)};
}

}  // namespace

// Nothing is written before all is read: the pixel may be one of the source's.
RK_Long RK_SubpixelSample_Premul(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    *out = sampleAt(x, y, *pb->src);
    return RK_kOK;
}
