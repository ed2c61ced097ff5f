// The tweener: lists, projection, occlusion classes, choice.
#include "RK/indep/retime/FnTweener.h"
#include "RK/indep/retime/FnTweenerStages.h"
#include "test/plain/retime/PlainEstimate.h"
#include "test/plain/retime/PlainTween.h"
#include "test/retime/RetimeTest.h"

using namespace retime_test;

namespace {

using Tweener = FnMotionEstimateGradientTweener<float, float, 1, float, float, 1>;
using Temporal = FnMotionEstimateGradientTweenerGenerateTemporalCandidates<float, float, 1>;
using Guess = FnMotionEstimateGradientTweenerGuessOcclusion<float, float, 1>;
using GuessSmoother = FnMotionEstimateGradientTweenerGuessOcclusionSmoother<float, float, 1>;
using Blanker = FnMotionEstimateGradientTweenerGuessOcclusionBlanker<float, float, 1>;

std::vector<HvVec2> listed(const CandidateLists& lists, int64_t element) {
    std::vector<HvVec2> out;
    lists.At(element).ForEach([&](const HvVec2& v) { out.push_back(v); });
    return out;
}

plain::Grid<plain::V> motion(int w, int h, float vx, float vy, uint32_t seed, int odd_of_16) {
    test::Random r(seed);
    plain::Grid<plain::V> g(w, h, {vx, vy});
    for (plain::V& v : g.v)
        if (int(r.below(16)) < odd_of_16) {
            v = {vx + float(int(r.below(7)) - 3) * 0.5f, vy + float(int(r.below(7)) - 3) * 0.5f};
            if (r.below(6) == 0) v = {r.unit() * 200 - 100, r.unit() * 30};
            if (r.below(10) == 0) v = plain::kGone;
        }
    return g;
}

TEST(CandidateLists, KeepOrderOfArrivalAndGrowWhenFull) {
    CandidateLists lists;
    ASSERT_TRUE(lists.Make(3));
    EXPECT_TRUE(lists.At(2).IsEmpty());
    for (int i = 0; i < 50; ++i) ASSERT_TRUE(lists.Add(i % 2, {float(i), 0}));
    const auto odd = listed(lists, 1);
    ASSERT_EQ(odd.size(), 25u);
    for (int i = 0; i < 25; ++i) EXPECT_EQ(odd[size_t(i)].x, float(2 * i + 1));
    EXPECT_TRUE(lists.At(0).Holds({4, 0}));
    EXPECT_FALSE(lists.At(0).Holds({5, 0}));
    lists.Empty(0);
    EXPECT_TRUE(lists.At(0).IsEmpty());
    EXPECT_EQ(listed(lists, 1).size(), 25u);
    lists.EmptyAll();
    EXPECT_TRUE(lists.At(1).IsEmpty());
    CandidateLists small;
    ASSERT_TRUE(small.Make(1));
    ASSERT_TRUE(small.Add(0, {1, 1}));
    RefHost::FailAllocation(1);
    EXPECT_FALSE(small.Add(0, {2, 2}));
    RefHost::FailAllocation(0);
    EXPECT_EQ(listed(small, 0).size(), 1u);
}

TEST(Temporal, VectorsLandWhereTheyPointAndEqualOnesOnce) {
    FnVectorMap field(4, 1);
    field.Row(0)[0] = {-2, 0};
    field.Row(0)[1] = {-2, 0};
    field.Row(0)[2] = {2, 0};
    field.Row(0)[3] = kFnUndefined;
    FnTweenParameters p;
    p.width = 4, p.height = 1;
    CandidateLists lists;
    ASSERT_TRUE(lists.Make(4));
    Temporal temporal(p);
    temporal.factor = 0.5f;
    temporal.Process(&field, &lists);
    EXPECT_EQ(listed(lists, 1), (std::vector<HvVec2>{{-2, 0}, {2, 0}}));
    EXPECT_EQ(listed(lists, 2), (std::vector<HvVec2>{{-2, 0}}));
    EXPECT_TRUE(lists.At(0).IsEmpty());
    temporal.Process(&field, &lists);
    EXPECT_EQ(listed(lists, 1).size(), 2u);
    temporal.extended = true;  // offset v + v * 0.5: element 2 leaves to the left, element 0 lands on 3
    lists.EmptyAll();
    temporal.Process(&field, &lists);
    EXPECT_EQ(listed(lists, 3), (std::vector<HvVec2>{{-2, 0}}));
}

FnTweenParameters classParameters(FnIntMap& classes, CandidateLists& a, CandidateLists& b) {
    FnTweenParameters p;
    p.width = classes.Width(), p.height = classes.Height();
    p.classes = &classes;
    p.list_a = &a;
    p.list_b = &b;
    return p;
}

TEST(GuessOcclusion, ClassesFollowTheListsThenTheNeighbours) {
    FnIntMap classes(3, 1);
    classes.Fill(kFnNotLookedAt);
    CandidateLists a, b;
    ASSERT_TRUE(a.Make(3) && b.Make(3));
    a.Add(0, {1, 1});
    b.Add(2, {1, 1});
    Guess guess(classParameters(classes, a, b));
    guess.ProcessMap(&classes);
    EXPECT_TRUE(guess.Changed());
    EXPECT_EQ(classes.Row(0)[0], kFnFirstOnly);
    EXPECT_EQ(classes.Row(0)[1], kFnUndecided);
    EXPECT_EQ(classes.Row(0)[2], kFnSecondOnly);
    guess.ProcessMap(&classes);
    EXPECT_EQ(classes.Row(0)[1], kFnUndecided);  // one vote each
    EXPECT_TRUE(guess.Changed());
    classes.Row(0)[2] = kFnBothSources;
    guess.ProcessMap(&classes);
    EXPECT_EQ(classes.Row(0)[1], kFnFirstOnly);
    guess.ProcessMap(&classes);
    EXPECT_FALSE(guess.Changed());
}

TEST(GuessOcclusion, WithGuessingOffEveryClassIsBothSources) {
    FnIntMap classes(2, 1);
    classes.Fill(kFnNotLookedAt);
    CandidateLists a, b;
    ASSERT_TRUE(a.Make(2) && b.Make(2));
    FnTweenParameters p = classParameters(classes, a, b);
    p.flags = 0xF;
    Guess guess(p);
    guess.ProcessMap(&classes);
    EXPECT_EQ(classes.Row(0)[1], kFnBothSources);
}

TEST(GuessOcclusion, AnUndecidedNeighbourRepeatsTheVoteBeforeItAndBothSourcesEndIt) {
    CandidateLists a, b;
    ASSERT_TRUE(a.Make(9) && b.Make(9));
    // Order of the look: below-left, left, above-left, below, above, below-right, right, above-right.
    const int before[9] = {3, 2, 2, 1, 3, 2, 1, 3, 2};  // rows from above: votes 1 1 1(rep) 1(rep) 2 2 2 2
    FnIntMap classes(3, 3);
    for (int i = 0; i < 9; ++i) classes.Row(i / 3)[i % 3] = before[i];
    classes.Row(0)[0] = 1;
    Guess guess(classParameters(classes, a, b));
    guess.ProcessMap(&classes);
    EXPECT_EQ(classes.Row(1)[1], kFnUndecided);
    for (int i = 0; i < 9; ++i) classes.Row(i / 3)[i % 3] = before[i];
    classes.Row(0)[0] = 0;  // clears the repeated vote for the undecided one below
    guess.ProcessMap(&classes);
    EXPECT_EQ(classes.Row(1)[1], kFnSecondOnly);
}

TEST(GuessOcclusion, TheSmootherKeepsItsChainOfRules) {
    FnIntMap classes(3, 3);
    CandidateLists a, b;
    ASSERT_TRUE(a.Make(9) && b.Make(9));
    GuessSmoother smoother(classParameters(classes, a, b));
    classes.Fill(kFnFirstOnly);
    classes.Row(1)[1] = kFnBothSources;
    smoother.ProcessMap(&classes);
    EXPECT_TRUE(smoother.Changed());
    EXPECT_EQ(classes.Row(1)[1], kFnFirstOnly);
    smoother.ProcessMap(&classes);
    EXPECT_FALSE(smoother.Changed());
    classes.Fill(kFnUndecided);
    smoother.ProcessMap(&classes);  // no vote at all: stay
    EXPECT_EQ(classes.Row(1)[1], kFnUndecided);
}

TEST(GuessOcclusion, TheBlankerEmptiesOneListAndTakesTheOthersFirst) {
    FnIntMap classes(4, 1);
    classes.Fill(kFnBothSources);
    classes.Row(0)[1] = kFnFirstOnly;
    CandidateLists a, b;
    ASSERT_TRUE(a.Make(4) && b.Make(4));
    a.Add(1, {-0.9f, -0.6f});  // points to 1.5 + 0.9 + 0.5 = 2.9, so element 2; 0.5 - 0.6 + 0.5 = 0.4
    b.Add(2, {7, 7});
    b.Add(2, {8, 8});
    b.Add(1, {1, 1});
    Blanker blanker(classParameters(classes, a, b));
    blanker.ProcessMap(&classes);
    EXPECT_TRUE(a.At(1).IsEmpty());
    EXPECT_EQ(listed(b, 1), (std::vector<HvVec2>{{7, 7}}));
    a.Add(1, {50, 0});
    blanker.ProcessMap(&classes);
    EXPECT_TRUE(a.At(1).IsEmpty());
    EXPECT_EQ(listed(b, 1), (std::vector<HvVec2>{{7, 7}}));
    classes.Row(0)[1] = kFnSecondOnly;
    a.Add(3, {4, 4});
    b.Empty(1);
    b.Add(1, {-1.5f, -0.6f});
    blanker.ProcessMap(&classes);
    EXPECT_EQ(listed(a, 1), (std::vector<HvVec2>{{4, 4}}));
    EXPECT_TRUE(b.At(1).IsEmpty());
}

struct TweenSetUp {
    plain::Tween p;
    FnVectorMap fields[4];
    FnFloatMap frame1, frame2, mask;
    FnIntMap classes;
    FnVectorMap a, b;
    FnTweenParameters parameters;

