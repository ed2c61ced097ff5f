// Integer kernels of a Gaussian of finite support, for RK_Convolve and for brushes.
#ifndef RK_GAUSSIAN_KERNEL_H
#define RK_GAUSSIAN_KERNEL_H

#include "RK/indep/frame/RK.h"

constexpr int32_t RK_kKernelOneRow = 1;     // one row instead of a square
constexpr int32_t RK_kKernelNormalise = 2;  // scaled to a sum of about 255 times the count of cells

// Writes 2R + 1 to `diameter`, R being `radius` rounded up (cut to 16 bits), and as many cells, or as many
// rows of as many cells, to `kernel`. A cell is 255 at most before it is scaled; `multiplier` scales the
// curve before that clamp. An R that the cut made negative has no cells. `reference` is not read. A negative
// or NaN radius or a null pointer is reported and gives 3, with nothing written; otherwise 0.
RK_API RK_Long RK_GaussianKernel(RK_EffectRef reference, double radius, int32_t flags, double multiplier,
                                 int32_t* diameter, int32_t* kernel);

#endif
