// What birth sets and death clears.
#ifndef RKP_GLOBALS_H
#define RKP_GLOBALS_H

#include "RK/indep/frame/RK.h"

// 256 rows of 256 bytes, row a at a * 256. Row a of the multiply table holds mul8(a, x); row a of the divide table
// div8(a, x), and its row 0 is 255 throughout, which dodge and burn rely on.
RK_API extern const uint8_t* RKp_G_fcm_table;
RK_API extern const uint8_t* RKp_G_fcd_table;

// Entry i is float(i); aligned to 16.
extern float RKp_G_ByteToFloat[256];

// Open chunks and worlds that own storage. Plain counters that no logic reads.
extern int32_t RKp_G_ChunkCount;
extern int32_t RKp_G_WorldCount;

// The dither noise: the host's table and a cursor that wraps from end to begin.
struct RKp_NoiseTable {
    const uint32_t* begin;
    const uint32_t* cursor;
    const uint32_t* end;
};
extern RKp_NoiseTable RKp_G_Noise;

#endif
