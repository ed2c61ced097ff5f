// How two forms of a sampler are compared. The forms of the samplers are different arithmetics on purpose, single or
// double precision, one rounding or another: they may differ by a unit, and where alpha itself rounds to 0 colour is free.
#ifndef TEST_AGREE_SAMPLER_CHECKER_H
#define TEST_AGREE_SAMPLER_CHECKER_H

#include <gtest/gtest.h>

#include "RK/indep/frame/RKp_SlotTypes.h"
#include "RK/indep/sample/RK_Samp.h"
#include "test/Pixels.h"
#include "test/agree/Checkers.h"

namespace agree {

constexpr int kSamplerTolerance = 1;

template <class P>
struct Checker<RKp_SamplerFunc<P>> {
    using Sampler = RKp_SamplerFunc<P>;

    static bool near(int a, int b) { return a - b <= kSamplerTolerance && b - a <= kSamplerTolerance; }
    static bool near(const P& a, const P& b) {
        if (!near(a.alpha, b.alpha)) return false;
        if (a.alpha == 0 || b.alpha == 0) return true;
        return near(a.red, b.red) && near(a.green, b.green) && near(a.blue, b.blue);
    }
    static void compare(Sampler* body, Sampler* variant) {
        test::Random r(23);
        for (int round = 0; round < 20; ++round) {
            test::Picture<P> picture(17, 13);
            picture.fillRandom(static_cast<uint32_t>(round));
            const RK_LayerDef src = picture.record();
            RK_SampPB pb{};
            pb.src = &src;
            for (int i = 0; i < 5000; ++i) {
                // Positions whose four neighbours are inside, for the forms that do not test.
                const auto x = static_cast<int32_t>(r.below(16 << 16)), y = static_cast<int32_t>(r.below(12 << 16));
                pb.x_radius = static_cast<int32_t>(1 + r.below(i % 3 == 0 ? 32768 : 5 << 16));
                pb.y_radius = static_cast<int32_t>(1 + r.below(i % 5 == 0 ? 32768 : 5 << 16));
                P wanted, got;
                ASSERT_EQ(0, body(nullptr, x, y, &pb, &wanted));
                ASSERT_EQ(0, variant(nullptr, x, y, &pb, &got));
                ASSERT_TRUE(near(wanted, got)) << "at " << x << ", " << y << " radii " << pb.x_radius << ", " << pb.y_radius
                                               << ": " << int(wanted.alpha) << " " << int(wanted.red) << " " << int(wanted.green)
                                               << " " << int(wanted.blue) << " and " << int(got.alpha) << " " << int(got.red)
                                               << " " << int(got.green) << " " << int(got.blue);
            }
        }
    }
};

}  // namespace agree

#endif
