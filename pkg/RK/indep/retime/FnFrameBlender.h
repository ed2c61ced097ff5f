// In-between pictures: built along vectors, blended without motion, or the nearer frame.
#ifndef FN_FRAME_BLENDER_H
#define FN_FRAME_BLENDER_H

#include "RK/indep/retime/FnEnlargedRows.h"
#include "RK/indep/retime/FnTweener.h"
#include "RK/indep/retime/Imagers.h"

// a + (b - a) * t in all four channels, alpha like a colour, clamped at every depth.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateFrameBlender final
    : public GeneralCombiner<FnMotionEstimateFrameBlender<Stored, Computed, Scale>,
                             FnTexture<Stored, Computed>, FnTexture<Stored, Computed>,
                             FnTexture<Stored, Computed>> {
  public:
    float t = 0.5f;
    void Pixel(const Stored& a, const Stored& b, Stored& out, int32_t) {
        const Computed c = FnMix(FnCompute<Computed>(a), FnCompute<Computed>(b), t);
        constexpr float M = FnDepth<Scale>::kFull;
        out = FnStore<Stored>(FnMakePixel<Computed>(FnClamp(c.a, 0.0f, M), FnClamp(c.r, 0.0f, M),
                                                    FnClamp(c.g, 0.0f, M), FnClamp(c.b, 0.0f, M)));
    }
};

// The part of a position after its whole number, snapped to a multiple of 0.005. Not range-checked: position
// 1 gives 0, and a negative one gives what is left of it.
float FnSnapTime(double position);
// Whether a snapped time is a frame itself.
inline bool FnIsFrameTime(float t) { return t >= 1.0f || t <= 0.0f; }

// Builds the destination at snapped time t; a frame time copies that frame. The tween maps' edges and origins
// are reset. 0, 4 when memory is short, or the interrupt's error, with the destination partly written.
template <class Stored, class Computed, int Scale>
int32_t FnBuildFrame(FnTexture<Stored, Computed>* dest, const FnTexture<Stored, Computed>& f1,
                     const FnTexture<Stored, Computed>& f2, FnTweenResult* tween, float t, bool sinc,
                     InterruptRecord* interrupt);

// The first frame, or the second when t is above 0.5.
template <class Stored, class Computed, int Scale>
int32_t FnNearestFrame(FnTexture<Stored, Computed>* dest, const FnTexture<Stored, Computed>& f1,
                       const FnTexture<Stored, Computed>& f2, float t, InterruptRecord* interrupt);

#endif
