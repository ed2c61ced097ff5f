#include "RK/indep/world/RK_EffectWorld.h"

#include <cstring>
#include <limits>
#include <memory>

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_World.h"
#include "RK/indep/world/RK_WorldDepth.h"

namespace {

RK_Long refuse(const char* text) {
    KITp_ReportErrString(RK_kLocation | RKp_kSiteEffectWorld, 8, text);
    return RK_kBadParamReported;
}

// A depth that does not fit is none.
int16_t narrowDepth(RK_Long depth) {
    return depth < 0 || depth > std::numeric_limits<int16_t>::max() ? int16_t{0}
                                                                    : static_cast<int16_t>(depth);
}

template <class P>
RK_Long getPixelData(RK_EffectWorld* world, void* pixels, const char* bad_parameter, P** result) {
    if (result != nullptr) *result = nullptr;
    if (world == nullptr || result == nullptr) return refuse(bad_parameter);
    if (RKp_WorldDepth(world) == int32_t{sizeof(P)} * 2)
        *result = static_cast<P*>(pixels != nullptr ? pixels : world->data);
    return RK_kOK;
}

constexpr const char* kBadPixelData8 = "bad parameter passed to RK_GetPixelData8";

}  // namespace

RK_Long RK_NewEffectWorld(RK_EffectRef, RK_Long width, RK_Long height, RK_Long depth, bool clear, bool bitmap,
                          RK_EffectWorld* result) {
    if (result == nullptr) return RK_kOK;
    return RKp_AtBorder([&]() -> RK_Long {
        const RK_Long flags =
            (clear ? RK_kWorldClear : 0) | (depth == 16 ? RK_kWorldDeep : 0) | (bitmap ? RK_kWorldBitmap : 0);
        std::unique_ptr<RK_World> world(RK_World::New(width, height, narrowDepth(depth), flags));
        if (world == nullptr) return RK_kOutOfMemory;
        RK_EffectWorld record;
        world->FillOutEffectWorld(&record);
        record.ownership_stamp = RK_kStampOwned;
        *result = record;
        // From here on the record alone knows it.
        world.release();
        return RK_kOK;
    });
}

RK_Long RK_DisposeEffectWorld(RK_EffectRef, RK_EffectWorld* world) {
    if (world == nullptr) return refuse(RKp_Text(RK_kMsg_InvalidParameter));
    if (world->ownership_stamp != RK_kStampOwned || world->world_object == nullptr)
        return refuse(RKp_Text(RK_kMsg_ForeignWorldDisposed));
    return RKp_AtBorder([&] {
        delete world->world_object;
        std::memset(world, 0, sizeof *world);
    });
}

RK_Long RK_GetPixelData8(RK_EffectWorld* world, void* pixels, RK_Pixel8** result) {
    return getPixelData(world, pixels, kBadPixelData8, result);
}
// Kept: the 16-bit form tells of the 8-bit one.
RK_Long RK_GetPixelData16(RK_EffectWorld* world, void* pixels, RK_Pixel16** result) {
    return getPixelData(world, pixels, kBadPixelData8, result);
}
RK_Long RK_GetPixelDataFloat(RK_EffectWorld* world, void* pixels, RK_PixelFloat** result) {
    return getPixelData(world, pixels, "bad parameter passed to RK_GetPixelDataFloat", result);
}
