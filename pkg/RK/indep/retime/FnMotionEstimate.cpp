#include "RK/indep/retime/FnMotionEstimate.h"

#include "RK/indep/retime/FnMotionSolve.h"

// ---- Sums -----------------------------------------------------------------------------------------------

template <class Stored, class Computed, class OutStored, class OutComputed>
void FnMotionEstimateGradientRow<Stored, Computed, OutStored, OutComputed>::ProcessBand() {
    const FnBand band = Band();
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y) {
        float* out = b_->Row(y);
        float sum = 0.0f;
        for (int32_t i = 0; i < length; ++i) sum += a_->Read(i, y);
        out[0] = sum;
        for (int32_t x = 1; x < b_->Width(); ++x) {
            sum += a_->Read(int64_t{x} + length - 1, y);
            sum -= a_->Read(x - 1, y);
            out[x] = sum;
        }
    }
}

template <class Stored, class Computed, class OutStored, class OutComputed>
void FnMotionEstimateGradientColumn<Stored, Computed, OutStored, OutComputed>::ProcessBand() {
    const FnBand band = Band();
    for (int32_t y = band.start; y < band.end && Check() == 0; ++y) {
        float* out = b_->Row(y);
        for (int32_t x = 0; x < b_->Width(); ++x) {
            if (y == band.start) {
                float sum = 0.0f;
                for (int32_t i = 0; i < length; ++i) sum += a_->Read(x, int64_t{y} + i);
                out[x] = sum;
            } else {
                const float sum = b_->Row(y - 1)[x] + a_->Read(x, int64_t{y} + length - 1);
                out[x] = sum - a_->Read(x, y - 1);
            }
        }
    }
}

template <class Stored, class Computed, class Sum, int Scale>
void FnMeanCalculator<Stored, Computed, Sum, Scale>::PassStart() {
    if (!sums_.Allocate(this->Threads()) || !counts_.Allocate(this->Threads())) return this->Abort(kFnNoMemory);
    for (int32_t i = 0; i < this->Threads(); ++i) sums_[i] = Sum{}, counts_[i] = 0;
}

template <class Stored, class Computed, class Sum, int Scale>
void FnMeanCalculator<Stored, Computed, Sum, Scale>::Finish() {
    if (!sums_ || !counts_) return;
    Sum sum = Sum{};
    int64_t count = 0;
    for (int32_t i = 0; i < this->Threads(); ++i) sum += sums_[i], count += counts_[i];
    mean = count > 0 ? sum / static_cast<Sum>(count) : Sum{};
}

// ---- The pass -------------------------------------------------------------------------------------------

namespace {

template <class Pass>
bool MakeSums(Pass&& pass, const FnFloatMap& frame, FnFloatMap* sums, InterruptRecord* interrupt) {
    if (!sums->ShapeLike(frame)) return false;
    pass.SetInterrupt(interrupt);
    pass.Process(sums, &frame, sums);
    return true;
}

}  // namespace

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Prepare() {
    SetPassCount(activity_mode ? 2 : 1);
    if (activity_mode && !activity_.Resize(Map()->Width(), Map()->Height())) return Abort(kFnNoMemory);
    if (!projection_mode) return;
    using Row = FnMotionEstimateGradientRow<float, float, float, float>;
    using Column = FnMotionEstimateGradientColumn<float, float, float, float>;
    if (!MakeSums(Row(blocks.block_width), Reference(), &reference_rows_, Interrupt()) ||
        !MakeSums(Column(blocks.block_height), Reference(), &reference_columns_, Interrupt()) ||
        !MakeSums(Row(blocks.block_width), Target(), &target_rows_, Interrupt()) ||
        !MakeSums(Column(blocks.block_height), Target(), &target_columns_, Interrupt()))
        Abort(kFnNoMemory);
}

