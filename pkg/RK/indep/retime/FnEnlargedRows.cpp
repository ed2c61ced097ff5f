#include "RK/indep/retime/FnEnlargedRows.h"

#include "RK/indep/retime/FnTweener.h"

bool FnEnlargedRows::Make(const FnTweenResult& tween, int32_t width, float step) {
    tween_ = &tween;
    width_ = width;
    step_ = step;
    if (!columns_.Allocate(width) || !class_columns_.Allocate(width)) return false;
    const FnAxis& across = tween.a.axis[0];
    float u = 0.5f * step;
    for (int32_t x = 0; x < width; ++x, u += step) {
        const float place = u - 0.5f;
        const int32_t left = FnFloor(place);
        columns_[x] = {across.MapIndex(left), across.MapIndex(int64_t{left} + 1), FnFraction(place, left)};
        class_columns_[x] = tween.classes.axis[0].MapIndex(FnTruncate(static_cast<float>(x) * step));
    }
    return true;
}

bool FnEnlargedRows::Reserve(int32_t threads) {
    if (!lines_.Allocate(int64_t{threads} * 6 * width_) || !classes_.Allocate(int64_t{threads} * width_) ||
        !held_.Allocate(threads))
        return false;
    for (int32_t i = 0; i < threads; ++i)
        held_[i] = {{{kNothing, kNothing}, {kNothing, kNothing}}, kNothing, false};
    return true;
}

// Neighbouring rows differ in parity, so that the two of one mix never share a line.
const HvVec2* FnEnlargedRows::Across(int map, int64_t y, int32_t thread) {
    const int parity = static_cast<int>(y & 1);
    HvVec2* line = Line(thread, 2 * map + parity);
    int64_t& held = held_[thread].rows[map][parity];
    if (held == y) return line;
    held = y;
    const FnVectorMap& source = map == 0 ? tween_->a : tween_->b;
    const int32_t mapped = source.axis[1].MapIndex(y);
    const HvVec2* row = mapped != kFnNoPixel && source.HasPixels() ? source.Row(mapped) : nullptr;
    const HvVec2 none = source.Default();
    for (int32_t x = 0; x < width_; ++x) {
        const Column& c = columns_[x];
        line[x] = FnMix(row && c.left != kFnNoPixel ? row[c.left] : none,
                        row && c.right != kFnNoPixel ? row[c.right] : none, c.between);
    }
    return line;
}

void FnEnlargedRows::Classes(int32_t y, int32_t thread) {
    const int32_t from = FnTruncate(static_cast<float>(y) * step_);
    Held& held = held_[thread];
    if (held.class_row == from) return;
    held.class_row = from;
    held.one_source = false;
    const FnIntMap& source = tween_->classes;
    const int32_t mapped = source.axis[1].MapIndex(from);
    const int* row = mapped != kFnNoPixel && source.HasPixels() ? source.Row(mapped) : nullptr;
    int* line = classes_.data() + int64_t{thread} * width_;
    for (int32_t x = 0; x < width_; ++x) {
        line[x] = row && class_columns_[x] != kFnNoPixel ? row[class_columns_[x]] : source.Default();
        held.one_source |= line[x] == kFnFirstOnly || line[x] == kFnSecondOnly;
    }
}

FnTweenRow FnEnlargedRows::Row(int32_t y, int32_t thread) {
    const float place = (static_cast<float>(y) + 0.5f) * step_ - 0.5f;
    const int32_t above = FnFloor(place);
    const float between = FnFraction(place, above);
    for (int map = 0; map < 2; ++map) {
        const float* p = &Across(map, above, thread)->x;
        const float* q = &Across(map, int64_t{above} + 1, thread)->x;
        float* out = &Line(thread, 4 + map)->x;
        for (int64_t i = 0; i < 2 * int64_t{width_}; ++i) out[i] = FnMix(p[i], q[i], between);
    }
    Classes(y, thread);
    return {Line(thread, 4), Line(thread, 5), classes_.data() + int64_t{thread} * width_,
            held_[thread].one_source};
}