    TweenSetUp(int w, int h, float t, uint32_t seed, int odd, bool guess, bool extra, bool masked) {
        p.first = motion(w, h, -3, 1.5f, seed, odd);
        p.second = motion(w, h, 3, -1.5f, seed + 1, odd);
        if (extra) p.third = motion(w, h, 2, 1, seed + 2, odd), p.fourth = motion(w, h, -2, -1, seed + 3, odd);
        p.frame1 = texture(w, h, 0, 0, 4), p.frame2 = texture(w, h, 3, 1.5f, 4);
        if (masked) p.mask = noise(w, h, 5);
        p.t = t;
        p.guess = guess;
        p.ws = seed % 2 ? 501.0f : 1.0f, p.we = seed % 2 ? 1.0f : 31.0f;
        toMap(p.first, fields[0]), toMap(p.second, fields[1]), toMap(p.frame1, frame1), toMap(p.frame2, frame2);
        if (extra) toMap(p.third, fields[2]), toMap(p.fourth, fields[3]);
        if (masked) toMap(p.mask, mask);
        classes.Resize(w, h), a.Resize(w, h), b.Resize(w, h);
        parameters.width = w, parameters.height = h;
        parameters.t = t;
        parameters.smooth_weight = p.ws, parameters.error_weight = p.we;
        parameters.occlusion_smooth_passes = 2;
        parameters.flags = guess ? 0xFu | kFnGuessOcclusion : 0xFu;
        for (int i = 0; i < (extra ? 4 : 2); ++i) parameters.fields[i] = &fields[i];
        parameters.frames[0] = parameters.frames[1] = &frame1;
        parameters.frames[2] = parameters.frames[3] = &frame2;
        parameters.mask = masked ? &mask : nullptr;
        parameters.classes = &classes, parameters.result_a = &a, parameters.result_b = &b;
    }
    int32_t run(InterruptRecord* record) {
        Tweener tweener(parameters);
        tweener.SetInterrupt(record);
        tweener.Process();
        return record->error;
    }
};

TEST(Tweener, AgreesWithThePlainFormAtEachThreadCount) {
    for (int threads = 1; threads <= 3; ++threads)
        for (int variant = 0; variant < 20; ++variant) {
            Threads set(threads);
            const bool guess = variant & 1, extra = variant & 2, masked = variant & 4;
            const float t = variant % 5 == 0 ? 0.5f : variant % 5 == 1 ? 0.005f : variant % 5 == 2 ? 0.25f : 0.77f;
            TweenSetUp s(variant < 16 ? 41 : 7, variant < 16 ? 29 : 3, t, uint32_t(variant), variant % 3 * 6, guess,
                         extra, masked);
            s.p.threads = threads;
            s.p.iterations = s.parameters.iterations = variant == 9 ? 0 : variant == 8 ? 1 : 5;
            InterruptRecord record;
            ASSERT_EQ(s.run(&record), 0);
            s.p.run();
            ASSERT_EQ(differing(s.classes, s.p.classes), 0) << variant << " threads " << threads;
            ASSERT_EQ(differing(s.a, s.p.a), 0) << variant << " threads " << threads;
            ASSERT_EQ(differing(s.b, s.p.b), 0) << variant << " threads " << threads;
        }
}

TEST(Tweener, FieldsWithoutAnyVectorStayUndefinedAfterAllRounds) {
    TweenSetUp s(8, 6, 0.5f, 1, 0, false, false, false);
    s.fields[0].Fill(kFnUndefined);
    s.fields[1].Fill(kFnUndefined);
    InterruptRecord record;
    ASSERT_EQ(s.run(&record), 0);
    EXPECT_EQ(s.a.Row(3)[3], kFnUndefined);
    EXPECT_EQ(s.b.Row(3)[3], kFnUndefined);
}

TEST(Tweener, AVectorKnownInOneDirectionServesTheOther) {
    TweenSetUp s(12, 9, 0.5f, 1, 0, false, false, false);
    s.fields[1].Fill(kFnUndefined);
    s.fields[0].Fill({-1, 0});
    s.parameters.flags |= kFnUseNegated;
    InterruptRecord record;
    ASSERT_EQ(s.run(&record), 0);
    EXPECT_EQ(s.a.Row(4)[6], (HvVec2{-1, 0}));
    EXPECT_EQ(s.b.Row(4)[6], (HvVec2{1, 0}));
}

TEST(Tweener, MakesMapsThatItIsNotGiven) {
    TweenSetUp s(12, 9, 0.5f, 1, 2, false, false, false);
    InterruptRecord record;
    s.parameters.flags = 0;
    s.parameters.classes = nullptr;
    s.parameters.result_a = s.parameters.result_b = nullptr;
    Tweener tweener(s.parameters);
    tweener.SetInterrupt(&record);
    tweener.Process();
    ASSERT_EQ(record.error, 0);
    s.p.run();
    EXPECT_EQ(differing(*tweener.parameters.result_a, s.p.a), 0);
}

TEST(Tweener, EveryFailedAllocationAndEveryCheckStopsIt) {
    Threads one(1);
    TweenSetUp s(9, 7, 0.5f, 3, 0, true, true, false);
    s.parameters.iterations = 2;
    int32_t error = 0;
    const int failures = failEach(
        [&] {
            InterruptRecord record;
            error = s.run(&record);
        },
        [&](int n) { EXPECT_EQ(error, kFnNoMemory) << n; });
    EXPECT_GT(failures, 8);
    int stops = 0;
    for (int stop = 0;; ++stop, ++stops) {
        Stopper stopper{stop, 99};
        InterruptRecord record;
        record.refcon = &stopper;
        record.callback = Stopper::Call;
        error = s.run(&record);
        if (stopper.answers >= 0) break;
        ASSERT_EQ(error, 99);
        ASSERT_EQ(stopper.answers, -1);
    }
    EXPECT_GT(stops, 100);
}

}  // namespace
