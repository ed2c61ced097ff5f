// Generators, samplers and combiners: their contract, copies, moves, channel rules, averages.
#include "RK/indep/retime/AlphaMatter.h"
#include "RK/indep/retime/CopySamplers.h"
#include "RK/indep/retime/FnAccumulators.h"
#include "RK/indep/retime/FnMoveSampler.h"
#include "test/retime/RetimeTest.h"

using namespace retime_test;

namespace {

struct Adder final : GeneralCombiner<Adder, FnFloatMap, FnFloatMap, FnFloatMap> {
    void Pixel(float a, float b, float& out, int32_t) { out = a + b; }
};
struct Placer final : GeneralSamplerPos<Placer, FnFloatMap, FnFloatMap> {
    void Pixel(float in, float& out, int32_t x, int32_t y, int32_t) {
        out = in + static_cast<float>(x) + 100.0f * static_cast<float>(y);
    }
};

template <class Work>
std::string Said(Work&& work) {
    testing::internal::CaptureStderr();
    work();
    return testing::internal::GetCapturedStderr();
}

TEST(Imagers, SayWhatIsWrongWithADestination) {
    FnFloatMap source(2, 2), empty;
    ColouredFrameGenerator<float, float, 1> fill(1.0f);
    EXPECT_EQ(Said([&] { fill.process(nullptr); }), "Map passed into Generator::process is NULL\n");
    EXPECT_EQ(Said([&] { fill.process(&empty); }), "Map passed into Generator::process is bogus\n");
    SimpleCopySampler<float, float> copy;
    EXPECT_EQ(Said([&] { copy.process(&source, nullptr); }), "Map passed into Generator::process is NULL\n");
    EXPECT_EQ(Said([&] { copy.process(&source, &empty); }), "Map passed into Sampler::process is bogus\n");
    Adder add;
    EXPECT_EQ(Said([&] { add.process(&source, &source, nullptr); }), "Map passed into Combiner::process is NULL\n");
    EXPECT_EQ(Said([&] { add.process(&source, &source, &empty); }), "Map passed into Generator::process is bogus\n");
}

TEST(Imagers, LeaveTheDestinationWithoutAWordForANullSource) {
    FnFloatMap dest(2, 2);
    dest.Fill(7);
    SimpleCopySampler<float, float> copy;
    Adder add;
    EXPECT_EQ(Said([&] {
                  copy.process(nullptr, &dest);
                  add.process(nullptr, &dest, &dest);
              }),
              "");
    EXPECT_EQ(dest.Row(0)[0], 7);
}

TEST(Imagers, ASourceWithoutPixelsReadsAsItsDefault) {
    FnFloatMap source, dest(2, 2);
    source.SetDefault(3);
    SimpleCopySampler<float, float> copy;
    copy.process(&source, &dest);
    EXPECT_EQ(dest.Row(1)[1], 3);
}

TEST(Imagers, RestrictedRegionsAreClampedAndTheRestStays) {
    FnFloatMap dest(4, 4);
    ColouredFrameGenerator<float, float, 1> fill(1.0f);
    fill.SetRegion({2, -5, 90, 2});
    fill.process(&dest);
    EXPECT_EQ(dest.Row(1)[2], 1);
    EXPECT_EQ(dest.Row(1)[1], 0);
    EXPECT_EQ(dest.Row(2)[3], 0);
}

TEST(Imagers, CopiesFollowEveryEdgeMode) {
    plain::Grid<float> grid = noise(5, 4, 1);
    FnFloatMap source;
    toMap(grid, source);
    source.SetDefault(0.5f);
    source.SetRanges(1, 3, 1, 2);
    for (int32_t mode = 0; mode < 4; ++mode)
        for (int32_t count : {1, 2, 3}) {
            Threads threads(count);
            source.SetEdgeModes(mode, mode);
            FnFloatMap dest(23, 19), placed(23, 19), added(23, 19);
            SimpleCopySampler<float, float>().process(&source, &dest);
            Placer().process(&source, &placed);
            Adder().process(&source, &dest, &added);
            for (int y = 0; y < 19; ++y)
                for (int x = 0; x < 23; ++x) {
                    ASSERT_EQ(dest.Row(y)[x], source.Read(x, y)) << mode << " " << x << " " << y;
                    ASSERT_EQ(placed.Row(y)[x], source.Read(x, y) + float(x) + 100.0f * float(y));
                    ASSERT_EQ(added.Row(y)[x], source.Read(x, y) * 2);
                }
        }
}

TEST(Imagers, AnInterruptStopsBetweenRows) {
    Threads threads(1);
    for (int stop = 0; stop < 12; ++stop) {
        FnFloatMap dest(3, 8);
        Stopper stopper{stop, 5};
        InterruptRecord record;
        record.refcon = &stopper;
        record.callback = Stopper::Call;
        ColouredFrameGenerator<float, float, 1> fill(1.0f);
        fill.SetInterrupt(&record);
        fill.process(&dest);
        const bool stopped = stopper.answers < 0;
        EXPECT_EQ(record.error, stopped ? 5 : 0);
        EXPECT_EQ(dest.Row(7)[0], stopped ? 0.0f : 1.0f);
    }
}

// ---- Moves ----------------------------------------------------------------------------------------------

struct Triangle : KernelContainer<float> {
    float value(float position, float radius) const override {
        const float d = std::fabs(position);
        return d < radius ? 1.0f - d / radius : 0.0f;
    }
};

TEST(FnMoveSampler, AffineModesAgreeWithThePlainForm) {
    plain::Grid<float> grid = noise(9, 7, 4);
    grid.edge = 'm';
    FnFloatMap source;
    toMap(grid, source);
    const float m[9] = {0.7f, 0.2f, 0, -0.3f, 1.1f, 0, 1.5f, -2.25f, 1};
    for (bool flagged : {false, true})
        for (int32_t mode : {0, 1}) {
            FnFloatMap dest(12, 10);
            FnMoveSampler<float, float, 1> move;
            std::copy(m, m + 9, move.matrix);
            move.mode = mode;
            move.flagged = flagged;
            move.SetRegion({2, 1, 12, 10});
            move.process(&source, &dest);
            for (int y = 1; y < 10; ++y) {
                float u = 2.5f * m[0] + (float(y) + 0.5f) * m[3] + m[6];
                float v = 2.5f * m[1] + (float(y) + 0.5f) * m[4] + m[7];
                for (int x = 2; x < 12; ++x, u += m[0], v += m[1])
                    ASSERT_EQ(dest.Row(y)[x],
                              mode == 0 ? grid.read(plain::down(u), plain::down(v)) : plain::bilinear(grid, u, v));
            }
            EXPECT_EQ(dest.Row(0)[5], 0.0f);
        }
}

TEST(FnMoveSampler, ProjectiveDividesByItsThirdCoordinate) {
    plain::Grid<float> grid = noise(9, 7, 4);
    FnFloatMap source, dest(6, 5);
    toMap(grid, source);
    FnMoveSampler<float, float, 1> move;
    const float m[9] = {1, 0, 0.05f, 0, 1, -0.03f, 0, 0, 1};
    std::copy(m, m + 9, move.matrix);
    move.mode = 1;
    move.projective = true;
    move.process(&source, &dest);
    for (int y = 0; y < 5; ++y) {
        const float cy = float(y) + 0.5f;
        float u = 0.5f, v = cy, w = 0.5f * 0.05f + cy * -0.03f + 1.0f;
        for (int x = 0; x < 6; ++x, u += 1, w += 0.05f) ASSERT_EQ(dest.Row(y)[x], plain::bilinear(grid, u / w, v / w));
    }
}

TEST(FnMoveSampler, OtherModesAndKernelModesWithoutAKernelWriteNothing) {
    FnFloatMap source(4, 4), dest(4, 4);
    source.Fill(1);
    for (int32_t mode : {-1, 2, 3, 4, 5, 77}) {
        FnMoveSampler<float, float, 1> move;
        move.mode = mode;
        move.process(&source, &dest);
        EXPECT_EQ(dest.Row(2)[2], 0.0f) << mode;
    }
}

TEST(FnMoveSampler, KernelModesSumRowsThenColumns) {
    plain::Grid<float> grid = noise(9, 7, 8);
    grid.edge = 'c';
    FnFloatMap source;
    toMap(grid, source);
    Triangle shape;
    FnKernelManager kernels(&shape);
    ASSERT_TRUE(kernels.Request(4, 1.5f, 2.0f, FnKernelManager::kCompute));
    for (int32_t threads_wanted : {1, 3})
        for (int32_t mode = 2; mode <= 4; ++mode) {
            Threads threads(threads_wanted);
            FnFloatMap dest(8, 6), flagged(8, 6);
            FnMoveSampler<float, float, 1> move;
            move.SetScaling(1.1f);
            move.mode = mode;
            move.SetKernels(&kernels);
            move.process(&source, &dest);
            move.flagged = true;
            move.process(&source, &flagged);
            EXPECT_EQ(flagged.Row(3)[3], mode == 2 ? dest.Row(3)[3] : 0.0f);
            const float v = 3.5f * 1.1f;
            float u = 0.5f * 1.1f;
            for (int x = 0; x < 8; ++x, u += 1.1f) {
                const int ix = plain::down(u - 0.5f), iy = plain::down(v - 0.5f);
                float tx[5], ty[5], sx = 0, sy = 0, sum = 0;
                for (int i = -2; i <= 2; ++i) {
                    sx += tx[i + 2] = shape.value(float(i) - plain::part(u - 0.5f), 1.5f);
                    sy += ty[i + 2] = shape.value(float(i) - plain::part(v - 0.5f), 2.0f);
                }
                for (int i = 0; i < 5; ++i) tx[i] /= sx, ty[i] /= sy;
                for (int j = 0; j < 5; ++j)
                    for (int i = 0; i < 5; ++i) sum += grid.read(ix + i - 2, iy + j - 2) * (ty[j] * tx[i]);
                ASSERT_EQ(dest.Row(3)[x], sum) << x;
            }
        }
}

TEST(FnMoveSampler, ADualMoverStoresThroughTheDepthsRounding) {
    FnPicture<FnPixelFloat> source(2, 2);
    source.Fill(FnMakePixel<FnPixelFloat>(254.5f, 1.5f, 300.0f, -3.0f));
    source.SetEdgeModes(kFnClamp, kFnClamp);
    FnPicture<FnPixel8> dest(2, 2);
    FnDualMoveSampler<FnPixel8, FnPixelFloat, 0xFF, FnPixelFloat, FnPixelFloat> move;
    move.mode = 1;
    move.process(&source, &dest);
    EXPECT_EQ(dest.Row(1)[1].a, 254);
    EXPECT_EQ(dest.Row(1)[1].r, 2);
    EXPECT_EQ(dest.Row(1)[1].g, 255);
    EXPECT_EQ(dest.Row(1)[1].b, 0);
}

// ---- Channel rules and averages -------------------------------------------------------------------------

TEST(AlphaMatter, AppliesItsFourRulesAtEachDepth) {
    FnPicture<FnPixel8> in8(1, 1), out8(1, 1);
    in8.Fill(FnMakePixel<FnPixel8>(200, 10, 20, 30));
    const unsigned char expected[6][4] = {{200, 10, 20, 30}, {200, 245, 235, 225}, {200, 200, 200, 200},
                                          {55, 55, 55, 55},  {0, 0, 0, 0},         {0, 0, 0, 0}};
    for (int32_t mode : {0, 1, 2, 3, 4, -1}) {
        out8.Fill(FnPixel8{});
        AlphaMatter<FnPixel8, FnPixelFloat, 0xFF> matter(mode);
        matter.process(&in8, &out8);
        const FnPixel8& p = out8.Row(0)[0];
        const unsigned char* e = expected[mode < 0 ? 5 : mode];
        EXPECT_TRUE(p.a == e[0] && p.r == e[1] && p.g == e[2] && p.b == e[3]) << mode;
    }
    FnPicture<FnPixel16> in16(1, 1), out16(1, 1);
    in16.Fill(FnMakePixel<FnPixel16>(40000, 1, 32768, 65535));
    AlphaMatter<FnPixel16, FnPixelFloat, 0x8000> copy16(0), invert16(1);
    copy16.process(&in16, &out16);
    EXPECT_EQ(out16.Row(0)[0].b, 65535);
    invert16.process(&in16, &out16);
    EXPECT_EQ(out16.Row(0)[0].a, 32768);
    EXPECT_EQ(out16.Row(0)[0].r, 32767);
    EXPECT_EQ(out16.Row(0)[0].b, 0);
    FnPicture<FnPixelFloat> inf(1, 1), outf(1, 1);
    inf.Fill(FnMakePixel<FnPixelFloat>(2.0f, 3.0f, -1.0f, 0.25f));
    AlphaMatter<FnPixelFloat, FnPixelFloat, 1> invert(1);
    invert.process(&inf, &outf);
    EXPECT_EQ(outf.Row(0)[0].a, 2.0f);
    EXPECT_EQ(outf.Row(0)[0].r, -2.0f);
    EXPECT_EQ(outf.Row(0)[0].g, 2.0f);
}

TEST(AlphaMatter, ASourceOfAnotherSizeIsReadByItsEdgeRules) {
    FnPicture<FnPixel8> in(1, 1), out(3, 2);
    in.Fill(FnMakePixel<FnPixel8>(1, 2, 3, 4));
    in.SetEdgeModes(kFnClamp, kFnClamp);
    AlphaMatter<FnPixel8, FnPixelFloat, 0xFF>(0).process(&in, &out);
    EXPECT_EQ(out.Row(1)[2].b, 4);
}

TEST(FnAccumulators, AverageAndRoundAndClamp) {
    FnPicture<FnPixel8> picture(2, 1);
    FnAccumulatorMap sum(2, 1);
    FnIntAccumulator<FnPixel8, FnPixelFloat, 0xFF> add;
    for (unsigned char v : {10, 11}) {
        picture.Fill(FnMakePixel<FnPixel8>(255, v, 0, 255));
        add.process(&picture, &sum);
    }
    EXPECT_EQ(add.count, 2.0f);
    FnFloatDeaccumulator<FnPixel8, FnPixelFloat, 0xFF> divide(2.0f);
    divide.process(&sum, &picture);
    EXPECT_EQ(picture.Row(0)[1].r, 10);  // 10.5 goes to even
    EXPECT_EQ(picture.Row(0)[1].b, 255);
    for (float divisor : {0.0f, 1e-38f, -1e-38f}) {
        FnFloatDeaccumulator<FnPixel8, FnPixelFloat, 0xFF> zero(divisor);
        zero.process(&sum, &picture);
        EXPECT_EQ(picture.Row(0)[0].a, 0);
    }
    FnPicture<FnPixelFloat> wide(1, 1);
    FnAccumulatorMap one(1, 1);
    FnPixelSum p;
    p.a = 2, p.r = -4, p.g = 0.5f, p.b = NAN;
    one.Fill(p);
    FnFloatDeaccumulator<FnPixelFloat, FnPixelFloat, 1> cut(1.0f);
    cut.process(&one, &wide);
    EXPECT_EQ(wide.Row(0)[0].a, 1.0f);
    EXPECT_EQ(wide.Row(0)[0].r, 0.0f);
    EXPECT_EQ(wide.Row(0)[0].b, 0.0f);
}

TEST(FnAccumulators, PremultiplyByAlphaOverFullAndBack) {
    FnPicture<FnPixel16> picture(1, 1);
    picture.Fill(FnMakePixel<FnPixel16>(16384, 20000, 32768, 0));
    FnAccumulatorMap sum(1, 1);
    FnIntAccumulator<FnPixel16, FnPixelFloat, 0x8000> add;
    add.premultiply = true;
    add.process(&picture, &sum);
    EXPECT_EQ(sum.Row(0)[0].r, 10000.0f);
    FnFloatDeaccumulator<FnPixel16, FnPixelFloat, 0x8000> divide(1.0f);
    divide.premultiply = true;
    divide.process(&sum, &picture);
    EXPECT_EQ(picture.Row(0)[0].r, 20000);
    EXPECT_EQ(picture.Row(0)[0].g, 32768);
}

}  // namespace
