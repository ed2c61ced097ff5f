// How a frame is covered by overlapping blocks.
#ifndef FN_BLOCKS_H
#define FN_BLOCKS_H

#include <algorithm>
#include <cmath>

#include "RK/indep/retime/HvVec2.h"

struct FnMotionEstimateGradientBlockParameters {
    int32_t block_width, block_height;
    int32_t overlap;
};

struct FnBlockRect {
    int32_t x0, y0, x1, y1;  // x1 and y1 exclusive
    int64_t Area() const { return int64_t{x1 - x0} * (y1 - y0); }
};

// Blocks that cover one axis; never below 0.
inline int32_t FnBlockCount(int32_t size, float block, float overlap) {
    return std::max(FnTruncate(std::ceil((static_cast<float>(size) - overlap) / (block - overlap))), 0);
}

// A block at the far edge is slid in, not past the near edge; one that is larger than the frame is cut to it.
inline void FnBlockSpan(int32_t block, int32_t overlap, int32_t index, int32_t size, int32_t* from, int32_t* to) {
    int64_t a = (int64_t{block} - overlap) * index, b = a + block;
    if (b > size) {
        a = std::max<int64_t>(a - (b - size), 0);
        b = size;
    }
    *from = static_cast<int32_t>(a);
    *to = static_cast<int32_t>(b);
}
inline FnBlockRect FnBlockRectOf(const FnMotionEstimateGradientBlockParameters& blocks, int32_t mx, int32_t my,
                                 int32_t width, int32_t height) {
    FnBlockRect r;
    FnBlockSpan(blocks.block_width, blocks.overlap, mx, width, &r.x0, &r.x1);
    FnBlockSpan(blocks.block_height, blocks.overlap, my, height, &r.y0, &r.y1);
    return r;
}

#endif
