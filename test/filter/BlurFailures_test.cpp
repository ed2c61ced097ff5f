// What can go wrong with the blurs of both kinds, and their progress.
#include <cmath>
#include <limits>
#include <string>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/filter/Blurs.h"
#include "test/world/OddWorld.h"

namespace {

using test::Blur;
using test::Canvas;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Box with one pass and with three, and the Gaussian.
class BlurFailures : public test::Tidy, public testing::WithParamInterface<int> {
  protected:
    Blur blur() const {
        Blur b;
        b.passes = GetParam();
        return b;
    }
};
INSTANTIATE_TEST_SUITE_P(Kinds, BlurFailures, testing::Values(1, 3, 0), [](const auto& kind) {
    return kind.param == 0 ? std::string("Gaussian") : "Box" + std::to_string(kind.param);
});

// ---- Arguments ------------------------------------------------------------------------------------------

TEST_P(BlurFailures, NullWorldsAndNullPixelsAreReportedBeforeTheDepth) {
    Canvas<RK_Pixel8> good(4, 4);
    Canvas<RK_Pixel16> other(4, 4);
    good.random(1);
    const auto before = good.picture;
    test::OddWorld empty(8);
    const RK_World* world = good.world.get();
    EXPECT_EQ(3, blur()(nullptr, good.world.get()));
    EXPECT_TRUE(test::onlyBadParam(10));
    EXPECT_EQ(3, blur()(world, nullptr));
    EXPECT_TRUE(test::onlyBadParam(10));
    EXPECT_EQ(3, blur()(nullptr, nullptr));
    EXPECT_TRUE(test::onlyBadParam(10));
    EXPECT_EQ(3, blur()(&empty, good.world.get()));
    EXPECT_TRUE(test::onlyBadParam(10));
    EXPECT_EQ(3, blur()(world, &empty));
    EXPECT_TRUE(test::onlyBadParam(10));
    EXPECT_EQ(3, blur()(&empty, other.world.get()));
    EXPECT_TRUE(test::onlyBadParam(10));
    EXPECT_TRUE(good.picture == before);
}

TEST_P(BlurFailures, RadiiThatAreNoneAreReported) {
    Canvas<RK_Pixel8> src(4, 4), dst(4, 4);
    dst.random(1);
    const auto before = dst.picture;
    for (const float radius : {-1.0f, -1e-30f, kNaN, kInfinity, -kInfinity, 2147483648.0f, 3e38f}) {
        Blur b = blur();
        b.radius = radius;
        EXPECT_EQ(3, b(src, dst)) << radius;
        EXPECT_TRUE(test::onlyBadParam(10)) << radius;
    }
    EXPECT_TRUE(dst.picture == before);
    Blur b = blur();
    b.radius = -0.0f;
    EXPECT_EQ(0, b(src, dst));
}

TEST(BlurFailure, PassesBelow1AreReported) {
    Canvas<RK_Pixel8> src(4, 4), dst(4, 4);
    for (const int32_t passes : {0, -1, INT32_MIN}) {
        EXPECT_EQ(3, RK_BoxBlur1D(nullptr, src.world.get(), 1, passes, 15, 0, 1, 0, 1, 0, dst.world.get()));
        EXPECT_TRUE(test::onlyBadParam(10));
    }
}

TEST_P(BlurFailures, UnequalAndUnknownDepthsGive3AndWriteNothing) {
    Canvas<RK_Pixel8> at8(4, 4);
    Canvas<RK_Pixel16> at16(4, 4);
    at8.random(1), at16.random(2);
    const auto before8 = at8.picture;
    const auto before16 = at16.picture;
    EXPECT_EQ(3, blur()(at8.world.get(), at16.world.get()));
    EXPECT_EQ(3, blur()(at16.world.get(), at8.world.get()));
    test::OddWorld a(24), b(24);
    a.record = at8.picture.record();
    b.record = at8.picture.record();
    EXPECT_EQ(3, blur()(&a, &b));
    EXPECT_TRUE(at8.picture == before8);
    EXPECT_TRUE(at16.picture == before16);
}

TEST_P(BlurFailures, WorldsWithoutAreaAreNoWork) {
    for (const auto& [width, height] : {std::pair<int, int>{0, 4}, {4, 0}, {-1, 4}, {4, -1}, {-1, -1}})
        for (const bool columns : {false, true}) {
            Canvas<RK_Pixel8> full(4, 4), other(4, 4);
            other.random(3);
            const auto before = other.picture;
            full.world->record.width = width;
            full.world->record.height = height;
            EXPECT_EQ(0, blur().columns(columns)(other, full));
            EXPECT_TRUE(full.picture == Canvas<RK_Pixel8>(4, 4).picture);
            EXPECT_EQ(0, blur().columns(columns)(full, other));
            EXPECT_TRUE(other.picture == Canvas<RK_Pixel8>(4, 4).picture) << "nothing blurred is zero";
        }
}

// ---- Memory ---------------------------------------------------------------------------------------------

TEST_P(BlurFailures, EachAllocationMayFail) {
    for (const int32_t threads : {1, 7})
        for (const int32_t premultiplied : {0, 1})
            for (const bool columns : {false, true}) {
                RefHost::SetThreadCount(threads);
                Canvas<RK_Pixel16> src(40, 70), dst(40, 70);
                src.random(1), dst.random(2);
                const auto before = dst.picture;
                Blur b = blur();
                b.src_premultiplied = premultiplied;
                b.columns(columns);
                Canvas<RK_Pixel16> whole(dst);
                const RefHost::MemoryUse held = RefHost::Memory();
                RefHost::FailAllocation(0);
                EXPECT_EQ(0, b(src, whole));
                const int64_t made = RefHost::AllocationsSince();
                const bool scratch = b.passes != 1 || !premultiplied;
                EXPECT_EQ(made > 0, scratch);
                for (int64_t n = 1; n <= made; ++n) {
                    RefHost::FailAllocation(n);
                    EXPECT_EQ(4, b(src, dst));
                    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "memory for blurring"));
                    EXPECT_TRUE(dst.picture == before);
                    EXPECT_EQ(RefHost::Memory().blocks, held.blocks);
                    EXPECT_EQ(RefHost::Memory().accounted, held.accounted);
                }
                RefHost::FailAllocation(0);
            }
    RefHost::SetThreadCount(0);
}

