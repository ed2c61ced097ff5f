// The box around a position that an area sampler reads.
#ifndef RKP_FOOTPRINT_H
#define RKP_FOOTPRINT_H

#include <algorithm>

#include "RK/indep/sample/RK_Samp.h"

constexpr double RKp_k2ToMinus16 = 1.52587890625e-05;
constexpr double RKp_k2ToMinus32 = RKp_k2ToMinus16 * RKp_k2ToMinus16;

// The four edges of a footprint, 16.16, moved half a pixel so that source pixel i covers [i, i + 1).
struct RKp_Footprint {
    int64_t left, top, right, bottom;

    bool isEmpty() const { return left >= right || top >= bottom; }
};
inline RKp_Footprint RKp_MakeFootprint(int32_t x, int32_t y, const RK_SampPB& pb) {
    return {int64_t{x} - pb.x_radius + 32768, int64_t{y} - pb.y_radius + 32768,
            int64_t{x} + pb.x_radius + 32768, int64_t{y} + pb.y_radius + 32768};
}
// Cut to the source.
inline RKp_Footprint RKp_ClampFootprint(const RKp_Footprint& f, const RK_LayerDef& src) {
    const int64_t width = int64_t{std::max(src.width, 0)} << 16,
                  height = int64_t{std::max(src.height, 0)} << 16;
    return {std::clamp<int64_t>(f.left, 0, width), std::clamp<int64_t>(f.top, 0, height),
            std::clamp<int64_t>(f.right, 0, width), std::clamp<int64_t>(f.bottom, 0, height)};
}

// How the pixels from `begin` to `end`, both 16.16, are covered: calls visit(i, coverage) for each, with
// 0x10000 for a whole one. Pixels outside [0, size) are left out.
template <class Visit>
inline void RKp_ForCoverage(int64_t begin, int64_t end, int32_t size, Visit&& visit) {
    const int64_t first_fraction = begin & 0xFFFF, last_fraction = end & 0xFFFF;
    const int64_t last = end >> 16;
    int64_t i = begin >> 16;
    if (first_fraction != 0) {
        if (i >= 0 && i < size)
            visit(static_cast<int32_t>(i), static_cast<int32_t>(0x10000 - first_fraction));
        ++i;
    }
    const int64_t whole_end = std::min<int64_t>(last, size);
    for (i = std::max<int64_t>(i, 0); i < whole_end; ++i) visit(static_cast<int32_t>(i), 0x10000);
    if (last_fraction != 0 && last >= 0 && last < size)
        visit(static_cast<int32_t>(last), static_cast<int32_t>(last_fraction));
}

// The position of pixel i; beyond what 16.16 holds it wraps.
inline int32_t RKp_WholePosition(int32_t i) { return static_cast<int32_t>(static_cast<uint32_t>(i) << 16); }

#endif
