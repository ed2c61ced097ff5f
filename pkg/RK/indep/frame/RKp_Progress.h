// The check-in of a row pass with RK_ProgressInfo.
#ifndef RKP_PROGRESS_H
#define RKP_PROGRESS_H

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Border.h"

// A pass calls this at the head of each row with the rows done before it, from 0. Where the low six bits of
// that are all set (63, 127, ...) it asks progress_func or, without one, abort_func; what is not 0 is thrown.
inline void RKp_CheckIn(const RK_ProgressInfo* progress, int32_t rows_done, int32_t total_rows) {
    if (progress == nullptr || (rows_done & 63) != 63) return;
    if (progress->progress_func != nullptr)
        RKp_ThrowIf(progress->progress_func(progress->refcon, rows_done, total_rows));
    else if (progress->abort_func != nullptr)
        RKp_ThrowIf(progress->abort_func(progress->refcon));
}

#endif
