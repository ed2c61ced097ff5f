// Worlds and positions for the comparisons of samplers: shared alphas, few colours, places at every edge.
#ifndef TEST_PLAIN_SAMPLE_WORLDS_H
#define TEST_PLAIN_SAMPLE_WORLDS_H

#include "RK/indep/sample/RK_Samp.h"
#include "test/plain/Worlds.h"

namespace test {

// Mixed, opaque, clear, of one alpha, of two pixels, or wild: the ways that samplers tell apart.
template <class P>
World<P> sampleWorld(Random& r, int width, int height) {
    const uint32_t kind = r.below(8);
    World<P> world(r, width, height, kind == 7);
    const P some = pixel<P>(r), other = pixel<P>(r);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            P& p = world.picture.at(x, y);
            if (kind == 1) p.alpha = kFull<P>;
            if (kind == 2) p.alpha = 0;
            if (kind == 3) p.alpha = some.alpha;
            if (kind == 4) p = r.below(4) != 0 ? some : other;
            if (kind == 5 && r.below(4) != 0) p.alpha = r.below(2) != 0 ? kFull<P> : RK_Channel<P>(0);
        }
    return world;
}

inline int32_t fraction(Random& r) {
    static const int32_t special[] = {0, 0, 1, 2, 0x4000, 0x7FFF, 0x8000, 0x8001, 0xC000, 0xFFFF};
    return r.below(2) == 0 ? special[r.below(10)] : static_cast<int32_t>(r.below(0x10000));
}
// Inside mostly, at the edges often, far outside now and then.
inline int32_t position(Random& r, int size) {
    static const int32_t far[] = {INT32_MIN, INT32_MAX, -0x7FFF0000, 0x7FFF0000, 0x7FFF8000, -0x8000000};
    switch (r.below(16)) {
        case 0: return far[r.below(6)];
        case 1: return static_cast<int32_t>(r.next());
        case 2:
        case 3: return (static_cast<int32_t>(r.below(3)) - 2) * 0x10000 + fraction(r);
        case 4:
        case 5: return (size - 2 + static_cast<int32_t>(r.below(4))) * 0x10000 + fraction(r);
        default: return static_cast<int32_t>(r.below(static_cast<uint32_t>(size))) * 0x10000 + fraction(r);
    }
}
// Both columns, or rows, inside a side of at least 2.
inline int32_t insidePosition(Random& r, int size) {
    return static_cast<int32_t>(r.below(static_cast<uint32_t>(size) - 1)) * 0x10000 + fraction(r);
}

inline RK_SampPB sampleBlock(const RK_LayerDef& src) {
    RK_SampPB pb{};
    pb.src = &src;
    return pb;
}
inline std::string showPosition(int32_t x, int32_t y, const RK_LayerDef& src) {
    return " at " + std::to_string(x / 65536.0) + ", " + std::to_string(y / 65536.0) + " of " +
           std::to_string(src.width) + " by " + std::to_string(src.height);
}

}  // namespace test

#endif
