#include "RK/indep/retime/FnTexIndexer.h"

#include <algorithm>

#include "RK/indep/retime/HvVec2.h"

namespace {

int64_t NonNegativeRemainder(int64_t i, int64_t period) {
    const int64_t r = i % period;
    return r < 0 ? r + period : r;
}

int32_t Saturate(int64_t n) { return static_cast<int32_t>(std::min<int64_t>(n, INT32_MAX)); }

}  // namespace

FnRun FnAxis::RunFrom(int64_t i) const {
    if (count < 1) return {kFnNoPixel, 0, INT32_MAX};
    switch (edge_mode) {
        case kFnMirror: {
            const int64_t r = NonNegativeRemainder(i - first, 2 * int64_t{count});
            if (r < count) return {static_cast<int32_t>(first + r), 1, static_cast<int32_t>(count - r)};
            const int64_t back = 2 * int64_t{count} - 1 - r;
            return {static_cast<int32_t>(first + back), -1, static_cast<int32_t>(back + 1)};
        }
        case kFnWrap: {
            const int64_t r = NonNegativeRemainder(i - first, count);
            return {static_cast<int32_t>(first + r), 1, static_cast<int32_t>(count - r)};
        }
        default: {
            const bool clamp = edge_mode == kFnClamp;
            if (i < first) return {clamp ? first : kFnNoPixel, 0, Saturate(first - i)};
            if (i > last) return {clamp ? last : kFnNoPixel, 0, INT32_MAX};
            return {static_cast<int32_t>(i), 1, static_cast<int32_t>(last - i + 1)};
        }
    }
}

int32_t FnAxis::MapOutside(int64_t i) const {
    if (count < 1) return kFnNoPixel;
    if (edge_mode == kFnClamp) return i < first ? first : last;
    if (edge_mode == kFnMirror || edge_mode == kFnWrap) return RunFrom(i).index;
    return kFnNoPixel;
}

FnPair FnAxis::PairFrom(int64_t i) const {
    const int32_t a = MapIndex(i), b = MapIndex(i + 1);
    return {a, b, a != kFnNoPixel && b == a + 1};
}

void FnAxis::SetRange(int32_t a, int32_t b) {
    if (size < 1) {
        first = 0, last = -1, count = 0;
        return;
    }
    if (a > b) std::swap(a, b);
    first = std::clamp(a, 0, size - 1);
    last = std::clamp(b, 0, size - 1);
    count = last - first + 1;
}

FnTexIndexer::FnTexIndexer(int32_t width, int32_t height) : axis{} {
    axis[0].size = width;
    axis[1].size = height;
    for (FnAxis& a : axis) a.SetRange(0, a.size - (a.size > 0 ? 1 : 0));
}

void FnTexIndexer::SetRanges(int32_t x_first, int32_t x_last, int32_t y_first, int32_t y_last) {
    axis[0].SetRange(x_first, x_last);
    axis[1].SetRange(y_first, y_last);
}

void FnTexIndexer::SetEdgeModes(int32_t x_mode, int32_t y_mode) {
    axis[0].edge_mode = x_mode;
    axis[1].edge_mode = y_mode;
}

void FnTexIndexer::SetOrigins(int32_t x_origin, int32_t y_origin) {
    axis[0].int_origin = x_origin;
    axis[1].int_origin = y_origin;
    for (FnAxis& a : axis) a.origin = static_cast<float>(a.int_origin);
}

void FnTexIndexer::SetFloatOrigins(float x_origin, float y_origin) {
    axis[0].origin = x_origin;
    axis[1].origin = y_origin;
    for (FnAxis& a : axis) a.int_origin = FnFloor(a.origin + 0.5f);
}

void FnTexIndexer::TakeSettings(const FnTexIndexer& other) {
    for (int i = 0; i < 2; ++i) {
        const int32_t size = axis[i].size;
        axis[i] = other.axis[i];
        axis[i].size = size;
        axis[i].SetRange(other.axis[i].first, other.axis[i].last);
    }
}
