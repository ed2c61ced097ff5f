#include "RK/indep/filter/RK_GaussianKernel.h"

#include <cmath>

#include "RK/indep/filter/RKp_GaussianValue.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

// The truncating conversion of the processor, from double.
int32_t truncate(double x) {
    return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int32_t>(x) : INT32_MIN;
}

}  // namespace

// The exponential, shifted and stretched so that it reaches 0 (but for 0.0002) at the end of the support.
double RKp_GaussianValue(double d) {
    if (d > 1.0) return 0.0;
    const double e = std::exp((-2.378 * d) * d);
    return 1.0 - (1.0 - e) * 1.102;
}

RK_Long RK_GaussianKernel(RK_EffectRef, double radius, int32_t flags, double multiplier, int32_t* diameter,
                          int32_t* kernel) {
    if (!(radius >= 0) || diameter == nullptr || kernel == nullptr) return RKp_ReportBadParam(RKp_kSiteBlur);
    const int32_t reach = static_cast<int16_t>(truncate(std::ceil(radius)));
    const int32_t width = 2 * reach + 1;
    *diameter = width;
    if (reach < 0) return RK_kOK;

    const int32_t rows = (flags & RK_kKernelOneRow) != 0 ? 0 : reach;
    double sum = 0;
    for (int32_t j = -rows; j <= rows; ++j) {
        int32_t* middle = kernel + static_cast<ptrdiff_t>(j + rows) * width + reach;
        for (int32_t i = reach; i >= 0; --i) {
            const double distance = j == 0 ? i : std::sqrt(static_cast<double>(i * i + j * j));
            double value = RKp_GaussianValue(distance / (1.0 + radius)) * 255.0;
            if (multiplier != 1.0) value *= multiplier;
            sum += value;
            if (i != 0) sum += value;
            const double rounded = 0.5 + value;
            middle[i] = middle[-i] = truncate(rounded < 0 ? 0 : rounded > 255 ? 255 : rounded);
        }
    }
    if ((flags & RK_kKernelNormalise) == 0) return RK_kOK;

    // Kept: to 255 times the count of cells, from the sum before rounding and clamping; cells may pass 255.
    const double scale = 255.0 * width * (2.0 * rows + 1.0) / sum;
    for (ptrdiff_t n = static_cast<ptrdiff_t>(width) * (2 * rows + 1) - 1; n >= 0; --n)
        kernel[n] = truncate(kernel[n] * scale);
    return RK_kOK;
}
