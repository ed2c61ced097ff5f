// The walk that the Iterate passes share: clip, rows, progress, and a row's pixel calls.
#ifndef RKP_ITERATE_ROWST_H
#define RKP_ITERATE_ROWST_H

#include <algorithm>
#include <cstdint>

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RK_Birth.h"

struct RKp_IterateArea {
    int32_t left, top, right, bottom;
};

// The source at its place in `dst`. Sums that no record of real pixels reaches stop at the ends of int32_t.
inline RKp_IterateArea RKp_PlaceSource(const RK_LayerDef& src, Point origin) {
    const auto end = [](int64_t edge) {
        return static_cast<int32_t>(std::clamp<int64_t>(edge, INT32_MIN, INT32_MAX));
    };
    return {origin.h, origin.v, end(int64_t{origin.h} + src.width), end(int64_t{origin.v} + src.height)};
}

// False: the pass returns 0 at once. The four tests of the rectangle are not quite those for an empty area:
// an edge equal to the size goes on. `source`, where it limits the pass too, is the placed source, else null.
inline bool RKp_IterateClip(const GEO_Rect* rect, const RK_LayerDef& dst, const RKp_IterateArea* source,
                            RKp_IterateArea& area) {
    area = {0, 0, dst.width, dst.height};
    if (rect != nullptr) {
        if (rect->right < 1 || rect->left > dst.width || rect->bottom < 1 || rect->top > dst.height)
            return false;
        if (source != nullptr && (rect->left > source->right || rect->top > source->bottom)) return false;
        area = {std::max<int32_t>(rect->left, 0), std::max<int32_t>(rect->top, 0),
                std::min<int32_t>(rect->right, dst.width), std::min<int32_t>(rect->bottom, dst.height)};
    }
    if (source != nullptr) {
        area = {std::max(area.left, source->left), std::max(area.top, source->top),
                std::min(area.right, source->right), std::min(area.bottom, source->bottom)};
    }
    return true;
}

// The progress numbers of a pass, as its caller gave them.
struct RKp_EffectProgress {
    const RK_EffectData* effect;
    RK_Long base, maximum;

    // After row `index` of the pass. False when nobody asked; otherwise result is the function's.
    bool report(int32_t index, RK_Long& result) const {
        if (maximum == 0 || effect == nullptr || effect->progress_func == nullptr) return false;
        auto* function = effect->progress_func;
        if (RK_IsCFM() != 0) {
            void* mapped = nullptr;
            RK_GetCFMToMachoMapEntry(reinterpret_cast<void*>(function), &mapped);
            if (mapped != nullptr) function = reinterpret_cast<decltype(function)>(mapped);
        }
        const uint32_t current = static_cast<uint32_t>(base) + 1u + static_cast<uint32_t>(index);
        result = function(effect->effect_ref, static_cast<int32_t>(current), maximum);
        return true;
    }
};

// Calls row(y, result), which gives false to end the pass with result, for each row, and progress after it.
// Kept: a progress result other than 517 stands only until a pixel function's 0 takes its place, so that of
// the last row alone comes back.
template <class Row>
RK_Long RKp_WalkRows(const RKp_IterateArea& area, const RKp_EffectProgress& progress, Row&& row) {
    RK_Long result = RK_kOK;
    for (int32_t y = area.top; y < area.bottom; ++y) {
        if (!row(y, result)) return result;
        if (progress.report(y - area.top, result) && result == RK_kUserAbort) return result;
    }
    return result;
}

// The caller's function over a span of a row. Each call takes the result's place, so an empty span leaves it.
template <class P>
class RKp_PixelCalls {
  public:
    RKp_PixelCalls(RK_PixelFunc* function, void* refcon) : function_(function), refcon_(refcon) {}

    // Columns x to end - 1 of row y; column x's source pixel is in[x - shift]. False when a call is not 0.
    bool span(int32_t x, int32_t end, int32_t y, P* in, int32_t shift, P* out, RK_Long& result) const {
        if (end <= x) return true;
        const auto next = [&] {
            result = function_(refcon_, x, y, in + (x - shift), out + x);
            ++x;
            return result == RK_kOK;
        };
        for (int32_t odd = (end - x) & 7; odd > 0; --odd)
            if (!next()) return false;
        while (x < end)
            if (!(next() && next() && next() && next() && next() && next() && next() && next())) return false;
        return true;
    }

    // The same where there is no source: `in` is a pixel of zeros, fresh for each call.
    bool blank(int32_t x, int32_t end, int32_t y, P* out, RK_Long& result) const {
        for (; x < end; ++x) {
            P zero = {};
            result = function_(refcon_, x, y, &zero, out + x);
            if (result != RK_kOK) return false;
        }
        return true;
    }

  private:
    RK_PixelFunc* function_;
    void* refcon_;
};

#endif
