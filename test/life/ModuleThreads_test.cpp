// The sample module that spreads passes over threads: every pass that runs through its slot gives the same
// bytes.
#include <dlfcn.h>

#include <thread>

#include "RK/indep/frame/RK_Birth.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/passes/RK_Premul.h"
#include "test/filter/Blurs.h"
#include "test/life/Child.h"

using namespace test;

namespace {

// The module's counter of that name, as the package sees it.
const int32_t* counter(const char* name) {
    const std::string file = moduleFolder("RK_ModuleThreads") + "/RK_ModuleThreads.RVX";
    static void* const object = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    return object ? static_cast<const int32_t*>(dlsym(object, name)) : nullptr;
}

template <class Work>
void withThreads(int32_t threads, Work&& work) {
    inChild([&] {
        RefHost::PrintReports(false);
        RefHost::SetThreadCount(threads);
        RefHost::SetPluginFolder(moduleFolder("RK_ModuleThreads"));
        ASSERT_NE(counter("RK_ModuleThreads_calls"), nullptr);
        ASSERT_EQ(RK_Birth(), 0);
        RK_SlotInfo info;
        ASSERT_EQ(RK_GetSlotInfo(53, &info), 0);
        ASSERT_EQ(info.form, RK_kSlotOverride);
        work();
        EXPECT_TRUE(RefHost::TakeReports().empty());
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

// pass(canvas) through the module and through the default body.
template <class P, class Pass>
void compare(const Canvas<P>& before, Pass&& pass) {
    Canvas<P> threaded(before), alone(before);
    pass(threaded);
    void* const module = RKp_G_OverFuncs[53];
    RKp_G_OverFuncs[53] = reinterpret_cast<void*>(RK_IterateGeneric_Static);
    pass(alone);
    RKp_G_OverFuncs[53] = module;
    EXPECT_TRUE(threaded.picture == alone.picture);
}

template <class P>
void blurs() {
    Canvas<P> src(150, 141), dst(130, 145);
    src.random(1, false).at(3, -5);
    dst.random(2).at(-4, 6);
    for (const int32_t passes : {0, 1, 3})
        for (const float radius : {0.0f, 2.0f, 8.3f})
            for (const uint32_t flags : {15u, 31u, 1u, 6u})
                for (const int32_t premultiplied : {0, 1})
                    for (const int32_t directions : {0, 1, 2, 3}) {
                        Blur blur;
                        blur.passes = passes, blur.radius = radius, blur.flags = flags;
                        blur.src_premultiplied = premultiplied, blur.dst_premultiplied = premultiplied;
                        blur.src_direction = directions & 1, blur.dst_direction = directions >> 1;
                        compare(dst, [&](Canvas<P>& out) { EXPECT_EQ(0, blur(src, out)); });
                    }
    // In place, through scratch.
    Blur blur;
    blur.force_copy = 1;
    for (const bool columns : {false, true})
        compare(src, [&](Canvas<P>& out) { EXPECT_EQ(0, blur.columns(columns)(out, out)); });
    compare(src, [&](Canvas<P>& out) { EXPECT_EQ(0, RK_Premul(nullptr, 1, &out.world->record)); });
}

}  // namespace

TEST(ModuleThreads, GiveTheSameBytesForEveryBlur) {
    for (const int32_t threads : {2, 5})
        withThreads(threads, [&] {
            blurs<RK_Pixel8>();
            blurs<RK_Pixel16>();
            blurs<RK_PixelFloat>();
            const int32_t calls = *counter("RK_ModuleThreads_calls");
            EXPECT_GT(calls, 800);
            EXPECT_EQ(*counter("RK_ModuleThreads_helpers"), calls * (threads - 1));
        });
}

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
