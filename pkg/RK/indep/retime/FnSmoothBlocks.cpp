#include "RK/indep/retime/FnSmoothBlocks.h"

namespace {

// Sums |T - sample(x, y)| over the unmasked pixels; sample tells whether it has a value.
template <class Sample>
float MeanDifference(const FnBlockRect& b, const FnFloatMap& target, const FnFloatMap* mask,
                     Sample&& sample) {
    float sum = 0.0f;
    int64_t used = 0;
    for (int32_t y = b.y0; y < b.y1; ++y) {
        const float* row = target.Row(y);
        for (int32_t x = b.x0; x < b.x1; ++x) {
            float value;
            if (mask && mask->Read(x, y) > 0.5f) continue;
            if (!sample(x, y, &value)) continue;
            sum += std::fabs(row[x] - value);
            ++used;
        }
    }
    return used <= b.Area() / 4 ? FLT_MAX : sum / static_cast<float>(used);
}

// The same without a mask, of a block whose samples all have values: fill(y, x, n, values) gives n of a row.
// The differences are made by vectors, the sum in order.
template <class Fill>
float MeanDifferenceInside(const FnBlockRect& b, const FnFloatMap& target, Fill&& fill) {
    constexpr int32_t kPart = 16;
    float sum = 0.0f;
    for (int32_t y = b.y0; y < b.y1; ++y) {
        const float* row = target.Row(y);
        for (int32_t x = b.x0; x < b.x1; x += kPart) {
            const int32_t count = std::min(b.x1 - x, kPart);
            float values[kPart];
            fill(y, x, count, values);
            for (int32_t i = 0; i < count; ++i) sum += std::fabs(row[x + i] - values[i]);
        }
    }
    return b.Area() < 1 ? FLT_MAX : sum / static_cast<float>(b.Area());
}

}  // namespace

// The path taken is part of the result: the fractions of the two bilinear paths round differently.
float FnMatchError(const HvVec2& v, const FnBlockRect& b, const FnFloatMap& reference,
                   const FnFloatMap& target, const FnFloatMap* mask) {
    const float width = static_cast<float>(reference.Width()),
                height = static_cast<float>(reference.Height());
    if (v.x == 0.0f && v.y == 0.0f) {
        auto own = [&](int32_t x, int32_t y, float* value) {
            *value = reference.Row(y)[x];
            return true;
        };
        if (mask) return MeanDifference(b, target, mask, own);
        return MeanDifferenceInside(b, target, [&](int32_t y, int32_t x, int32_t count, float* values) {
            std::memcpy(values, reference.Row(y) + x, static_cast<size_t>(count) * sizeof(float));
        });
    }

    const float fx = -v.x, fy = v.y;
    const int64_t ix = FnFloor(fx), iy = FnFloor(fy);
    if (b.x0 + ix >= 0 && b.y0 + iy >= 0 && b.x1 + ix <= reference.Width() - 1 &&
        b.y1 + iy <= reference.Height() - 1) {
        const float ax = FnFraction(fx, static_cast<int32_t>(ix)),
                    ay = FnFraction(fy, static_cast<int32_t>(iy));
        auto fill = [&](int32_t y, int32_t x, int32_t count, float* values) {
            const float* p = reference.Row(static_cast<int32_t>(y + iy)) + x + ix;
            const float* q = reference.Row(static_cast<int32_t>(y + iy + 1)) + x + ix;
            for (int32_t i = 0; i < count; ++i)
                values[i] = FnMix(FnMix(p[i], p[i + 1], ax), FnMix(q[i], q[i + 1], ax), ay);
        };
        if (!mask) return MeanDifferenceInside(b, target, fill);
        return MeanDifference(b, target, mask, [&](int32_t x, int32_t y, float* value) {
            fill(y, x, 1, value);
            return true;
        });
    }
    return MeanDifference(b, target, mask, [&](int32_t x, int32_t y, float* value) {
        const float px = static_cast<float>(x) + 0.5f - v.x, py = static_cast<float>(y) + 0.5f + v.y;
        if (!(px >= 0.0f && px <= width && py >= 0.0f && py <= height)) return false;
        *value = reference.Bilinear(px, py);
        return true;
    });
}

template <class Stored, class Computed, int Scale, class Vector>
void FnMotionEstimateGradientSmooth<Stored, Computed, Scale, Vector>::Prepare() {
    if (!make_error_map) return;
    if (!errors.Resize(Map()->Width(), Map()->Height())) return Abort(kFnNoMemory);
    errors.Fill(FLT_MAX);
    make_error_map = false;
}

template <class Stored, class Computed, int Scale, class Vector>
void FnMotionEstimateGradientSmooth<Stored, Computed, Scale, Vector>::ProcessBand() {
    if (!monitor) return;
    const FnBand band = Band();
    FnRandom random;
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y) {
        Vector* row = static_cast<FnTexture<Vector, Vector>*>(Map())->Row(y);
        for (int32_t x = 0; x < Map()->Width() && Error() == 0; ++x) Element(x, y, row[x], random);
    }
}

template <class Stored, class Computed, int Scale, class Vector>
void FnMotionEstimateGradientSmooth<Stored, Computed, Scale, Vector>::Element(int32_t x, int32_t y,
                                                                              Vector& vector,
                                                                              FnRandom& random) {
    FnCandidateSet candidates;
    if (monitor->Gather(x, y, &candidates) == 0) return;
    candidates.Add(vector);
    candidates.RemoveDuplicates();
    if (candidates.Count() == 0) return;
    float* remembered = errors.HasPixels() ? &errors.Row(y)[x] : nullptr;
    if (candidates.Count() == 1) {
        if (remembered && candidates[0] != vector) *remembered = FLT_MAX;
        vector = candidates[0];
        return;
    }
    candidates.Shuffle(random);
    Choice choice = {vector,
                     monitor->LocalMean(x, y),
                     vector,
                     FLT_MAX,
                     FLT_MAX,
                     remembered ? *remembered : FLT_MAX,
                     FnBlockRectOf(blocks, x, y, reference->Width(), reference->Height())};
    for (const HvVec2& candidate : candidates) Evaluate(candidate, choice);
    if (remembered) *remembered = choice.error;
    vector = choice.best;
}

template <class Stored, class Computed, int Scale, class Vector>
void FnMotionEstimateGradientSmooth<Stored, Computed, Scale, Vector>::Evaluate(const HvVec2& c,
                                                                               Choice& choice) const {
    if (FnIsUndefined(c) || choice.cost == 0.0f) return;
    const float smooth = FnL1(c - choice.mean) / 400.0f / 255.0f * smooth_weight;
    if (choice.cost <= smooth) return;  // it cannot win
    const bool known = c == choice.own && choice.own_error != FLT_MAX;
    const float error = known ? choice.own_error : FnMatchError(c, choice.block, *reference, *target, mask);
    float total = (error == FLT_MAX ? 2.0f * error_weight : error * error_weight) + smooth;
    if (total < 1e-6f) total = 0.0f;
    if (!(total < choice.cost)) return;
    choice.cost = total;
    choice.error = error;
    choice.best = c;
}

template class FnMotionEstimateGradientSmooth<float, float, 1, HvVec2>;
