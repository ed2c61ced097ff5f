// Constants of the vector code: 16 bytes each, aligned to 16.
#ifndef RK_VECTOR_CONSTANTS_H
#define RK_VECTOR_CONSTANTS_H

#include "RK/host/Long.h"

RK_API extern const uint32_t RK_G_viLoWordMask[4];    // the low word of each 32-bit lane
RK_API extern const uint32_t RK_G_viLoByteMask32[4];  // the low byte of each 32-bit lane
RK_API extern const uint32_t RK_G_vi128_32[4];        // 128 in each 32-bit lane
RK_API extern const uint32_t RK_G_AlphaMask32[4];     // the alpha of a pixel of 32-bit channels
RK_API extern const uint32_t RK_G_BGRMask32[4];       // its three colours
RK_API extern const float RK_G_vfHalf[4];             // 0.5 in each lane
RK_API extern const float RK_G_vf255[4];              // 255.0 in each lane
RK_API extern const uint32_t RK_G_ZeroData[4];

#endif
