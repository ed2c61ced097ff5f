// Plain monitor and both smoothers.
#ifndef TEST_PLAIN_RETIME_SMOOTH_H
#define TEST_PLAIN_RETIME_SMOOTH_H

#include <utility>

#include "test/plain/retime/Plain.h"

namespace plain {

struct Dice {
    uint32_t s = 0;
    int roll(size_t n) {
        s = s * 1103515245u + 12345u;
        const uint32_t first = s;
        s = s * 1103515245u + 12345u;
        const uint32_t r = ((s >> 16) & 255) ^ (((first >> 16) & 255) << 7);
        return int(r % uint32_t(n));
    }
};
using List = std::vector<V>;

inline List unique(const List& in) {
    List out;
    for (V v : in) {
        bool found = gone(v);
        for (V o : out) found = found || same(v, o);
        if (!found) out.push_back(v);
    }
    return out;
}
inline void shuffle(List& l, Dice& dice) {
    const size_t n = l.size();
    for (size_t i = 0; i < (n - 1) / 2 + 1; ++i) {
        const int a = dice.roll(n), b = dice.roll(n);
        std::swap(l[size_t(a)], l[size_t(b)]);
    }
}

struct Monitor {
    Grid<int> changed;
    Grid<V> before;
    bool made = false, first = true, all = true, undefinedSeen = false;
    void run(const Grid<V>& now) {
        if (!made || first) {
            changed = Grid<int>(now.w, now.h, 1);
            before = now;
        }
        made = true;
        undefinedSeen = false;
        if (first) {
            first = false;
            return;
        }
        all = false;
        for (size_t i = 0; i < now.v.size(); ++i) {
            if (now.v[i].x == FLT_MAX || now.v[i].y == FLT_MAX) undefinedSeen = true;
            changed.v[i] = same(now.v[i], before.v[i]) ? 0 : 1;
            if (changed.v[i]) before.v[i] = now.v[i];
        }
    }
    List gather(int x, int y) const {
        static const int order[8][2] = {{-1, 1}, {0, 1}, {1, 1}, {-1, 0}, {1, 0}, {-1, -1}, {0, -1}, {1, -1}};
        List out;
        if (!made) return out;
        for (const auto& o : order)
            if (before.has(x + o[0], y + o[1]) && (all || changed.at(x + o[0], y + o[1])))
                out.push_back(before.at(x + o[0], y + o[1]));
        return out;
    }
    V mean(int x, int y) const {
        static const int order[8][2] = {{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}};
        float sx = 0, sy = 0;
        int n = 0;
        if (!made) return {0, 0};
        for (const auto& o : order) {
            if (!before.has(x + o[0], y + o[1])) continue;
            const V v = before.at(x + o[0], y + o[1]);
            if (v.x == FLT_MAX || v.y == FLT_MAX) continue;
            sx += v.x, sy += v.y, ++n;
        }
        if (n == 0) return {0, 0};
        return {sx / float(n), sy / float(n)};
    }
};

struct Box {
    int x0, y0, x1, y1;
};
inline Box blockBox(int bw, int bh, int overlap, int mx, int my, int w, int h) {
    Box b;
    b.x0 = (bw - overlap) * mx, b.x1 = b.x0 + bw;
    b.y0 = (bh - overlap) * my, b.y1 = b.y0 + bh;
    if (b.x1 > w) b.x0 = b.x0 - (b.x1 - w) < 0 ? 0 : b.x0 - (b.x1 - w), b.x1 = w;
    if (b.y1 > h) b.y0 = b.y0 - (b.y1 - h) < 0 ? 0 : b.y0 - (b.y1 - h), b.y1 = h;
    return b;
}

inline float matchError(V v, Box b, const Grid<float>& R, const Grid<float>& T, const Grid<float>* mask) {
    float sum = 0;
    int used = 0;
    const float fx = -v.x, fy = v.y;
    const long long ix = down(fx), iy = down(fy);
    const bool inner = b.x0 + ix >= 0 && b.y0 + iy >= 0 && b.x1 + ix <= R.w - 1 && b.y1 + iy <= R.h - 1;
    for (int y = b.y0; y < b.y1; ++y)
        for (int x = b.x0; x < b.x1; ++x) {
            if (mask && mask->read(x, y) > 0.5f) continue;
            float r;
            if (v.x == 0 && v.y == 0) {
                r = R.at(x, y);
            } else if (inner) {
                const float ax = part(fx), ay = part(fy);
                const int X = int(x + ix), Y = int(y + iy);
                r = mix(mix(R.at(X, Y), R.at(X + 1, Y), ax), mix(R.at(X, Y + 1), R.at(X + 1, Y + 1), ax), ay);
            } else {
                const float px = float(x) + 0.5f - v.x, py = float(y) + 0.5f + v.y;
                if (!(px >= 0 && py >= 0 && px <= float(R.w) && py <= float(R.h))) continue;
                r = bilinear(R, px, py);
            }
            sum += std::fabs(T.at(x, y) - r);
            ++used;
        }
    if (used <= (b.x1 - b.x0) * (b.y1 - b.y0) / 4) return FLT_MAX;
    return sum / float(used);
}

// One round of the block form on T threads. errors: one per block.
inline void smoothBlocks(Grid<V>& field, Grid<float>& errors, const Monitor& monitor, const Grid<float>& R,
                         const Grid<float>& T, const Grid<float>* mask, int bw, int bh, int overlap, float we, float ws,
                         int threads) {
    for (int t = 0; t < threads; ++t) {
        int start, end;
        share(field.h, t, threads, &start, &end);
        Dice dice;
        for (int y = start; y < end; ++y)
            for (int x = 0; x < field.w; ++x) {
                List list = monitor.gather(x, y);
                if (list.empty()) continue;
                const V own = field.at(x, y);
                list.push_back(own);
                list = unique(list);
                if (list.empty()) continue;
                if (list.size() == 1) {
                    if (!same(list[0], own)) errors.at(x, y) = FLT_MAX;
                    field.at(x, y) = list[0];
                    continue;
                }
                shuffle(list, dice);
                const V mean = monitor.mean(x, y);
                const Box box = blockBox(bw, bh, overlap, x, y, R.w, R.h);
                float least = FLT_MAX, kept = FLT_MAX;
                V best = own;
                for (V c : list) {
                    if (least == 0) continue;
                    const float smooth = ((std::fabs(c.x - mean.x) + std::fabs(c.y - mean.y)) / 400.0f / 255.0f) * ws;
                    if (least <= smooth) continue;
                    float err = errors.at(x, y);
                    if (!same(c, own) || err == FLT_MAX) err = matchError(c, box, R, T, mask);
                    float total = (err == FLT_MAX ? 2.0f * we : err * we) + smooth;
                    if (total < 1e-6f) total = 0;
                    if (total < least) least = total, kept = err, best = c;
                }
                errors.at(x, y) = kept;
                field.at(x, y) = best;
            }
    }
}

inline float pixelDifference(V v, int x, int y, const Grid<float>& R, const Grid<float>& L) {
    float px = float(x) + 0.5f - v.x, py = float(y) + 0.5f + v.y;
    if (gone(v)) px = py = 0;
    float r = 0;
    if (px >= 0 && py >= 0 && px <= float(R.w) && py <= float(R.h)) r = bilinear(R, px, py);
    return std::fabs(r - L.at(x, y));
}

template <class Cost>
V least(const List& list, Cost cost) {
    V best = list[0];
    float low = FLT_MAX;
    for (V c : list) {
        const float now = cost(c);
        if (now < low) low = now, best = c;
    }
    return best;
}

// The pixel form: from the blocky field to the smooth one.
inline Grid<V> smoothPixels(const Grid<V>& blocky, const Grid<float>& R, const Grid<float>& L, const Grid<float>* mask,
                            int bw, int bh, int overlap, float we, float ws, int passes, int threads) {
    Grid<V> out(blocky.w, blocky.h);
    for (int t = 0; t < threads; ++t) {
        int start, end;
        share(out.h, t, threads, &start, &end);
        Dice dice;
        const int sx = bw - overlap / 2, sy = bh - overlap / 2;
        for (int y = start; y < end; ++y)
            for (int x = 0; x < out.w; ++x) {
                List list;
                for (int i = -1; i <= 1; ++i)
                    for (int j = -1; j <= 1; ++j)
                        if ((i || j) && blocky.has(x + i * sx, y + j * sy))
                            list.push_back(blocky.at(x + i * sx, y + j * sy));
                list.push_back(blocky.at(x, y));
                list = unique(list);
                V pick = blocky.at(x, y);
                if (!list.empty()) pick = list[0];
                if (list.size() > 1) {
                    shuffle(list, dice);
                    if (!(mask && mask->read(x, y) > 0.5f))
                        pick = least(list, [&](V c) { return pixelDifference(c, x, y, R, L) * 1.0f / 123.0f * 65535.0f; });
                }
                out.at(x, y) = pick;
            }
    }
    Monitor monitor;
    monitor.run(out);
    for (int pass = 0; pass < passes; ++pass) {
        for (int t = 0; t < threads; ++t) {
            int start, end;
            share(out.h, t, threads, &start, &end);
            Dice dice;
            for (int y = start; y < end; ++y)
                for (int x = 0; x < out.w; ++x) {
                    List list = monitor.gather(x, y);
                    if (list.empty()) continue;
                    list.push_back(out.at(x, y));
                    list = unique(list);
                    if (list.empty()) continue;
                    if (list.size() == 1) {
                        out.at(x, y) = list[0];
                        continue;
                    }
                    shuffle(list, dice);
                    const V mean = monitor.mean(x, y);
                    const bool masked = mask && mask->read(x, y) > 0.5f;
                    out.at(x, y) = least(list, [&](V c) {
                        const float match = masked ? (we / 123.0f * 65535.0f) * 123.0f
                                                   : pixelDifference(c, x, y, R, L) * we / 123.0f * 65535.0f;
                        return (std::fabs(mean.x - c.x) + std::fabs(mean.y - c.y)) * ws * 8.0f + match;
                    });
                }
        }
        if (pass + 1 < passes) monitor.run(out);
    }
    return out;
}

}  // namespace plain

#endif
