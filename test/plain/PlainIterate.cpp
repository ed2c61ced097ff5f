#include "test/plain/PlainIterate.h"

#include <algorithm>

namespace plain {
namespace {

struct Walk {
    int64_t left, top, right, bottom;
};

void progressAfterRow(std::vector<Visit>& visits, int32_t base, int32_t final, int64_t y, int64_t top) {
    if (final == 0) return;
    const uint32_t current = static_cast<uint32_t>(base) + 1u + static_cast<uint32_t>(y - top);
    visits.push_back({Visit::Progress, static_cast<int32_t>(current), 0, 0, 0});
}

// Left and top raised to 0, right and bottom lowered to the destination's.
Walk clamped(const GEO_Rect* rect, Size dst) {
    if (rect == nullptr) return {0, 0, dst.width, dst.height};
    return {std::max<int64_t>(rect->left, 0), std::max<int64_t>(rect->top, 0),
            std::min<int64_t>(rect->right, dst.width), std::min<int64_t>(rect->bottom, dst.height)};
}

}  // namespace

std::vector<Visit> iterate(int32_t progress_base, int32_t progress_final, const Size* src,
                           const GEO_Rect* rect, Size dst) {
    std::vector<Visit> visits;
    if (rect != nullptr) {
        if (rect->right < 1 || rect->left > dst.width || rect->bottom < 1 || rect->top > dst.height)
            return visits;
        if (src != nullptr && (rect->left > src->width || rect->top > src->height)) return visits;
    }
    Walk w = clamped(rect, dst);
    if (src != nullptr) {
        w.right = std::min<int64_t>(w.right, src->width);
        w.bottom = std::min<int64_t>(w.bottom, src->height);
    }
    for (int64_t y = w.top; y < w.bottom; ++y) {
        for (int64_t x = w.left; x < w.right; ++x) {
            const auto px = static_cast<int32_t>(x), py = static_cast<int32_t>(y);
            visits.push_back({src != nullptr ? Visit::Source : Visit::Destination, px, py, px, py});
        }
        progressAfterRow(visits, progress_base, progress_final, y, w.top);
    }
    return visits;
}

std::vector<Visit> iterateOrigin(int32_t progress_base, int32_t progress_final, const Size* src,
                                 const GEO_Rect* rect, const Point* origin, Size dst, bool clip) {
    if (src == nullptr) {
        // As the plain walk, but an empty area reports nothing.
        const Walk w = clamped(rect, dst);
        if (w.left >= w.right || w.top >= w.bottom) return {};
        return iterate(progress_base, progress_final, nullptr, rect, dst);
    }
    std::vector<Visit> visits;
    const int64_t h = origin != nullptr ? origin->h : 0, v = origin != nullptr ? origin->v : 0;
    if (rect != nullptr) {
        if (rect->right < 1 || rect->left > dst.width || rect->bottom < 1 || rect->top > dst.height)
            return visits;
        if (clip && (rect->left > h + src->width || rect->top > v + src->height)) return visits;
    }
    Walk w = clamped(rect, dst);
    if (clip) {
        w.left = std::max(w.left, h);
        w.top = std::max(w.top, v);
        w.right = std::min(w.right, h + src->width);
        w.bottom = std::min(w.bottom, v + src->height);
    }
    if (w.left >= w.right || w.top >= w.bottom) return visits;
    for (int64_t y = w.top; y < w.bottom; ++y) {
        for (int64_t x = w.left; x < w.right; ++x) {
            const int64_t sx = x - h, sy = y - v;
            const bool inside = sx >= 0 && sx < src->width && sy >= 0 && sy < src->height;
            visits.push_back({inside ? Visit::Source : Visit::Zero, static_cast<int32_t>(x),
                              static_cast<int32_t>(y), inside ? static_cast<int32_t>(sx) : 0,
                              inside ? static_cast<int32_t>(sy) : 0});
        }
        progressAfterRow(visits, progress_base, progress_final, y, w.top);
    }
    return visits;
}

}  // namespace plain
