// RAS, the host's bitmap package.
#ifndef RK_HOST_RAS_H
#define RK_HOST_RAS_H

#include "RK/host/GEO.h"
#include "RK/host/Long.h"

// A bitmap lives behind a handle, RAS_World**.
struct RAS_World {
    int16_t width, height;
    int16_t bits_per_pixel;  // 32, 64 or 128 for what the library reads
    int16_t lock_count;
    void* base;  // null while unknown: ask RASp_GetPixBaseAddr
    int32_t rowbytes;
    void* store;  // the host's own
    int32_t channel_order = 0;
};

// Makes a bitmap of `bits_per_pixel` in the size of `bounds`; `*out` receives the handle. 0, 4 or 3.
RK_HOST_API RK_Long RAS_NewWorld(int32_t zero1, int32_t zero2, int32_t eight, const GEO_Rect* bounds,
                                 int32_t bits_per_pixel, int32_t zero3, int32_t zero4, RAS_World*** out);

// Locks the pixels in place until RAS_UnlockPixels; locks count.
RK_HOST_API RK_Long RAS_LoadLockPixels(int32_t one, RAS_World** world, int32_t zero1, int32_t zero2);
RK_HOST_API void RAS_UnlockPixels(RAS_World** world);
RK_HOST_API void RAS_DisposeWorld(RAS_World** world);

// The order of a 32-bit bitmap's channels in memory: 0 alpha first, 1 blue first. A host sets it when it makes one.
RK_HOST_API int32_t RAS_GetChannelOrder(RAS_World** world);
RK_HOST_API void RAS_SetChannelOrder(RAS_World** world, int32_t order);

// The address of the first pixel of row 0.
RK_HOST_API void* RASp_GetPixBaseAddr(RAS_World** world);

// Reports that a world of that size could not be had; `code` is 4.
RK_HOST_API void RAS_ReportWorldAllocationFailure(RK_Long code, int32_t rowbytes, int32_t width, int32_t height,
                                                  int32_t bits_per_pixel);

RK_HOST_API RK_Long RAS_CheckVersions(RK_Long caller, RK_Long version);

#endif
