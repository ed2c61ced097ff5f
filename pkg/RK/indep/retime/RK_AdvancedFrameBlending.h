// The public door of the retiming engine: one in-between frame from two source frames.
#ifndef RK_ADVANCED_FRAME_BLENDING_H
#define RK_ADVANCED_FRAME_BLENDING_H

#include "RK/host/STASH.h"
#include "RK/host/TM.h"
#include "RK/indep/frame/RK.h"

// The engine's own results.
constexpr RK_Long RK_kBadRetimeParam = 514;
constexpr RK_Long RK_kRetimeNoMemory = 1000;  // a pass could not get memory

enum RK_RetimeMethod : int16_t { RK_kNearestFrame = 0, RK_kBlendFrames = 1, RK_kMotion = 2 };

struct RK_Quillon_AlgoParams {
    int16_t method = RK_kMotion;        // 0..2
    float vectorDetail = 0.2f;          // 0.05..1, luminance size against the source
    float estimateSmoothness = 500.0f;  // -1000..1000, weight split in block smoothing
    float tweenSmoothness = 500.0f;     // -1000..1000, weight split in pixel smoothing and tweening
    int16_t smoothPasses = 5;           // 1..50, pixel smoothing passes and tween iterations
    float errorThreshold = 0.01f;       // 0..0.1, mean error at which a block stops iterating
    int16_t sincSampling = 0;           // 0..1, windowed sinc for picture sampling
    int16_t blockSize = 6;              // 4..40, at every level
    double lumaRed = 0.2988804;         // 0..1; the three must sum to 1 within 0.02
    double lumaGreen = 0.58676529;
    double lumaBlue = 0.11435428;
    float shutterAngle = 180.0f;  // 0..360 degrees
    int16_t shutterSamples = 1;   // 1..20 sub-frames accumulated
    int16_t algoReserved = 0;     // 0..3, read by no stage
};

struct RK_Quillon_OtherParams {
    TM_Time currentTime, frameDuration;  // carried along
    TM_Time firstTime, secondTime;       // of the two source frames: the cache entry's key
    double position;                     // 0 is the first frame; not range-checked, and 1 wraps to 0 for motion
    STASH_SortDir* sortDir;              // of the source and its parameters; null: nothing is cached
    uint32_t sortKey;
};
static_assert(sizeof(void*) != 4 || sizeof(RK_Quillon_OtherParams) == 48, "twelve words");

struct RK_Quillon_InterruptFuncs {
    RK_Long (*callback)(void* refcon);  // 0 to go on; may be null. Called on the rendering thread only
    void* refcon;
};

// No state is kept between renders; vector fields live in the host's media cache, under the two frame times. Every
// shutter sample renders the same instant, and the picture is their average.
class RK_API RK_AdvancedFrameBlending {
  public:
    // vectorDetail, errorThreshold and the three weights arrive as percentages.
    RK_AdvancedFrameBlending(const RK_Quillon_AlgoParams& algo, const RK_Quillon_OtherParams& other,
                             const RK_Quillon_InterruptFuncs& interrupt);
    // With the default algorithm.
    RK_AdvancedFrameBlending(const RK_Quillon_OtherParams& other, const RK_Quillon_InterruptFuncs& interrupt);
    RK_AdvancedFrameBlending(const RK_AdvancedFrameBlending&) = default;
    RK_AdvancedFrameBlending& operator=(const RK_AdvancedFrameBlending&) = default;

    // 0, or 514 if a field leaves its range or is not a number.
    RK_Long CheckParamRange() const;

    // 0; 514 for parameters, a null world, null pixels or a source of another depth; 4 or 1000 for memory; or what the
    // callback returned, the destination then being partly written. A destination of another depth than 8, 16 or 32,
    // or a world of no size, gives 0 and draws nothing. Sources of another size are read up to their edges.
    RK_Long Render(RK_World* first, RK_World* second, RK_World* destination);

    const RK_Quillon_AlgoParams& Algorithm() const { return algo_; }

  private:
    RK_Quillon_AlgoParams algo_;
    RK_Quillon_OtherParams other_;
    RK_Quillon_InterruptFuncs interrupt_;
};

#endif
