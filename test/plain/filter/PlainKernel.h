// The Gaussian curve and kernels made from it once more.
#ifndef TEST_PLAIN_FILTER_KERNEL_H
#define TEST_PLAIN_FILTER_KERNEL_H

#include <vector>

#include "test/plain/PlainArithmetic.h"

namespace plain {

// Truncation of a double; what does not fit, and NaN, gives the lowest integer.
inline int32_t toInt(double x) {
    if (!(x > -2147483649.0 && x < 2147483648.0)) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(x);
}

inline double gaussianValue(double d) {
    if (d > 1.0) return 0;
    const double e = std::exp((-2.378 * d) * d);
    return 1.0 - (1.0 - e) * 1.102;
}
// Half the kernel's side: the radius rounded up, kept to 16 bits.
inline int halfSide(double radius) { return static_cast<int16_t>(toInt(std::ceil(radius))); }

// Cells in rows from the top; none for a half side below 0.
inline std::vector<int32_t> gaussianKernel(double radius, int32_t flags, double multiplier) {
    const int R = halfSide(radius), rows_half = (flags & 1) != 0 ? 0 : R;
    if (R < 0) return {};
    const int side = 2 * R + 1;
    std::vector<int32_t> cells(static_cast<size_t>(side) * static_cast<size_t>(2 * rows_half + 1));
    double sum = 0;
    for (int j = -rows_half; j <= rows_half; ++j)
        for (int i = R; i >= 0; --i) {
            const double dist = j == 0 ? i : std::sqrt(static_cast<double>(i * i + j * j));
            double value = gaussianValue(dist / (1.0 + radius)) * 255.0;
            if (multiplier != 1.0) value *= multiplier;
            sum += value;
            if (i != 0) sum += value;
            const double half_up = 0.5 + value;
            const int32_t cell = half_up < 0 ? 0 : half_up > 255 ? 255 : toInt(half_up);
            const size_t middle = static_cast<size_t>((j + rows_half) * side + R);
            cells[middle + static_cast<size_t>(i)] = cells[middle - static_cast<size_t>(i)] = cell;
        }
    if ((flags & 2) != 0) {
        const double scale = 255.0 * side * (2 * rows_half + 1) / sum;
        for (int32_t& cell : cells) cell = toInt(cell * scale);
    }
    return cells;
}

}  // namespace plain

#endif
