// Alpha guessing against its twin on small pictures whose pixels lie at the edge of every test.
#include <gtest/gtest.h>

#include "RK/indep/filter/RK_GuessAlpha.h"
#include "test/filter/Bitmap.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainGuess.h"

namespace {

using test::Random;

uint8_t byteOf(int v) { return static_cast<uint8_t>(std::min(std::max(v, 0), 255)); }

// A matte, a clear pixel of it, and visible ones as far from it as their alpha, a step less or a step more.
class NearMatte {
  public:
    explicit NearMatte(Random& r) : r_(r) {
        const uint32_t kind = r.below(4);
        const auto channel = [&] {
            return kind == 0 ? uint8_t{0} : kind == 1 ? uint8_t{255} : test::channel(r, uint8_t{});
        };
        matte_ = {0, channel(), channel(), channel()};
        few_colours_ = r.below(3) == 0;
        strays_ = r.below(3) == 0;
        least_ = test::channel(r, uint8_t{});
        clear_ = r.below(5);
    }
    RK_Pixel8 pixel() {
        if (r_.below(4) < clear_) {
            RK_Pixel8 p = matte_;
            if (strays_ && r_.below(6) == 0) p.green = static_cast<uint8_t>(p.green ^ 1);
            return p;
        }
        const int alpha =
            std::max<int>(1, r_.below(3) != 0 ? least_ : least_ + static_cast<int>(r_.below(3)));
        const auto beside = [&](uint8_t m) {
            const int far = r_.below(24) == 0 ? alpha + 1 : alpha - static_cast<int>(r_.below(2));
            return byteOf(r_.below(2) == 0 ? m + far : m - far);
        };
        if (few_colours_) return {byteOf(alpha), matte_.red, matte_.green, matte_.blue};
        return {byteOf(alpha), beside(matte_.red), beside(matte_.green), beside(matte_.blue)};
    }

  private:
    Random& r_;
    RK_Pixel8 matte_;
    bool few_colours_, strays_;
    uint8_t least_;
    uint32_t clear_;
};

TEST(GuessAlphaAgainstPlain, EqualAtTheEdgeOfEveryTest) {
    Random r(510);
    test::GuardedRows pages;
    const int count = test::amount(20000);
    int mattes[3] = {}, others[3] = {};  // white, black, another; by kind
    for (int i = 0; i < count; ++i) {
        const int width = 1 + static_cast<int>(r.below(5)), height = 1 + static_cast<int>(r.below(4));
        test::World<RK_Pixel8> world(r, width, height);
        NearMatte pixels(r);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) world.picture.at(x, y) = pixels.pixel();
        const plain::Guess expected = plain::guessAlpha(world.record);
        test::guardSome(r, pages, world);

        const bool from_bitmap = r.below(2) == 0, with_message = r.below(2) == 0;
        test::Bitmap bitmap(static_cast<int16_t>(width), static_cast<int16_t>(height));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) bitmap.at(x, y) = plain::at<RK_Pixel8>(world.record, x, y);
        RK_LayerDef blank = world.record;  // not looked at beside a bitmap
        blank.width = 0;
        RAS_World** const handle = from_bitmap ? bitmap.handle() : nullptr;
        const RK_LayerDef* const layer = from_bitmap ? (r.below(2) == 0 ? nullptr : &blank) : &world.record;

        const RK_Pixel8 untouched = {1, 2, 3, 4};
        int32_t kind = -1;
        RK_Pixel8 matte = untouched;
        char message[RK_kGuessAlphaMessageBytes] = "as before";
        ASSERT_EQ(0, with_message ? RK_GuessAlphaMessage(handle, layer, nullptr, &kind, &matte, message)
                                  : RK_GuessAlpha(handle, layer, nullptr, &kind, &matte));
        ASSERT_EQ(kind, expected.kind);
        ASSERT_EQ(test::show(matte), test::show(expected.kind == 1 ? expected.matte : untouched));
        if (with_message) {
            ASSERT_STREQ(message, expected.kind == 2 ? "Unable to guess alpha channel." : "");
        }
        ASSERT_EQ(bitmap.locks(), 0);
        ++others[kind];
        if (kind == 1) ++mattes[matte.red == 255 ? 0 : matte.red == 0 ? 1 : 2];
    }
    if (count < 1000) return;
    for (const int times : others) EXPECT_GT(times, count / 50);
    for (const int times : mattes) EXPECT_GT(times, count / 200);
}

}  // namespace
