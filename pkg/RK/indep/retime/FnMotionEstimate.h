// The block solve: for each block of the target, the displacement of its content in the reference.
#ifndef FN_MOTION_ESTIMATE_H
#define FN_MOTION_ESTIMATE_H

#include "RK/indep/retime/FnBlocks.h"
#include "RK/indep/retime/FnBuffer.h"
#include "RK/indep/retime/FnImgProc.h"
#include "RK/indep/retime/Imagers.h"

// Reference and target have one size; the mask may be null.
struct FnMotionEstimateGradientReferenceParameters {
    const FnFloatMap* reference = nullptr;
    const FnFloatMap* target = nullptr;
    const FnFloatMap* mask = nullptr;
};

// Maps of the block map's size, or null: block centres, errors (FLT_MAX where a step gave up), confidence.
struct FnMotionEstimateGradientInfoParameters {
    FnVectorMap* positions = nullptr;
    FnFloatMap* errors = nullptr;
    FnFloatMap* confidence = nullptr;
};

// Sums along rows: out(x, y) = in(x, y) + ... + in(x + length - 1, y), by a running sum that adds, then subtracts.
template <class Stored, class Computed, class OutStored, class OutComputed>
class FnMotionEstimateGradientRow : public FnImgProc2<const FnFloatMap, FnFloatMap> {
  public:
    explicit FnMotionEstimateGradientRow(int32_t block_width) : length(block_width) {}
    void ProcessBand() override;
    int32_t length;
};

// The same down columns, restarted at each band's first row.
template <class Stored, class Computed, class OutStored, class OutComputed>
class FnMotionEstimateGradientColumn : public FnImgProc2<const FnFloatMap, FnFloatMap> {
  public:
    explicit FnMotionEstimateGradientColumn(int32_t block_height) : length(block_height) {}
    void ProcessBand() override;
    int32_t length;
};

// The mean of a map: one sum and one count per thread, added in thread order.
template <class Stored, class Computed, class Sum, int Scale>
class FnMeanCalculator final
    : public GeneralSampler<FnMeanCalculator<Stored, Computed, Sum, Scale>, FnFloatMap, FnFloatMap> {
  public:
    void PassStart() override;
    void Finish() override;
    void Pixel(const float& in, float&, int32_t thread) {
        sums_[thread] += in;
        ++counts_[thread];
    }
    Sum mean = Sum{};

  private:
    FnBuffer<Sum> sums_;
    FnBuffer<int64_t> counts_;
};

// Solves each block of the map from the vector that stands there.
template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
class FnMotionEstimateGradient : public FnImgProc3<const FnFloatMap, const FnFloatMap, const FnFloatMap> {
  public:
    FnMotionEstimateGradientBlockParameters blocks{};
    FnMotionEstimateGradientInfoParameters info;
    float error_threshold = 0.01f;
    bool projection_mode = false;
    bool activity_mode = false;

    using FnImgProc3::Process;
    void Process(FnTexIndexer* map, const FnMotionEstimateGradientReferenceParameters& frames) {
        Process(map, frames.reference, frames.target, frames.mask);
    }
    void Prepare() override;
    void PassStart() override;
    void PassEnd() override;
    void ProcessBand() override;
    void Finish() override;

  private:
    // What one step says: whether it gave up, and its error.
    struct Step {
        bool done;
        float error;
    };
    // The block under way.
    struct Work {
        FnBlockRect block;
        float* lines;  // two of a block's width
        bool projecting;
        float confidence_x, confidence_y;  // sums of gx * gx and gy * gy of the last solve
    };
    const FnFloatMap& Reference() const { return *this->a_; }
    const FnFloatMap& Target() const { return *this->b_; }
    const FnFloatMap* Mask() const { return this->c_; }

    void Block(int32_t mx, int32_t my, Vector& vector, float* lines) const;
    Step Iterate(Work& work, HvVec2& v) const;
    Step Solve(Work& work, HvVec2& v) const;
    Step Project(Work& work, HvVec2& v) const;
    void SampleLine(const FnBlockRect& block, int32_t y, const HvVec2& v, float* line) const;
    float Activity(const FnBlockRect& block) const;

    FnFloatMap reference_rows_, reference_columns_, target_rows_, target_columns_, activity_;
    float activity_threshold_ = 0.0f;
    FnBuffer<float> lines_;
};

extern template class FnMotionEstimateGradientRow<float, float, float, float>;
extern template class FnMotionEstimateGradientColumn<float, float, float, float>;
extern template class FnMeanCalculator<float, float, float, 1>;
extern template class FnMotionEstimateGradient<float, float, 1, HvVec2, HvVec2, 1>;
using FnBlockEstimate = FnMotionEstimateGradient<float, float, 1, HvVec2, HvVec2, 1>;

#endif
