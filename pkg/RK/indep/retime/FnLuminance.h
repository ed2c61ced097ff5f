// Luminance frames, and the holder that keeps them with the fields of a pair.
#ifndef FN_LUMINANCE_H
#define FN_LUMINANCE_H

#include "RK/indep/retime/FnImgProc.h"
#include "RK/indep/retime/Imagers.h"

// What a frame pair has: its fields, first (first frame to second) and second, and its luminance frames, which are
// missing in a holder that was read from a disk.
class FnMotionEstimateMapStackHolder : public KIT_MemTrackedObject {
  public:
    FnMotionEstimateMapStackHolder() = default;
    ~FnMotionEstimateMapStackHolder() { DropLuminance(); }
    FnMotionEstimateMapStackHolder(const FnMotionEstimateMapStackHolder&) = delete;
    FnMotionEstimateMapStackHolder& operator=(const FnMotionEstimateMapStackHolder&) = delete;
    void DropLuminance();

    FnVectorMap first_field, second_field;
    FnFloatMap mask;
    FnFloatMap* first_luminance = nullptr;  // owned
    FnFloatMap* second_luminance = nullptr;
    int32_t width = 0, height = 0;  // of the luminance frames
    bool lacks_luminance = false;   // the maps have their geometry, not their pixels
    std::atomic<int32_t> users{1};  // who hold this; one when it is made
};

// Channel weights as parameters give them.
struct FnLuminanceWeights {
    double red, green, blue;
};

// wR * R + wG * G + wB * B in float, whatever alpha is; the three are the normalised weights times the depth's
// factor, so that luminance is 0..1 at every depth.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateLuminanceFrameGenerator final
    : public GeneralSampler<FnMotionEstimateLuminanceFrameGenerator<Stored, Computed, Scale>, FnFloatMap,
                            FnTexture<Stored, Computed>> {
  public:
    // A sum of 0 makes all three 1.
    explicit FnMotionEstimateLuminanceFrameGenerator(const FnLuminanceWeights& weights);
    void Pixel(const Stored& in, float& out, int32_t) {
        const Computed c = FnCompute<Computed>(in);
        const float luminance = red * c.r + green * c.g + blue * c.b;
        out = keep_maximum && out > luminance ? out : luminance;
    }
    float red, green, blue;
    bool keep_maximum = false;
};

// Replaces the holder's luminance frames by those of two pictures, first then second, at their size times detail
// (at least 1 x 1). 0, 4 when memory is short, or the interrupt's error.
template <class Stored, class Computed, int Scale>
int32_t FnMakeLuminance(const FnTexture<Stored, Computed>& first, const FnTexture<Stored, Computed>& second, float detail,
                        const FnLuminanceWeights& weights, InterruptRecord* interrupt,
                        FnMotionEstimateMapStackHolder* holder);

// The same at the holder's own size, for one that lacks them.
template <class Stored, class Computed, int Scale>
int32_t FnRestoreLuminance(const FnTexture<Stored, Computed>& first, const FnTexture<Stored, Computed>& second,
                           const FnLuminanceWeights& weights, InterruptRecord* interrupt,
                           FnMotionEstimateMapStackHolder* holder);

#endif
