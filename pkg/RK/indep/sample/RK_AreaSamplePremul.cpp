// The premultiplied area sampler: integers throughout.
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RKp_Footprint.h"

namespace {

struct Sums {
    int64_t A = 0, R = 0, G = 0, B = 0;

    // A coverage of 0x10000 counts a channel 256 times.
    void add(const RK_Pixel8& p, int64_t coverage) {
        const int64_t scale = coverage << 8;
        A += p.alpha * scale / 65536;
        R += p.red * scale / 65536;
        G += p.green * scale / 65536;
        B += p.blue * scale / 65536;
    }
};

// Partial times extent; a whole step has the extent itself.
int64_t cover(int64_t partial, int64_t extent) { return partial * extent / 65536; }

}  // namespace

RK_Long RK_AreaSample_Premul(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    const RK_LayerDef& src = *pb->src;
    *out = RK_Pixel8{};
    // The box is cut to the source before the radii choose a case.
    const RKp_Footprint box = RKp_ClampFootprint(RKp_MakeFootprint(x, y, *pb), src);
    if (box.isEmpty()) return RK_kOK;

    const bool narrow = pb->x_radius <= RK_kHalfPixel, low = pb->y_radius <= RK_kHalfPixel;
    const int64_t width = box.right - box.left, height = box.bottom - box.top;
    Sums sums;
    const auto addPoint = [&](int32_t px, int32_t py, int64_t coverage) {
        RK_Pixel8 sample;
        RKp_Slot<RKp_kSlot_SubpixelSample_Premul>()(ref, px, py, pb, &sample);
        sums.add(sample, coverage);
    };
    if (narrow && low) {
        addPoint(x, y, cover(width, height));
    } else if (low) {
        const auto row = static_cast<int32_t>(box.top + (height >> 1) - 32768);
        RKp_ForCoverage(box.left, box.right, src.width,
                        [&](int32_t column, int32_t part) { addPoint(RKp_WholePosition(column), row, cover(part, height)); });
    } else if (narrow) {
        const auto column = static_cast<int32_t>(box.left + (width >> 1) - 32768);
        RKp_ForCoverage(box.top, box.bottom, src.height,
                        [&](int32_t row, int32_t part) { addPoint(column, RKp_WholePosition(row), cover(part, width)); });
    } else {
        RKp_ForCoverage(box.top, box.bottom, src.height, [&](int32_t row, int32_t row_part) {
            const auto* pixels = reinterpret_cast<const RK_Pixel8*>(static_cast<const char*>(src.data) +
                                                                    static_cast<ptrdiff_t>(row) * src.rowbytes);
            RKp_ForCoverage(box.left, box.right, src.width, [&](int32_t column, int32_t part) {
                sums.add(pixels[column], cover(part, row_part));
            });
        });
    }

    const int64_t d = (pb->area >> 8) + ((pb->area >> 7) & 1), h = d >> 1;
    if (sums.A == 0 || d == 0) return RK_kOK;
    const auto mean = [&](int64_t sum) { return static_cast<uint8_t>(std::min<int64_t>(255, (sum + h) / d)); };
    const uint8_t alpha = mean(sums.A);
    if (alpha != 0) *out = {alpha, mean(sums.R), mean(sums.G), mean(sums.B)};
    return RK_kOK;
}
