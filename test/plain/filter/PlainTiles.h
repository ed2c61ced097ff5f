// Lazy tiles once more: which rectangles the operator is asked for, in order.
#ifndef TEST_PLAIN_FILTER_TILES_H
#define TEST_PLAIN_FILTER_TILES_H

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "RK/indep/frame/RK.h"

namespace plain {

class Tiles {
  public:
    Tiles(int tile, int width, int height) : tile_(tile), width_(width), height_(height) {}
    int offset_x = 0, offset_y = 0;

    std::vector<GEO_LRect> makeValid(const GEO_Rect& rect) {
        return valid(rect.left + offset_x, rect.top + offset_y, rect.right + offset_x,
                     rect.bottom + offset_y);
    }
    // In the operator's own frame.
    std::vector<GEO_LRect> makeValidUnder(bool condition, const GEO_Rect& rect) {
        if (!condition) return {};
        return valid(rect.left, rect.top, rect.right, rect.bottom);
    }

  private:
    // A tile is asked for when a pixel of it is in the query and it hasn't been; neighbours in a row go
    // together.
    std::vector<GEO_LRect> valid(int left, int top, int right, int bottom) {
        std::vector<GEO_LRect> calls;
        for (int ty = 0; ty * tile_ < height_; ++ty) {
            bool running = false;
            for (int tx = 0; tx * tile_ < width_; ++tx) {
                const GEO_LRect t = {tx * tile_, ty * tile_, std::min((tx + 1) * tile_, width_),
                                     std::min((ty + 1) * tile_, height_)};
                const bool touched = std::max(t.left, left) < std::min(t.right, right) &&
                                     std::max(t.top, top) < std::min(t.bottom, bottom);
                const bool wanted = touched && done_.insert({tx, ty}).second;
                if (wanted && running) calls.back().right = t.right;
                if (wanted && !running) calls.push_back(t);
                running = wanted;
            }
        }
        return calls;
    }
    int tile_, width_, height_;
    std::set<std::pair<int, int>> done_;
};

}  // namespace plain

#endif
