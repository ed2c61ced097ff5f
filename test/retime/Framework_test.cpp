// Indexers, maps, bands, the fan-out and interruption.
#include <mutex>
#include <numeric>
#include <set>
#include <thread>

#include "RK/host/Threads.h"
#include "RK/indep/retime/FnBuffer.h"
#include "test/retime/RetimeTest.h"

using namespace retime_test;

namespace {

FnAxis Axis(int32_t size, int32_t first, int32_t last, int32_t mode) {
    FnAxis a{};
    a.size = size;
    a.SetRange(first, last);
    a.edge_mode = mode;
    return a;
}

TEST(FnTexIndexer, ANewMapHasTheStatedState) {
    FnVectorMap map(3, 2);
    EXPECT_TRUE(map.HasPixels());
    for (const FnAxis& a : map.axis) {
        EXPECT_EQ(a.edge_mode, kFnTransparent);
        EXPECT_EQ(a.int_origin, 0);
        EXPECT_EQ(a.origin, 0.0f);
        EXPECT_EQ(a.first, 0);
        EXPECT_EQ(a.count, a.size);
    }
    EXPECT_EQ(map.Row(1)[2], (HvVec2{0, 0}));
    EXPECT_EQ(map.Read(-1, 0), (HvVec2{0, 0}));
}

TEST(FnTexIndexer, RangesAreSortedThenClamped) {
    FnAxis a = Axis(10, 8, -4, 0);
    EXPECT_EQ(a.first, 0);
    EXPECT_EQ(a.last, 8);
    EXPECT_EQ(a.count, 9);
    a.SetRange(20, 12);
    EXPECT_EQ(a.first, 9);
    EXPECT_EQ(a.last, 9);
    a = Axis(0, 0, 5, kFnClamp);
    EXPECT_EQ(a.first, 0);
    EXPECT_EQ(a.last, -1);
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(a.MapIndex(0), kFnNoPixel);
    EXPECT_EQ(a.RunFrom(5).index, kFnNoPixel);
}

TEST(FnTexIndexer, MirrorRepeatsTheEdgePixelAndHasPeriodTwiceTheCount) {
    const FnAxis a = Axis(10, 2, 5, kFnMirror);
    const int32_t expected[] = {2, 3, 4, 5, 5, 4, 3, 2};
    for (int i = -40; i < 40; ++i) EXPECT_EQ(a.MapIndex(i + 2), expected[((i % 8) + 8) % 8]) << i;
    EXPECT_EQ(Axis(4, 0, 3, kFnMirror).MapIndex(-1), 0);
    EXPECT_EQ(Axis(4, 0, 3, kFnMirror).MapIndex(4), 3);
    EXPECT_EQ(a.MapIndex(INT64_C(-8000000006)), a.MapIndex(2));
}

TEST(FnTexIndexer, WrapClampAndTransparentMapAsTold) {
    EXPECT_EQ(Axis(10, 2, 5, kFnWrap).MapIndex(1), 5);
    EXPECT_EQ(Axis(10, 2, 5, kFnWrap).MapIndex(6), 2);
    EXPECT_EQ(Axis(10, 2, 5, kFnClamp).MapIndex(-9), 2);
    EXPECT_EQ(Axis(10, 2, 5, kFnClamp).MapIndex(9), 5);
    EXPECT_EQ(Axis(10, 2, 5, kFnTransparent).MapIndex(6), kFnNoPixel);
    EXPECT_EQ(Axis(10, 2, 5, 17).MapIndex(1), kFnNoPixel);
    EXPECT_EQ(Axis(10, 2, 5, -1).MapIndex(3), 3);
}

TEST(FnTexIndexer, RunsCoverExactlyWhatMapIndexSays) {
    for (int32_t mode = -1; mode <= 4; ++mode) {
        const FnAxis a = Axis(9, 1, 6, mode);
        for (int64_t i = -30; i < 30;) {
            const FnRun run = a.RunFrom(i);
            ASSERT_GE(run.count, 1);
            for (int64_t k = 0; k < std::min(run.count, 60); ++k) {
                const int32_t expected = run.index == kFnNoPixel ? kFnNoPixel : int32_t(run.index + run.direction * k);
                ASSERT_EQ(a.MapIndex(i + k), expected) << mode << " " << i << " " << k;
            }
            i += run.count;
        }
    }
    const FnAxis clamp = Axis(9, 1, 6, kFnClamp);
    EXPECT_EQ(clamp.RunFrom(-3).direction, 0);
    EXPECT_EQ(clamp.RunFrom(-3).count, 4);
    EXPECT_EQ(clamp.RunFrom(7).count, INT32_MAX);
    EXPECT_EQ(Axis(9, 1, 6, kFnMirror).RunFrom(7).direction, -1);
}

TEST(FnTexIndexer, PairsTellAdjacency) {
    const FnAxis a = Axis(9, 1, 6, kFnClamp);
    EXPECT_TRUE(a.PairFrom(5).adjacent);
    EXPECT_FALSE(a.PairFrom(6).adjacent);
    EXPECT_EQ(a.PairFrom(6).second, 6);
    EXPECT_FALSE(Axis(9, 1, 6, kFnTransparent).PairFrom(0).adjacent);
    EXPECT_FALSE(Axis(9, 1, 6, kFnWrap).PairFrom(6).adjacent);
}

TEST(FnTexIndexer, FloatOriginsRoundUpFromHalf) {
    FnTexIndexer t(4, 4);
    t.SetFloatOrigins(2.5f, -2.5f);
    EXPECT_EQ(t.axis[0].int_origin, 3);
    EXPECT_EQ(t.axis[1].int_origin, -2);
    t.SetOrigins(7, -7);
    EXPECT_EQ(t.axis[1].origin, -7.0f);
    EXPECT_EQ(t.axis[1].int_origin, -7);
}

TEST(FnTexture, TransparentReadsGiveTheDefaultPixel) {
    FnFloatMap map(2, 2);
    map.Fill(4.0f);
    map.SetDefault(8.0f);
    EXPECT_EQ(map.Read(-1, 0), 8.0f);
    EXPECT_EQ(map.Read(0, 2), 8.0f);
    EXPECT_EQ(map.Bilinear(0.5f, 0.5f), 4.0f);
    EXPECT_EQ(map.Bilinear(0.0f, 0.5f), 6.0f);
    EXPECT_EQ(map.Bilinear(-100.0f, 1e30f), 8.0f);
}

TEST(FnTexture, BilinearIsHorizontalFirstAndAgreesWithThePlainForm) {
    for (const char edge : {'d', 'c', 'm'}) {
        plain::Grid<float> grid = noise(7, 5, 11);
        grid.edge = edge;
        grid.fallback = 0.3f;
        FnFloatMap map;
        toMap(grid, map);
        test::Random r(5);
        for (int i = 0; i < 3000; ++i) {
            const float x = r.unit() * 20.0f - 6.0f, y = r.unit() * 20.0f - 6.0f;
            ASSERT_TRUE(test::sameBytes(map.Bilinear(x, y), plain::bilinear(grid, x, y))) << edge << x << " " << y;
        }
        for (const float odd : {-0.0f, 1e30f, -1e30f, 3e9f, -2147483648.0f})
            EXPECT_TRUE(test::sameBytes(map.Bilinear(odd, 1.25f), plain::bilinear(grid, odd, 1.25f))) << odd;
        EXPECT_TRUE(std::isnan(map.Bilinear(NAN, 1.0f)));
    }
}

TEST(FnTexture, SamplesAtAMeanAndAtADifference) {
    plain::Grid<float> grid = noise(7, 5, 3);
    FnFloatMap map;
    toMap(grid, map);
    EXPECT_EQ(map.SampleMean({1, 2}, {2, 3}), map.Bilinear(1.5f, 2.5f));
    EXPECT_EQ(map.SampleDifference({4, 3}, {1.5f, 1}), map.Bilinear(2.5f, 2));
}

TEST(FnTexture, ACopySharesNothing) {
    FnIntMap a(3, 3), b;
    a.Fill(5);
    a.SetDefault(9);
    a.SetEdgeModes(kFnMirror, kFnWrap);
    a.SetRanges(1, 2, 0, 1);
    ASSERT_TRUE(b.CopyFrom(a));
    a.Fill(0);
    EXPECT_EQ(b.Row(2)[2], 5);
    EXPECT_EQ(b.Default(), 9);
    EXPECT_EQ(b.axis[0].first, 1);
    EXPECT_EQ(b.axis[1].edge_mode, kFnWrap);
}

TEST(FnTexture, AFailedAllocationLeavesNoPixelsAndSaysSo) {
    RefHost::FailAllocation(1);
    FnFloatMap map(10, 10);
    RefHost::FailAllocation(0);
    EXPECT_FALSE(map.HasPixels());
    EXPECT_TRUE(map.Failed());
    map.SetDefault(2.0f);
    EXPECT_EQ(map.Read(3, 3), 2.0f);
    EXPECT_EQ(map.Bilinear(3, 3), 2.0f);
    FnFloatMap huge;
    EXPECT_FALSE(huge.Resize(INT32_MAX, INT32_MAX));
    FnFloatMap empty(0, -3);
    EXPECT_FALSE(empty.Failed());
    EXPECT_TRUE(empty.IsEmpty());
}

TEST(FnTexture, AMapOverForeignPixelsKeepsTheirRowBytes) {
    float pixels[12];
    std::iota(pixels, pixels + 12, 0.0f);
    FnFloatMap up(pixels + 8, 3, 3, -16);
    EXPECT_EQ(up.Row(1)[0], 4.0f);
    EXPECT_EQ(up.Read(2, 2), 2.0f);
}

TEST(FnThreads, BandsDivideRowsEvenlyAndTheLastEndsAtTheEnd) {
    for (int rows = 0; rows < 20; ++rows)
        for (int t = 1; t < 9; ++t) {
            int covered = 0;
            for (int i = 0; i < t; ++i) {
                const FnBand band = FnBandOf(3, 3 + rows, i, t);
                int start, end;
                plain::share(rows, i, t, &start, &end);
                if (band.start < band.end) {
                    EXPECT_EQ(band.start, start + 3);
                    EXPECT_EQ(band.end, end + 3);
                    covered += band.end - band.start;
                } else {
                    EXPECT_GE(start, end);
                }
            }
            EXPECT_EQ(covered, rows);
        }
}

TEST(FnThreads, EveryBandRunsOnceUnderItsNumber) {
    for (int32_t count : {1, 2, 3, 7}) {
        Threads threads(count);
        std::mutex lock;
        std::multiset<int32_t> numbers;
        FnFanOut(FnFanOutWidth(), [&] {
            std::lock_guard<std::mutex> hold(lock);
            numbers.insert(FnThreadNumber());
        });
        EXPECT_EQ(numbers.size(), size_t(count));
        for (int32_t i = 0; i < count; ++i) EXPECT_EQ(numbers.count(i), 1u);
        EXPECT_FALSE(FnInFanOut());
        EXPECT_EQ(FnThreadNumber(), 0);
    }
}

TEST(FnThreads, BandsWhoseThreadCannotStartRunOnTheCaller) {
    Threads threads(3);
    for (int64_t n = 1; n <= 3; ++n) {
        std::mutex lock;
        std::multiset<int32_t> numbers;
        RefHost::FailAllocation(n);
        FnFanOut(FnFanOutWidth(), [&] {
            std::lock_guard<std::mutex> hold(lock);
            numbers.insert(FnThreadNumber());
        });
        RefHost::FailAllocation(0);
        EXPECT_EQ(numbers, (std::multiset<int32_t>{0, 1, 2})) << n;
    }
}

TEST(FnThreads, TheCountIsFixedWhileAFanOutRunsAndIgnoresValuesBelowOne) {
    Threads threads(2);
    FnSetThreadCount(0);
    FnSetThreadCount(-5);
    EXPECT_EQ(FnThreadCount(), 2);
    FnFanOut(FnFanOutWidth(), [] { FnSetThreadCount(9); });
    EXPECT_EQ(FnThreadCount(), 2);
    FnSetThreading(false);
    EXPECT_EQ(FnFanOutWidth(), 1);
    FnSetThreading(true);
}

TEST(FnThreads, AFanOutInsideABandRunsAllItsBandsThere) {
    Threads threads(2);
    std::atomic<int> calls{0};
    FnFanOut(2, [&] { FnFanOut(3, [&] { ++calls; }); });
    EXPECT_EQ(calls, 6);
}

TEST(FnThreads, FanOutsOfTwoThreadsTakeTurns) {
    Threads threads(2);
    std::atomic<int> calls{0};
    auto work = [&] {
        for (int i = 0; i < 50; ++i) FnFanOut(2, [&] { ++calls; });
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(calls, 200);
}

struct CountingPass : FnImgProc {
    void Prepare() override { SetPassCount(2); }
    void PassStart() override { starts++; }
    void PassEnd() override { ends++; }
    void Finish() override { finishes++; }
    void ProcessBand() override {
        for (int32_t y = Band().start; y < Band().end && Check() == 0; ++y) rows++;
    }
    std::atomic<int> rows{0};
    int starts = 0, ends = 0, finishes = 0;
};

TEST(FnImgProc, RunsEveryPassOverTheWholeMapOrTheRegion) {
    for (int32_t count : {1, 2, 3}) {
        Threads threads(count);
        FnFloatMap map(4, 11);
        CountingPass pass;
        pass.ProcessMap(&map);
        EXPECT_EQ(pass.rows, 22);
        EXPECT_EQ(pass.starts, 2);
        EXPECT_EQ(pass.finishes, 1);
        CountingPass part;
        part.SetRegion({0, 9, 4, 30});
        part.ProcessMap(&map);
        EXPECT_EQ(part.rows, 4);
    }
}

TEST(FnInteruptable, StopsAtTheFirstAnswerAndNeverAsksAgain) {
    for (int32_t count : {1, 3}) {
        Threads threads(count);
        FnFloatMap map(4, 30);
        for (int stop = 0; stop < 20; ++stop) {
            Stopper stopper{stop, 517};
            InterruptRecord record;
            record.refcon = &stopper;
            record.callback = Stopper::Call;
            CountingPass pass;
            pass.SetInterrupt(&record);
            pass.ProcessMap(&map);
            EXPECT_EQ(record.error, 517);
            EXPECT_TRUE(record.aborted);
            EXPECT_EQ(stopper.answers, -1);
            EXPECT_EQ(pass.finishes, 1);
        }
    }
}

TEST(FnInteruptable, OnlyThreadZeroAsks) {
    Threads threads(3);
    static thread_local int t_calls;
    t_calls = 0;
    static std::atomic<int> calls;
    calls = 0;
    InterruptRecord record;
    record.callback = [](void*) -> RK_Long {
        ++t_calls, ++calls;
        return 0;
    };
    FnFloatMap map(4, 30);
    CountingPass pass;
    pass.SetInterrupt(&record);
    pass.ProcessMap(&map);
    EXPECT_EQ(calls, t_calls);
    EXPECT_GE(calls, 20);
}

TEST(FnInteruptable, AnAnswerThatNeedsMoreThanItsErrorStillStops) {
    if (sizeof(RK_Long) == 4) return;
    InterruptRecord record;
    record.callback = [](void*) { return static_cast<RK_Long>(INT64_C(0x100000000)); };
    FnFloatMap map(4, 4);
    CountingPass pass;
    pass.SetInterrupt(&record);
    pass.ProcessMap(&map);
    EXPECT_EQ(pass.rows, 0);
    EXPECT_EQ(record.error, INT32_MAX);
}

TEST(FnBuffer, RefusesCountsItCannotHold) {
    FnBuffer<double> buffer;
    EXPECT_FALSE(buffer.Allocate(0));
    EXPECT_FALSE(buffer.Allocate(-1));
    EXPECT_FALSE(buffer.Allocate(INT64_MAX));
    EXPECT_TRUE(buffer.Allocate(3));
}

TEST(HvVec2, FloorsAndFractionsMatchTheLibrary) {
    test::Random r(2);
    for (int i = 0; i < 200000; ++i) {
        uint32_t bits = r.next();
        float v;
        std::memcpy(&v, &bits, 4);
        if (std::isnan(v)) {
            EXPECT_EQ(FnFloor(v), INT32_MIN);
            continue;
        }
        ASSERT_EQ(FnFloor(v), plain::down(v)) << v;
        if (std::isinf(v)) continue;
        ASSERT_TRUE(test::sameBytes(FnFraction(v, FnFloor(v)), plain::part(v))) << v;
    }
    EXPECT_TRUE(test::sameBytes(FnFraction(-0.0f, 0), 0.0f));
}

TEST(FnColours, RoundingTakesTiesToEvenAndNaNToZero) {
    EXPECT_EQ(FnDepth<0xFF>::Store(0.5f), 0);
    EXPECT_EQ(FnDepth<0xFF>::Store(1.5f), 2);
    EXPECT_EQ(FnDepth<0xFF>::Store(2.5f), 2);
    EXPECT_EQ(FnDepth<0xFF>::Store(0.49999997f), 0);
    EXPECT_EQ(FnDepth<0xFF>::Store(254.5f), 254);
    EXPECT_EQ(FnDepth<0xFF>::Store(300.0f), 255);
    EXPECT_EQ(FnDepth<0xFF>::Store(-1.0f), 0);
    EXPECT_EQ(FnDepth<0xFF>::Store(NAN), 0);
    EXPECT_EQ(FnDepth<0x8000>::Store(65535.0f), 32768);
    EXPECT_EQ(FnDepth<0x8000>::Store(32766.5f), 32766);
    for (float v = 0; v < 32768.0f; v += 0.25f) ASSERT_EQ(FnDepth<0x8000>::Store(v), uint16_t(std::nearbyint(v)));
    EXPECT_EQ(FnDepth<1>::Store(-3.5f), -3.5f);
}

}  // namespace
