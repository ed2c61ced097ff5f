#include "RK/indep/composite/RK_BlendPipeline.h"

#include <limits>
#include <stdexcept>

#include "test/Reports.h"
#include "test/composite/ModeRows.h"

namespace {

using test::composite;
using test::compositeRow;
using test::kFull;

template <class P>
class BlendPipeline : public testing::Test {
  protected:
    void SetUp() override { RefHost::TakeReports(); }
    void TearDown() override { EXPECT_TRUE(test::noReports()); }
};
TYPED_TEST_SUITE(BlendPipeline, test::Depths);

// ---- The steps, seen through functions that write down their calls --------------------------------------

std::string g_calls;
std::string g_failing;  // the step that fails
RK_Long g_failure;      // its result; 0: it throws

RK_Long step(const char* name) {
    g_calls += name;
    if (g_failing != name) return 0;
    if (g_failure == 0) throw RK_Long{4};
    return g_failure;
}

template <class P>
struct Seen {
    RK_Long count;
    const RK_BlendModeDescriptor<P>* plan;
    const RK_LinearBlendingTables* tables;
    const P *src, *matte;
    P* out;
    RK_Channel<P> opacity;
};
template <class P>
Seen<P> g_seen[5];  // pre, over, mode, merge, post

template <class P>
RK_Long pre(RK_Long count, const P* src, P* out) {
    g_seen<P>[0] = {count, nullptr, nullptr, src, nullptr, out, 0};
    return step("p");
}
template <class P>
RK_Long over(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const RK_LinearBlendingTables* tables,
             const P* src, const P* matte, P* out) {
    g_seen<P>[1] = {count, plan, tables, src, matte, out, 0};
    return step("o");
}
template <class P>
RK_Long mode(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const RK_LinearBlendingTables* tables,
             const P* src, const P* matte, P* out) {
    g_seen<P>[2] = {count, plan, tables, src, matte, out, 0};
    for (RK_Long i = 0; i < count; ++i) out[i] = {9, 9, 9, 9};
    return step("m");
}
template <class P>
RK_Long merge(RK_Long count, const P* src, RK_Channel<P> opacity, const P* matte, P* out) {
    g_seen<P>[3] = {count, nullptr, nullptr, src, matte, out, opacity};
    return step("a");
}
template <class P>
RK_Long post(RK_Long count, const P* src, P* out) {
    g_seen<P>[4] = {count, nullptr, nullptr, src, nullptr, out, 0};
    return step("q");
}

template <class P>
RK_BlendModeDescriptor<P> recorder(bool wrap, bool first, bool guard, bool merging, bool rgb_only) {
    RK_BlendingMode<P> record = test::blending<P>(RK_Xfer_Over, 1, rgb_only);
    RK_BlendModeDescriptor<P> plan(record, false, nullptr);
    plan.pre_scan = pre<P>;
    plan.over_func = over<P>;
    plan.mode_func = mode<P>;
    plan.alpha_merge = merge<P>;
    plan.post_scan = post<P>;
    plan.wrap_neutral = wrap;
    plan.over_first = first;
    plan.guard_alpha = guard;
    plan.merge_alpha = merging;
    g_calls.clear();
    g_failing.clear();
    return plan;
}

TYPED_TEST(BlendPipeline, RunsTheStepsOfThePlanInOrder) {
    using P = TypeParam;
    const P src[2] = {};
    P out[2] = {};
    RK_Channel<P> alpha[2];
    const auto run = [&](bool wrap, bool first, bool guard, bool merging) {
        const RK_BlendModeDescriptor<P> plan = recorder<P>(wrap, first, guard, merging, true);
        EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 2, &plan, src, nullptr, alpha, out), 0);
        return g_calls;
    };
    EXPECT_EQ(run(false, false, false, false), "m");
    EXPECT_EQ(run(false, true, true, false), "om");
    EXPECT_EQ(run(true, false, true, true), "pmaq");
    EXPECT_EQ(run(true, true, true, true), "pmaq") << "a wrapped plan never goes behind first";
    EXPECT_EQ(run(false, false, false, true), "ma");
}