// Each thread's lines: two rows of samples, then two lists of sums.
template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::PassStart() {
    const int64_t most = std::max(blocks.block_width, blocks.block_height);
    if (!lines_.Allocate(4 * most * Threads())) Abort(kFnNoMemory);
}

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::PassEnd() {
    if (!activity_mode || Pass() != 0 || Error() != 0) return;
    FnMeanCalculator<float, float, float, 1> calculator;
    calculator.SetInterrupt(Interrupt());
    calculator.process(&activity_, &activity_);
    activity_threshold_ = calculator.mean;
}

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Finish() {
    lines_.Free();
    for (FnFloatMap* map : {&reference_rows_, &reference_columns_, &target_rows_, &target_columns_, &activity_})
        map->Resize(0, 0);
}

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::ProcessBand() {
    const FnBand band = Band();
    const int64_t most = std::max(blocks.block_width, blocks.block_height);
    float* lines = lines_.data() + 4 * most * FnThreadNumber();
    for (int32_t my = band.start; my < band.end && Check() == 0; ++my) {
        Vector* row = static_cast<FnTexture<Vector, ComputedVector>*>(Map())->Row(my);
        for (int32_t mx = 0; mx < Map()->Width() && Error() == 0; ++mx) {
            if (activity_mode && Pass() == 0)
                activity_.Row(my)[mx] =
                    Activity(FnBlockRectOf(blocks, mx, my, Reference().Width(), Reference().Height()));
            else
                Block(mx, my, row[mx], lines);
        }
    }
}

// The sum of absolute deviations from the block's mean.
template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
float FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Activity(
    const FnBlockRect& block) const {
    float sum = 0.0f;
    for (int32_t y = block.y0; y < block.y1; ++y)
        for (int32_t x = block.x0; x < block.x1; ++x) sum += Target().Row(y)[x];
    const float mean = sum / static_cast<float>(block.Area());
    float deviation = 0.0f;
    for (int32_t y = block.y0; y < block.y1; ++y)
        for (int32_t x = block.x0; x < block.x1; ++x) deviation += std::fabs(Target().Row(y)[x] - mean);
    return deviation;
}

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Block(
    int32_t mx, int32_t my, Vector& vector, float* lines) const {
    constexpr int kMostSteps = 10;
    Work work = {FnBlockRectOf(blocks, mx, my, Reference().Width(), Reference().Height()), lines, projection_mode, 0.0f,
                 0.0f};
    float error = FLT_MAX;
    if (activity_mode && !(activity_.Row(my)[mx] > activity_threshold_)) {
        vector = kFnUndefined;
    } else {
        HvVec2 v = vector;
        for (int i = 0; i < kMostSteps && Error() == 0; ++i) {
            const Step step = Iterate(work, v);
            error = step.done ? FLT_MAX : step.error;
            // A step that gives up without making the vector undefined leaves the one from before it.
            if (!step.done || FnIsUndefined(v)) vector = v;
            if (step.done || !(step.error > 0.0f)) break;
        }
    }
    if (info.positions)
        info.positions->Row(my)[mx] = {static_cast<float>(work.block.x0 + blocks.block_width / 2),
                                       static_cast<float>(work.block.y0 + blocks.block_height / 2)};
    if (info.errors) info.errors->Row(my)[mx] = error;
    if (info.confidence)
        info.confidence->Row(my)[mx] =
            activity_mode ? activity_.Row(my)[mx] : std::fabs(work.confidence_x) + std::fabs(work.confidence_y);
}

// When a projection turns its mode off, the solve starts from the vector before it.
template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
auto FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Iterate(Work& work,
                                                                                                    HvVec2& v) const
    -> Step {
    if (work.projecting) {
        const HvVec2 before = v;
        const Step step = Project(work, v);
        if (work.projecting) return step;
        v = before;
    }
    return Solve(work, v);
}

// ---- The two-dimensional solve --------------------------------------------------------------------------

