// The monitor, the candidate sets and both smoothers.
#include "RK/indep/retime/FnSmoothBlocks.h"
#include "RK/indep/retime/FnSmoothVectors.h"
#include "test/plain/retime/PlainSmooth.h"
#include "test/retime/RetimeTest.h"

using namespace retime_test;

namespace {

// Few distinct vectors, so that equal neighbours and ties come up; some undefined.
plain::Grid<plain::V> field(int w, int h, uint32_t seed, int undefined_of_16) {
    test::Random r(seed);
    plain::Grid<plain::V> g(w, h);
    for (plain::V& v : g.v) {
        v = {float(int(r.below(9)) - 4) * 0.75f, float(int(r.below(5)) - 2) * 0.5f};
        if (r.below(5) == 0) v = {r.unit() * 60 - 30, r.unit() * 60 - 30};
        if (int(r.below(16)) < undefined_of_16) v = plain::kGone;
    }
    return g;
}

TEST(FnRandom, FollowsItsRecurrenceFromZero) {
    FnRandom random;
    plain::Dice dice;
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(random.Below(200), dice.roll(200));
    FnRandom again;
    uint32_t s = 12345u, t = 12345u * 1103515245u + 12345u;
    EXPECT_EQ(again.Next(), ((t >> 16) & 255) ^ (((s >> 16) & 255) << 7));
}

TEST(FnCandidates, DropDuplicatesUndefinedAndWhatDoesNotFit) {
    FnCandidateSet set;
    for (const HvVec2 v : {HvVec2{1, 2}, kFnUndefined, HvVec2{1, 2}, HvVec2{0, -0.0f}, HvVec2{-0.0f, 0}}) set.Add(v);
    set.RemoveDuplicates();
    EXPECT_EQ(set.Count(), 2);
    for (int i = 0; i < 300; ++i) set.Add({float(i), 1});
    EXPECT_EQ(set.Count(), 200);
    FnCandidateSet turned;
    turned.NegateFrom(set);
    EXPECT_EQ(turned[0], (HvVec2{-1, -2}));
}

TEST(FnCandidates, WeightsSplitTheSmoothness) {
    EXPECT_EQ(PositiveWeight(500), 501.0f);
    EXPECT_EQ(NegativeWeight(500), 1.0f);
    EXPECT_EQ(PositiveWeight(-3), 1.0f);
    EXPECT_EQ(NegativeWeight(-3), 4.0f);
    EXPECT_EQ(PositiveWeight(0), 1.0f);
}

TEST(Monitor, TellsWhatChangedSinceItsLastRun) {
    FnVectorMap map(3, 3);
    FnMotionEstimateGradientChangedNeighboursMonitor monitor;
    FnCandidateSet set;
    EXPECT_EQ(monitor.Gather(1, 1, &set), 0);
    EXPECT_EQ(monitor.LocalMean(1, 1), (HvVec2{0, 0}));
    map.Row(0)[0] = kFnUndefined;
    monitor.ProcessMap(&map);
    EXPECT_FALSE(monitor.SawUndefined());  // the first run looks at nothing
    EXPECT_FALSE(monitor.first_run);
    EXPECT_TRUE(monitor.all_neighbours);
    EXPECT_EQ(monitor.Gather(1, 1, &set), 8);
    EXPECT_EQ(monitor.Gather(0, 0, &set), 3);
    map.Row(2)[2] = {5, 7};
    monitor.ProcessMap(&map);
    EXPECT_TRUE(monitor.SawUndefined());
    set.Clear();
    EXPECT_EQ(monitor.Gather(1, 1, &set), 1);
    EXPECT_EQ(set[0], (HvVec2{5, 7}));
    EXPECT_EQ(monitor.Gather(2, 2, &set), 0);  // an element is no neighbour of itself
    EXPECT_EQ(monitor.LocalMean(1, 1), (HvVec2{5.0f / 7, 1}));
    monitor.ProcessMap(&map);
    EXPECT_EQ(monitor.Gather(1, 1, &set), 0);
}

TEST(Monitor, AnUndefinedYAloneIsSeenAndSkippedByTheMean) {
    FnVectorMap map(2, 1);
    map.Row(0)[0] = {1, FLT_MAX};
    FnMotionEstimateGradientChangedNeighboursMonitor monitor;
    monitor.ProcessMap(&map);
    monitor.ProcessMap(&map);
    EXPECT_TRUE(monitor.SawUndefined());
    EXPECT_EQ(monitor.LocalMean(1, 0), (HvVec2{0, 0}));
}

TEST(Monitor, NeighboursComeFromBelowUpwards) {
    FnVectorMap map(3, 3);
    for (int i = 0; i < 9; ++i) map.Row(i / 3)[i % 3] = {float(i), 0};
    FnMotionEstimateGradientChangedNeighboursMonitor monitor;
    monitor.ProcessMap(&map);
    FnCandidateSet set;
    monitor.Gather(1, 1, &set);
    const float order[8] = {6, 7, 8, 3, 5, 0, 1, 2};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(set[i].x, order[i]);
}

TEST(Monitor, AFailedMapAborts) {
    FnVectorMap map(5, 5);
    const int failures = failEach(
        [&] {
            FnMotionEstimateGradientChangedNeighboursMonitor monitor;
            InterruptRecord record;
            monitor.SetInterrupt(&record);
            monitor.ProcessMap(&map);
            const bool struck = record.error == kFnNoMemory;
            EXPECT_EQ(struck, record.aborted);
        },
        [](int) {});
    EXPECT_EQ(failures, 3);
}

TEST(FnBlocks, CoverTheFrameAndSlideInAtTheEdge) {
    EXPECT_EQ(FnBlockCount(384, 6, 2), 96);
    EXPECT_EQ(FnBlockCount(7, 6, 2), 2);
    EXPECT_EQ(FnBlockCount(6, 6, 2), 1);
    EXPECT_EQ(FnBlockCount(2, 6, 2), 0);
    EXPECT_EQ(FnBlockCount(1, 6, 2), 0);
    EXPECT_EQ(FnBlockCount(10, 2, 2), 0);
    const FnMotionEstimateGradientBlockParameters blocks = {6, 6, 2};
    const FnBlockRect edge = FnBlockRectOf(blocks, 1, 0, 7, 4);
    EXPECT_EQ(edge.x0, 1);
    EXPECT_EQ(edge.x1, 7);
    EXPECT_EQ(edge.y0, 0);
    EXPECT_EQ(edge.y1, 4);
    EXPECT_EQ(edge.Area(), 24);
}

TEST(MatchError, AgreesWithThePlainFormOnEachPath) {
    plain::Grid<float> R = noise(24, 18, 1), T = noise(24, 18, 2), mask = noise(24, 18, 3);
    R.edge = T.edge = 'c';
    FnFloatMap r, t, m;
    toMap(R, r), toMap(T, t), toMap(mask, m);
    test::Random random(4);
    for (int i = 0; i < 4000; ++i) {
        const plain::Box b = plain::blockBox(6, 6, 2, int(random.below(6)), int(random.below(4)), 24, 18);
        plain::V v = {random.unit() * 16 - 8, random.unit() * 16 - 8};
        if (i % 7 == 0) v = {std::floor(v.x), std::floor(v.y)};
        if (i % 50 == 0) v = {0, -0.0f};
        if (i % 97 == 0) v.x = i % 2 ? 4e9f : NAN;
        for (int masked = 0; masked < 2; ++masked)
            ASSERT_TRUE(test::sameBytes(FnMatchError(toEngine(v), {b.x0, b.y0, b.x1, b.y1}, r, t, masked ? &m : nullptr),
                                        plain::matchError(v, b, R, T, masked ? &mask : nullptr)))
                << v.x << " " << v.y;
    }
}

TEST(MatchError, NeedsMoreThanAQuarterOfTheBlock) {
    FnFloatMap r(16, 16), t(16, 16), mask(16, 16);
    mask.Fill(1);
    for (int i = 0; i < 4; ++i) mask.Row(0)[i] = 0.5f;
    EXPECT_EQ(FnMatchError({0, 0}, {0, 0, 4, 4}, r, t, &mask), FLT_MAX);
    mask.Row(1)[0] = 0.0f;
    EXPECT_EQ(FnMatchError({0, 0}, {0, 0, 4, 4}, r, t, &mask), 0.0f);
    EXPECT_EQ(FnMatchError({1000, 0}, {0, 0, 4, 4}, r, t, nullptr), FLT_MAX);
}

struct SmoothSetUp {
    plain::Grid<float> R = noise(40, 30, 5), T = pattern(40, 30, 0, 0, 6), mask = noise(40, 30, 7);
    FnFloatMap r, t, m;
    SmoothSetUp() {
        R.edge = T.edge = 'c';
        toMap(R, r), toMap(T, t), toMap(mask, m);
    }
};

TEST(SmoothBlocks, RoundsAgreeWithThePlainForm) {
    for (int threads = 1; threads <= 3; ++threads)
        for (int variant = 0; variant < 8; ++variant) {
            Threads set(threads);
            SmoothSetUp s;
            if (variant == 7) s.R = s.T, toMap(s.R, s.r);
            const bool masked = variant & 1;
            plain::Grid<plain::V> expected = field(10, 7, uint32_t(variant + 10), variant * 2);
            if (variant == 6) expected.v.assign(70, plain::kGone);
            FnVectorMap map;
            toMap(expected, map);
            FnBlockSmooth smooth;
            smooth.blocks = {6, 6, 2};
            smooth.error_weight = variant & 2 ? 1.0f : 501.0f;
            smooth.smooth_weight = variant & 2 ? 501.0f : 1.0f;
            smooth.reference = &s.r;
            smooth.target = &s.t;
            smooth.mask = masked ? &s.m : nullptr;
            FnMotionEstimateGradientChangedNeighboursMonitor monitor;
            smooth.monitor = &monitor;
            monitor.ProcessMap(&map);
            plain::Monitor plain_monitor;
            plain_monitor.run(expected);
            plain::Grid<float> errors(10, 7, FLT_MAX);
            for (int round = 0; round < 6; ++round) {
                smooth.ProcessMap(&map);
                plain::smoothBlocks(expected, errors, plain_monitor, s.R, s.T, masked ? &s.mask : nullptr, 6, 6, 2,
                                    smooth.error_weight, smooth.smooth_weight, threads);
                ASSERT_EQ(differing(map, expected), 0) << variant << " round " << round;
                ASSERT_EQ(differing(smooth.errors, errors), 0) << variant << " round " << round;
                monitor.ProcessMap(&map);
                plain_monitor.run(expected);
                ASSERT_EQ(monitor.SawUndefined(), plain_monitor.undefinedSeen);
            }
        }
}

TEST(SmoothBlocks, AnEvenFieldStaysAndAHoleTakesANeighboursVector) {
    SmoothSetUp s;
    FnVectorMap map(10, 7);
    map.Fill({1, 2});
    map.Row(3)[4] = kFnUndefined;
    FnMotionEstimateGradientChangedNeighboursMonitor monitor;
    monitor.ProcessMap(&map);
    FnBlockSmooth smooth;
    smooth.blocks = {6, 6, 2};
    smooth.reference = &s.r;
    smooth.target = &s.t;
    smooth.ProcessMap(&map);  // without a monitor nothing happens
    EXPECT_EQ(map.Row(3)[4], kFnUndefined);
    smooth.monitor = &monitor;
    smooth.ProcessMap(&map);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 10; ++x) EXPECT_EQ(map.Row(y)[x], (HvVec2{1, 2}));
}

