// Vectors of the retiming engine, and the two conversions from float that its arithmetic rests on.
#ifndef HVVEC2_H
#define HVVEC2_H

#include <cfloat>
#include <cmath>
#include <cstdint>

// A displacement in pixels. y points the opposite way to row numbers: pixel (x, y) under v lies at
// (x + 0.5 - v.x, y + 0.5 + v.y) of the other frame, in pixel-centre coordinates.
struct HvVec2 {
    float x, y;
};

constexpr HvVec2 kFnUndefined = {FLT_MAX, FLT_MAX};
inline bool FnIsUndefined(const HvVec2& v) { return v.x == FLT_MAX; }
// The stricter test of the monitor and the local mean.
inline bool FnIsUndefinedInEither(const HvVec2& v) { return v.x == FLT_MAX || v.y == FLT_MAX; }

inline HvVec2 operator+(const HvVec2& a, const HvVec2& b) { return {a.x + b.x, a.y + b.y}; }
inline HvVec2 operator-(const HvVec2& a, const HvVec2& b) { return {a.x - b.x, a.y - b.y}; }
inline HvVec2 operator*(const HvVec2& a, float k) { return {a.x * k, a.y * k}; }
inline HvVec2 operator-(const HvVec2& a) { return {-a.x, -a.y}; }
inline bool operator==(const HvVec2& a, const HvVec2& b) { return a.x == b.x && a.y == b.y; }
inline bool operator!=(const HvVec2& a, const HvVec2& b) { return !(a == b); }
inline float FnL1(const HvVec2& v) { return std::fabs(v.x) + std::fabs(v.y); }

// Truncates; what does not fit, and NaN, gives INT32_MIN.
inline int32_t FnTruncate(float v) {
    return v >= -2147483648.0f && v < 2147483648.0f ? static_cast<int32_t>(v) : INT32_MIN;
}

// floor as an index, with the same rule.
inline int32_t FnFloor(float v) {
    const int32_t i = FnTruncate(v);
    return i - (static_cast<float>(i) > v && i != INT32_MIN ? 1 : 0);
}

// v - floor(v), given i = FnFloor(v). Adding 0 turns -0 into the 0 that floor leaves.
inline float FnFraction(float v, int32_t i) {
    return i != INT32_MIN ? (v - static_cast<float>(i)) + 0.0f : v - std::floor(v);
}

inline float FnMix(float a, float b, float f) { return a + (b - a) * f; }
inline HvVec2 FnMix(const HvVec2& a, const HvVec2& b, float f) { return {FnMix(a.x, b.x, f), FnMix(a.y, b.y, f)}; }
inline int32_t FnMix(int32_t a, int32_t b, float f) {
    return FnTruncate(FnMix(static_cast<float>(a), static_cast<float>(b), f));
}

#endif
