// Progress of the internal row passes.
#ifndef RKP_PROGRESS_H
#define RKP_PROGRESS_H

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Border.h"

// Called with every count of rows done, from 0: checks in with the host at 63, 127, 191 and so on. The progress
// function is asked, or the abort function where there is none; what it answers, unless 0, is thrown. A null `info`
// is asked nothing.
inline void RKp_CheckIn(const RK_ProgressInfo* info, RK_Long rows_done, RK_Long rows) {
    if (!info || (rows_done & 63) != 63) return;
    if (info->progress_func)
        RKp_ThrowIf(info->progress_func(info->refcon, rows_done, rows));
    else if (info->abort_func)
        RKp_ThrowIf(info->abort_func(info->refcon));
}

#endif