TEST_P(BlurFailures, ScratchThatNoMemoryHoldsIsRefused) {
    if (GetParam() != 3) return;
    Canvas<RK_PixelFloat> src(4, 1), dst(4, 1);
    Blur b = blur();
    b.radius = 2e9f;
    b.passes = 2;
    RefHost::SetThreadCount(1 << 20);
    EXPECT_EQ(4, b(src, dst));
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "memory for blurring"));
    RefHost::SetThreadCount(0);
}

// Two lines for each thread, the longest that a stage needs and 16 bytes more; the Gaussian one.
TEST_P(BlurFailures, ScratchIsTwoLinesAThreadToldToTheAccountingWhileItLives) {
    const int64_t before = RefHost::Memory().accounted;
    struct Seen {
        int64_t accounted = -1;
    } seen;
    const RK_ProgressInfo progress = {&seen,
                                      [](void* refcon) -> RK_Long {
                                          static_cast<Seen*>(refcon)->accounted = RefHost::Memory().accounted;
                                          return 0;
                                      },
                                      nullptr};
    for (const int directions : {0, 1, 2, 3})
        for (const bool premultiplies : {false, true})
            for (const int32_t threads : {1, 3}) {
                Canvas<RK_Pixel8> src(100, 90), dst(100, 90);
                Blur b = blur();
                b.progress = &progress;
                b.src_direction = directions & 1, b.dst_direction = directions >> 1;
                b.force_copy = premultiplies ? 0 : 1, b.src_premultiplied = premultiplies ? 0 : 1;
                RefHost::SetThreadCount(threads);
                EXPECT_EQ(0, b(src, dst));
                RefHost::SetThreadCount(0);
                // A stage between passes is wider by what the passes before it, and those to come, both
                // reach.
                const int64_t wider = b.passes == 3 ? 2 * 2 : 0;
                const int64_t shorter = 90 + wider, longest = 100 + wider;
                const int64_t lines = threads * (b.passes == 0 ? 1 : 2);
                EXPECT_GE(seen.accounted - before, lines * (shorter * 4 + 16));
                EXPECT_LE(seen.accounted - before, lines * (longest * 4 + 16 + 15) + 15);
                EXPECT_EQ(RefHost::Memory().accounted, before);
            }
}

