// TM, the host's time package.
#ifndef RK_HOST_TM_H
#define RK_HOST_TM_H

#include "RK/host/Long.h"

// value / scale seconds.
struct TM_Time {
    int32_t value;
    uint32_t scale;
};

// Exact: 1/2 equals 2/4. Times of scale 0 compare by the same products, so all of them are equal.
RK_HOST_API bool operator<(const TM_Time& a, const TM_Time& b);
RK_HOST_API bool operator==(const TM_Time& a, const TM_Time& b);

#endif
