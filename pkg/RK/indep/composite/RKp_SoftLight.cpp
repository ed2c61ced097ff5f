#include "RK/indep/composite/RKp_SoftLight.h"

#include <cmath>

RKp_SoftLightTables<uint8_t, 256> RKp_G_SoftLight8;
RKp_SoftLightTables<uint16_t, 4097> RKp_G_SoftLight16;
RKp_SoftLightTables<float, 4097> RKp_G_SoftLightFloat;

namespace {

double curveA(double x) { return (x > 0.25 ? std::sqrt(x) : ((16.0 * x - 12.0) * x + 4.0) * x) - x; }
double curveB(double x) { return x * (1.0 - x); }

}  // namespace

void RKp_BuildSoftLight() {
    for (int32_t i = 0; i <= 4096; ++i) {
        const double a = curveA(i / 4096.0), b = curveB(i / 4096.0);
        RKp_G_SoftLightFloat.a[i] = static_cast<float>(a);
        RKp_G_SoftLightFloat.b[i] = static_cast<float>(b);
        RKp_G_SoftLight16.a[i] = static_cast<uint16_t>(32768.0 * a + 0.5);
        RKp_G_SoftLight16.b[i] = static_cast<uint16_t>(32768.0 * b + 0.5);
    }
    for (int32_t i = 0; i <= 255; ++i) {
        RKp_G_SoftLight8.a[i] = static_cast<uint8_t>(255.0 * curveA(i / 255.0) + 0.5);
        RKp_G_SoftLight8.b[i] = static_cast<uint8_t>(255.0 * curveB(i / 255.0) + 0.5);
    }
}
