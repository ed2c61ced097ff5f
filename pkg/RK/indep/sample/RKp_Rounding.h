// From double to integer, without undefined corners.
#ifndef RKP_ROUNDING_H
#define RKP_ROUNDING_H

#include <cstdint>
#include <cstring>

// v within +-2^31 to nearest, ties to even, by pushing its fraction out of a double.
inline int32_t RKp_RoundToEven(double v) {
    const double pushed = v + 6755399441055744.0;
    int64_t bits;
    std::memcpy(&bits, &pushed, sizeof bits);
    return static_cast<int32_t>(bits);
}
// Toward zero; what does not fit, and NaN, gives INT32_MIN.
inline int32_t RKp_TruncateDouble(double x) {
    return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int32_t>(x) : INT32_MIN;
}

#endif
