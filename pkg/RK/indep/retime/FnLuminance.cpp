#include "RK/indep/retime/FnLuminance.h"

#include "RK/indep/frame/RK.h"
#include "RK/indep/retime/FnSmallLuminance.h"

void FnMotionEstimateMapStackHolder::DropLuminance() {
    delete first_luminance;
    delete second_luminance;
    first_luminance = second_luminance = nullptr;
}

template <class Stored, class Computed, int Scale>
FnMotionEstimateLuminanceFrameGenerator<Stored, Computed, Scale>::FnMotionEstimateLuminanceFrameGenerator(
    const FnLuminanceWeights& weights)
    : red(static_cast<float>(weights.red)),
      green(static_cast<float>(weights.green)),
      blue(static_cast<float>(weights.blue)) {
    const float sum = red + green + blue;
    if (sum == 0.0f)
        red = green = blue = 1.0f;
    else
        red /= sum, green /= sum, blue /= sum;
    constexpr float kFactor = Scale == 0xFF     ? 0.003921568859368563f
                              : Scale == 0x8000 ? 3.0517578125e-5f
                                                : 1.0f;
    red *= kFactor, green *= kFactor, blue *= kFactor;
}

namespace {

// Null with *error set on failure.
template <class Stored, class Computed, int Scale>
FnFloatMap* OneFrame(const FnTexture<Stored, Computed>& picture, int32_t width, int32_t height, float ratio,
                     const FnLuminanceWeights& weights, InterruptRecord* interrupt, int32_t* error) {
    *error = RK_kOutOfMemory;
    FnFloatMap* small = new FnFloatMap;
    if (!small) return nullptr;
    if (!small->Resize(width, height)) {
        delete small;
        return nullptr;
    }
    small->SetEdgeModes(kFnClamp, kFnClamp);
    FnSmallLuminance<Stored, Computed, Scale> sample(weights, ratio);
    sample.SetInterrupt(interrupt);
    sample.process(&picture, small);
    *error = interrupt->error;
    if (*error == 0) return small;
    delete small;
    return nullptr;
}

template <class Stored, class Computed, int Scale>
int32_t BothFrames(const FnTexture<Stored, Computed>& first, const FnTexture<Stored, Computed>& second,
                   const FnLuminanceWeights& weights, InterruptRecord* interrupt,
                   FnMotionEstimateMapStackHolder* holder) {
    const float ratio = static_cast<float>(first.Width()) / static_cast<float>(holder->width);
    int32_t error = 0;
    holder->DropLuminance();
    holder->first_luminance = OneFrame<Stored, Computed, Scale>(first, holder->width, holder->height, ratio,
                                                                weights, interrupt, &error);
    if (error != 0) return error;
    holder->second_luminance = OneFrame<Stored, Computed, Scale>(second, holder->width, holder->height, ratio,
                                                                 weights, interrupt, &error);
    return error;
}

int32_t SmallSize(int32_t size, float detail) {
    return std::max(FnTruncate(static_cast<float>(size) * detail), 1);
}

}  // namespace

template <class Stored, class Computed, int Scale>
int32_t FnMakeLuminance(const FnTexture<Stored, Computed>& first, const FnTexture<Stored, Computed>& second,
                        float detail, const FnLuminanceWeights& weights, InterruptRecord* interrupt,
                        FnMotionEstimateMapStackHolder* holder) {
    holder->width = SmallSize(first.Width(), detail);
    holder->height = SmallSize(first.Height(), detail);
    return BothFrames<Stored, Computed, Scale>(first, second, weights, interrupt, holder);
}

template <class Stored, class Computed, int Scale>
int32_t FnRestoreLuminance(const FnTexture<Stored, Computed>& first,
                           const FnTexture<Stored, Computed>& second, const FnLuminanceWeights& weights,
                           InterruptRecord* interrupt, FnMotionEstimateMapStackHolder* holder) {
    const int32_t error = BothFrames<Stored, Computed, Scale>(first, second, weights, interrupt, holder);
    if (error == 0) holder->lacks_luminance = false;
    return error;
}

#define FN_LUMINANCE(Pixel, Scale)                                                                     \
    template class FnMotionEstimateLuminanceFrameGenerator<Pixel, FnPixelFloat, Scale>;                \
    template int32_t FnMakeLuminance<Pixel, FnPixelFloat, Scale>(                                      \
        const FnPicture<Pixel>&, const FnPicture<Pixel>&, float, const FnLuminanceWeights&,            \
        InterruptRecord*, FnMotionEstimateMapStackHolder*);                                            \
    template int32_t FnRestoreLuminance<Pixel, FnPixelFloat, Scale>(                                   \
        const FnPicture<Pixel>&, const FnPicture<Pixel>&, const FnLuminanceWeights&, InterruptRecord*, \
        FnMotionEstimateMapStackHolder*);
FN_LUMINANCE(FnPixel8, 0xFF)
FN_LUMINANCE(FnPixel16, 0x8000)
FN_LUMINANCE(FnPixelFloat, 1)
