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
    Tiles(int tile, int width, int height)
        : tile_(tile),
          columns_(count(tile, width)),
          rows_(count(tile, height)),
          width_(width),
          height_(height) {}
    int offset_x = 0, offset_y = 0;
    // The operator fails in its n-th call from here on, whose tiles count as done all the same; 0: never.
    size_t fails_at = 0;
    // The operator has another extent. The tiles stay as many as they were.
    void resize(int width, int height) { width_ = width, height_ = height; }

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
    static int count(int tile, int length) {
        int tiles = 0;
        while (tiles * tile < length) ++tiles;
        return tiles;
    }
    // A tile is asked for when a pixel of it is in the query and it hasn't been; neighbours in a row go
    // together.
    std::vector<GEO_LRect> valid(int left, int top, int right, int bottom) {
        std::vector<GEO_LRect> calls;
        for (int ty = 0; ty < rows_; ++ty) {
            bool running = false;
            for (int tx = 0; tx < columns_; ++tx) {
                const GEO_LRect t = {tx * tile_, ty * tile_, std::min((tx + 1) * tile_, width_),
                                     std::min((ty + 1) * tile_, height_)};
                const bool touched = std::max(t.left, left) < std::min(t.right, right) &&
                                     std::max(t.top, top) < std::min(t.bottom, bottom);
                const bool wanted = touched && done_.count({tx, ty}) == 0;
                if (calls.size() == fails_at && !calls.empty() && !(wanted && running)) return calls;
                if (wanted) done_.insert({tx, ty});
                if (wanted && running) calls.back().right = t.right;
                if (wanted && !running) calls.push_back(t);
                running = wanted;
            }
        }
        return calls;
    }
    int tile_, columns_, rows_, width_, height_;
    std::set<std::pair<int, int>> done_;
};

}  // namespace plain

#endif
