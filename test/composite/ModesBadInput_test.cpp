// What no contract promises must still be harmless: any bits as channels, alphas and opacities. The
// sanitizers watch; here rows must succeed, touch only their own pixels, and give the same twice.
#include "test/agree/Rows.h"
#include "test/composite/ModeRows.h"

using namespace test;

namespace {

template <class P>
struct WildPixels : ::testing::Test {};
TYPED_TEST_SUITE(WildPixels, Depths);

}  // namespace

TYPED_TEST(WildPixels, HarmNothingOnARow) {
    using P = TypeParam;
    Random r(1);
    for (const ModeName& m : modes())
        for (int round = 0; round < 40; ++round) {
            const size_t count = r.below(40);
            const bool has_matte = round & 1;
            const auto s = agree::values<P>(r, count, agree::Values::Wild);
            const auto d = agree::values<P>(r, count, agree::Values::Wild);
            const auto matte = agree::values<P>(r, count, agree::Values::Wild);
            auto mode = blending<P>(m.number, kFull<P>, round & 2, int32_t(r.next()));
            if (round & 4) agree::wildChannel(r, &mode.opacity);
            const RK_BlendModeDescriptor<P> plan(mode, has_matte, nullptr);
            const agree::Source<P> source(s, round % 4), cover(matte, round % 3);
            agree::Row<P> first(d, round % 2), second(d, round % 2);
            const bool needs_matte = has_matte || m.number == RK_Xfer_MatteMix;
            for (agree::Row<P>* row : {&first, &second})
                ASSERT_EQ(plan.mode_func(RK_Long(count), &plan, nullptr, source.data(),
                                         needs_matte ? cover.data() : nullptr, row->data()),
                          0)
                    << m.name;
            ASSERT_TRUE(first.guardsWhole() && source.unchanged() && cover.unchanged()) << m.name;
            ASSERT_TRUE(agree::sameRows(d, first.data(), second.data())) << m.name;
        }
    EXPECT_TRUE(RefHost::TakeReports().empty());
}

TYPED_TEST(WildPixels, HarmNothingAlone) {
    using P = TypeParam;
    Random r(2);
    for (int n = 0; n <= 36; ++n)
        for (int round = 0; round < 200; ++round) {
            const auto p = agree::values<P>(r, 3, agree::Values::Wild);
            const auto d = agree::values<P>(r, 1, agree::Values::Wild);
            agree::Row<P> row(d, 0);
            PixelTables<P>::opacity2[n](&p[0], nullptr, p[1].alpha, p[2].alpha, row.data());
            ASSERT_TRUE(row.guardsWhole()) << n;
        }
}

// Source and destination may be one row.
TYPED_TEST(WildPixels, AreNotNeededForSourceAndDestinationToBeOneRow) {
    using P = TypeParam;
    Random r(3);
    for (const ModeName& m : modes()) {
        const auto pixels = agree::values<P>(r, 67, agree::Values::Runs);
        const auto matte = agree::values<P>(r, 67, agree::Values::Mixed);
        auto mode = blending<P>(m.number, RK_Channel<P>(RKp_Depth<P>::kGrey));
        const RK_BlendModeDescriptor<P> plan(mode, true, nullptr);
        agree::Row<P> apart(pixels, 0), one(pixels, 0);
        ASSERT_EQ(plan.mode_func(67, &plan, nullptr, pixels.data(), matte.data(), apart.data()), 0);
        ASSERT_EQ(plan.mode_func(67, &plan, nullptr, one.data(), matte.data(), one.data()), 0);
        EXPECT_TRUE(agree::sameRows(pixels, apart.data(), one.data())) << m.name;
    }
}
