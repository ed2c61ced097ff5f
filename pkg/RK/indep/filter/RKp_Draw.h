// What drawing has in common: a colour at a depth, and where a pixel lies.
#ifndef RKP_DRAW_H
#define RKP_DRAW_H

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Depth.h"

// c * full + 0.5 in float, truncated.
// Kept: no channel of a line or a text is clamped; the low bits are stored.
template <class P>
P RKp_DrawingColour(const RK_PixelFloat& c) {
    using C = typename RKp_Depth<P>::Channel;
    const auto channel = [](float x) {
        return static_cast<C>(RKp_Truncate(x * static_cast<float>(RKp_Depth<P>::kFull) + 0.5f));
    };
    return {channel(c.alpha), channel(c.red), channel(c.green), channel(c.blue)};
}
template <>
inline RK_PixelFloat RKp_DrawingColour<RK_PixelFloat>(const RK_PixelFloat& c) {
    return c;
}

// x and y lie inside the world.
template <class P>
P* RKp_PixelAt(const RK_LayerDef& world, int64_t x, int64_t y) {
    char* row = static_cast<char*>(world.data) + static_cast<ptrdiff_t>(y * world.rowbytes);
    return reinterpret_cast<P*>(row) + static_cast<ptrdiff_t>(x);
}

#endif
