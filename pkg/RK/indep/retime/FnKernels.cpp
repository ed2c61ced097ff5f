#include "RK/indep/retime/FnKernels.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numeric>

#include "RK/indep/retime/HvVec2.h"

bool FnKernel1D::Reserve(float kernel_radius) {
    constexpr float kGreatest = 1 << 20;
    const float up = std::ceil(kernel_radius);
    if (!(up >= 0.0f && up <= kGreatest)) return false;
    const int32_t reach = FnTruncate(up);
    radius = kernel_radius;
    if (taps && reach == reach_) return true;
    reach_ = reach;
    return taps.Allocate(Count());
}

void FnKernel1D::Compute(const KernelContainer<float>& container, float f) {
    for (int32_t i = -reach_; i <= reach_; ++i) taps[i + reach_] = container.value(static_cast<float>(i) - f, radius);
    FnNormalise(taps.data(), Count());
}

void FnNormalise(float* taps, int32_t count) {
    float sum = 0.0f;
    for (int32_t i = 0; i < count; ++i) sum += taps[i];
    for (int32_t i = 0; i < count; ++i) taps[i] /= sum;
}

FnPrecalculatedKernel::~FnPrecalculatedKernel() { Drop(); }

void FnPrecalculatedKernel::Drop() {
    for (FnKernel1D** tables : {&x, &y}) {
        if (!*tables) continue;
        for (int32_t k = 0; k <= phase_count; ++k) (*tables)[k].~FnKernel1D();
        KIT_FreePtr(*tables);
        *tables = nullptr;
    }
}

bool FnPrecalculatedKernel::Build(const KernelContainer<float>& container, int32_t phases, float radius_x,
                                  float radius_y) {
    Drop();
    phase_count = phases;
    x_radius = radius_x;
    y_radius = radius_y;
    for (FnKernel1D** tables : {&x, &y}) {
        void* block = KIT_AllocatePtrQuiet((static_cast<size_t>(phases) + 1) * sizeof(FnKernel1D));
        if (!block) return Drop(), false;
        *tables = static_cast<FnKernel1D*>(block);
        for (int32_t k = 0; k <= phases; ++k) new (*tables + k) FnKernel1D;
        for (int32_t k = 0; k <= phases; ++k) {
            if (!(*tables)[k].Reserve(tables == &x ? radius_x : radius_y)) return Drop(), false;
            const float f = k == phases ? 0.99999f : static_cast<float>(k) / static_cast<float>(phases);
            (*tables)[k].Compute(container, f);
        }
    }
    return true;
}

const FnPrecalculatedKernel* FnCachedPrecalculatedKernels::Get(const KernelContainer<float>& container,
                                                               int32_t phases, float x_radius, float y_radius) {
    if (x_radius != x_radius_ || y_radius != y_radius_) DropAll();
    x_radius_ = x_radius;
    y_radius_ = y_radius;
    for (int32_t i = 0; i < count_; ++i)
        if (sets_[i]->phase_count == phases) return sets_[i];

    FnBuffer<FnPrecalculatedKernel*> grown;
    if (!grown.Allocate(int64_t{count_} + 1)) return nullptr;
    FnPrecalculatedKernel* made = new FnPrecalculatedKernel;
    if (!made || !made->Build(container, phases, x_radius, y_radius)) {
        delete made;
        return nullptr;
    }
    for (int32_t i = 0; i < count_; ++i) grown[i] = sets_[i];
    grown[count_++] = made;
    sets_.Swap(grown);
    return made;
}

void FnCachedPrecalculatedKernels::DropAll() {
    for (int32_t i = 0; i < count_; ++i) delete sets_[i];
    sets_.Free();
    count_ = 0;
}

bool FnKernelManager::Request(int32_t phases, float x_radius, float y_radius, int32_t mode) {
    phases = std::max(phases, 1);
    if (ready_ && phases == phase_count_ && x_radius == x_radius_ && y_radius == y_radius_ && mode == mode_)
        return true;
    phase_count_ = phases;
    x_radius_ = x_radius;
    y_radius_ = y_radius;
    mode_ = mode;
    current_ = nullptr;
    if (!container_) return ready_ = false;
    if (mode == kPhases) current_ = store_.Get(*container_, phases, x_radius, y_radius);
    return ready_ = mode != kPhases || current_ != nullptr;
}

namespace {

// Blends the tables on either side of fraction f.
void BlendTables(const FnKernel1D* tables, int32_t phases, float f, FnKernel1D* out) {
    const float place = f * static_cast<float>(phases);
    const int32_t a = std::clamp(FnFloor(place), 0, phases - 1);
    const float between = place - static_cast<float>(a);
    for (int32_t i = 0; i < out->Count(); ++i) out->taps[i] = FnMix(tables[a].taps[i], tables[a + 1].taps[i], between);
}

}  // namespace

void FnKernelManager::Lookup(float x, float y, FnKernelScratch* scratch) const {
    const float fx = FnFraction(x, FnFloor(x)), fy = FnFraction(y, FnFloor(y));
    if (mode_ == kPhases) {
        BlendTables(current_->x, phase_count_, fx, &scratch->x);
        BlendTables(current_->y, phase_count_, fy, &scratch->y);
    } else {
        scratch->x.Compute(*container_, fx);
        scratch->y.Compute(*container_, fy);
    }
}

namespace {

// The q of a fraction p / q within 1e-6 of x, by continued fraction.
double Denominator(double x) {
    x = std::fabs(x);
    if (x < 1e-8) return 99999999.0;
    if (x > 999999999.9) return 1.0;
    double z = x, q_before = 0.0, q = 1.0;
    for (;;) {
        const double rest = z - std::floor(z);
        if (std::fabs(x - std::floor(x * q + 0.5) / q) <= 1e-6 || rest == 0.0) return q;
        z = 1.0 / rest;
        const double next = q * std::floor(z) + q_before;
        q_before = q;
        q = next;
    }
}

double GridStep(double x) {
    if (!(std::fabs(x) <= 1e300)) return 1.0;
    if (std::fabs(x - std::floor(x + 0.5)) <= 1e-6) return 1.0;
    const double q = Denominator(x);
    return std::clamp(std::fabs(x / (q * x)), 0.001, 1.0);
}

}  // namespace

int32_t FnPhaseCount(const double grid[6]) {
    int64_t divisor = 0;
    for (int i = 0; i < 6; ++i) divisor = std::gcd(divisor, static_cast<int64_t>(GridStep(grid[i]) * 10000.0));
    const double step = static_cast<double>(divisor) / 10000.0;
    return static_cast<int32_t>(std::clamp(1.0 / step, 1.0, 1000.0));
}
