// Worlds for effect plug-ins: a record that the plug-in owns and the library fills. `effect_ref` is not read.
#ifndef RK_EFFECT_WORLD_H
#define RK_EFFECT_WORLD_H

#include "RK/indep/frame/RK.h"

// What stands in ownership_stamp.
constexpr uint32_t RK_kStampOwned = 0xAAAABBBB;  // filled by RK_NewEffectWorld
constexpr uint32_t RK_kStampHost = 0xAAAAAAAA;   // a record that the host made

// Makes a world of 1 to 30000 pixels each way at depth 8, 16 or 32, zeroed where `clear` says so, in a bitmap
// of the host where `bitmap` does, and describes it in `result`, whatever that held. It lives until
// RK_DisposeEffectWorld. A null `result` does nothing and gives 0. On failure the record is untouched: 516
// for a bad size (reported), 3 for another depth, 4 for memory.
RK_API RK_Long RK_NewEffectWorld(RK_EffectRef effect_ref, RK_Long width, RK_Long height, RK_Long depth,
                                 bool clear, bool bitmap, RK_EffectWorld* result);

// Frees the world and clears the record. 0, or 516 (reported) for null, and for a record that
// RK_NewEffectWorld did not fill, which stays as it is.
RK_API RK_Long RK_DisposeEffectWorld(RK_EffectRef effect_ref, RK_EffectWorld* world);

// The pixels of a world of the function's own depth, or `pixels` where that is not null; null for a world of
// another depth, which is no failure. 0, or 516 (reported) for a null record, whose result is null, or a null
// `result`.
RK_API RK_Long RK_GetPixelData8(RK_EffectWorld* world, void* pixels, RK_Pixel8** result);
RK_API RK_Long RK_GetPixelData16(RK_EffectWorld* world, void* pixels, RK_Pixel16** result);
RK_API RK_Long RK_GetPixelDataFloat(RK_EffectWorld* world, void* pixels, RK_PixelFloat** result);

#endif
