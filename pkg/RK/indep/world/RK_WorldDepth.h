// How a record tells its depth.
#ifndef RK_WORLD_DEPTH_H
#define RK_WORLD_DEPTH_H

#include "RK/indep/frame/RK.h"

// Pixel format codes as plug-ins see them: four characters, lowest byte first.
constexpr uint32_t RK_kFormat8 = 0x62677261;      // "argb"
constexpr uint32_t RK_kFormat16 = 0x36317672;     // "rv16"
constexpr uint32_t RK_kFormatFloat = 0x32337672;  // "rv32"

// 8, 16 or 32: the object's own depth if the record has an object, else by the flags' top byte. A stand-alone
// record with any other byte, and a null one, reports "Unknown pixel format" and counts as 8.
RK_API int32_t RKp_WorldDepth(const RK_LayerDef* world);

// Stores that depth: 0. A null argument is reported and gives 3.
RK_API RK_Long RK_GetEffectWorldDepth(RK_EffectWorld* world, RK_Long* depth);

// Bits per pixel divided by 4; a null bitmap is reported and gives 0.
RK_API int16_t RK_DepthOfRASWorld(RAS_World** bitmap);

// Stores the pixel format code. A null argument or an unknown depth is reported and gives 3; nothing is
// stored.
RK_API RK_Long RKp_GetPixelFormat(const RK_LayerDef* world, uint32_t* code);

// Stores the depth of a pixel format code. An unknown code, or null, is reported and gives 3; nothing is
// stored.
RK_API RK_Long RKp_DepthOfPixelFormat(uint32_t code, int32_t* depth);

// ORs the depth into world_flags, whose top byte and bit 0 the caller has cleared. An unknown depth is
// reported and gives 3.
RK_API RK_Long RKp_SetWorldDepth(RK_LayerDef* world, int32_t depth);

// Fills a record from a bitmap of 32, 64 or 128 bits per pixel. Another, or a null argument, is reported and
// gives 3, and the record stays untouched. The extent stays empty.
RK_API RK_Long RK_EffectWorldFromRASWorld(RAS_World** bitmap, RK_EffectWorld* world);

#endif
