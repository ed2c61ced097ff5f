#include "RK/indep/filter/RKp_GaussianLines.h"

template <class P>
void RKp_GaussianPass(const RKp_GaussianLines<P>& lines) {
    P* out = lines.out;
    for (int32_t i = 0; i < lines.out_length; ++i, out += lines.out_step) {
        const RKp_GaussianTaps taps(lines, i + lines.shift);
        for (int32_t j = 0; j < lines.lines; ++j) out[j * lines.out_across] = RKp_GaussianAt(lines, taps, j);
    }
}

template void RKp_GaussianPass(const RKp_GaussianLines<RK_Pixel8>&);
template void RKp_GaussianPass(const RKp_GaussianLines<RK_Pixel16>&);
template void RKp_GaussianPass(const RKp_GaussianLines<RK_PixelFloat>&);
