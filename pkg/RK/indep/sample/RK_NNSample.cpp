#include "RK/indep/sample/RKp_NNSampleT.h"

#include "RK/indep/sample/RK_AreaSample.h"

RK_Long RK_NNSample(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    *out = RKp_NearestPixel<RK_Pixel8>(x, y, *pb->src);
    return RK_kOK;
}
RK_Long RK_NNSample16(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel16* out) {
    *out = RKp_NearestPixel<RK_Pixel16>(x, y, *pb->src);
    return RK_kOK;
}
RK_Long RK_NNSampleFloat(void*, int32_t x, int32_t y, const RK_SampPB* pb, RK_PixelFloat* out) {
    *out = RKp_NearestPixel<RK_PixelFloat>(x, y, *pb->src);
    return RK_kOK;
}
