// Lines, outlines and the layout of debug text once more.
#ifndef TEST_PLAIN_FILTER_DRAW_H
#define TEST_PLAIN_FILTER_DRAW_H

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "test/plain/filter/PlainKernel.h"

namespace plain {

template <class P>
P drawingColour(const RK_PixelFloat& c) {
    using D = typename DepthOf<P>::D;
    using C = typename D::Channel;
    const auto scaled_channel = [](float v) {
        if constexpr (D::kReal)
            return v;
        else
            return static_cast<C>(toInt(v * static_cast<float>(D::W) + 0.5f));
    };
    return {scaled_channel(c.alpha), scaled_channel(c.red), scaled_channel(c.green), scaled_channel(c.blue)};
}
template <class P>
bool setPixel(int64_t x, int64_t y, const P& colour, const RK_LayerDef& world) {
    if (x < 0 || y < 0 || x >= world.width || y >= world.height) return false;
    at<P>(world, x, y) = colour;
    return true;
}

// Points are x, y. A number that does not fit 32 bits is the lowest there is, as in every conversion.
template <class P>
void drawLine(const double start[2], const double end[2], const RK_PixelFloat& colour,
              const RK_LayerDef& world) {
    const P pixel = drawingColour<P>(colour);
    int64_t at16[2];  // x, y in 16.16
    double delta[2];
    for (int k = 0; k < 2; ++k) {
        at16[k] = toInt(std::round(start[k] * 65536.0));
        delta[k] = end[k] - start[k];
    }
    if (std::fabs(delta[0]) < 1e-12 && std::fabs(delta[1]) < 1e-12) {
        setPixel(at16[0] >> 16, at16[1] >> 16, pixel, world);
        return;
    }
    const int major = std::fabs(delta[0]) <= std::fabs(delta[1]) ? 1 : 0, minor = 1 - major;
    int64_t slope = toInt(std::round(delta[minor] / delta[major] * 65536.0)), step = 0x10000;
    const int64_t snapped = (at16[major] + 0x8000) & ~int64_t{0xFFFF};
    at16[minor] += (slope * (snapped - at16[major])) >> 16;
    at16[minor] += 0x8000;
    at16[major] = snapped;
    int64_t n = toInt(end[major] + 0.5) - (snapped >> 16);
    if (n < 0) n = -n, step = -step, slope = -slope;
    for (int64_t i = 0; i <= n; ++i) {
        setPixel(at16[0] >> 16, at16[1] >> 16, pixel, world);
        at16[major] += step;
        at16[minor] += slope;
    }
}

// Where glyphs land: the upper left corner, a row above the topmost row of each.
struct PlacedGlyph {
    uint8_t code;
    int64_t x, y;
};
inline std::vector<PlacedGlyph> layOut(const std::string& text, int64_t x, int64_t y, int width, int height) {
    std::vector<PlacedGlyph> glyphs;
    const int64_t left = x;
    for (size_t i = 0; i < std::min<size_t>(text.size(), 1023); ++i) {
        const uint8_t code = static_cast<uint8_t>(text[i]);
        if (code == 0) break;
        if (code == '\r' || code > 127) continue;
        if (code == '\n') {
            x = left, y += 10;
        } else if (code == '\t') {
            x = x % 4 + 24;
        } else {
            if (x >= 0 && x + 6 < width && y >= 0 && y + 10 < height) glyphs.push_back({code, x, y});
            x += 6;
        }
    }
    return glyphs;
}

// The points on the outline of an 8-bit picture's alpha, as v, h; false when they can't be had within `most`.
inline bool outline(const RK_LayerDef& picture, int64_t step, int most, bool corners, const GEO_Rect* rect,
                    std::vector<Point>& points) {
    GEO_Rect area = {0, 0, static_cast<int16_t>(picture.height), static_cast<int16_t>(picture.width)};
    if (rect != nullptr)
        area = {std::max(area.top, rect->top), std::max(area.left, rect->left),
                std::min(area.bottom, rect->bottom), std::min(area.right, rect->right)};
    const auto solid = [&](int64_t x, int64_t y) { return at<RK_Pixel8>(picture, x, y).alpha >= 128; };
    for (step = std::max<int64_t>(step, 1);; ++step) {
        points.clear();
        if (corners)
            points = {{area.top, area.left},
                      {area.top, area.right},
                      {area.bottom, area.right},
                      {area.bottom, area.left}};
        const size_t fixed = points.size();
        const int64_t h = std::max<int64_t>(step / 2, 1), f = std::max<int64_t>(step - h, 1);
        for (int64_t y = area.top + step; y < area.bottom - step; y += step)
            for (int64_t x = area.left + step; x < area.right - step; x += step)
                if (solid(x - h, y) != solid(x + f, y) || solid(x, y - h) != solid(x, y + f))
                    points.push_back({static_cast<int16_t>(y), static_cast<int16_t>(x)});
        if (static_cast<int>(points.size()) <= most) return true;
        if (points.size() == fixed) {
            points.clear();
            return false;
        }
    }
}

}  // namespace plain

#endif
