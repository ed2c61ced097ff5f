// What the retiming tests share.
#ifndef TEST_RETIME_TEST_H
#define TEST_RETIME_TEST_H

#include <gtest/gtest.h>

#include <functional>

#include "RK/indep/retime/FnImgProc.h"
#include "RK/indep/retime/FnTexture.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"
#include "test/plain/retime/Plain.h"

namespace retime_test {

// Sets the engine's thread count for a scope.
class Threads {
  public:
    explicit Threads(int32_t count) : before_(FnThreadCount()) { FnSetThreadCount(count); }
    ~Threads() { FnSetThreadCount(before_); }

  private:
    int32_t before_;
};

inline HvVec2 toEngine(plain::V v) { return {v.x, v.y}; }
inline float toEngine(float v) { return v; }
inline int toEngine(int v) { return v; }

template <class Map, class T>
void toMap(const plain::Grid<T>& grid, Map& map) {
    ASSERT_TRUE(map.Resize(grid.w, grid.h));
    const int32_t mode = grid.edge == 'c' ? kFnClamp : grid.edge == 'm' ? kFnMirror : kFnTransparent;
    map.SetEdgeModes(mode, mode);
    map.SetDefault(toEngine(grid.fallback));
    for (int y = 0; y < grid.h; ++y)
        for (int x = 0; x < grid.w; ++x) map.Row(y)[x] = toEngine(grid.at(x, y));
}

// The number of bytes that differ; -1 for another size.
template <class Map, class T>
long differing(const Map& map, const plain::Grid<T>& grid) {
    static_assert(sizeof(typename Map::Stored) == sizeof(T), "the same pixel");
    if (map.Width() != grid.w || map.Height() != grid.h) return -1;
    long count = 0;
    for (int y = 0; y < grid.h; ++y) {
        const unsigned char* a = reinterpret_cast<const unsigned char*>(map.Row(y));
        const unsigned char* b = reinterpret_cast<const unsigned char*>(&grid.v[size_t(y) * size_t(grid.w)]);
        for (size_t i = 0; i < sizeof(T) * size_t(grid.w); ++i) count += a[i] != b[i];
    }
    return count;
}

// A smooth moving pattern with some noise: content(x - dx * t, y + dy * t).
inline plain::Grid<float> pattern(int w, int h, float dx, float dy, uint32_t seed) {
    test::Random r(seed);
    plain::Grid<float> g(w, h);
    g.edge = 'c';
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const float px = float(x) - dx, py = float(y) - dy;
            const float wave = std::sin(px * 0.37f) + std::sin(py * 0.29f + px * 0.11f) + std::sin((px + py) * 0.9f) * 0.4f;
            g.at(x, y) = 0.5f + 0.19f * wave + 0.004f * r.unit();
        }
    return g;
}
// A texture without periods, moved by (dx, dy): lattice noise of several sizes, smoothly interpolated.
inline plain::Grid<float> texture(int w, int h, float dx, float dy, uint32_t seed) {
    auto lattice = [seed](int i, int j, uint32_t octave) {
        test::Random r(seed + octave * 977u + uint32_t(i + 500) * 131071u + uint32_t(j + 500) * 8191u);
        r.next();
        return r.unit();
    };
    plain::Grid<float> g(w, h);
    g.edge = 'c';
    const float sizes[3] = {31, 13, 6}, weights[3] = {0.5f, 0.3f, 0.2f};
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (uint32_t o = 0; o < 3; ++o) {
                const float u = (float(x) - dx) / sizes[o], v = (float(y) - dy) / sizes[o];
                const int i = plain::down(u), j = plain::down(v);
                auto ease = [](float f) { return f * f * (3 - 2 * f); };
                const float a = ease(u - float(i)), b = ease(v - float(j));
                g.at(x, y) += weights[o] * plain::mix(plain::mix(lattice(i, j, o), lattice(i + 1, j, o), a),
                                                      plain::mix(lattice(i, j + 1, o), lattice(i + 1, j + 1, o), a), b);
            }
    return g;
}
inline plain::Grid<float> noise(int w, int h, uint32_t seed) {
    test::Random r(seed);
    plain::Grid<float> g(w, h);
    for (float& f : g.v) f = r.unit();
    return g;
}

// Stops after a number of answers of 0.
struct Stopper {
    int answers;
    RK_Long code;
    static RK_Long Call(void* refcon) {
        Stopper* s = static_cast<Stopper*>(refcon);
        return s->answers-- > 0 ? 0 : s->code;
    }
};

// Runs work() with each allocation failed in turn, until it runs without one; gives the number of failures. failed()
// is called after each run whose failure struck. Nothing may stay allocated.
inline int failEach(const std::function<void()>& work, const std::function<void(int)>& failed) {
    for (int n = 1;; ++n) {
        const RefHost::MemoryUse before = RefHost::Memory();
        RefHost::FailAllocation(n);
        work();
        const bool struck = RefHost::AllocationsSince() >= n;
        RefHost::FailAllocation(0);
        EXPECT_EQ(RefHost::Memory().blocks, before.blocks) << "after failing allocation " << n;
        if (!struck) return n - 1;
        failed(n);
        if (n > 4000) return n;
    }
}

}  // namespace retime_test

#endif
