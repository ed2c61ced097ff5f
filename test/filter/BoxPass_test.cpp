// The box blur's vector bodies against the plain one, stage by stage.
#include <cmath>

#include "RK/indep/filter/RKp_BoxLine.h"
#include "test/filter/Blurs.h"
#include "test/plain/Compare.h"

namespace {

using test::Canvas;

template <class P>
class BoxPassDepth : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(BoxPassDepth, Depths);

constexpr float kRadii[] = {0.0f,   1e-9f,   0.25f,   0.5f,    0.3f,    1.0f,    1.5f,      2.0f,   2.7f,
                            3.99f,  5.0f,    7.5f,    8.3f,    8.5f,    12.0f,   20.f,      31.25f, 31.75f,
                            40.1f,  63.5f,   64.0f,   100.0f,  127.0f,  128.0f,  200.99f,   300.f,  511.5f,
                            999.0f, 1000.3f, 4094.5f, 4095.0f, 4095.5f, 4096.0f, 70000.25f, 2e9f};

// Any stage that a blur could make, of canvases wide enough; with odd shapes and, at float, odd values.
template <class P>
void compare(test::Random& r) {
    const int length = 1 + static_cast<int>(r.below(r.below(4) == 0 ? 700 : 60)),
              lines = 1 + static_cast<int>(r.below(16));
    const int out_length = 1 + static_cast<int>(r.below(r.below(4) == 0 ? 800 : 80));
    const bool columns = r.below(2) != 0, out_columns = r.below(2) != 0;
    Canvas<P> in(columns ? lines : length, columns ? length : lines);
    Canvas<P> want(out_columns ? lines : out_length, out_columns ? out_length : lines);
    for (int y = 0; y < in.height(); ++y)
        for (int x = 0; x < in.width(); ++x)
            in(x, y) = r.below(50) == 0 ? test::wildPixel<P>(r) : test::pixel<P>(r);
    want.random(r.next());
    Canvas<P> got(want);

    RKp_BoxStage<P> stage = {};
    const auto pitch = [](const Canvas<P>& c) {
        return static_cast<ptrdiff_t>(c.world->record.rowbytes / static_cast<int32_t>(sizeof(P)));
    };
    stage.in = in.picture.row(0);
    stage.in_step = columns ? pitch(in) : 1;
    stage.in_across = columns ? 1 : pitch(in);
    stage.out_step = out_columns ? pitch(want) : 1;
    stage.out_across = out_columns ? 1 : pitch(want);
    stage.from.first = static_cast<int64_t>(r.below(50)) - 25;
    stage.from.end = stage.from.first + length;
    stage.to.first = stage.from.first + static_cast<int64_t>(r.below(60)) - 40;
    stage.to.end = stage.to.first + out_length;
    stage.part = stage.to;
    stage.in_first = stage.from.first, stage.out_first = stage.to.first;
    stage.lines = lines;
    stage.radius = kRadii[r.below(std::size(kRadii))];
    stage.reach = static_cast<int32_t>(std::ceil(stage.radius));
    stage.flags = r.below(3) == 0 ? 15 + 16 * r.below(2) : r.below(32);
    stage.out = want.picture.row(0);
    RKp_BoxPass(stage);
    stage.out = got.picture.row(0);
    RKp_BoxState state;
    if (r.below(2) == 0) {
        RKp_BoxPass_SSE2(stage);
    } else {  // piece by piece
        stage.state = &state;
        for (stage.part.end = stage.to.first; stage.part.end < stage.to.end;) {
            stage.part.first = stage.part.end;
            stage.part.end = std::min(stage.to.end, stage.part.end + 1 + r.below(40));
            RKp_BoxPass_SSE2(stage);
        }
    }
    ASSERT_TRUE(got.picture.guardsWhole() && want.picture.guardsWhole());
    for (int y = 0; y < want.height(); ++y) {
        const int x = test::firstDifference(&want(0, y), &got(0, y), want.width());
        ASSERT_EQ(x, -1) << "at " << x << "," << y << " radius " << stage.radius << " flags " << stage.flags
                         << ": " << test::show(want(x, y)) << " and " << test::show(got(x, y));
    }
}

TYPED_TEST(BoxPassDepth, TheVectorsGiveThePlainBodysBytes) {
    test::Random r(sizeof(TypeParam));
    const int rounds = test::amount(3000);
    for (int i = 0; i < rounds; ++i) ASSERT_NO_FATAL_FAILURE(compare<TypeParam>(r)) << i;
}

TYPED_TEST(BoxPassDepth, TheVectorsRefuseAStageThatDivides) {
    RKp_BoxStage<TypeParam> stage = {};
    stage.divide = true;
    EXPECT_EQ(3, test::thrownBy([&] { RKp_BoxPass_SSE2(stage); }));
    EXPECT_TRUE(test::onlyVerification("untested SSE2 codepath in blur"));
}

// Along a line that rises by one level per window width the sum takes every value there is, one after the
// other.
TEST(BoxPass, EveryQuotientIsExactAtDepth8) {
    for (const int32_t reach : {1, 2, 3, 7, 8, 9, 31, 50, 63, 64, 100, 127, 128, 500})
        for (const int32_t f : {0, 1, 255, 256, 512, 716, 768, 1020, 1023}) {
            const int width = 2 * reach + 1, length = 256 * width;
            Canvas<RK_Pixel8> in(length, 1), want(length, 1), got(length, 1);
            for (int x = 0; x < length; ++x) {
                const auto level = static_cast<uint8_t>(x / width);
                in(x, 0) = {level, static_cast<uint8_t>(255 - level), static_cast<uint8_t>(x % 256), 255};
            }
            RKp_BoxStage<RK_Pixel8> stage = {};
            stage.in = in.picture.row(0);
            stage.in_step = stage.out_step = 1;
            stage.from = stage.to = stage.part = {0, length};
            stage.lines = 1;
            stage.reach = reach;
            stage.radius = static_cast<float>(reach) - static_cast<float>(f) / 1024;
            stage.flags = 15;
            stage.out = want.picture.row(0);
            RKp_BoxPass(stage);
            stage.out = got.picture.row(0);
            RKp_BoxPass_SSE2(stage);
            ASSERT_TRUE(want.picture == got.picture) << reach << " " << f;
        }
}

}  // namespace
