#include "RK/indep/retime/FnMotionPyramid.h"

#include "RK/indep/frame/RK.h"
#include "RK/indep/retime/FnCandidates.h"
#include "RK/indep/retime/FnFilteredPyramid.h"
#include "RK/indep/retime/FnSmoothBlocks.h"
#include "RK/indep/retime/ImageZoomers.h"

float FnMotionEstimateGradientQuantisable::Step() const {
    float step = vector_step;
    for (int32_t k = 0; k < level; ++k) step *= 0.5f;
    return step;
}

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
FnMotionEstimateGradientBlockParameters
FnMotionEstimateGradientPyramid<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Blocks(
    int32_t k) const {
    return {FnTruncate(parameters.block_widths[k]), FnTruncate(parameters.block_heights[k]),
            FnTruncate(parameters.overlap)};
}

template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradientPyramid<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Run() {
    const int32_t width = reference->Level(0)->Width(), height = reference->Level(0)->Height();
    FnMapStack<VectorMap> maps;
    const bool built = maps.Build(this->dest_, parameters.levels, true, [&](int32_t k, int32_t* across, int32_t* down) {
        *across = FnBlockCount(k < 31 ? width >> k : 0, parameters.block_widths[k], parameters.overlap);
        *down = FnBlockCount(k < 31 ? height >> k : 0, parameters.block_heights[k], parameters.overlap);
    });
    if (!built) return this->Abort(kFnNoMemory);

    bool started = false;
    for (int32_t k = parameters.levels - 1; k >= 0 && this->Check() == 0; --k) {
        VectorMap& map = *maps.Level(k);
        if (!map.HasPixels()) continue;
        if (!started) map.Fill({0.0f, 0.0f});
        started = true;
        Level(map, k);
        if (k == 0 || this->Check() != 0) continue;
        const float rx = static_cast<float>(width >> k) / static_cast<float>(width >> (k - 1));
        const float ry = static_cast<float>(height >> k) / static_cast<float>(height >> (k - 1));
        ImageZoomerGP<Vector, ComputedVector> zoom(rx, ry);
        zoom.nearest = parameters.nearest_zoom;
        zoom.scale_vectors = true;
        zoom.SetInterrupt(this->Interrupt());
        zoom.process(&map, maps.Level(k - 1));
    }
}

// Solve, quantise, smooth.
template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradientPyramid<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Level(
    VectorMap& map, int32_t k) {
    if (k >= parameters.first_level) {
        map.SetEdgeModes(kFnMirror, kFnMirror);
        FnMotionEstimateGradient<Stored, Computed, Scale, Vector, ComputedVector, VectorScale> solve;
        solve.blocks = Blocks(k);
        solve.error_threshold = parameters.error_threshold;
        solve.projection_mode = parameters.projection_mode;
        solve.activity_mode = parameters.activity_mode;
        if (k == 0) solve.info = parameters.info;
        solve.SetInterrupt(this->Interrupt());
        solve.Process(&map, {reference->Level(k), target->Level(k), MaskAt(k)});
    }
    if (this->Check() != 0) return;
    FnMotionEstimateGradientQuantise<Vector> quantise;
    quantise.vector_step = parameters.vector_step;
    quantise.level = k;
    quantise.SetInterrupt(this->Interrupt());
    quantise.process(&map, &map);
    if (this->Check() == 0) Smooth(map, k);
}

// The rounds told, then more while an undefined vector is left; what resists them all makes the level zero.
template <class Stored, class Computed, int Scale, class Vector, class ComputedVector, int VectorScale>
void FnMotionEstimateGradientPyramid<Stored, Computed, Scale, Vector, ComputedVector, VectorScale>::Smooth(
    VectorMap& map, int32_t k) {
    constexpr int32_t kMostRepairs = 100;
    FnMotionEstimateGradientChangedNeighboursMonitor monitor;
    monitor.SetInterrupt(this->Interrupt());
    monitor.ProcessMap(&map);
    FnMotionEstimateGradientSmooth<Stored, Computed, Scale, Vector> smooth;
    smooth.blocks = Blocks(k);
    smooth.error_weight = parameters.error_weight;
    smooth.smooth_weight = parameters.smooth_weight;
    smooth.reference = reference->Level(k);
    smooth.target = target->Level(k);
    smooth.mask = MaskAt(k);
    smooth.monitor = &monitor;
    smooth.SetInterrupt(this->Interrupt());
    auto round = [&] {
        smooth.ProcessMap(&map);
        if (this->Check() == 0) monitor.ProcessMap(&map);
    };
    const int32_t rounds = k >= parameters.first_level ? parameters.smooth_passes : 0;
    for (int32_t i = 0; i < rounds && this->Check() == 0; ++i) round();
    for (int32_t i = 0; i < kMostRepairs && monitor.SawUndefined() && this->Check() == 0; ++i) round();
    if (monitor.SawUndefined() && this->Check() == 0) map.Fill({0.0f, 0.0f});
}

template class FnMotionEstimateGradientPyramid<float, float, 1, HvVec2, HvVec2, 1>;

int32_t FnLevelCount(int32_t width, int32_t height) {
    int32_t a = height / 2, b = width / 2, count = 1;
    while (b / 4 >= 2 && a / 4 >= 2) {
        a /= 2;
        b /= 2;
        ++count;
    }
    return count;
}

int32_t EstimateField(const FnEstimateParameters& parameters, FnFloatMap* first, FnFloatMap* second,
                      InterruptRecord* interrupt, FnVectorMap* field) {
    FnMotionEstimateGradientPyramidParameters p;
    p.SetBlockSize(static_cast<float>(parameters.block_size));
    p.overlap = 2.0f;
    p.error_weight = NegativeWeight(parameters.smoothness);
    p.smooth_weight = PositiveWeight(parameters.smoothness);
    p.error_threshold = parameters.error_threshold;
    p.levels = FnLevelCount(first->Width(), first->Height());
    p.nearest_zoom = true;

    FnMapStack<FnFloatMap> reference, target;
    if (!reference.BuildHalved(first, p.levels) || !target.BuildHalved(second, p.levels)) {
        interrupt->Abort(kFnNoMemory);
        return interrupt->error;
    }
    for (FnMapStack<FnFloatMap>* stack : {&reference, &target}) {
        FnFilteredPyramidAlpha<float, float, 1> pyramid;
        pyramid.SetInterrupt(interrupt);
        pyramid.process(stack);
        if (interrupt->error != 0) return interrupt->error;
    }

    const int32_t across = FnBlockCount(first->Width(), p.block_widths[0], p.overlap);
    const int32_t down = FnBlockCount(first->Height(), p.block_heights[0], p.overlap);
    field->ResetEdgesAndOrigins();
    if (across < 1 || down < 1) {
        field->Fill({0.0f, 0.0f});
        return 0;
    }
    FnVectorMap blocks;
    if (!blocks.Resize(across, down)) return RK_kOutOfMemory;
    FnMotionEstimateGradientPyramid<float, float, 1, HvVec2, HvVec2, 1> estimate(p);
    estimate.reference = &reference;
    estimate.target = &target;
    estimate.SetInterrupt(interrupt);
    estimate.process(&blocks);
    if (interrupt->error != 0) return interrupt->error;

    ImageZoomerGP<HvVec2, HvVec2> expand(static_cast<float>(across) / static_cast<float>(field->Width()),
                                         static_cast<float>(down) / static_cast<float>(field->Height()));
    expand.nearest = true;
    expand.SetInterrupt(interrupt);
    expand.process(&blocks, field);
    return interrupt->error;
}
