// Scratch memory of the composites.
#ifndef RK_BLEND_SCRATCH_H
#define RK_BLEND_SCRATCH_H

#include "RK/indep/frame/RK.h"

// The seven blocks of motion-blur data: 2048, 2048, 2048, 4096, 4096, 18432 and 21504 bytes.
struct RK_MotionBlurScratch {
    void *data1, *data2, *data3, *data4, *data5, *data6, *data7;
};

// For n pixels at b bytes per channel: n * b bytes of alpha_save, n * 4 * b of each row.
struct RK_BlendScratch {
    void* alpha_save;
    void* matte_row;
    void* row_work;
    RK_MotionBlurScratch motion;
};

// Makes the process-wide scratch large enough and fills `out`, which may be null. With `shrink` the rows are
// remade in the size asked for, smaller ones too. `bytes_per_channel` other than 1, 2, 4 is reported and
// gives 3; no memory gives 4, and the old rows stay, counted as of no size. Throws 4 when the motion-blur
// blocks, made on the first call, cannot be had. No lock: the main render's alone.
RK_Long RKp_ReallocScratch(RK_Long pixels, RK_Long bytes_per_channel, bool shrink, RK_BlendScratch* out);

// Allocates the seven blocks of a caller's record, whose pointers are all nulled first; stops at the first
// failure with 4. The caller disposes of the record in either case.
RK_API RK_Long RK_AllocateMotionBlurScratch(RK_MotionBlurScratch* scratch);
// Frees and nulls every block. Always 0.
RK_API RK_Long RK_DisposeMotionBlurScratch(RK_MotionBlurScratch* scratch);

// Frees the process-wide scratch.
void RKp_DisposeScratch();

#endif
