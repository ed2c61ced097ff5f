#include "RK/indep/retime/RK_AdvancedFrameBlending.h"

#include <cmath>

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/retime/RKp_RetimeEngineT.h"
#include "RK/indep/world/RK_World.h"

RK_AdvancedFrameBlending::RK_AdvancedFrameBlending(const RK_Quillon_AlgoParams& algo,
                                                   const RK_Quillon_OtherParams& other,
                                                   const RK_Quillon_InterruptFuncs& interrupt)
    : algo_(algo), other_(other), interrupt_(interrupt) {
    constexpr float kPercent = 0.01f;
    algo_.vectorDetail *= kPercent;
    algo_.errorThreshold *= kPercent;
    for (double* weight : {&algo_.lumaRed, &algo_.lumaGreen, &algo_.lumaBlue}) *weight *= static_cast<double>(kPercent);
}

RK_AdvancedFrameBlending::RK_AdvancedFrameBlending(const RK_Quillon_OtherParams& other,
                                                   const RK_Quillon_InterruptFuncs& interrupt)
    : other_(other), interrupt_(interrupt) {}

namespace {

// Not a number is in no range.
template <class T>
bool In(T v, T low, T high) {
    return v >= low && v <= high;
}

}  // namespace

RK_Long RK_AdvancedFrameBlending::CheckParamRange() const {
    const RK_Quillon_AlgoParams& a = algo_;
    const double sum = a.lumaRed + a.lumaGreen + a.lumaBlue;
    const bool good = In<int>(a.method, 0, 2) && In(a.vectorDetail, 0.05f, 1.0f) &&
                      In(a.estimateSmoothness, -1000.0f, 1000.0f) && In(a.tweenSmoothness, -1000.0f, 1000.0f) &&
                      In<int>(a.smoothPasses, 1, 50) && In(a.errorThreshold, 0.0f, 0.1f) &&
                      In<int>(a.sincSampling, 0, 1) && In<int>(a.blockSize, 4, 40) && In(a.lumaRed, 0.0, 1.0) &&
                      In(a.lumaGreen, 0.0, 1.0) && In(a.lumaBlue, 0.0, 1.0) && std::fabs(sum - 1.0) < 0.02 &&
                      In(a.shutterAngle, 0.0f, 360.0f) && In<int>(a.shutterSamples, 1, 20) &&
                      In<int>(a.algoReserved, 0, 3);
    return good ? RK_kOK : RK_kBadRetimeParam;
}

namespace {

// A flat map over a world's pixels.
template <class Pixel>
struct WorldMap : FnPicture<Pixel> {
    explicit WorldMap(const RK_World& world)
        : FnPicture<Pixel>(world.record.data, world.record.width, world.record.height, world.record.rowbytes) {
        this->SetEdgeModes(kFnClamp, kFnClamp);
    }
};

template <class Pixel, int Scale>
RK_Long RenderAt(const RK_Quillon_AlgoParams& algo, const RK_Quillon_OtherParams& other,
                 const RK_Quillon_InterruptFuncs& interrupt, const RK_World& first, const RK_World& second,
                 const RK_World& destination) {
    InterruptRecord record;
    record.refcon = interrupt.refcon;
    record.callback = interrupt.callback;
    const WorldMap<Pixel> f1(first), f2(second);
    WorldMap<Pixel> dest(destination);
    return RKp_RetimeEngine<Pixel, Scale>(algo, other, f1, f2, &dest, &record).Render();
}

}  // namespace

RK_Long RK_AdvancedFrameBlending::Render(RK_World* first, RK_World* second, RK_World* destination) {
    return RKp_AtBorder([&]() -> RK_Long {
        if (const RK_Long error = CheckParamRange()) return error;
        if (!destination) return RK_kBadRetimeParam;
        const RK_Long depth = destination->Depth();
        if (depth != 8 && depth != 16 && depth != 32) return RK_kOK;
        for (const RK_World* world : {first, second, destination})
            if (!world || !world->record.data || world->Depth() != depth) return RK_kBadRetimeParam;
        for (const RK_World* world : {first, second, destination})
            if (world->record.width < 1 || world->record.height < 1) return RK_kOK;
        if (depth == 8) return RenderAt<FnPixel8, 0xFF>(algo_, other_, interrupt_, *first, *second, *destination);
        if (depth == 16) return RenderAt<FnPixel16, 0x8000>(algo_, other_, interrupt_, *first, *second, *destination);
        return RenderAt<FnPixelFloat, 1>(algo_, other_, interrupt_, *first, *second, *destination);
    });
}
