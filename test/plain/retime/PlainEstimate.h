// Plain block solve, projection, quantiser and coarse-to-fine estimate.
#ifndef TEST_PLAIN_RETIME_ESTIMATE_H
#define TEST_PLAIN_RETIME_ESTIMATE_H

#include "test/plain/retime/PlainPyramid.h"
#include "test/plain/retime/PlainSmooth.h"

namespace plain {

struct Settings {
    int block = 6, overlap = 2;
    float threshold = 0.01f;
    bool projection = false, activity = false;
};
struct Info {
    Grid<V> positions;
    Grid<float> errors, confidence;
};

// Returns true when done; err is the step's error; g holds the two confidence sums.
inline bool solve(V& v, Box b, const Grid<float>& R, const Grid<float>& T, const Grid<float>* mask, float threshold,
                  float& err, float g[2]) {
    err = 0;
    if (gone(v)) return true;
    const float fx = -v.x, fy = v.y;
    const long long ix = down(fx), iy = down(fy);
    const float ax = part(fx), ay = part(fy);
    auto S = [&](int x, int y) -> float {
        if (v.x == 0 && v.y == 0) return R.at(x, y);
        const float left = mix(R.read(ix + x, iy + y), R.read(ix + x, iy + y + 1), ay);
        const float right = mix(R.read(ix + x + 1, iy + y), R.read(ix + x + 1, iy + y + 1), ay);
        return mix(left, right, ax);
    };
    float E1 = 0, E2 = 0, A = 0, B = 0, C = 0, P = 0, Q = 0;
    int n = 0, total = 0;
    for (int y = b.y1 - 2; y >= b.y0; --y)
        for (int x = b.x0 + 1; x < b.x1; ++x) {
            ++total;
            if (!R.has(ix + x, iy + y)) continue;
            if (mask && mask->read(x, y) > 0.5f) continue;
            const float s = S(x, y), e = T.at(x, y) - s, gx = s - S(x - 1, y), gy = s - S(x, y + 1);
            ++n;
            E2 += e * e, E1 += std::fabs(e);
            A += gx * gx, B += gx * gy, C += gy * gy, P += e * gx, Q += e * gy;
        }
    g[0] = A, g[1] = C;
    if (n <= total / 6) {
        v = kGone;
        return true;
    }
    const float N = float(n), m = E1 / N;
    if (m < threshold) return false;
    A /= N, B /= N, C /= N, P /= N, Q /= N, E2 /= N;
    const float t = A + C;
    float rad = t * t - 4.0f * (C * A - B * B);
    if (rad < 0) rad = 0;
    const float D = std::sqrt(rad), l1 = (D + t) * 0.5f, l2 = (t - D) * 0.5f;
    float big = std::fabs(l1), small = std::fabs(l2);
    bool one = true;
    if (std::fabs(l2) > std::fabs(l1)) big = std::fabs(l2), small = std::fabs(l1), one = false;
    const float cond = small == 0 ? FLT_MAX : big / small;
    float dx, dy;
    if (cond <= 10.0f) {
        const float k = cond * 0.1f * E2, a = A + k, c = C + k, inv = 1.0f / (a * c - B * B);
        dx = (c * P - B * Q) * inv, dy = (a * Q - B * P) * inv;
    } else {
        if (big <= 0) {
            v = kGone;
            return true;
        }
        float ex, ey;
        if (B == 0) {
            const bool upright = l1 > l2 ? one : !one;
            ex = upright ? 0.0f : 1.0f, ey = upright ? 1.0f : 0.0f;
        } else {
            const float q = ((one ? l1 : l2) - A) / B, len = std::sqrt(1.0f + q * q);
            ex = 1.0f / len, ey = q / len;
        }
        const float s = (ex * P + ey * Q) / big;
        dx = s * ex, dy = s * ey;
    }
    v.x -= dx, v.y -= dy;
    if (!std::isfinite(v.x) || !std::isfinite(v.y)) {
        v = kGone;
        return true;
    }
    err = m;
    return false;
}

// Sums over `length` values, across or down; bands of `threads` restart the columns.
inline Grid<float> sums(const Grid<float>& in, int length, bool across, int threads) {
    Grid<float> out = in;
    for (int t = 0; t < threads; ++t) {
        int start, end;
        share(in.h, t, threads, &start, &end);
        for (int y = start; y < end; ++y)
            for (int x = 0; x < in.w; ++x) {
                const bool fresh = across ? x == 0 : y == start;
                float sum = 0;
                if (fresh) {
                    for (int i = 0; i < length; ++i) sum += across ? in.read(x + i, y) : in.read(x, y + i);
                } else {
                    sum = across ? out.at(x - 1, y) : out.at(x, y - 1);
                    sum += across ? in.read(x + length - 1, y) : in.read(x, y + length - 1);
                    sum -= across ? in.read(x - 1, y) : in.read(x, y - 1);
                }
                out.at(x, y) = sum;
            }
    }
    return out;
}

inline bool solve1D(const std::vector<float>& A, const std::vector<float>& B, float& value, float& absolute) {
    float g2 = 0, ge = 0;
    absolute = 0, value = 0;
    for (size_t i = 0; i + 1 < A.size(); ++i) {
        const float g = A[i] - A[i + 1], e = A[i] - B[i];
        g2 += g * g, ge += g * e, absolute += std::fabs(e);
    }
    if (absolute == 0) return true;
    if (g2 == 0) return false;
    value = ge / g2;
    return true;
}

struct Sums {
    Grid<float> rowsR, columnsR, rowsT, columnsT;
};

// False when the mode turns itself off.
inline bool project(V& v, Box b, const Sums& s, int block, float& err) {
    const float X = float(b.x0) + 0.5f - v.x, Y = float(b.y0) + 0.5f + v.y;
    if (!(X - 0.5f >= 0 && Y - 0.5f >= 0 && X + float(block) - 0.5f <= float(s.rowsR.w) &&
          Y + float(block) - 0.5f <= float(s.rowsR.h)))
        return false;
    std::vector<float> A, B;
    float dx, dy, absX, absY;
    for (int y = b.y0; y < b.y1; ++y) {
        A.push_back(bilinear(s.rowsR, X, float(y) + 0.5f + v.y));
        B.push_back(s.rowsT.at(b.x0, y));
    }
    const bool okY = solve1D(A, B, dy, absY);
    A.clear(), B.clear();
    for (int x = b.x0; x < b.x1; ++x) {
        A.push_back(bilinear(s.columnsR, float(x) + 0.5f - v.x, Y + dy));
        B.push_back(s.columnsT.at(x, b.y0));
    }
    const bool okX = solve1D(A, B, dx, absX);
    if (!okX && !okY) return false;
    dx = -dx;
    const float len = std::sqrt(dx * dx + dy * dy);
    if (len > 1) dx /= len, dy /= len;
    v.x += dx, v.y += dy;
    err = std::sqrt(absY * absY + absX * absX);
    return true;
}

inline void estimateBlocks(Grid<V>& map, const Grid<float>& R, const Grid<float>& T, const Grid<float>* mask,
                           const Settings& set, int threads, Info* info) {
    Sums s;
    if (set.projection)
        s = {sums(R, set.block, true, threads), sums(R, set.block, false, threads), sums(T, set.block, true, threads),
             sums(T, set.block, false, threads)};
    Grid<float> activity(map.w, map.h);
    float mean_activity = 0;
    if (set.activity) {
        for (int y = 0; y < map.h; ++y)
            for (int x = 0; x < map.w; ++x) {
                const Box b = blockBox(set.block, set.block, set.overlap, x, y, R.w, R.h);
                float sum = 0, dev = 0;
                for (int j = b.y0; j < b.y1; ++j)
                    for (int i = b.x0; i < b.x1; ++i) sum += T.at(i, j);
                const float mean = sum / float((b.x1 - b.x0) * (b.y1 - b.y0));
                for (int j = b.y0; j < b.y1; ++j)
                    for (int i = b.x0; i < b.x1; ++i) dev += std::fabs(T.at(i, j) - mean);
                activity.at(x, y) = dev;
            }
        float total = 0;
        for (int t = 0; t < threads; ++t) {
            int start, end;
            share(map.h, t, threads, &start, &end);
            float sum = 0;
            for (int y = start; y < end; ++y)
                for (int x = 0; x < map.w; ++x) sum += activity.at(x, y);
            total += sum;
        }
        mean_activity = total / float(map.w * map.h);
    }
    for (int y = 0; y < map.h; ++y)
        for (int x = 0; x < map.w; ++x) {
            const Box b = blockBox(set.block, set.block, set.overlap, x, y, R.w, R.h);
            V v = map.at(x, y);
            float error = FLT_MAX, g[2] = {0, 0};
            if (set.activity && !(activity.at(x, y) > mean_activity)) {
                v = kGone;
            } else {
                bool projecting = set.projection;
                for (int step = 0; step < 10; ++step) {
                    float err = 0;
                    bool done = false;
                    V w = v;
                    if (projecting) projecting = project(w, b, s, set.block, err);
                    if (!projecting) {
                        w = v;
                        done = solve(w, b, R, T, mask, set.threshold, err, g);
                    }
                    if (done) {
                        if (gone(w)) v = w;
                        error = FLT_MAX;
                        break;
                    }
                    v = w, error = err;
                    if (!(err > 0)) break;
                }
            }
            map.at(x, y) = v;
            if (info) {
                info->positions.at(x, y) = {float(b.x0 + set.block / 2), float(b.y0 + set.block / 2)};
                info->errors.at(x, y) = error;
                info->confidence.at(x, y) = set.activity ? activity.at(x, y) : std::fabs(g[0]) + std::fabs(g[1]);
            }
        }
}

inline void quantise(Grid<V>& map, int level) {
    float step = 0.1f;
    for (int k = 0; k < level; ++k) step *= 0.5f;
    for (V& v : map.v)
        if (!gone(v)) v = {std::floor((v.x + step / 2) / step) * step, std::floor((v.y + step / 2) / step) * step};
}

inline int blocksOver(int size, int block, int overlap) {
    const int n = int(std::ceil((float(size) - float(overlap)) / (float(block) - float(overlap))));
    return n < 0 ? 0 : n;
}
inline int levelsOf(int w, int h) {
    int a = h / 2, b = w / 2;
    if (b / 4 < 2) return 1;
    int count = 1;
    do {
        if (a / 4 < 2) break;
        b /= 2, a /= 2, ++count;
    } while (b / 4 >= 2);
    return count;
}

// The whole of one direction: the field of `second` in `first`, at pixel resolution.
inline Grid<V> estimateField(const Grid<float>& first, const Grid<float>& second, int block, float smoothness,
                             float threshold, int threads) {
    const int levels = levelsOf(first.w, first.h);
    const auto R = pyramid(first, levels), T = pyramid(second, levels);
    const float we = smoothness >= 0 ? 1.0f : 1.0f - smoothness, ws = smoothness >= 0 ? 1.0f + smoothness : 1.0f;
    Settings set;
    set.block = block;
    set.threshold = threshold;
    Grid<V> map;
    for (int k = levels - 1; k >= 0; --k) {
        const Grid<float>&r = R[size_t(k)], &t = T[size_t(k)];
        Grid<V> now(blocksOver(r.w, block, 2), blocksOver(r.h, block, 2), {0, 0});
        if (now.w < 1 || now.h < 1) continue;
        if (map.w > 0) {
            const float rx = float(R[size_t(k) + 1].w) / float(r.w), ry = float(R[size_t(k) + 1].h) / float(r.h);
            map.edge = 'm';
            for (int y = 0; y < now.h; ++y)
                for (int x = 0; x < now.w; ++x) {
                    V v = map.read(whole(float(x) * rx), whole(float(y) * ry));
                    if (!gone(v)) v.x /= rx, v.y /= ry;
                    now.at(x, y) = v;
                }
        }
        map = now;
        estimateBlocks(map, r, t, nullptr, set, threads, nullptr);
        quantise(map, k);
        Monitor monitor;
        monitor.run(map);
        Grid<float> errors(map.w, map.h, FLT_MAX);
        for (int i = 0; i < 5 || (monitor.undefinedSeen && i < 105); ++i) {
            smoothBlocks(map, errors, monitor, r, t, nullptr, block, block, 2, we, ws, threads);
            monitor.run(map);
        }
        if (monitor.undefinedSeen) map.v.assign(map.v.size(), {0, 0});
    }
    Grid<V> out(first.w, first.h, {0, 0});
    if (map.w < 1 || map.h < 1) return out;
    const float rx = float(map.w) / float(out.w), ry = float(map.h) / float(out.h);
    for (int y = 0; y < out.h; ++y)
        for (int x = 0; x < out.w; ++x) out.at(x, y) = map.read(whole(float(x) * rx), whole(float(y) * ry));
    return out;
}

}  // namespace plain

#endif
