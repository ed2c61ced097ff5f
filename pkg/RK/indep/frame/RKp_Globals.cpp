#include "RK/indep/frame/RKp_Globals.h"

const uint8_t* RKp_G_fcm_table = nullptr;
const uint8_t* RKp_G_fcd_table = nullptr;
alignas(16) float RKp_G_ByteToFloat[256];
int32_t RKp_G_ChunkCount = 0;
int32_t RKp_G_WorldCount = 0;
RKp_NoiseTable RKp_G_Noise = {nullptr, nullptr, nullptr};
