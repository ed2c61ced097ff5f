// The sample module that spreads passes over threads: what it promises its callers.
#include <atomic>
#include <thread>

#include "test/filter/Blurs.h"
#include "test/life/Threads.h"

using namespace test;

TEST(ModuleThreads, EachPartIsCalledOnceAndTheFirstFailureIsTheResult) {
    withThreads(2, [] {
        for (RK_Long count : {1, 2, 3, 64, 999}) {
            std::vector<std::atomic<int>> seen(static_cast<size_t>(count));
            struct Given {
                std::vector<std::atomic<int>>* seen;
                RK_Long failing;
            } given = {&seen, -1};
            const auto part = [](void* refcon, RK_Long thread, RK_Long i, RK_Long) -> RK_Long {
                const Given& g = *static_cast<Given*>(refcon);
                ++(*g.seen)[static_cast<size_t>(i)];
                if (i == g.failing) throw RK_Long{70 + thread};
                return 0;
            };
            EXPECT_EQ(0, RK_IterateGeneric(count, &given, part));
            for (const auto& n : seen) EXPECT_EQ(n, 1);
            given.failing = count - 1;
            EXPECT_EQ(RK_IterateGeneric(count, &given, part), count == 1 ? 70 : 71);
        }
        const auto whole = [](void*, RK_Long thread, RK_Long i, RK_Long n) -> RK_Long {
            return 100 * thread + 10 * i + n;
        };
        EXPECT_EQ(RK_IterateGeneric(-1, nullptr, whole), 1);
        EXPECT_EQ(RK_IterateGeneric(0, nullptr, whole), 0);
        EXPECT_EQ(RK_IterateGeneric(5, nullptr, nullptr), 3);
        EXPECT_EQ(RefHost::TakeReports().size(), 1u);
    });
}

TEST(ModuleThreads, ProgressIsAskedOnTheCallingThreadAndStopsAll) {
    withThreads(2, [] {
        struct Given {
            std::thread::id caller;
            std::vector<RK_Long> lines;
            bool stop;
        } given = {std::this_thread::get_id(), {}, false};
        const RK_ProgressInfo progress = {&given, nullptr,
                                          [](void* refcon, RK_Long line, RK_Long) -> RK_Long {
                                              Given& g = *static_cast<Given*>(refcon);
                                              EXPECT_EQ(std::this_thread::get_id(), g.caller);
                                              g.lines.push_back(line);
                                              return g.stop ? 517 : 0;
                                          }};
        Canvas<RK_Pixel8> src(20, 512), dst(20, 512);
        Blur blur;
        blur.progress = &progress;
        EXPECT_EQ(0, blur(src, dst));
        EXPECT_EQ(given.lines, (std::vector<RK_Long>{63, 127, 191, 255}));
        given = {given.caller, {}, true};
        EXPECT_EQ(517, blur(src, dst));
        EXPECT_EQ(given.lines, std::vector<RK_Long>{63});
    });
}
