#include "RK/indep/retime/FnFrameBlender.h"

#include <cmath>

#include "RK/indep/frame/RK.h"
#include "RK/indep/retime/AlphaMatter.h"
#include "RK/indep/retime/BuildPictureT.h"

// ---- Sinc -----------------------------------------------------------------------------------------------

// sin and cos in double, rounded to float: what C libraries differ by is lost in the rounding but for rare
// ties.
FnSincTaps::FnSincTaps(float p) {
    constexpr double kPi = 3.14159265358979323846;
    const float c = p - 0.5f;
    first = int64_t{FnFloor(c)} - kRadius;
    float sum = 0.0f;
    for (int32_t i = 0; i < kCount; ++i) {
        const double d = static_cast<double>(c - static_cast<float>(first + i));
        taps[i] =
            d == 0.0
                ? 1.0f
                : static_cast<float>((std::sin(kPi * d) / d) * (std::cos(kPi * d / kRadius) + 1.0) * 0.5);
        sum += taps[i];
    }
    for (float& tap : taps) tap /= sum;
}

bool FnSincIsBilinear(float px, float py) {
    auto near_whole = [](float p) {
        const float f = std::fabs(std::fmod(p, 1.0f));
        return f <= 0.01f || f >= 0.99f;
    };
    return near_whole(px) && near_whole(py);
}

// ---- Frames ---------------------------------------------------------------------------------------------

float FnSnapTime(double position) {
    const float t = std::fmod(static_cast<float>(position), 1.0f);
    return static_cast<float>(std::floor((0.5 * 0.005 + static_cast<double>(t)) / 0.005) * 0.005);
}

namespace {

template <class Stored, class Computed, int Scale>
int32_t CopyFrame(FnTexture<Stored, Computed>* dest, const FnTexture<Stored, Computed>& frame,
                  InterruptRecord* interrupt) {
    AlphaMatter<Stored, Computed, Scale> copy(0);
    copy.SetInterrupt(interrupt);
    copy.process(&frame, dest);
    return interrupt->error;
}

}  // namespace

template <class Stored, class Computed, int Scale>
int32_t FnNearestFrame(FnTexture<Stored, Computed>* dest, const FnTexture<Stored, Computed>& f1,
                       const FnTexture<Stored, Computed>& f2, float t, InterruptRecord* interrupt) {
    return CopyFrame<Stored, Computed, Scale>(dest, t > 0.5f ? f2 : f1, interrupt);
}

template <class Stored, class Computed, int Scale>
int32_t FnBuildFrame(FnTexture<Stored, Computed>* dest, const FnTexture<Stored, Computed>& f1,
                     const FnTexture<Stored, Computed>& f2, FnTweenResult* tween, float t, bool sinc,
                     InterruptRecord* interrupt) {
    if (FnIsFrameTime(t)) return CopyFrame<Stored, Computed, Scale>(dest, t == 0.0f ? f1 : f2, interrupt);

    const float ratio = static_cast<float>(dest->Width()) / static_cast<float>(tween->a.Width());
    tween->a.ResetEdgesAndOrigins();
    tween->b.ResetEdgesAndOrigins();
    tween->classes.ResetEdgesAndOrigins();
    FnEnlargedRows rows;
    if (!rows.Make(*tween, dest->Width(), 1.0f / ratio)) return RK_kOutOfMemory;

    FnTweenParameters p;
    p.t = t;
    p.flags = kFnGivenResultA | kFnGivenResultB | kFnGuessOcclusion | (sinc ? kFnSincSampling : 0u);
    FnMotionEstimateGradientTweenerBuildPicture<Stored, Computed, Scale> build(p);
    build.rows = &rows;
    build.f1 = &f1;
    build.f2 = &f2;
    build.vector_scale = ratio;  // the rows keep the vectors' own
    build.probe_sense = true;
    build.SetInterrupt(interrupt);
    build.ProcessMap(dest);
    return interrupt->error;
}

#define FN_FRAMES(Pixel, Scale)                                                                           \
    template int32_t FnBuildFrame<Pixel, FnPixelFloat, Scale>(FnPicture<Pixel>*, const FnPicture<Pixel>&, \
                                                              const FnPicture<Pixel>&, FnTweenResult*,    \
                                                              float, bool, InterruptRecord*);             \
    template int32_t FnNearestFrame<Pixel, FnPixelFloat, Scale>(                                          \
        FnPicture<Pixel>*, const FnPicture<Pixel>&, const FnPicture<Pixel>&, float, InterruptRecord*);
FN_FRAMES(FnPixel8, 0xFF)
FN_FRAMES(FnPixel16, 0x8000)
FN_FRAMES(FnPixelFloat, 1)
