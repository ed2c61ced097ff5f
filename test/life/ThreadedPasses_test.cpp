// Every pass gives the same bytes with the module that spreads passes over threads as without it.
#include <thread>

#include "RK/indep/filter/RK_MergeMaskAlpha.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/passes/RK_Fill.h"
#include "RK/indep/passes/RK_Premul.h"
#include "test/filter/Blurs.h"
#include "test/filter/Masks.h"
#include "test/life/Threads.h"

using namespace test;

namespace {

// pass(canvas) through the module and through the package's own body. Gives the calls that had helpers.
template <class P, class Pass>
int32_t compare(const Canvas<P>& before, Pass&& pass) {
    Canvas<P> threaded(before), alone(before);
    const int32_t calls = threadedCalls();
    pass(threaded);
    const int32_t made = threadedCalls() - calls;
    withoutThreads([&] { pass(alone); });
    EXPECT_TRUE(threaded.picture == alone.picture);
    EXPECT_EQ(threadedCalls() - calls, made);
    return made;
}

// The same for pass(), which gives a mask's samples; the noise begins alike.
template <class Pass>
int32_t compareMasks(Pass&& pass) {
    const auto noise = RKp_G_Noise;
    const int32_t calls = threadedCalls();
    const auto threaded = pass();
    const int32_t made = threadedCalls() - calls;
    const auto after = RKp_G_Noise.cursor;
    RKp_G_Noise = noise;
    withoutThreads([&] { EXPECT_TRUE(pass() == threaded); });
    EXPECT_EQ(RKp_G_Noise.cursor, after);
    return made;
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
                        EXPECT_EQ(1, compare(dst, [&](Canvas<P>& out) { EXPECT_EQ(0, blur(src, out)); }));
                    }
    // In place, through scratch.
    Blur blur;
    blur.force_copy = 1;
    for (const bool columns : {false, true})
        compare(src, [&](Canvas<P>& out) { EXPECT_EQ(0, blur.columns(columns)(out, out)); });
}

// Filling, premultiplying and iterating, which stay on the calling thread.
template <class P>
void plainPasses() {
    Canvas<P> world(97, 83);
    world.random(5, false);
    const auto alone = [&](auto&& pass) {
        EXPECT_EQ(0, compare(world, [&](Canvas<P>& out) { EXPECT_EQ(0, pass(&out.world->record)); }));
    };
    const GEO_Rect part = {3, 4, 70, 80};
    const RK_Pixel8 colour = {200, 10, 20, 30};
    alone([&](RK_LayerDef* out) {
        if (sizeof(P) == 16) return RK_FillFloat(nullptr, nullptr, &part, out);
        return sizeof(P) == 8 ? RK_Fill16(nullptr, nullptr, &part, out)
                              : RK_Fill(nullptr, &colour, &part, out);
    });
    for (const RK_Long forward : {0, 1}) {
        alone([&](RK_LayerDef* out) { return RK_Premul(nullptr, forward, out); });
        alone([&](RK_LayerDef* out) { return RK_PremulRect(nullptr, forward, &part, out); });
        alone([&](RK_LayerDef* out) {
            return RK_PremulColorRect(nullptr, out, &colour, forward, nullptr, out);
        });
    }
    alone([&](RK_LayerDef* out) {
        return RK_Iterate(
            nullptr, 0, 0, out, nullptr, nullptr,
            [](void*, RK_Long x, RK_Long y, void* in, void* to) -> RK_Long {
                P p = *static_cast<P*>(in);
                std::swap((x + y) % 3 == 0 ? p.red : p.green, p.blue);
                *static_cast<P*>(to) = p;
                return 0;
            },
            out);
    });
}

template <class S>
void masks() {
    // Above the size below which an accumulation stays on its thread.
    constexpr int32_t kWidth = 321, kHeight = 259;
    const Mask<S> a(kWidth, kHeight, 1), b(kWidth, kHeight, 2);
    const GEO_Rect rect = {2, 3, kHeight - 4, kWidth - 5};
    const Point point = {1, 2};
    const auto onCopy = [&](auto&& pass) {
        return compareMasks([&] {
            Mask<S> out(kWidth, kHeight);
            out.set(b.samples());
            EXPECT_EQ(0, pass(&out));
            return out.samples();
        });
    };
    for (const int32_t mode : {-1, 1, 2, 3, 4, 5, 6, 7}) {
        if (sizeof(S) != 4) {
            EXPECT_EQ(1, onCopy([&](RK_UnoBuffer* out) {
                          return RK_AccumulateUnoBuffers(nullptr, &a, mode, rect, point, out);
                      }));
            EXPECT_EQ(1, onCopy([&](RK_UnoBuffer* out) {
                          return RK_AccumulateUnoBuffers(nullptr, &a, mode, 0.8f, 0.3f, rect, point, out);
                      }));
        }
        EXPECT_EQ(1, onCopy([&](RK_UnoBuffer* out) {
                      return RK_TransferUnoBuffers(nullptr, &a, &b, mode, rect, point, out);
                  }));
    }
    EXPECT_EQ(sizeof(S) != 4, onCopy([](RK_UnoBuffer* out) { return RK_InvertUnoBuffer(nullptr, out); }));
    EXPECT_EQ(sizeof(S) != 4,
              onCopy([](RK_UnoBuffer* out) { return RK_InvertAndFadeUnoBuffer(nullptr, 0x9000, out); }));
    onCopy([](RK_UnoBuffer* out) { return RK_FadeUnoBuffer(nullptr, 0.3f, out); });
    const Mask<uint16_t> deep(kWidth, kHeight, 3);
    EXPECT_EQ(
        1, onCopy([&](RK_UnoBuffer* out) { return RK_ConvertDeepUnoBuffer(nullptr, &deep, rect, 2, out); }));
}