TYPED_TEST(BlendPipeline, EveryStepGetsItsArguments) {
    using P = TypeParam;
    const P src[3] = {}, matte[3] = {};
    P out[3] = {};
    const auto tables = reinterpret_cast<const RK_LinearBlendingTables*>(&src[1]);
    RK_BlendModeDescriptor<P> plan = recorder<P>(true, false, false, true, false);
    plan.tables = tables;
    plan.mode.opacity = 7;
    ASSERT_EQ(RK_BlendPipeline<P>(nullptr, 3, &plan, src, matte, nullptr, out), 0);
    plan.wrap_neutral = 0;
    plan.over_first = 1;
    ASSERT_EQ(RK_BlendPipeline<P>(nullptr, 3, &plan, src, matte, nullptr, out), 0);
    for (int scan : {0, 4}) {
        EXPECT_EQ(g_seen<P>[scan].count, 3);
        EXPECT_EQ(g_seen<P>[scan].src, nullptr) << "a null source is in place";
        EXPECT_EQ(g_seen<P>[scan].out, out);
    }
    for (int row : {1, 2}) {
        EXPECT_EQ(g_seen<P>[row].count, 3);
        EXPECT_EQ(g_seen<P>[row].plan, &plan);
        EXPECT_EQ(g_seen<P>[row].tables, tables);
        EXPECT_EQ(g_seen<P>[row].src, src);
        EXPECT_EQ(g_seen<P>[row].matte, matte);
        EXPECT_EQ(g_seen<P>[row].out, out);
    }
    EXPECT_EQ(g_seen<P>[3].opacity, 7);
    EXPECT_EQ(g_seen<P>[3].matte, matte) << "the matte goes to the merge whatever the plan was made for";
    EXPECT_EQ(g_seen<P>[3].src, src);
}

TYPED_TEST(BlendPipeline, AFailedStepEndsTheRowAndRestoresNothing) {
    using P = TypeParam;
    const P src[1] = {};
    for (RK_Long failure : {RK_Long{517}, RK_Long{3}, RK_Long{-1}, RK_Long{0}}) {
        for (const char* steps : {"p", "pm", "pma", "pmaq"}) {
            P out[1] = {{5, 5, 5, 5}};
            RK_Channel<P> alpha[1] = {0};
            const RK_BlendModeDescriptor<P> plan = recorder<P>(true, false, true, true, true);
            g_failing = std::string(1, steps[std::string(steps).size() - 1]);
            g_failure = failure;
            EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, &plan, src, nullptr, alpha, out),
                      failure ? failure : 4);
            EXPECT_EQ(g_calls, steps);
            EXPECT_EQ(alpha[0], 5);
            EXPECT_EQ(out[0].alpha, g_failing == "p" ? 5 : 9) << "alpha is not put back";
        }
        P out[1] = {{5, 5, 5, 5}};
        const RK_BlendModeDescriptor<P> plan = recorder<P>(false, true, false, false, false);
        g_failing = "o";
        g_failure = failure;
        EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, &plan, src, nullptr, nullptr, out), failure ? failure : 4);
        EXPECT_EQ(g_calls, "o");
    }
}

template <class P>
RK_Long throwsStandard(RK_Long, const RK_BlendModeDescriptor<P>*, const RK_LinearBlendingTables*, const P*,
                       const P*, P*) {
    throw std::length_error("vector<T> too long");
}
TYPED_TEST(BlendPipeline, AStandardExceptionIsTranslatedAtTheBorder) {
    using P = TypeParam;
    P pixel[1] = {};
    RK_BlendModeDescriptor<P> plan = recorder<P>(false, false, false, false, false);
    plan.mode_func = throwsStandard<P>;
    EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, &plan, pixel, nullptr, nullptr, pixel), 3);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].kind, RefHost::ReportKind::Exception);
}

