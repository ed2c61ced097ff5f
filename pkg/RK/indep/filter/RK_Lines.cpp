#include "RK/indep/filter/RK_Lines.h"

#include <algorithm>
#include <cmath>

#include "RK/indep/filter/RKp_Draw.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_World.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

constexpr double kOne = 65536;  // of 16.16

// Where a line is on one axis at its i-th pixel: (at + i * step) >> 16.
struct Axis {
    int64_t at, step;
};
struct Walk {
    Axis x, y;
    int64_t first, last;  // pixels
};

int32_t truncated(double value) {
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}

// The whole line from start to end, which are not one point.
Walk walkOf(const double start[2], const double end[2]) {
    const double dx = end[0] - start[0], dy = end[1] - start[1];
    const bool upright = std::fabs(dx) <= std::fabs(dy);
    const int major = upright ? 1 : 0, minor = 1 - major;
    const int64_t from = GEO_RoundDouble(start[major] * kOne);
    const int64_t slope = GEO_RoundDouble((upright ? dx / dy : dy / dx) * kOne);
    const int64_t snapped = (from + 0x8000) & ~int64_t{0xFFFF};
    Axis along = {snapped, 0x10000};
    Axis across = {GEO_RoundDouble(start[minor] * kOne) + ((slope * (snapped - from)) >> 16) + 0x8000, slope};
    int64_t count = truncated(end[major] + 0.5) - (snapped >> 16);
    if (count < 0) {
        count = -count;
        along.step = -along.step;
        across.step = -across.step;
    }
    return upright ? Walk{across, along, 0, count} : Walk{along, across, 0, count};
}

int64_t floorOf(int64_t a, int64_t b) { return a / b - (a % b != 0 && (a < 0) != (b < 0) ? 1 : 0); }
int64_t ceilingOf(int64_t a, int64_t b) { return -floorOf(-a, b); }

// Leaves the pixels at which the axis is within 0..size.
void cut(const Axis& axis, int32_t size, Walk& walk) {
    const int64_t top = int64_t{size} * 0x10000 - 1;
    if (axis.step == 0) {
        if (axis.at < 0 || axis.at > top) walk.last = walk.first - 1;
        return;
    }
    const int64_t enter = axis.step > 0 ? 0 : top, leave = axis.step > 0 ? top : 0;
    walk.first = std::max(walk.first, ceilingOf(enter - axis.at, axis.step));
    walk.last = std::min(walk.last, floorOf(leave - axis.at, axis.step));
}

template <class P>
void drawWalk(const RK_LayerDef& world, Walk walk, const P& colour) {
    cut(walk.x, world.width, walk);
    cut(walk.y, world.height, walk);
    if (walk.first > walk.last) return;
    int64_t x = walk.x.at + walk.first * walk.x.step, y = walk.y.at + walk.first * walk.y.step;
    for (int64_t i = walk.first; i <= walk.last; ++i, x += walk.x.step, y += walk.y.step)
        *RKp_PixelAt<P>(world, x >> 16, y >> 16) = colour;
}

bool inside(const RK_LayerDef& world, int32_t x, int32_t y) {
    return x >= 0 && x < world.width && y >= 0 && y < world.height;
}

template <class P>
RK_Long setPixel(int32_t x, int32_t y, const P* colour, const RK_LayerDef* world) {
    if (colour == nullptr || world == nullptr || world->data == nullptr || !inside(*world, x, y)) return 0;
    if (RKp_WorldDepth(world) != RKp_Depth<P>::kBits) return 0;
    *RKp_PixelAt<P>(*world, x, y) = *colour;
    return 1;
}

}  // namespace

RK_Long RK_DrawLine(const double start[2], const double end[2], const RK_PixelFloat* colour,
                    RK_World* world) {
    if (start == nullptr || end == nullptr || colour == nullptr || world == nullptr ||
        world->record.data == nullptr)
        return RKp_ReportBadParam(RKp_kSiteLine);
    return RKp_ForDepth(static_cast<int32_t>(world->Depth()), RKp_kBadDepthText, [&](auto tag) -> RK_Long {
        using P = typename decltype(tag)::Pixel;
        const P pixel = RKp_DrawingColour<P>(*colour);
        const RK_LayerDef& record = world->record;
        if (std::fabs(end[0] - start[0]) <= 1e-12 && std::fabs(end[1] - start[1]) <= 1e-12) {
            const int32_t x = GEO_RoundDouble(start[0] * kOne) >> 16,
                          y = GEO_RoundDouble(start[1] * kOne) >> 16;
            if (inside(record, x, y)) *RKp_PixelAt<P>(record, x, y) = pixel;
        } else {
            drawWalk(record, walkOf(start, end), pixel);
        }
        return RK_kOK;
    });
}

RK_Long RK_SetPixel8(int32_t x, int32_t y, const RK_Pixel8* colour, RK_LayerDef* world) {
    return setPixel(x, y, colour, world);
}
RK_Long RK_SetPixel16(int32_t x, int32_t y, const RK_Pixel16* colour, RK_LayerDef* world) {
    return setPixel(x, y, colour, world);
}
RK_Long RK_SetPixelFloat(int32_t x, int32_t y, const RK_PixelFloat* colour, RK_LayerDef* world) {
    return setPixel(x, y, colour, world);
}
