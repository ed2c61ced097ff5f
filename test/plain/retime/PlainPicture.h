// Plain picture building: enlarging the vectors, sampling both frames, composing them.
#ifndef TEST_PLAIN_RETIME_PICTURE_H
#define TEST_PLAIN_RETIME_PICTURE_H

#include "test/plain/retime/Plain.h"

namespace plain {

// Alpha, red, green, blue in float, as stored.
struct Px {
    float c[4];
    float& operator[](size_t i) { return c[i]; }
    const float& operator[](size_t i) const { return c[i]; }
};
inline Px mix(Px a, Px b, float f) {
    Px out;
    for (size_t i = 0; i < 4; ++i) out[i] = mix(a[i], b[i], f);
    return out;
}

struct PictureSettings {
    float t = 0.5f;
    bool sinc = false, nearerOnly = false, probes = false, lowCounts = true, paint = false, soften = false;
    float full = 255;
};

inline std::vector<float> sincTaps(float p) {
    const float c = p - 0.5f;
    const long long from = (long long)down(c) - 10;
    std::vector<float> taps;
    float sum = 0;
    for (long long i = from; i <= from + 20; ++i) {
        const float d = c - float(i);
        const double pi = 3.14159265358979323846, D = d;
        taps.push_back(d == 0 ? 1.0f : float((std::sin(pi * D) / D) * (std::cos(pi * D / 10) + 1.0) * 0.5));
        sum += taps.back();
    }
    for (float& t : taps) t /= sum;
    return taps;
}

inline Px samplePicture(const Grid<Px>& F, V v, float k, int x, int y, bool sinc) {
    if (gone(v)) return {0, -1, -1, -1};
    const float ox = v.x * k, oy = v.y * k;
    if (ox == FLT_MAX) return {128, 128, 128, 128};
    const float px = float(x) + 0.5f - ox, py = float(y) + 0.5f + oy;
    const float fx = std::fabs(std::fmod(px, 1.0f)), fy = std::fabs(std::fmod(py, 1.0f));
    const bool bothNear = (fx <= 0.01f || fx >= 0.99f) && (fy <= 0.01f || fy >= 0.99f);
    if (!sinc || bothNear) return bilinear(F, px, py);
    const std::vector<float> tx = sincTaps(px), ty = sincTaps(py);
    Px total = {0, 0, 0, 0};
    for (int j = 0; j < 21; ++j) {
        Px row = {0, 0, 0, 0};
        for (int i = 0; i < 21; ++i) {
            const Px p = F.read((long long)down(px - 0.5f) - 10 + i, (long long)down(py - 0.5f) - 10 + j);
            for (size_t c = 0; c < 4; ++c) row[c] += tx[size_t(i)] * p[c];
        }
        for (size_t c = 0; c < 4; ++c) total[c] += ty[size_t(j)] * row[c];
    }
    return total;
}

inline Px composePicture(int klass, int x, int y, V q1, V q2, const Grid<Px>& F1, const Grid<Px>& F2, float scale,
                         const PictureSettings& s) {
    const float a = scale * s.t, b = scale * (1.0f - s.t);
    if (s.nearerOnly && klass == 0)
        return s.t >= 0.5f ? samplePicture(F2, q1, b, x, y, s.sinc) : samplePicture(F1, q2, a, x, y, s.sinc);
    if (klass == 1) return s.paint ? Px{0, s.full, 0, 0} : samplePicture(F1, q2, a, x, y, s.sinc);
    if (klass == 2) return s.paint ? Px{0, 0, s.full, 0} : samplePicture(F2, q1, b, x, y, s.sinc);
    const Px p = samplePicture(F2, q1, b, x, y, s.sinc), q = samplePicture(F1, q2, a, x, y, s.sinc);
    Px out;
    for (size_t c = 0; c < 4; ++c) out[c] = p[c] * s.t + q[c] * (1.0f - s.t);
    return out;
}

// What the depth stores of a value.
inline float stored(float v, float full) {
    if (full == 1) return v;
    if (!(v > 0)) return 0;
    return v > full ? full : std::nearbyint(v);
}

inline Grid<Px> buildPicture(const Grid<V>& V1, const Grid<V>& V2, const Grid<int>& classes, const Grid<Px>& F1,
                             const Grid<Px>& F2, const Grid<Px>& P1, const Grid<Px>& P2, float scale,
                             const PictureSettings& s) {
    Grid<Px> out(V1.w, V1.h);
    for (int y = 0; y < out.h; ++y)
        for (int x = 0; x < out.w; ++x) {
            const V q1 = V1.at(x, y), q2 = V2.at(x, y);
            int klass = classes.at(x, y);
            if (s.probes) {
                const float limit = s.full == 255 ? (s.lowCounts ? 253.0f : 2.0f) : (s.lowCounts ? 1.0f : 0.0f);
                const float r1 = samplePicture(P1, q2, scale * s.t, x, y, s.sinc)[1];
                const float r2 = samplePicture(P2, q1, scale * (1.0f - s.t), x, y, s.sinc)[1];
                klass = 0;
                if (s.lowCounts ? !(r1 > limit) : r1 > limit) klass += 2;
                if (s.lowCounts ? !(r2 > limit) : r2 > limit) klass += 1;
                if (klass > 2) klass = 0;
            }
            const Px p = composePicture(klass, x, y, q1, q2, F1, F2, scale, s);
            for (size_t c = 0; c < 4; ++c) out.at(x, y)[c] = stored(p[c], s.full);
        }
    if (!s.soften) return out;
    for (int y = 0; y < out.h; ++y)
        for (int x = 0; x < out.w; ++x) {
            const int klass = classes.at(x, y);
            bool edge = false;
            for (int j = -1; j <= 1; ++j)
                for (int i = -1; i <= 1; ++i)
                    if (classes.has(x + i, y + j) && classes.at(x + i, y + j) != klass) edge = true;
            if (klass == 0 || !edge) continue;
            V q1 = V1.at(x, y), q2 = V2.at(x, y);
            if (klass == 1) q1 = {-q2.x, -q2.y};
            if (klass == 2) q2 = {-q1.x, -q1.y};
            const Px p = composePicture(0, x, y, q1, q2, F1, F2, scale, s);
            for (size_t c = 0; c < 4; ++c) {
                float v = 0.5f * (out.at(x, y)[c] + p[c]);
                v = v > 0 ? (v < s.full ? v : s.full) : 0;
                out.at(x, y)[c] = stored(v, s.full);
            }
        }
    return out;
}

// The whole, from maps of the luminance frames' size; the maps' edges are transparent with default 0.
inline Grid<Px> buildFrame(const Grid<V>& a, const Grid<V>& b, const Grid<int>& classes, const Grid<Px>& F1,
                           const Grid<Px>& F2, int w, int h, const PictureSettings& s) {
    const float ratio = float(w) / float(a.w), step = 1.0f / ratio;
    Grid<V> V1(w, h), V2(w, h);
    Grid<int> C(w, h);
    for (int y = 0; y < h; ++y) {
        const float v = 0.5f * 0.0f + (float(y) + 0.5f) * step + 0.0f;
        float u = 0.5f * step + (float(y) + 0.5f) * 0.0f + 0.0f;
        for (int x = 0; x < w; ++x, u += step) {
            V1.at(x, y) = bilinear(a, u, v);
            V2.at(x, y) = bilinear(b, u, v);
            C.at(x, y) = classes.read(whole(float(x) * step), whole(float(y) * step));
        }
    }
    return buildPicture(V1, V2, C, F1, F2, F1, F2, ratio, s);
}

}  // namespace plain

#endif
