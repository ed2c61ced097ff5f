// Plain twins of the retiming engine: grids, edge rules and bilinear reads, as straight as they can be written.
#ifndef TEST_PLAIN_RETIME_PLAIN_H
#define TEST_PLAIN_RETIME_PLAIN_H

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace plain {

struct V {
    float x, y;
};
inline bool same(V a, V b) { return a.x == b.x && a.y == b.y; }
inline bool gone(V v) { return v.x == FLT_MAX; }
const V kGone = {FLT_MAX, FLT_MAX};

// Edge: 'd' default, 'c' clamp, 'm' mirror.
template <class T>
struct Grid {
    int w = 0, h = 0;
    std::vector<T> v;
    char edge = 'd';
    T fallback{};
    Grid() = default;
    Grid(int width, int height, T value = T{}) : w(width), h(height), v(size_t(width) * size_t(height), value) {}
    T& at(int x, int y) { return v[size_t(y) * size_t(w) + size_t(x)]; }
    const T& at(int x, int y) const { return v[size_t(y) * size_t(w) + size_t(x)]; }
    bool has(long long x, long long y) const { return x >= 0 && y >= 0 && x < w && y < h; }
    T read(long long x, long long y) const {
        if (w < 1 || h < 1) return fallback;
        if (has(x, y)) return at(int(x), int(y));
        if (edge == 'd') return fallback;
        return at(int(fold(x, w)), int(fold(y, h)));
    }
    long long fold(long long i, long long n) const {
        if (edge == 'c') return i < 0 ? 0 : i >= n ? n - 1 : i;
        while (i < 0) i += 2 * n;
        i %= 2 * n;
        return i < n ? i : 2 * n - 1 - i;
    }
};

inline int whole(float v) { return v >= -2147483648.0f && v < 2147483648.0f ? int(v) : INT_MIN; }
inline int down(float v) { return whole(std::floor(v)); }
inline float part(float v) { return v - std::floor(v); }
inline float mix(float a, float b, float f) { return a + (b - a) * f; }
inline V mix(V a, V b, float f) { return {mix(a.x, b.x, f), mix(a.y, b.y, f)}; }

template <class T>
T bilinear(const Grid<T>& g, float px, float py) {
    const float u = px - 0.5f, v = py - 0.5f;
    const long long x = down(u), y = down(v);
    const T top = mix(g.read(x, y), g.read(x + 1, y), part(u));
    const T bottom = mix(g.read(x, y + 1), g.read(x + 1, y + 1), part(u));
    return mix(top, bottom, part(v));
}

// The row range of thread i of n.
inline void share(int rows, int i, int n, int* start, int* end) {
    if (n == 1) {
        *start = 0, *end = rows;
        return;
    }
    const int per = (rows + n - 1) / n;
    *start = per * i;
    *end = *start + per < rows ? *start + per : rows;
    if (i == n - 1) *end = rows;
}

}  // namespace plain

#endif
