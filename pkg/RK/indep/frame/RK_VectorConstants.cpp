#include "RK/indep/frame/RK_VectorConstants.h"

alignas(16) const uint32_t RK_G_viLoWordMask[4] = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
alignas(16) const uint32_t RK_G_viLoByteMask32[4] = {0xFF, 0xFF, 0xFF, 0xFF};
alignas(16) const uint32_t RK_G_vi128_32[4] = {128, 128, 128, 128};
alignas(16) const uint32_t RK_G_AlphaMask32[4] = {0xFFFFFFFF, 0, 0, 0};
alignas(16) const uint32_t RK_G_BGRMask32[4] = {0, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
alignas(16) const float RK_G_vfHalf[4] = {0.5f, 0.5f, 0.5f, 0.5f};
alignas(16) const float RK_G_vf255[4] = {255.0f, 255.0f, 255.0f, 255.0f};
alignas(16) const uint32_t RK_G_ZeroData[4] = {0, 0, 0, 0};
