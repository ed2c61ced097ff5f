// What the transform's tests share: matrices, a source and a destination of random pixels, and one call.
#ifndef TEST_SAMPLE_TRANSFORM_TEST_H
#define TEST_SAMPLE_TRANSFORM_TEST_H

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/sample/RK_TransformWorld.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/Pixels.h"

namespace test {

inline const GEO_Matrix3 kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
inline GEO_Matrix3 translation(double x, double y) { return {{{1, 0, 0}, {0, 1, 0}, {x, y, 1}}}; }
inline GEO_Matrix3 scaling(double x, double y) { return {{{x, 0, 0}, {0, y, 0}, {0, 0, 1}}}; }
inline GEO_Matrix3 rotation(double degrees, double cx, double cy) {
    const double a = degrees * 3.14159265358979323846 / 180, c = std::cos(a), s = std::sin(a);
    return {{{c, s, 0}, {-s, c, 0}, {cx - cx * c + cy * s, cy - cx * s - cy * c, 1}}};
}

template <class P>
RK_CompositeMode modeOf(int32_t xfer) {
    return {xfer, 7, 255, 0, 32768};
}

template <class P>
class TransformTest : public testing::Test {
  protected:
    using World = RK_WorldX<P>;
    TransformTest() : src(20, 14, 0), dst(24, 18, 0) {
        randomise(src, 1);
        randomise(dst, 2);
    }
    static void randomise(World& w, uint32_t seed) {
        Random r(seed);
        for (int32_t y = 0; y < w.height(); ++y)
            for (int32_t x = 0; x < w.width(); ++x) w.row(y)[x] = pixel<P>(r);
    }
    static std::unique_ptr<World> copyOf(const World& w) {
        auto out = std::make_unique<World>(w.width(), w.height(), 0);
        for (int32_t y = 0; y < w.height(); ++y)
            std::memcpy(static_cast<void*>(out->row(y)), w.row(y),
                        static_cast<size_t>(w.width()) * sizeof(P));
        return out;
    }
    static testing::AssertionResult same(const World& a, const World& b) {
        for (int32_t y = 0; y < a.height(); ++y)
            for (int32_t x = 0; x < a.width(); ++x)
                if (!sameBytes(a.row(y)[x], b.row(y)[x]))
                    return testing::AssertionFailure() << "differ at " << x << ", " << y;
        return testing::AssertionSuccess();
    }
    RK_Long draw(const std::vector<GEO_Matrix3>& m, World& to, int32_t xfer = RK_Xfer_Over,
                 RK_Long quality = RK_kBest, RK_Long field = 0, const RK_TransformMask* mask = nullptr,
                 const GEO_Rect* rect = nullptr) {
        const RK_CompositeMode mode = modeOf<P>(xfer);
        return RK_TransformWorld(progress, quality, 0, field, &src, &mode, nullptr, mask, m.data(),
                                 static_cast<RK_Long>(m.size()), 1, rect, &to);
    }
    World src, dst;
    RK_ProgressInfo* progress = nullptr;
};

}  // namespace test

#endif