// line[i] = the reference at (block.x0 + i - v.x, y + v.y), vertical first.
template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::SampleLine(
    const FnBlockRect& block, int32_t y, const HvVec2& v, float* line) const {
    const FnFloatMap& reference = Reference();
    const int32_t count = block.x1 - block.x0;
    if (v.x == 0.0f && v.y == 0.0f) {
        std::memcpy(line, reference.Row(y) + block.x0, static_cast<size_t>(count) * sizeof(float));
        return;
    }
    const float fx = -v.x, fy = v.y;
    const int32_t ix = FnFloor(fx), iy = FnFloor(fy);
    const float ax = FnFraction(fx, ix), ay = FnFraction(fy, iy);
    const int64_t left = int64_t{ix} + block.x0, top = int64_t{iy} + y;
    const FnAxis &across = reference.axis[0], &down = reference.axis[1];
    if (left >= across.first && left + count <= across.last && top >= down.first && top < down.last) {
        const float* p = reference.Row(static_cast<int32_t>(top)) + left;
        const float* q = reference.Row(static_cast<int32_t>(top + 1)) + left;
        float before = FnMix(p[0], q[0], ay);
        for (int32_t i = 0; i < count; ++i) {
            const float after = FnMix(p[i + 1], q[i + 1], ay);
            line[i] = FnMix(before, after, ax);
            before = after;
        }
    } else {
        float before = FnMix(reference.Read(left, top), reference.Read(left, top + 1), ay);
        for (int32_t i = 0; i < count; ++i) {
            const float after = FnMix(reference.Read(left + i + 1, top), reference.Read(left + i + 1, top + 1), ay);
            line[i] = FnMix(before, after, ax);
            before = after;
        }
    }
}

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
auto FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Solve(Work& work,
                                                                                                  HvVec2& v) const
    -> Step {
    if (FnIsUndefined(v)) return {true, 0.0f};
    const FnBlockRect& b = work.block;
    const int64_t ix = FnFloor(-v.x), iy = FnFloor(v.y);
    float* now = work.lines;
    float* below = work.lines + blocks.block_width;
    FnGradientSums sums{};
    int32_t total = 0;
    for (int32_t y = b.y1 - 1; y >= b.y0; --y, std::swap(now, below)) {
        SampleLine(b, y, v, now);
        if (y == b.y1 - 1) continue;  // there is no vertical gradient yet
        const float* target = Target().Row(y);
        const bool row_inside = iy + y >= 0 && iy + y < Reference().Height();
        for (int32_t x = b.x0 + 1; x < b.x1; ++x) {
            ++total;
            if (!row_inside || ix + x < 0 || ix + x >= Reference().Width()) continue;
            if (Mask() && Mask()->Read(x, y) > 0.5f) continue;
            const int32_t i = x - b.x0;
            sums.Add(target[x] - now[i], now[i] - now[i - 1], now[i] - below[i]);
        }
    }
    work.confidence_x = sums.A;
    work.confidence_y = sums.C;
    const FnSolution solution = FnSolveStep(sums, total, error_threshold, &v);
    return {solution.done, solution.error};
}

// ---- Projection -----------------------------------------------------------------------------------------

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
auto FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Project(Work& work,
                                                                                                    HvVec2& v) const
    -> Step {
    const FnBlockRect& b = work.block;
    const float X = static_cast<float>(b.x0) + 0.5f - v.x, Y = static_cast<float>(b.y0) + 0.5f + v.y;
    const bool inside = X - 0.5f >= 0.0f && Y - 0.5f >= 0.0f &&
                        X + static_cast<float>(blocks.block_width) - 0.5f <= static_cast<float>(Reference().Width()) &&
                        Y + static_cast<float>(blocks.block_height) - 0.5f <= static_cast<float>(Reference().Height());
    if (!inside) {
        work.projecting = false;
        return {true, 0.0f};
    }
    const int32_t most = std::max(blocks.block_width, blocks.block_height);
    float* A = work.lines + 2 * most;
    float* B = A + most;
    for (int32_t y = b.y0; y < b.y1; ++y) {
        A[y - b.y0] = reference_rows_.Bilinear(X, static_cast<float>(y) + 0.5f + v.y);
        B[y - b.y0] = target_rows_.Row(y)[b.x0];
    }
    const FnSolution1D down = FnSolve1D(A, B, b.y1 - b.y0);
    for (int32_t x = b.x0; x < b.x1; ++x) {
        A[x - b.x0] = reference_columns_.Bilinear(static_cast<float>(x) + 0.5f - v.x, Y + down.value);
        B[x - b.x0] = target_columns_.Row(b.y0)[x];
    }
    const FnSolution1D across = FnSolve1D(A, B, b.x1 - b.x0);
    if (!down.success && !across.success) {
        work.projecting = false;
        return {true, 0.0f};
    }
    float dx = -across.value, dy = down.value;
    const float length = std::sqrt(dx * dx + dy * dy);
    if (length > 1.0f) dx /= length, dy /= length;
    v.x += dx;
    v.y += dy;
    return {false, std::sqrt(down.sum_abs * down.sum_abs + across.sum_abs * across.sum_abs)};
}

template class FnMotionEstimateGradientRow<float, float, float, float>;
template class FnMotionEstimateGradientColumn<float, float, float, float>;
template class FnMeanCalculator<float, float, float, 1>;
template class FnMotionEstimateGradient<float, float, 1, HvVec2, HvVec2, 1>;
