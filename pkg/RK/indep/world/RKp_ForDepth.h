// The depth dispatch that drivers share.
#ifndef RKP_FOR_DEPTH_H
#define RKP_FOR_DEPTH_H

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldDepth.h"

// A tag that carries the pixel type of a depth: `[&](auto tag) { using P = typename decltype(tag)::Pixel; ... }`.
template <class P>
struct RKp_PixelTag {
    using Pixel = P;
};

// Calls work with the tag of `depth` and gives its result; another depth reports `bad_depth` and gives 3.
template <class Work>
RK_Long RKp_ForDepth(int32_t depth, const char* bad_depth, Work&& work) {
    switch (depth) {
        case 8: return work(RKp_PixelTag<RK_Pixel8>{});
        case 16: return work(RKp_PixelTag<RK_Pixel16>{});
        case 32: return work(RKp_PixelTag<RK_PixelFloat>{});
        default: return RKp_BAD_DEPTH(bad_depth);
    }
}

// The text of the passes that share one dispatch. Kept: its odd tail is part of it.
constexpr const char* RKp_kBadDepthText = "Unknown world bitdepth in##CONDITIONNAME";

#endif