TYPED_TEST(BlendPipeline, SavesAlphaOnlyForGuardedModesThatKeepIt) {
    using P = TypeParam;
    const P src[2] = {};
    for (int bits = 0; bits < 4; ++bits) {
        const bool guard = bits & 1, rgb_only = bits & 2;
        P out[2] = {{5, 5, 5, 5}, {6, 6, 6, 6}};
        RK_Channel<P> alpha[3] = {1, 1, 1};
        const RK_BlendModeDescriptor<P> plan = recorder<P>(false, false, guard, false, rgb_only);
        EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 2, &plan, src, nullptr, alpha, out), 0);
        const bool saved = guard && rgb_only;
        EXPECT_EQ(out[0].alpha, saved ? 5 : 9);
        EXPECT_EQ(out[1].alpha, saved ? 6 : 9);
        EXPECT_EQ(out[1].red, 9);
        EXPECT_EQ(alpha[1], saved ? 6 : 1);
        EXPECT_EQ(alpha[2], 1);
    }
}

TYPED_TEST(BlendPipeline, ACountBelowOneTouchesNothing) {
    using P = TypeParam;
    for (RK_Long count : {RK_Long{0}, RK_Long{-1}, std::numeric_limits<RK_Long>::min()}) {
        const RK_BlendModeDescriptor<P> plan = recorder<P>(true, true, true, true, true);
        EXPECT_EQ(RK_BlendPipeline<P>(nullptr, count, &plan, nullptr, nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(g_calls, "");
    }
}

// ---- Refused plans and null arguments -------------------------------------------------------------------

TYPED_TEST(BlendPipeline, APlanOfARefusedModeGivesFiveAndTouchesNothing) {
    using P = TypeParam;
    for (int32_t xfer : {-1, -4, 37, INT32_MAX, INT32_MIN}) {
        RK_BlendingMode<P> record = test::blending<P>(xfer, kFull<P>, true);
        const RK_BlendModeDescriptor<P> plan(record, false, nullptr);
        EXPECT_TRUE(
            test::onlyReport(RefHost::ReportKind::Error, RK_kLocation, "unimplemented blending mode."));
        const P src = {kFull<P>, 1, 1, 1}, before = {1, 0, 1, 0};
        P out = before;
        RK_Channel<P> alpha = 0;
        EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, &plan, &src, nullptr, &alpha, &out), 5);
        EXPECT_TRUE(test::sameBytes(out, before));
        EXPECT_EQ(alpha, 0);
        EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 0, &plan, &src, nullptr, &alpha, &out), 5);
        EXPECT_TRUE(test::noReports()) << "only the lookup reports";
    }
}

TYPED_TEST(BlendPipeline, NullArgumentsAreABadParameter) {
    using P = TypeParam;
    P pixel = {};
    RK_Channel<P> alpha;
    const RK_BlendModeDescriptor<P> plan = recorder<P>(false, false, true, false, true);
    EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, nullptr, &pixel, nullptr, &alpha, &pixel), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, &plan, nullptr, nullptr, &alpha, &pixel), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, &plan, &pixel, nullptr, &alpha, nullptr), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, &plan, &pixel, nullptr, nullptr, &pixel), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(g_calls, "");
}

RK_Long neverCalled(void*, RK_Long, RK_Long) {
    ADD_FAILURE() << "progress was called";
    return 517;
}
TYPED_TEST(BlendPipeline, ProgressIsNotRead) {
    using P = TypeParam;
    P pixel = {};
    RK_ProgressInfo progress = {nullptr, nullptr, neverCalled};
    const RK_BlendModeDescriptor<P> plan = recorder<P>(false, false, false, false, false);
    EXPECT_EQ(RK_BlendPipeline<P>(&progress, 1, &plan, &pixel, nullptr, nullptr, &pixel), 0);
}