TEST(SmoothVectors, AgreesWithThePlainForm) {
    for (int threads = 1; threads <= 3; ++threads)
        for (int variant = 0; variant < 6; ++variant) {
            Threads set(threads);
            SmoothSetUp s;
            const bool masked = variant & 1;
            plain::Grid<plain::V> blocky = field(40, 30, uint32_t(variant + 30), variant > 3 ? 3 : 0);
            if (variant < 2)
                for (int y = 0; y < 30; ++y)
                    for (int x = 0; x < 40; ++x) blocky.at(x, y) = blocky.at(x / 5 * 5, y / 5 * 5);
            FnVectorMap in, out(40, 30);
            toMap(blocky, in);
            FnMotionEstimateGradientSmoothVectorsParameters p;
            p.error_weight = variant & 2 ? 501.0f : 1.0f;
            p.smooth_weight = variant & 2 ? 1.0f : 501.0f;
            p.passes = variant == 3 ? 1 : variant == 2 ? 12 : 5;
            p.blocks = {6, 6, 2};
            p.reference = &s.r;
            p.target = &s.t;
            p.mask = masked ? &s.m : nullptr;
            FnPixelSmooth smooth(p);
            smooth.Process(&out, &in);
            ASSERT_EQ(differing(out, plain::smoothPixels(blocky, s.R, s.T, masked ? &s.mask : nullptr, 6, 6, 2,
                                                         p.error_weight, p.smooth_weight, p.passes, threads)),
                      0)
                << variant << " " << threads;
        }
}

