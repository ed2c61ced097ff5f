// GEO, the host's geometry package: rectangles, points, matrices, and the fast multiply and divide tables.
#ifndef RK_HOST_GEO_H
#define RK_HOST_GEO_H

#include "RK/host/Long.h"

// Bottom and right are exclusive in both. The two orders differ on purpose.
struct GEO_Rect {
    int16_t top, left, bottom, right;
};
struct GEO_LRect {
    int32_t left, top, right, bottom;
};
struct GEO_LPoint {
    int32_t x, y;
};
// The host's point: vertical first.
struct Point {
    int16_t v, h;
};
template <class T>
struct GEO_Vector2T {
    T x, y;
};
struct GEO_Vector3 {
    double x, y, z;
};
struct GEO_FloatRect {
    double left, top, right, bottom;
};
// Row vectors: (x, y, 1) times this; the translation stands in the third row.
struct GEO_Matrix3 {
    double m[3][3];

    // (x, y, 1) times this, divided by the third coordinate.
    RK_HOST_API GEO_Vector2T<double> TransformPointAndDivide(const GEO_Vector2T<double>& point) const;
};
// Row vectors: (x, y, z, 1) times this; the translation stands in the fourth row.
struct GEO_Matrix4 {
    double m[4][4];
};

// ---- Matrices. Sums run left to right: (x * m00 + y * m10) + z * m20. ------------------------------------

// Adjugate over determinant, each element one division. 0; or 1, and `out` is untouched, for a determinant that is 0
// or not finite. out may be the matrix itself.
RK_HOST_API RK_Long GEO_InverseMatrixQuiet(const GEO_Matrix3* matrix, GEO_Matrix3* out);
// True when no element differs by more than epsilon.
RK_HOST_API bool GEO_EqualMatrixWithinEpsilon(const GEO_Matrix3* a, const GEO_Matrix3* b, double epsilon);
// 0 for the identity, 1 for a translation, compared exactly; 2 for any other.
RK_HOST_API int32_t GEO_GetMatrixType(const GEO_Matrix3* matrix);
// The vector times the matrix, without a division. out may be the vector itself.
RK_HOST_API void GEO_TransformVector3(const GEO_Matrix3* matrix, const GEO_Vector3* vector, GEO_Vector3* out);
// TransformPointAndDivide of each point. out may be the points themselves.
RK_HOST_API void GEO_TransformFloatPoints(const GEO_Matrix3* matrix, int32_t count, const GEO_Vector2T<double>* points,
                                          GEO_Vector2T<double>* out);
// Each point times the matrix, in space as (x, y, 0, 1); divided by the last coordinate, rounded as GEO_RoundDouble
// does and held to 16 bits; NaN gives -32768. out may be the points themselves.
RK_HOST_API void GEO_TransformPoints(const GEO_Matrix3* matrix, int32_t count, const Point* points, Point* out);
RK_HOST_API void GEO_3DTransform2DPoints(const GEO_Matrix4* matrix, int32_t count, const Point* points, Point* out);
// The bounding box of the rectangle's transformed corners. out may be the rectangle itself.
RK_HOST_API void GEO_TransformFloatRect(const GEO_Matrix3* matrix, const GEO_FloatRect* rect, GEO_FloatRect* out);

// ---- Rectangles, rounding, tables ------------------------------------------------------------------------

// out = a intersected with b; true when something is left, otherwise out is 0, 0, 0, 0. out may be a or b.
RK_HOST_API bool GEO_SectRect(const GEO_Rect* a, const GEO_Rect* b, GEO_Rect* out);

// Nearest integer, halves away from zero. What does not fit, and NaN, gives INT32_MIN.
RK_HOST_API int32_t GEO_RoundDouble(double value);

// Makes the two 256 x 256 tables, row a at a * 256: multiply holds t = a * x + 128, (t + (t >> 8)) >> 8; divide
// holds min(255, (x * 255 + (a >> 1)) / a), row 0 holds 255 throughout. 0 or 4; on failure both are null.
RK_HOST_API RK_Long GEO_PrepareFCMD(int32_t one, int32_t zero1, int32_t zero2, const uint8_t** multiply,
                                    const uint8_t** divide);
RK_HOST_API RK_Long GEO_UnprepareFCMD();

RK_HOST_API RK_Long GEO_CheckVersions(RK_Long caller, RK_Long version);

#endif
