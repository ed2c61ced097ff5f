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
// Row vectors: (x, y, 1) times this; the translation stands in the third row.
struct GEO_Matrix3 {
    double m[3][3];
};

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
