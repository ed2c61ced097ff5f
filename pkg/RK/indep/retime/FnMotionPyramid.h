// The coarse-to-fine estimator, and the field of one direction.
#ifndef FN_MOTION_PYRAMID_H
#define FN_MOTION_PYRAMID_H

#include "RK/indep/retime/FnMapStack.h"
#include "RK/indep/retime/FnMotionEstimate.h"

constexpr int32_t kFnMostLevels = 1000;

struct FnMotionEstimateGradientPyramidParameters {
    FnMotionEstimateGradientPyramidParameters() { SetBlockSize(6.0f); }
    void SetBlockSize(float size) {
        for (int32_t k = 0; k < kFnMostLevels; ++k) block_widths[k] = block_heights[k] = size;
    }
    float vector_step = 0.1f;
    float overlap = 0.0f;
    float error_weight = 1.0f, smooth_weight = 1.0f;
    float error_threshold = 0.01f;
    float block_widths[kFnMostLevels], block_heights[kFnMostLevels];  // by level
    bool projection_mode = false, activity_mode = false;
    int32_t levels = 4;
    int32_t first_level = 0;  // coarser ones only; finer levels take their vectors unsolved
    int32_t smooth_passes = 5;
    bool nearest_zoom = false;
    FnMotionEstimateGradientInfoParameters info;  // used at level 0
};

// How finely a level's vectors stand: the step halves per level.
class FnMotionEstimateGradientQuantisable {
  public:
    float vector_step = 0.1f;
    int32_t level = 0;

  protected:
    float Step() const;
};

// Each component of a defined vector becomes floor((v + step / 2) / step) * step.
template <class Vector>
class FnMotionEstimateGradientQuantise final
    : public GeneralSampler<FnMotionEstimateGradientQuantise<Vector>, FnVectorMap, FnVectorMap>,
      public FnMotionEstimateGradientQuantisable {
  public:
    void PreRow() override { step_ = Step(); }
    void Pixel(const Vector& in, Vector& out, int32_t) {
        out = FnIsUndefined(in) ? in : Vector{Rounded(in.x), Rounded(in.y)};
    }

  private:
    float Rounded(float v) const { return std::floor((v + step_ / 2.0f) / step_) * step_; }
    float step_ = 0.0f;
};

// Fills the level-0 block map from the image stacks of both frames, of parameters.levels levels.
template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
class FnMotionEstimateGradientPyramid : public Generator<FnTexture<Vector, ComputedVector>> {
  public:
    using VectorMap = FnTexture<Vector, ComputedVector>;
    explicit FnMotionEstimateGradientPyramid(const FnMotionEstimateGradientPyramidParameters& p) : parameters(p) {}
    FnMotionEstimateGradientPyramidParameters parameters;
    FnMapStack<FnFloatMap>* reference = nullptr;
    FnMapStack<FnFloatMap>* target = nullptr;
    FnMapStack<FnFloatMap>* mask = nullptr;  // may be null

    // Levels are passes of their own.
    void Run() override;

  private:
    void Level(VectorMap& map, int32_t k);
    void Smooth(VectorMap& map, int32_t k);
    FnMotionEstimateGradientBlockParameters Blocks(int32_t k) const;
    FnFloatMap* MaskAt(int32_t k) const { return mask ? mask->Level(k) : nullptr; }
};

extern template class FnMotionEstimateGradientPyramid<float, float, 1, HvVec2, HvVec2, 1>;

// The engine's own use of the estimator.
struct FnEstimateParameters {
    int32_t block_size = 6;
    float smoothness = 500.0f;
    float error_threshold = 0.01f;
};

// Levels of a frame: halving stops where a quarter of the next size would be below 2.
int32_t FnLevelCount(int32_t width, int32_t height);

// Fills the field, which has the frames' size, with the displacement of the second frame's content in the first. 0,
// 4 for memory, 1000 for memory inside a stage, or the interrupt's error.
int32_t EstimateField(const FnEstimateParameters& parameters, FnFloatMap* first, FnFloatMap* second,
                      InterruptRecord* interrupt, FnVectorMap* field);

#endif
