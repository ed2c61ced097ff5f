// Plain twin of the fills.
#ifndef TEST_PLAIN_FILL_H
#define TEST_PLAIN_FILL_H

#include <algorithm>

#include "test/plain/PlainArithmetic.h"

namespace plain {

inline bool isZero(const RK_Pixel8& p) { return p.alpha == 0 && p.red == 0 && p.green == 0 && p.blue == 0; }
inline bool isZero(const RK_Pixel16& p) { return p.alpha == 0 && p.red == 0 && p.green == 0 && p.blue == 0; }
inline bool isZero(const RK_PixelFloat& p) {
    return p.alpha == 0.0f && p.red == 0.0f && p.green == 0.0f && p.blue == 0.0f;
}

// Fills `rect` (null: everything) of a world of pixels P with a colour of any depth (null: transparent
// black).
template <class P, class Colour>
void fill(const Colour* colour, const GEO_Rect* rect, const RK_LayerDef& world) {
    P p{};
    if (colour != nullptr) convert(*colour, p);
    if (isZero(p)) p = P{};  // a negative zero is stored as zero
    int64_t left = 0, top = 0, right = world.width, bottom = world.height;
    if (rect != nullptr) {
        left = std::min(rect->left, rect->right);
        right = std::max(rect->left, rect->right);
        top = std::min(rect->top, rect->bottom);
        bottom = std::max(rect->top, rect->bottom);
    }
    for (int64_t y = 0; y < world.height; ++y)
        for (int64_t x = 0; x < world.width; ++x)
            if (x >= left && x < right && y >= top && y < bottom) at<P>(world, x, y) = p;
}

}  // namespace plain

#endif
