// The behind scans: rows that sample a motion path and composite it behind the destination in one pass.
#ifndef RK_BATCH_H
#define RK_BATCH_H

#include "RK/indep/sample/RK_Samp.h"

// `line` holds the start x, y and the end x, y of the path for the first pixel, `steps` what each gains per pixel, all
// 16.16. pb tells source, motion_samples, radii, opacity and, at 8 bits, fcm_table. Pixels whose alpha is full are left
// alone and not sampled. motion_samples below 1 changes nothing. Always 0.
template <class P>
using RK_BehindScan = RK_Long(void* ref, int16_t count, const int32_t line[4], const int32_t steps[4],
                              const RK_SampPB* pb, P* pixels);

// The bodies in slots 17 to 22. Nearest reads the source itself, the others go through their sampler's slot.
RK_BehindScan<RK_Pixel8> RKp_BehindNearest, RKp_BehindBilinear, RKp_BehindArea;
RK_BehindScan<RK_Pixel16> RKp_BehindNearest16, RKp_BehindBilinear16, RKp_BehindArea16;

#endif
