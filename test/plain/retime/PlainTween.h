// Plain tweener: projection, occlusion classes, choice of pairs.
#ifndef TEST_PLAIN_RETIME_TWEEN_H
#define TEST_PLAIN_RETIME_TWEEN_H

#include "test/plain/retime/PlainSmooth.h"

namespace plain {

struct Tween {
    Grid<V> first, second, third, fourth;  // fields; the last two may be empty
    Grid<float> frame1, frame2, mask;      // the mask may be empty
    float t = 0.5f;
    int iterations = 5, occlusionPasses = 2, threads = 1;
    float ws = 1, we = 1, wsum = 10;
    bool guess = false, negate = false;

    Grid<int> classes;
    Grid<V> a, b;
    std::vector<List> A, B;

    List& at(std::vector<List>& lists, int x, int y) { return lists[size_t(y) * size_t(first.w) + size_t(x)]; }

    void project(const Grid<V>& field, std::vector<List>& lists, float s, bool extended) {
        for (int y = 0; y < field.h; ++y)
            for (int x = 0; x < field.w; ++x) {
                const V v = field.at(x, y);
                if (gone(v)) continue;
                const float ox = extended ? v.x + v.x * s : v.x * s, oy = extended ? v.y + v.y * s : v.y * s;
                const int X = down(float(x) + 0.5f - ox), Y = down(float(y) + 0.5f + oy);
                if (!first.has(X, Y)) continue;
                List& list = at(lists, X, Y);
                bool there = false;
                for (V o : list) there = there || same(o, v);
                if (!there) list.push_back(v);
            }
    }

    bool guessOnce() {
        static const int order[8][2] = {{-1, 1}, {-1, 0}, {-1, -1}, {0, 1}, {0, -1}, {1, 1}, {1, 0}, {1, -1}};
        bool changed = false;
        for (int y = 0; y < first.h; ++y)
            for (int x = 0; x < first.w; ++x) {
                int& c = classes.at(x, y);
                if (c == 0 || c == 1 || c == 2) continue;
                changed = true;
                if (c != 3) {
                    const bool noA = at(A, x, y).empty(), noB = at(B, x, y).empty();
                    c = noA && noB ? 3 : noA ? 2 : noB ? 1 : 0;
                    continue;
                }
                int one = 0, two = 0, last = 0;
                for (const auto& o : order) {
                    if (!classes.has(x + o[0], y + o[1])) continue;
                    const int n = classes.at(x + o[0], y + o[1]);
                    if (n == 0 || n == 1 || n == 2) last = n;
                    if (last == 1) ++one;
                    if (last == 2) ++two;
                }
                if (one > two) c = 1;
                if (two > one) c = 2;
            }
        return changed;
    }

    bool smoothOnce() {
        bool changed = false;
        for (int y = 0; y < first.h; ++y)
            for (int x = 0; x < first.w; ++x) {
                int n[4] = {0, 0, 0, 0};
                for (int j = -1; j <= 1; ++j)
                    for (int i = -1; i <= 1; ++i)
                        if (classes.has(x + i, y + j)) ++n[classes.at(x + i, y + j)];
                int& c = classes.at(x, y);
                const int before = c;
                if (c == 0) {
                    if (n[1] > n[0] && n[1] > n[2]) c = 1;
                    else if (n[2] > n[0] && n[2] > n[1]) c = 2;
                } else if (c == 1) {
                    if (n[1] < n[0]) c = 0;
                    else if (n[1] < n[2]) c = 2;
                } else {
                    if (n[2] < n[0]) c = 0;
                    else if (n[1] > n[2]) c = 1;
                }
                changed = changed || c != before;
            }
        return changed;
    }

    void blank() {
        for (int y = 0; y < first.h; ++y)
            for (int x = 0; x < first.w; ++x) {
                const int c = classes.at(x, y);
                if (c != 1 && c != 2) continue;
                std::vector<List>&from = c == 1 ? A : B, &to = c == 1 ? B : A;
                List& mine = at(from, x, y);
                if (mine.empty()) continue;
                const V v = mine[0];
                mine.clear();
                const int X = down((float(x) + 0.5f - v.x) + 0.5f), Y = down((float(y) + 0.5f + v.y) + 0.5f);
                if (!first.has(X, Y) || at(to, X, Y).empty()) continue;
                const V w = at(to, X, Y)[0];
                at(to, x, y) = {w};
            }
    }

    float luma(int x, int y, V o, const Grid<float>& frame) const {
        if (o.x == 0 && o.y == 0) return frame.read(x, y);
        if (gone(o)) return 128.0f;
        const float px = float(x) + 0.5f - o.x, py = float(y) + 0.5f + o.y;
        if (!(px >= 0 && py >= 0 && px <= float(frame.w) && py <= float(frame.h))) return 16711425.0f;
        return bilinear(frame, px, py);
    }

    bool lacks(int x, int y) const {
        const int c = classes.at(x, y);
        return (c == 1 || gone(a.at(x, y))) && (c == 2 || gone(b.at(x, y)));
    }

    static void deal(List& l, Dice& dice) {
        for (size_t i = 0; i < l.size(); ++i) {
            const size_t j = size_t(dice.roll(l.size()));
            std::swap(l[i], l[j]);
        }
    }

