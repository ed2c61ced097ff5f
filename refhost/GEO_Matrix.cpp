#include <algorithm>
#include <cmath>

#include "RK/host/GEO.h"

GEO_Vector2T<double> GEO_Matrix3::TransformPointAndDivide(const GEO_Vector2T<double>& point) const {
    const GEO_Vector3 in = {point.x, point.y, 1};
    GEO_Vector3 v;
    GEO_TransformVector3(this, &in, &v);
    return {v.x / v.z, v.y / v.z};
}

RK_Long GEO_InverseMatrixQuiet(const GEO_Matrix3* matrix, GEO_Matrix3* out) {
    const auto& a = matrix->m;
    const auto cofactor = [&a](int r0, int r1, int c0, int c1) { return a[r0][c0] * a[r1][c1] - a[r0][c1] * a[r1][c0]; };
    const double adjugate[3][3] = {
        {cofactor(1, 2, 1, 2), -cofactor(0, 2, 1, 2), cofactor(0, 1, 1, 2)},
        {-cofactor(1, 2, 0, 2), cofactor(0, 2, 0, 2), -cofactor(0, 1, 0, 2)},
        {cofactor(1, 2, 0, 1), -cofactor(0, 2, 0, 1), cofactor(0, 1, 0, 1)},
    };
    const double determinant = (a[0][0] * adjugate[0][0] + a[0][1] * adjugate[1][0]) + a[0][2] * adjugate[2][0];
    if (determinant == 0 || !std::isfinite(determinant)) return 1;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) out->m[r][c] = adjugate[r][c] / determinant;
    return 0;
}

bool GEO_EqualMatrixWithinEpsilon(const GEO_Matrix3* a, const GEO_Matrix3* b, double epsilon) {
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            if (!(std::fabs(a->m[r][c] - b->m[r][c]) <= epsilon)) return false;
    return true;
}

int32_t GEO_GetMatrixType(const GEO_Matrix3* matrix) {
    const auto& m = matrix->m;
    const bool linear = m[0][0] == 1 && m[0][1] == 0 && m[1][0] == 0 && m[1][1] == 1;
    const bool affine = m[0][2] == 0 && m[1][2] == 0 && m[2][2] == 1;
    if (!linear || !affine) return 2;
    return m[2][0] == 0 && m[2][1] == 0 ? 0 : 1;
}

void GEO_TransformVector3(const GEO_Matrix3* matrix, const GEO_Vector3* vector, GEO_Vector3* out) {
    const auto& m = matrix->m;
    const GEO_Vector3 v = *vector;
    const auto column = [&](int c) { return (v.x * m[0][c] + v.y * m[1][c]) + v.z * m[2][c]; };
    *out = {column(0), column(1), column(2)};
}

void GEO_TransformFloatPoints(const GEO_Matrix3* matrix, int32_t count, const GEO_Vector2T<double>* points,
                              GEO_Vector2T<double>* out) {
    for (int32_t i = 0; i < count; ++i) out[i] = matrix->TransformPointAndDivide(points[i]);
}

void GEO_TransformFloatRect(const GEO_Matrix3* matrix, const GEO_FloatRect* rect, GEO_FloatRect* out) {
    GEO_Vector2T<double> p[4] = {
        {rect->left, rect->top}, {rect->right, rect->top}, {rect->left, rect->bottom}, {rect->right, rect->bottom}};
    GEO_TransformFloatPoints(matrix, 4, p, p);
    // fmin and fmax pass over a corner that is not a number.
    const auto least = [](double a, double b, double c, double d) { return std::fmin(std::fmin(a, b), std::fmin(c, d)); };
    const auto most = [](double a, double b, double c, double d) { return std::fmax(std::fmax(a, b), std::fmax(c, d)); };
    *out = {least(p[0].x, p[1].x, p[2].x, p[3].x), least(p[0].y, p[1].y, p[2].y, p[3].y),
            most(p[0].x, p[1].x, p[2].x, p[3].x), most(p[0].y, p[1].y, p[2].y, p[3].y)};
}