TEST(SmoothVectors, WithoutATargetEveryVectorIsZero) {
    FnVectorMap in(4, 4), out(4, 4);
    out.Fill({1, 1});
    FnFloatMap none;
    for (const FnFloatMap* target : {static_cast<const FnFloatMap*>(nullptr), static_cast<const FnFloatMap*>(&none)}) {
        FnMotionEstimateGradientSmoothVectorsParameters p;
        p.target = target;
        FnPixelSmooth(p).Process(&out, &in);
        EXPECT_EQ(out.Row(3)[3], (HvVec2{0, 0}));
    }
}

TEST(SmoothVectors, StopsAtEveryCheckWithTheCallbacksAnswer) {
    SmoothSetUp s;
    plain::Grid<plain::V> blocky = field(40, 30, 3, 0);
    FnVectorMap in, out(40, 30);
    toMap(blocky, in);
    FnMotionEstimateGradientSmoothVectorsParameters p;
    p.blocks = {6, 6, 2};
    p.reference = &s.r;
    p.target = &s.t;
    int stops = 0;
    for (int stop = 0;; ++stop) {
        Stopper stopper{stop, 517};
        InterruptRecord record;
        record.refcon = &stopper;
        record.callback = Stopper::Call;
        FnPixelSmooth smooth(p);
        smooth.SetInterrupt(&record);
        smooth.Process(&out, &in);
        if (stopper.answers >= 0) break;
        ++stops;
        ASSERT_EQ(record.error, 517);
        ASSERT_EQ(stopper.answers, -1);
    }
    EXPECT_GT(stops, 100);
}

TEST(SmoothVectors, EveryFailedAllocationAborts) {
    Threads one(1);
    SmoothSetUp s;
    plain::Grid<plain::V> blocky = field(40, 30, 3, 0);
    FnVectorMap in, out(40, 30);
    toMap(blocky, in);
    FnMotionEstimateGradientSmoothVectorsParameters p;
    p.blocks = {6, 6, 2};
    p.reference = &s.r;
    p.target = &s.t;
    int32_t error = 0;
    const int failures = failEach(
        [&] {
            InterruptRecord record;
            FnPixelSmooth smooth(p);
            smooth.SetInterrupt(&record);
            smooth.Process(&out, &in);
            error = record.error;
        },
        [&](int) { EXPECT_EQ(error, kFnNoMemory); });
    EXPECT_EQ(failures, 3);
}

}  // namespace