// ---- Progress -------------------------------------------------------------------------------------------

struct Calls {
    std::vector<RK_Long> lines;
    RK_Long total = -1;
    int aborts = 0;
    RK_Long answer = 0, at = -1;  // answer at line `at`
};
RK_Long onProgress(void* refcon, RK_Long line, RK_Long total) {
    Calls& calls = *static_cast<Calls*>(refcon);
    calls.lines.push_back(line);
    calls.total = total;
    return line == calls.at ? calls.answer : 0;
}
RK_Long onAbort(void* refcon) {
    Calls& calls = *static_cast<Calls*>(refcon);
    return calls.aborts++ == calls.at ? calls.answer : 0;
}

TEST_P(BlurFailures, ProgressIsAskedAfterEvery64thLineOfTheDestination) {
    for (const int32_t direction : {0, 1}) {
        Calls calls;
        const RK_ProgressInfo progress = {&calls, onAbort, onProgress};
        Canvas<RK_Pixel8> src(200, 150), dst(200, 150);
        Blur b = blur();
        b.progress = &progress;
        b.dst_direction = direction;
        EXPECT_EQ(0, b(src, dst));
        EXPECT_EQ(calls.lines,
                  direction ? (std::vector<RK_Long>{63, 127, 191}) : (std::vector<RK_Long>{63, 127}));
        EXPECT_EQ(calls.total, direction ? 200 : 150);
        EXPECT_EQ(calls.aborts, 0);
    }
    Calls calls;
    const RK_ProgressInfo progress = {&calls, onAbort, nullptr};
    for (const int lines : {1, 63, 64, 65, 127, 128}) {
        calls = {};
        Canvas<RK_Pixel8> src(9, lines), dst(9, lines);
        Blur b = blur();
        b.progress = &progress;
        EXPECT_EQ(0, b(src, dst));
        EXPECT_EQ(calls.aborts, lines / 64) << lines;
    }
    const RK_ProgressInfo neither = {&calls, nullptr, nullptr};
    Canvas<RK_Pixel8> src(9, 130), dst(9, 130);
    Blur b = blur();
    b.progress = &neither;
    EXPECT_EQ(0, b(src, dst));
}

TEST_P(BlurFailures, LinesWithoutASourceCountToo) {
    Calls calls;
    const RK_ProgressInfo progress = {&calls, nullptr, onProgress};
    Canvas<RK_Pixel8> src(9, 9), dst(9, 200);
    dst.at(0, 5000);
    Blur b = blur();
    b.progress = &progress;
    EXPECT_EQ(0, b(src, dst));
    EXPECT_EQ(calls.lines, (std::vector<RK_Long>{63, 127, 191}));
}