template <class P, class S>
void merges() {
    Canvas<P> world(120, 90);
    world.random(4, false);
    const Mask<S> mask(80, 60, 6);
    EXPECT_EQ(1, compare(world, [&](Canvas<P>& out) {
                  RK_MergeMaskAlpha(nullptr, 11, -7, nullptr, &mask, nullptr, out.world.get());
              }));
}

template <class P>
void shows() {
    Canvas<P> src(60, 50);
    src.random(9, false);
    Canvas<RK_Pixel8> dst(130, 110);
    const RK_PixelFloat even = {1, 0, 0, 0}, odd = {1, 1, 1, 1};
    compare(dst, [&](Canvas<RK_Pixel8>& out) {
        EXPECT_EQ(0, RK_SpecialCasePixelBlit(src.world.get(), {-3, -4}, true, {1, 1}, even, odd,
                                             {0, 0, 110, 130}, out.world.get()));
    });
}

}  // namespace

TEST(ThreadedPasses, EveryBlur) {
    for (const int32_t threads : {2, 5})
        withThreads(threads, [&] {
            blurs<RK_Pixel8>();
            blurs<RK_Pixel16>();
            blurs<RK_PixelFloat>();
            EXPECT_EQ(*threadsCounter("RK_ModuleThreads_helpers"), threadedCalls() * (threads - 1));
        });
}

TEST(ThreadedPasses, EveryOperationOnMasksAndEveryMerge) {
    for (const int32_t threads : {2, 3})
        withThreads(threads, [] {
            masks<uint8_t>();
            masks<uint16_t>();
            masks<float>();
            const Mask<uint8_t> shallow(321, 259, 1);
            compareMasks([&] {
                Mask<uint16_t> out(321, 259, 2);
                EXPECT_EQ(0, RK_AccumulateUnoBuffers(nullptr, &shallow, RK_kUnoAdd, 1, 0.5f, out.rect(),
                                                     {0, 0}, &out));
                return out.samples();
            });
            merges<RK_Pixel8, uint8_t>();
            merges<RK_Pixel16, uint8_t>();
            merges<RK_Pixel16, uint16_t>();
            merges<RK_PixelFloat, uint8_t>();
            merges<RK_PixelFloat, uint16_t>();
        });
}

TEST(ThreadedPasses, PassesThatStayOnTheCallingThread) {
    withThreads(2, [] {
        plainPasses<RK_Pixel8>();
        plainPasses<RK_Pixel16>();
        plainPasses<RK_PixelFloat>();
        shows<RK_Pixel8>();
        shows<RK_Pixel16>();
        shows<RK_PixelFloat>();
    });
}

// The rows of a masked world are asked about one by one, on the calling thread.
TEST(ThreadedPasses, AMaskMergeThatIsStoppedStopsOnEveryThread) {
    withThreads(2, [] {
        struct Given {
            std::thread::id caller;
            int left;
        } given = {std::this_thread::get_id(), 5};
        RK_ProgressInfo progress = {&given,
                                    [](void* refcon) -> RK_Long {
                                        Given& g = *static_cast<Given*>(refcon);
                                        EXPECT_EQ(std::this_thread::get_id(), g.caller);
                                        return --g.left < 0 ? 517 : 0;
                                    },
                                    nullptr};
        Canvas<RK_Pixel8> world(20, 400);
        world.random(1, false);
        const Mask<uint8_t> mask(20, 400, 2);
        try {
            RK_MergeMaskAlpha(&progress, 0, 0, nullptr, &mask, nullptr, world.world.get());
            ADD_FAILURE() << "the merge was not stopped";
        } catch (RK_Long code) {
            EXPECT_EQ(code, 517);
        }
        EXPECT_EQ(given.left, -1);
    });
}