    void choose(int x, int y, Dice& dice, const Monitor& ma, const Monitor& mb) {
        List la = ma.gather(x, y), lb = mb.gather(x, y);
        for (V v : at(A, x, y)) la.push_back(v);
        for (V v : at(B, x, y)) lb.push_back(v);
        if (la.size() > 200) la.resize(200);
        if (lb.size() > 200) lb.resize(200);
        la = unique(la), lb = unique(lb);
        int& c = classes.at(x, y);
        if (c == 0 && (la.empty() || lb.empty()) && !negate) return;
        if (la.size() == 1 && lb.size() == 1) {
            a.at(x, y) = la[0], b.at(x, y) = lb[0];
            return;
        }
        V meanA = {0, 0}, meanB = {0, 0};
        const bool hadA = !la.empty(), hadB = !lb.empty();
        if (c != 2 || !hadB) deal(la, dice), meanA = ma.mean(x, y);
        if (c != 1 || !hadA) deal(lb, dice), meanB = mb.mean(x, y);
        if (negate && !hadA && hadB) {
            for (V v : lb) la.push_back({-v.x, -v.y});
            meanA = {-meanB.x, -meanB.y};
        }
        if (negate && !hadB && hadA) {
            for (V v : la) lb.push_back({-v.x, -v.y});
            meanB = {-meanA.x, -meanA.y};
        }
        float low = 1.7014117e38f;
        if (c == 1 || c == 2) {
            const V mean = c == 1 ? meanB : meanA;
            for (V v : c == 1 ? lb : la) {
                const float cost = (std::fabs(mean.x - v.x) + std::fabs(mean.y - v.y)) * 8.0f * ws;
                if (cost < low) low = cost, (c == 1 ? b : a).at(x, y) = v;
            }
            return;
        }
        c = 0;
        const float match = mask.w > 0 && mask.read(x, y) > 0.5f ? 0.0f : we * 65535.0f;
        const float rest = 1.0f - t;
        V pickA = a.at(x, y), pickB = b.at(x, y);
        for (V p : la)
            for (V q : lb) {
                const float sa = luma(x, y, {p.x * rest, p.y * rest}, frame2);
                const float sb = luma(x, y, {q.x * t, q.y * t}, frame1);
                const float da = (std::fabs(meanA.x - p.x) + std::fabs(meanA.y - p.y)) * 8.0f;
                const float db = (std::fabs(meanB.x - q.x) + std::fabs(meanB.y - q.y)) * 8.0f;
                const float cost = std::fabs(sb - sa) * match + (std::fabs(p.x + q.x) + std::fabs(p.y + q.y)) * wsum +
                                   (da + db) * ws;
                if (cost < low) low = cost, pickA = p, pickB = q;
            }
        a.at(x, y) = pickA, b.at(x, y) = pickB;
    }

    // One pass; returns whether something is still missing.
    bool pass(Monitor& ma, Monitor& mb, bool runMonitors, bool onlyMissing, bool skip0, bool& veryFirst) {
        if (runMonitors) {
            ma.first = ma.all = mb.first = mb.all = true;
            ma.run(a), mb.run(b);
        }
        bool missing = false;
        for (int i = 0; i < threads; ++i) {
            int start, end;
            share(first.h, i, threads, &start, &end);
            Dice dice;
            for (int y = start; y < end; ++y)
                for (int x = 0; x < first.w; ++x) {
                    if (onlyMissing && !lacks(x, y)) continue;
                    if (skip0 && classes.at(x, y) == 0) continue;
                    choose(x, y, dice, ma, mb);
                    if (onlyMissing && lacks(x, y)) missing = true;
                }
        }
        ma.run(a), mb.run(b);
        if (veryFirst) {
            for (List& l : A) l.clear();
            for (List& l : B) l.clear();
        }
        veryFirst = false;
        return missing;
    }

    void iterate() {
        if (iterations == 0) return;
        Monitor ma, mb;
        bool veryFirst = true;
        for (int i = 0; i < iterations; ++i) pass(ma, mb, false, false, false, veryFirst);
        if (guess) {
            negate = false;
            int rounds = 1;
            while (pass(ma, mb, true, true, false, veryFirst) && rounds < 101) ++rounds;
            for (int i = 0; i < rounds; ++i) pass(ma, mb, true, false, true, veryFirst);
        }
        negate = true;
        for (int i = 0; i < 101; ++i)
            if (!pass(ma, mb, true, true, false, veryFirst)) break;
    }

    void run() {
        const int w = first.w, h = first.h;
        classes = Grid<int>(w, h, guess ? 666 : 0);
        a = b = Grid<V>(w, h, kGone);
        A.assign(size_t(w) * size_t(h), {});
        B = A;
        project(second, B, 1.0f - t, false);
        project(first, A, t, false);
        if (guess) {
            for (int i = 0; i < 11; ++i)
                if (!guessOnce()) break;
            for (int i = 0; i < occlusionPasses; ++i)
                if (!smoothOnce()) break;
            blank();
        }
        project(fourth, A, t, true);
        project(third, B, 1.0f - t, true);
        iterate();
    }
};

}  // namespace plain

#endif
