#include "RK/indep/world/RK_WorldDepth.h"

#include <cstring>

#include "RK/host/RAS.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_World.h"

namespace {

struct Format {
    int32_t depth;
    uint32_t code;
};
// By pixel format index.
constexpr Format kFormats[] = {{8, RK_kFormat8}, {16, RK_kFormat16}, {32, RK_kFormatFloat}};

}  // namespace

int32_t RKp_WorldDepth(const RK_LayerDef* world) {
    if (world != nullptr) {
        if (world->world_object != nullptr) return static_cast<int16_t>(world->world_object->Depth());
        const uint32_t index = world->world_flags >> 24;
        if (index < 3) return kFormats[index].depth;
    }
    RKp_VERIFICATION("Unknown pixel format");
    return 8;
}

RK_Long RK_GetEffectWorldDepth(RK_EffectWorld* world, RK_Long* depth) {
    if (world == nullptr || depth == nullptr)
        return RKp_VERIFICATION("Bad parameter to RK_GetEffectWorldDepth()");
    *depth = RKp_WorldDepth(world);
    return RK_kOK;
}

int16_t RK_DepthOfRASWorld(RAS_World** bitmap) {
    if (bitmap == nullptr || *bitmap == nullptr) {
        RKp_VERIFICATION("Bad parameter to RK_DepthOfRASWorld()");
        return 0;
    }
    return static_cast<int16_t>((*bitmap)->bits_per_pixel / 4);
}

RK_Long RKp_GetPixelFormat(const RK_LayerDef* world, uint32_t* code) {
    if (world == nullptr || code == nullptr) return RKp_VERIFICATION("Bad parameter to RKp_GetPixelFormat()");
    const int32_t depth = RKp_WorldDepth(world);
    for (const Format& format : kFormats) {
        if (format.depth != depth) continue;
        *code = format.code;
        return RK_kOK;
    }
    return RKp_VERIFICATION("Unsupported pixel depth in RKp_GetPixelFormat()");
}

RK_Long RKp_DepthOfPixelFormat(uint32_t code, int32_t* depth) {
    if (depth == nullptr) return RKp_VERIFICATION("Bad parameter to RKp_DepthOfPixelFormat()");
    for (const Format& format : kFormats) {
        if (format.code != code) continue;
        *depth = format.depth;
        return RK_kOK;
    }
    return RKp_VERIFICATION("Unsupported RK_PixelFormat");
}

RK_Long RKp_SetWorldDepth(RK_LayerDef* world, int32_t depth) {
    if (world == nullptr) return RKp_VERIFICATION("Bad parameter to RKp_SetWorldDepth()");
    for (uint32_t index = 0; index < 3; ++index) {
        if (kFormats[index].depth != depth) continue;
        world->world_flags |= index << 24 | (depth == 16 ? 1u : 0u);
        return RK_kOK;
    }
    return RKp_VERIFICATION("Unknown pixel format");
}

RK_Long RK_EffectWorldFromRASWorld(RAS_World** bitmap, RK_EffectWorld* world) {
    if (bitmap == nullptr || *bitmap == nullptr || world == nullptr)
        return RKp_VERIFICATION("Bad parameter to RK_EffectWorldFromRASWorld()");
    const int32_t bits = (*bitmap)->bits_per_pixel;
    if (bits != 32 && bits != 64 && bits != 128)
        return RKp_VERIFICATION("RK_Worlds can only be 128, 64 or 32 bits per pixel");
    std::memset(world, 0, sizeof *world);
    const RK_Long error = RKp_SetWorldDepth(world, bits / 4);
    world->data = (*bitmap)->base != nullptr ? (*bitmap)->base : RASp_GetPixBaseAddr(bitmap);
    world->rowbytes = (*bitmap)->rowbytes;
    world->width = (*bitmap)->width;
    world->height = (*bitmap)->height;
    world->ras_world = bitmap;
    return error;
}
