// Whole points through a matrix.
#include "RK/host/GEO.h"

namespace {

int16_t held(double value) {
    if (!(value > -32768.0)) return INT16_MIN;
    return value < 32767.0 ? static_cast<int16_t>(GEO_RoundDouble(value)) : INT16_MAX;
}

}  // namespace

void GEO_TransformPoints(const GEO_Matrix3* matrix, int32_t count, const Point* points, Point* out) {
    for (int32_t i = 0; i < count; ++i) {
        const GEO_Vector2T<double> place = {static_cast<double>(points[i].h),
                                            static_cast<double>(points[i].v)};
        const GEO_Vector2T<double> moved = matrix->TransformPointAndDivide(place);
        out[i] = {held(moved.y), held(moved.x)};
    }
}

void GEO_3DTransform2DPoints(const GEO_Matrix4* matrix, int32_t count, const Point* points, Point* out) {
    const auto& m = matrix->m;
    for (int32_t i = 0; i < count; ++i) {
        const double x = points[i].h, y = points[i].v;
        const auto column = [&](int c) { return (x * m[0][c] + y * m[1][c]) + m[3][c]; };
        const double w = column(3);
        out[i] = {held(column(1) / w), held(column(0) / w)};
    }
}