TEST_P(BlurFailures, WhatIsNot0StopsAtEveryCheckInAndLinesWrittenStay) {
    for (const bool columns : {false, true})
        for (const bool by_progress : {false, true})
            for (const RK_Long answer : {RK_Long{517}, RK_Long{-3}, RK_Long{1}})
                for (const RK_Long stop : {0, 1, 2}) {
                    Canvas<RK_Pixel8> src(200, 200), whole(200, 200), dst(200, 200);
                    src.random(1), dst.random(2);
                    const Canvas<RK_Pixel8> before(dst);
                    Blur b = blur();
                    b.columns(columns);
                    b.src_premultiplied = by_progress;
                    EXPECT_EQ(0, b(src, whole));
                    Calls calls;
                    calls.answer = answer;
                    calls.at = by_progress ? stop * 64 + 63 : stop;
                    const RK_ProgressInfo progress = {&calls, onAbort, by_progress ? onProgress : nullptr};
                    b.progress = &progress;
                    EXPECT_EQ(answer, b(src, dst));
                    const int done = (static_cast<int>(stop) + 1) * 64;
                    for (int y = 0; y < 200; ++y)
                        for (int x = 0; x < 200; ++x) {
                            const bool written = (columns ? x : y) < done;
                            ASSERT_TRUE(test::sameBytes(written ? whole(x, y) : before(x, y), dst(x, y)))
                                << x << "," << y;
                        }
                }
}

// ---- The slot that runs the lines -----------------------------------------------------------------------

class Slot53 {
  public:
    explicit Slot53(RKp_IterateGenericFunc* body) : held_(RKp_G_OverFuncs[53]) {
        RKp_G_OverFuncs[53] = reinterpret_cast<void*>(body);
    }
    ~Slot53() { RKp_G_OverFuncs[53] = held_; }

  private:
    void* held_;
};

TEST_P(BlurFailures, ABodyInTheSlotMayRunLinesInAnyOrderOnAnyThread) {
    RefHost::SetThreadCount(3);
    for (const bool columns : {false, true}) {
        Canvas<RK_Pixel8> src(150, 140), want(150, 140), got(150, 140);
        src.random(1);
        Calls calls;
        const RK_ProgressInfo progress = {&calls, nullptr, onProgress};
        Blur b = blur();
        b.progress = &progress;
        b.columns(columns);
        EXPECT_EQ(0, b(src, want));
        calls = {};
        const Slot53 backwards([](RK_Long n, void* refcon, RK_GenericFunc* fn) -> RK_Long {
            for (RK_Long i = n - 1; i >= 0; --i)
                if (const RK_Long error = fn(refcon, i / 32 % 3, i, n); error != 0) return error;
            return 0;
        });
        EXPECT_EQ(0, b(src, got));
        EXPECT_TRUE(got.picture == want.picture);
        EXPECT_EQ(calls.lines, std::vector<RK_Long>{127});  // of 63 and 127 the one on thread 0
    }
    RefHost::SetThreadCount(0);
}

TEST_P(BlurFailures, WhatTheBodyGivesIsTheResultUnlessALineFailed) {
    Canvas<RK_Pixel8> src(10, 100), dst(10, 100);
    {
        const Slot53 refuses([](RK_Long, void*, RK_GenericFunc*) -> RK_Long { return 31; });
        EXPECT_EQ(31, blur()(src, dst));
    }
    Calls calls;
    calls.answer = 517, calls.at = 63;
    const RK_ProgressInfo progress = {&calls, nullptr, onProgress};
    const Slot53 forgets([](RK_Long n, void* refcon, RK_GenericFunc* fn) -> RK_Long {
        for (RK_Long i = 0; i < n; ++i) {
            const RK_Long error = fn(refcon, 0, i, n);
            if (error != (i < 63 ? 0 : 517)) return 99;
        }
        return 0;
    });
    Blur b = blur();
    b.progress = &progress;
    EXPECT_EQ(517, b(src, dst));
}

TEST_P(BlurFailures, AThreadThatTheHostDidNotTellOfIsRefused) {
    RefHost::SetThreadCount(2);
    Canvas<RK_Pixel8> src(10, 10), dst(10, 10);
    for (const RK_Long thread : {-1, 2, 1000}) {
        static RK_Long wrong;
        wrong = thread;
        const Slot53 body(
            [](RK_Long n, void* refcon, RK_GenericFunc* fn) { return fn(refcon, wrong, 0, n); });
        EXPECT_EQ(3, blur()(src, dst));
    }
    RefHost::SetThreadCount(0);
}

}  // namespace
