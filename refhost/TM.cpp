#include "RK/host/TM.h"

// The products fit: 2^31 * (2^32 - 1) is below 2^63.
bool operator<(const TM_Time& a, const TM_Time& b) {
    return int64_t{a.value} * int64_t{b.scale} < int64_t{b.value} * int64_t{a.scale};
}
bool operator==(const TM_Time& a, const TM_Time& b) {
    return int64_t{a.value} * int64_t{b.scale} == int64_t{b.value} * int64_t{a.scale};
}
