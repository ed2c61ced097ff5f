// Separable resampling kernels, and their tables by sub-pixel phase.
#ifndef FN_KERNELS_H
#define FN_KERNELS_H

#include "RK/indep/retime/FnBuffer.h"

// A kernel's shape.
template <class T>
class KernelContainer {
  public:
    virtual ~KernelContainer() = default;
    virtual T value(T position, T radius) const = 0;
};

// Taps -n..n, n = ceil(radius), at [0]..[2n].
class FnKernel1D {
  public:
    // Room for a radius; false when memory is short or the radius has no size that can be held.
    bool Reserve(float kernel_radius);
    // Fills with container values at i - f, divided by their sum. Needs room.
    void Compute(const KernelContainer<float>& container, float f);
    int32_t Reach() const { return reach_; }
    int32_t Count() const { return 2 * reach_ + 1; }

    float radius = 0.0f;
    FnBuffer<float> taps;

  private:
    int32_t reach_ = 0;
};

// Divides taps by their sum, added in ascending order in float.
void FnNormalise(float* taps, int32_t count);

// The tables of one phase count P and pair of radii: for f = k / P, k from 0 to P - 1, and a last one for 0.99999.
class FnPrecalculatedKernel : public KIT_MemTrackedObject {
  public:
    ~FnPrecalculatedKernel();
    FnPrecalculatedKernel() = default;
    FnPrecalculatedKernel(const FnPrecalculatedKernel&) = delete;
    FnPrecalculatedKernel& operator=(const FnPrecalculatedKernel&) = delete;
    // False, and no tables, when memory is short.
    bool Build(const KernelContainer<float>& container, int32_t phases, float x_radius, float y_radius);

    int32_t phase_count = 0;
    float x_radius = 0.0f, y_radius = 0.0f;
    FnKernel1D* x = nullptr;  // phase_count + 1 of each
    FnKernel1D* y = nullptr;

  private:
    void Drop();
};

// Sets of tables by phase count, for one pair of radii.
class FnCachedPrecalculatedKernels {
  public:
    FnCachedPrecalculatedKernels() = default;
    ~FnCachedPrecalculatedKernels() { DropAll(); }
    FnCachedPrecalculatedKernels(const FnCachedPrecalculatedKernels&) = delete;
    FnCachedPrecalculatedKernels& operator=(const FnCachedPrecalculatedKernels&) = delete;
    // The set of that phase count, made and appended if it is not there; null when memory is short. Other radii than
    // the last drop all sets; nothing else does.
    const FnPrecalculatedKernel* Get(const KernelContainer<float>& container, int32_t phases, float x_radius,
                                     float y_radius);
    void DropAll();
    int32_t Count() const { return count_; }

  private:
    FnBuffer<FnPrecalculatedKernel*> sets_;
    int32_t count_ = 0;
    float x_radius_ = 0.0f, y_radius_ = 0.0f;
};

// The taps at one position; kernels that a thread keeps for itself.
struct FnKernelScratch {
    FnKernel1D x, y;
};

// Hands out kernels for positions, by tables of phases or computed each time.
class FnKernelManager {
  public:
    enum Mode : int32_t { kCompute = 0, kPhases = 1 };
    explicit FnKernelManager(const KernelContainer<float>* kernel_container) : container_(kernel_container) {}
    // Makes ready for those phases (raised to 1 at least) and radii. False when memory is short.
    bool Request(int32_t phases, float x_radius, float y_radius, int32_t mode);
    bool IsReady() const { return ready_; }
    bool Reserve(FnKernelScratch* scratch) const { return scratch->x.Reserve(x_radius_) && scratch->y.Reserve(y_radius_); }
    // Taps for the fractions of (x, y) into reserved scratch. Needs a request that went well.
    void Lookup(float x, float y, FnKernelScratch* scratch) const;
    const FnPrecalculatedKernel* Current() const { return current_; }
    const FnCachedPrecalculatedKernels& Store() const { return store_; }

  private:
    const KernelContainer<float>* container_;
    const FnPrecalculatedKernel* current_ = nullptr;
    int32_t phase_count_ = 0;
    float x_radius_ = 0.0f, y_radius_ = 0.0f;
    int32_t mode_ = kCompute;
    bool ready_ = false;
    FnCachedPrecalculatedKernels store_;
};

// Phases that an affine sampling grid touches, 1..1000: from its two origin values and four steps.
int32_t FnPhaseCount(const double grid[6]);

#endif