// ---- Modes through the pipeline -------------------------------------------------------------------------

TYPED_TEST(BlendPipeline, AddWithColourOnlyChangesColourAndKeepsAlpha) {
    using P = TypeParam;
    const RK_Channel<P> some = static_cast<RK_Channel<P>>(RKp_Depth<P>::kGrey);
    const P d = composite(test::blending<P>(RK_Xfer_Add, kFull<P>, true), P{kFull<P>, some, 0, 0},
                          P{some, 0, 0, some});
    EXPECT_EQ(d.alpha, some);
    EXPECT_EQ(d.red, some);
    EXPECT_NE(d.blue, some);
}

TYPED_TEST(BlendPipeline, MultiplyOnNothingMeetsWhite) {
    using P = TypeParam;
    // Halves are exact at float too.
    const P s = {kFull<P>, RK_Channel<P>(kFull<P> / 2), 0, kFull<P>};
    const P d = composite(RK_Xfer_Multiply, s, P{0, 1, 1, 1});
    EXPECT_TRUE(test::sameBytes(d, s)) << test::text(d);
}

TYPED_TEST(BlendPipeline, ScreenOnNothingMeetsBlack) {
    using P = TypeParam;
    // Halves are exact at float too, where 1 - (1 - s) is not s for every s.
    const P s = {kFull<P>, RK_Channel<P>(kFull<P> / 2), 0, kFull<P>};
    const P d = composite(RK_Xfer_Screen, s, P{0, 1, 1, 1});
    EXPECT_TRUE(test::sameBytes(d, s)) << test::text(d);
}

TYPED_TEST(BlendPipeline, OverUnderAMatteOfNothingChangesNothing) {
    using P = TypeParam;
    test::Random r(2);
    const P matte = {0, kFull<P>, kFull<P>, kFull<P>};
    for (int i = 0; i < 200; ++i) {
        const P s = test::pixel<P>(r), d = test::pixel<P>(r);
        EXPECT_TRUE(test::sameBytes(composite(test::blending<P>(RK_Xfer_Over), s, d, &matte), d));
    }
}

TYPED_TEST(BlendPipeline, OfTheMatteOnlyAlphaIsRead) {
    using P = TypeParam;
    test::Random r(2);
    for (const test::ModeName& m : test::modes()) {
        const P s = test::pixel<P>(r), d = test::pixel<P>(r);
        const P one = {RK_Channel<P>(kFull<P> / 3), 0, 0, 0}, other = {one.alpha, kFull<P>, 1, 2};
        EXPECT_TRUE(test::sameBytes(composite(test::blending<P>(m.number), s, d, &one),
                                    composite(test::blending<P>(m.number), s, d, &other)))
            << m.name;
    }
}

// A wrapped mode's two scans run over every pixel, a clear source's too; the pixel by itself is left alone.
TEST(BlendPipelineValues, AWrappedRowMovesPixelsUnderAClearSource) {
    const RK_Pixel8 d = composite<RK_Pixel8>(RK_Xfer_Add, {0, 9, 9, 9}, {1, 127, 128, 200});
    EXPECT_TRUE(test::sameBytes(d, RK_Pixel8{1, 0, 255, 255})) << test::text(d);
}

TEST(BlendPipelineValues, OpacityZeroMergesNothingButTheScansStillRun) {
    const RK_Pixel8 d = composite(test::blending<RK_Pixel8>(RK_Xfer_Add, 0), RK_Pixel8{255, 9, 9, 9},
                                  RK_Pixel8{1, 127, 128, 200});
    EXPECT_TRUE(test::sameBytes(d, RK_Pixel8{1, 0, 255, 255})) << test::text(d);
}

