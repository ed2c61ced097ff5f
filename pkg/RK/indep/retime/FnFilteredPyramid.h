// The image pyramid that the estimator descends.
#ifndef FN_FILTERED_PYRAMID_H
#define FN_FILTERED_PYRAMID_H

#include "RK/indep/retime/FnMapStack.h"
#include "RK/indep/retime/Imagers.h"

// Fills levels 1 and up of a stack: each level is the one before, blurred and decimated by 2. By default the blur is
// Gaussian with sigma = kernel_size / 3; with an explicit kernel it has kernel_size taps exp(-d * d / (2 * variance)).
// A missing level or scratch map aborts with 1000.
template <class Stored, class Computed, int Scale>
class FnFilteredPyramid : public Generator<FnTexture<Stored, Computed>> {
  public:
    using Map = FnTexture<Stored, Computed>;
    int32_t kernel_size = 3;
    float kernel_variance = 2.25f;
    int32_t levels = 0;
    bool explicit_kernel = false;

    // Over stack->Level(0) as the map.
    void process(FnMapStack<Map>* stack) {
        stack_ = stack;
        Generator<Map>::process(stack->Level(0));
        stack_ = nullptr;
    }
    void Prepare() override;
    // The levels are imagers of their own and start their own bands.
    void Run() override;
    void Finish() override { taps_.Free(); }

  protected:
    virtual int32_t LevelCount() const { return levels; }

  private:
    void BuildLevel(Map* below, Map* level);

    FnMapStack<Map>* stack_ = nullptr;
    FnBuffer<float> taps_;
};

// The level count is the stack's.
template <class Stored, class Computed, int Scale>
class FnFilteredPyramidAlpha : public FnFilteredPyramid<Stored, Computed, Scale> {
  public:
    void process(FnMapStack<FnTexture<Stored, Computed>>* stack) {
        this->levels = stack->Count();
        FnFilteredPyramid<Stored, Computed, Scale>::process(stack);
    }
};

#endif
