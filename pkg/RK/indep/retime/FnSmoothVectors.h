// Smoothing of a full field: each pixel takes the best of the vectors around it.
#ifndef FN_SMOOTH_VECTORS_H
#define FN_SMOOTH_VECTORS_H

#include "RK/indep/retime/FnBlocks.h"
#include "RK/indep/retime/FnNeighboursMonitor.h"

struct FnMotionEstimateGradientSmoothVectorsParameters {
    float error_weight = 1.0f, smooth_weight = 1.0f;
    int32_t passes = 5;
    FnMotionEstimateGradientBlockParameters blocks{};
    const FnFloatMap* reference = nullptr;
    const FnFloatMap* target = nullptr;  // the frame that the field belongs to
    const FnFloatMap* mask = nullptr;    // may be null
};

// What the stages share. Divisor scales the match error: |difference| * weight / Divisor * 65535.
template <class Stored, class Computed, int Divisor>
class FnMotionEstimateGradientSmoothVectorsOperations : public FnImgProc1<const FnVectorMap> {
  public:
    explicit FnMotionEstimateGradientSmoothVectorsOperations(const FnMotionEstimateGradientSmoothVectorsParameters& p)
        : parameters(p) {}
    FnMotionEstimateGradientSmoothVectorsParameters parameters;

  protected:
    static constexpr float kDivisor = Divisor;
    bool IsMasked(int32_t x, int32_t y) const {
        return parameters.mask && parameters.mask->Read(x, y) > 0.5f;
    }
    // |R(position) - L(x, y)|, R being 0 outside the frame.
    float Difference(const HvVec2& v, int32_t x, int32_t y) const;
    FnVectorMap& Vectors() const { return *static_cast<FnVectorMap*>(this->Map()); }
};

// Writes the map from the blocky field: of the nine vectors one block step apart, the one that matches best.
template <class Stored, class Computed, int Divisor>
class FnMotionEstimateGradientSmoothVectorsInitialAssignment
    : public FnMotionEstimateGradientSmoothVectorsOperations<Stored, Computed, Divisor> {
  public:
    using FnMotionEstimateGradientSmoothVectorsOperations<Stored, Computed,
                                                          Divisor>::FnMotionEstimateGradientSmoothVectorsOperations;
    void ProcessBand() override;

  private:
    HvVec2 Choose(const FnVectorMap& field, int32_t x, int32_t y, FnRandom& random) const;
};

// One round of voting on the map, in place; neighbours and means come from the monitor.
template <class Stored, class Computed, int Divisor>
class FnMotionEstimateGradientSmoothVectorsSinglePass
    : public FnMotionEstimateGradientSmoothVectorsOperations<Stored, Computed, Divisor> {
  public:
    using FnMotionEstimateGradientSmoothVectorsOperations<Stored, Computed,
                                                          Divisor>::FnMotionEstimateGradientSmoothVectorsOperations;
    const FnMotionEstimateGradientChangedNeighboursMonitorClient* monitor = nullptr;
    void ProcessBand() override;

  private:
    void Element(int32_t x, int32_t y, HvVec2& vector, FnRandom& random) const;
};

// The whole: the first assignment, then `passes` rounds. Without a target every vector becomes (0, 0).
template <class Stored, class Computed, int Divisor>
class FnMotionEstimateGradientSmoothVectors
    : public FnMotionEstimateGradientSmoothVectorsOperations<Stored, Computed, Divisor> {
  public:
    using FnMotionEstimateGradientSmoothVectorsOperations<Stored, Computed,
                                                          Divisor>::FnMotionEstimateGradientSmoothVectorsOperations;
    // Stages are passes of their own.
    void Run() override;
};

extern template class FnMotionEstimateGradientSmoothVectorsInitialAssignment<float, float, 123>;
extern template class FnMotionEstimateGradientSmoothVectorsSinglePass<float, float, 123>;
extern template class FnMotionEstimateGradientSmoothVectors<float, float, 123>;
using FnPixelSmooth = FnMotionEstimateGradientSmoothVectors<float, float, 123>;

#endif