TEST(BlendPipelineValues, TheChoosersCompareTheLumasThatTheBehindPassLeft) {
    const RK_Pixel8 d = composite<RK_Pixel8>(RK_Xfer_LighterColour, {255, 128, 128, 255}, {126, 0, 200, 200});
    EXPECT_TRUE(test::sameBytes(d, RK_Pixel8{255, 65, 164, 228})) << test::text(d);
}

// Every mode of a class that saves alpha gives it back untouched; the others write theirs, or leave it
// themselves.
TYPED_TEST(BlendPipeline, ColourOnlyKeepsTheAlphaOfEveryModeThatHonoursIt) {
    using P = TypeParam;
    test::Random r(4);
    for (const test::ModeName& m : test::modes()) {
        const bool own = m.number == RK_Xfer_Behind || m.number == RK_Xfer_MatteMix ||
                         (m.number >= RK_Xfer_StencilAlpha && m.number <= RK_Xfer_SilhouetteLuma);
        bool changed = false;
        for (int i = 0; i < 50; ++i) {
            const P s = test::pixel<P>(r), d = test::pixel<P>(r), matte = test::pixel<P>(r);
            const P out = composite(test::blending<P>(m.number, kFull<P>, true), s, d, &matte);
            if (own)
                changed = changed || out.alpha != d.alpha;
            else
                EXPECT_EQ(out.alpha, d.alpha) << m.name;
        }
        EXPECT_EQ(changed, own) << m.name;
    }
}

TYPED_TEST(BlendPipeline, TheDissolvesSeedNeverFlowsBackIntoThePlan) {
    using P = TypeParam;
    RK_BlendingMode<P> record = test::blending<P>(RK_Xfer_Dissolve, kFull<P>, false, 99);
    const RK_BlendModeDescriptor<P> plan(record, false, nullptr);
    std::vector<P> src(500, P{static_cast<RK_Channel<P>>(RKp_Depth<P>::kGrey), 1, 1, 1}), once(500),
        again(500);
    ASSERT_EQ(RK_BlendPipeline<P>(nullptr, 500, &plan, src.data(), nullptr, nullptr, once.data()), 0);
    ASSERT_EQ(plan.mode.rand_seed, 99);
    ASSERT_EQ(RK_BlendPipeline<P>(nullptr, 500, &plan, src.data(), nullptr, nullptr, again.data()), 0);
    EXPECT_EQ(0, std::memcmp(once.data(), again.data(), 500 * sizeof(P)));
    EXPECT_NE(0, std::memcmp(once.data(), src.data(), 500 * sizeof(P)));
}

TYPED_TEST(BlendPipeline, MatteMixWithoutAMatteGivesThreeAndTouchesNothing) {
    using P = TypeParam;
    std::vector<P> out(1, P{1, 0, 1, 0});
    EXPECT_EQ(compositeRow(test::blending<P>(RK_Xfer_MatteMix), std::vector<P>(1),
                           static_cast<const P*>(nullptr), out),
              3);
    EXPECT_TRUE(test::sameBytes(out[0], P{1, 0, 1, 0}));
}

TYPED_TEST(BlendPipeline, ARowAllocatesNothing) {
    using P = TypeParam;
    test::Random r(4);
    std::vector<P> src(300), matte(300), out(300);
    for (P& p : src) p = test::pixel<P>(r);
    for (P& p : matte) p = test::pixel<P>(r);
    std::vector<RK_Channel<P>> alpha(300);
    for (const test::ModeName& m : test::modes()) {
        RK_BlendingMode<P> record = test::blending<P>(m.number, kFull<P>, true);
        const RK_BlendModeDescriptor<P> plan(record, true, nullptr);
        RefHost::FailAllocation(0);
        ASSERT_EQ(
            RK_BlendPipeline<P>(nullptr, 300, &plan, src.data(), matte.data(), alpha.data(), out.data()), 0);
        EXPECT_EQ(RefHost::AllocationsSince(), 0) << m.name;
    }
}

}  // namespace
