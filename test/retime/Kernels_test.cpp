// Kernel tables, blurs, zoomers and the image pyramid.
#include "RK/indep/retime/BlurGeneralGauss.h"
#include "RK/indep/retime/FnFilteredPyramid.h"
#include "RK/indep/retime/FnKernels.h"
#include "RK/indep/retime/ImageZoomers.h"
#include "RK/indep/retime/KernelSamplers.h"
#include "test/plain/retime/PlainPyramid.h"
#include "test/retime/RetimeTest.h"

using namespace retime_test;

namespace {

struct Bell : KernelContainer<float> {
    float value(float position, float radius) const override {
        return std::max(0.0f, 1.0f - position * position / (radius * radius));
    }
};

TEST(FnKernel1D, HoldsNormalisedTapsAtIndexMinusFraction) {
    Bell bell;
    FnKernel1D kernel;
    ASSERT_TRUE(kernel.Reserve(2.5f));
    EXPECT_EQ(kernel.Count(), 7);
    kernel.Compute(bell, 0.25f);
    float sum = 0;
    for (int i = -3; i <= 3; ++i) sum += bell.value(float(i) - 0.25f, 2.5f);
    for (int i = -3; i <= 3; ++i) EXPECT_EQ(kernel.taps[i + 3], bell.value(float(i) - 0.25f, 2.5f) / sum);
    EXPECT_FALSE(FnKernel1D().Reserve(NAN));
    EXPECT_FALSE(FnKernel1D().Reserve(1e9f));
    EXPECT_FALSE(FnKernel1D().Reserve(-3.0f));
}

TEST(FnKernelManager, WholePixelGridsUseOnePhase) {
    const double whole[6] = {0.0, 3.0, 1.0, 0.0, 0.0, 2.0};
    EXPECT_EQ(FnPhaseCount(whole), 1);
    const double half[6] = {0.5, 0.0, 1.0, 0.0, 0.0, 1.0};
    EXPECT_EQ(FnPhaseCount(half), 2);
    const double quarters[6] = {0.5, 0.25, 1.0, 0.0, 0.0, 1.0};
    EXPECT_EQ(FnPhaseCount(quarters), 4);
    const double third[6] = {1.0 / 3, 0.0, 1.0, 0.0, 0.0, 1.0};
    EXPECT_GE(FnPhaseCount(third), 3);
    const double awkward[6] = {3.14159265, 2.7182818, NAN, 1e-9, -0.333, INFINITY};
    EXPECT_EQ(FnPhaseCount(awkward), 1000);
}

TEST(FnKernelManager, ReusesSetsByPhaseCountAndDropsThemForANewRadius) {
    Bell bell;
    FnKernelManager manager(&bell);
    ASSERT_TRUE(manager.Request(4, 2, 2, FnKernelManager::kPhases));
    const FnPrecalculatedKernel* four = manager.Current();
    ASSERT_TRUE(manager.Request(2, 2, 2, FnKernelManager::kPhases));
    EXPECT_EQ(manager.Store().Count(), 2);
    ASSERT_TRUE(manager.Request(4, 2, 2, FnKernelManager::kPhases));
    EXPECT_EQ(manager.Current(), four);
    EXPECT_EQ(manager.Store().Count(), 2);
    ASSERT_TRUE(manager.Request(4, 2, 3, FnKernelManager::kPhases));
    EXPECT_EQ(manager.Store().Count(), 1);
    EXPECT_FALSE(FnKernelManager(nullptr).Request(4, 2, 2, FnKernelManager::kPhases));
}

TEST(FnKernelManager, BlendsTheTablesOnEitherSideOfAFraction) {
    Bell bell;
    FnKernelManager manager(&bell);
    for (int phases : {1, 4}) {
        ASSERT_TRUE(manager.Request(phases, 2, 2, FnKernelManager::kPhases));
        FnKernelScratch scratch;
        ASSERT_TRUE(manager.Reserve(&scratch));
        manager.Lookup(7.4f, -2.0f, &scratch);
        const FnPrecalculatedKernel& set = *manager.Current();
        const float f = (7.4f - 7.0f) * float(phases);
        const int a = int(f);
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(scratch.x.taps[i], plain::mix(set.x[a].taps[i], set.x[a + 1].taps[i], f - float(a)));
            EXPECT_EQ(scratch.y.taps[i], set.y[0].taps[i]);
        }
        FnKernel1D last;
        ASSERT_TRUE(last.Reserve(2));
        last.Compute(bell, 0.99999f);
        EXPECT_EQ(set.x[phases].taps[3], last.taps[3]);
    }
}

TEST(FnKernelManager, ReportsEveryFailedAllocation) {
    Bell bell;
    const int failures = failEach(
        [&] {
            FnKernelManager manager(&bell);
            const bool made = manager.Request(3, 2, 2, FnKernelManager::kPhases);
            EXPECT_EQ(made, manager.Current() != nullptr);
        },
        [](int) {});
    EXPECT_EQ(failures, 12);
}

TEST(KernelSampler, CentresOnHalfTheCountAndSumsRowsFirst) {
    plain::Grid<float> grid = noise(6, 5, 21);
    grid.edge = 'c';
    FnFloatMap source, dest(6, 5);
    toMap(grid, source);
    const float xs[4] = {0.1f, 0.2f, 0.3f, 0.4f}, ys[3] = {0.5f, 0.25f, 0.125f};
    KernelSampler<FnFloatMap, float, float, float, 1>({xs, 4, ys, 3}).process(&source, &dest);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) {
            float sum = 0;
            for (int j = 0; j < 3; ++j)
                for (int i = 0; i < 4; ++i) sum += (ys[j] * xs[i]) * grid.read(x - 2 + i, y - 1 + j);
            ASSERT_EQ(dest.Row(y)[x], sum);
        }
}

TEST(KernelSampler, TheMaskedFormRenormalisesAndGivesZeroForNoWeight) {
    FnFloatMap source(5, 1), dest(5, 1);
    FnTexture<FnColourSum, FnColourSum> mask(5, 1);
    for (int x = 0; x < 5; ++x) source.Row(0)[x] = float(x + 1);
    mask.Row(0)[1].g = 1;
    const float taps[3] = {0.25f, 0.5f, 0.25f}, one = 1;
    KernelSamplerMasked<FnFloatMap, float, float, float, 1, FnTexture<FnColourSum, FnColourSum>>({taps, 3, &one, 1},
                                                                                                &mask)
        .process(&source, &dest);
    EXPECT_EQ(dest.Row(0)[0], 2.0f);
    EXPECT_EQ(dest.Row(0)[1], 2.0f);
    EXPECT_EQ(dest.Row(0)[2], 2.0f);
    EXPECT_EQ(dest.Row(0)[3], 0.0f);
}

TEST(BlurGeneralGauss, AgreesWithThePlainBlur) {
    for (char edge : {'d', 'c', 'm'})
        for (float sigma : {0.0f, 0.3f, 1.0f, 5.0f / 3.0f, 4.2f, NAN, -1.0f})
            for (int32_t count : {1, 2, 3}) {
                Threads threads(count);
                plain::Grid<float> grid = noise(37, 23, 9);
                grid.edge = edge;
                grid.fallback = 0.25f;
                FnFloatMap source, dest(37, 23);
                toMap(grid, source);
                FnGaussBlur(sigma, sigma).process(&source, &dest);
                ASSERT_EQ(differing(dest, plain::gauss(grid, sigma)), 0) << edge << sigma;
            }
}

TEST(BlurGeneralGauss, ARegionIsBlurredAsPartOfTheWhole) {
    plain::Grid<float> grid = noise(37, 23, 9);
    FnFloatMap source, dest(37, 23);
    toMap(grid, source);
    FnGaussBlur blur(1.5f, 1.5f);
    blur.SetRegion({5, 3, 30, 20});
    blur.process(&source, &dest);
    const plain::Grid<float> all = plain::gauss(grid, 1.5f);
    EXPECT_EQ(dest.Row(3)[5], all.at(5, 3));
    EXPECT_EQ(dest.Row(19)[29], all.at(29, 19));
    EXPECT_EQ(dest.Row(20)[29], 0);
}

TEST(BlurGeneralGauss, ASigmaBeyondAnyMemoryAborts) {
    FnFloatMap source(4, 4), dest(4, 4);
    FnGaussBlur blur(1e20f, 1.0f);
    InterruptRecord record;
    blur.SetInterrupt(&record);
    blur.process(&source, &dest);
    EXPECT_EQ(record.error, kFnNoMemory);
}

TEST(ImageZoomers, SampleByTrueDivisionTruncatedOrBilinear) {
    plain::Grid<float> grid = noise(11, 7, 2);
    grid.edge = 'c';
    FnFloatMap source;
    toMap(grid, source);
    for (int kind = 0; kind < 4; ++kind) {
        FnFloatMap dest(5, 9);
        FnImageZoomSampler<float, float, 1, float, float, 1> zoom;
        zoom.bilinear = kind & 1;
        zoom.flip_rows = kind & 2;
        zoom.process(&source, &dest);
        const float sx = 5.0f / 11.0f, sy = 9.0f / 7.0f;
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 5; ++x) {
                const float px = float(x) / sx + 0.5f, py = float(kind & 2 ? 8 - y : y) / sy + 0.5f;
                ASSERT_EQ(dest.Row(y)[x], kind & 1 ? plain::bilinear(grid, px, py) : grid.read(int(px), int(py)));
            }
    }
    FnFloatMap dest(2, 2);
    FnImageZoomSampler<float, float, 1, float, float, 1> zoom;
    zoom.use_scales = true;
    zoom.x_scale = 0.5f, zoom.y_scale = 0.25f;
    zoom.process(&source, &dest);
    EXPECT_EQ(dest.Row(1)[1], grid.at(2, 4));
}

TEST(ImageZoomers, VectorsAreScaledUnlessExactlyUndefined) {
    FnVectorMap source(2, 1), dest(4, 1);
    source.Row(0)[0] = {1, 3};
    source.Row(0)[1] = kFnUndefined;
    ImageZoomerGP<HvVec2, HvVec2> zoom(0.5f, 0.25f);
    zoom.nearest = true;
    zoom.scale_vectors = true;
    zoom.process(&source, &dest);
    EXPECT_EQ(dest.Row(0)[1], (HvVec2{2, 12}));
    EXPECT_EQ(dest.Row(0)[2], kFnUndefined);
    zoom.nearest = false;
    zoom.process(&source, &dest);
    const float half = plain::mix(1.0f, FLT_MAX, 0.5f) / 0.5f;
    EXPECT_EQ(dest.Row(0)[1].x, half);
    FnIntMap classes(2, 2), big(4, 4);
    classes.Row(1)[0] = 3;
    ImageZoomerBase<int, int>(0.5f, 0.5f).process(&classes, &big);
    EXPECT_EQ(big.Row(3)[1], 3);
    EXPECT_EQ(big.Row(1)[1], 0);
}

TEST(FnFilteredPyramid, AgreesWithThePlainPyramid) {
    for (char edge : {'d', 'c'})
        for (int32_t count : {1, 2, 3}) {
            Threads threads(count);
            plain::Grid<float> grid = noise(101, 58, 6);
            grid.edge = edge;
            FnFloatMap level0;
            toMap(grid, level0);
            level0.SetFloatOrigins(5.0f, 3.0f);
            FnMapStack<FnFloatMap> stack;
            ASSERT_TRUE(stack.BuildHalved(&level0, 5));
            FnFilteredPyramidAlpha<float, float, 1> pyramid;
            pyramid.process(&stack);
            const auto expected = plain::pyramid(grid, 5);
            EXPECT_EQ(stack.Level(1)->Width(), 50);
            EXPECT_EQ(stack.Level(2)->axis[0].origin, 1.25f);
            EXPECT_EQ(stack.Level(2)->axis[0].int_origin, 1);
            for (int k = 0; k < 5; ++k) ASSERT_EQ(differing(*stack.Level(k), expected[size_t(k)]), 0) << k;
        }
}

TEST(FnFilteredPyramid, AnExplicitKernelRunsAcrossThenDown) {
    plain::Grid<float> grid = noise(12, 10, 6);
    grid.edge = 'c';
    FnFloatMap level0;
    toMap(grid, level0);
    FnMapStack<FnFloatMap> stack;
    ASSERT_TRUE(stack.BuildHalved(&level0, 2));
    FnFilteredPyramid<float, float, 1> pyramid;
    pyramid.explicit_kernel = true;
    pyramid.levels = 2;
    pyramid.kernel_size = 5;
    pyramid.process(&stack);
    float taps[5], sum = 0;
    for (int i = 0; i < 5; ++i) {
        const float d = float(2 - i);
        sum += taps[i] = float(std::exp(double(-(d * d) / 4.5f)));
    }
    for (float& t : taps) t /= sum;
    plain::Grid<float> across(12, 10), both(12, 10);
    across.edge = 'c';
    for (int pass = 0; pass < 2; ++pass)
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 12; ++x) {
                float total = 0;
                for (int i = 0; i < 5; ++i)
                    total += (pass ? taps[i] * 1.0f : 1.0f * taps[i]) * (pass ? across.read(x, y - 2 + i) : grid.read(x - 2 + i, y));
                (pass ? both : across).at(x, y) = total;
            }
    EXPECT_EQ(stack.Level(1)->Row(2)[3], both.at(6, 4));
    EXPECT_EQ(stack.Level(1)->Row(4)[5], both.at(10, 8));
}

TEST(FnFilteredPyramid, AMissingLevelIsMemoryExhaustion) {
    FnFloatMap tiny(3, 3);
    FnMapStack<FnFloatMap> stack;
    EXPECT_FALSE(stack.BuildHalved(&tiny, 4));
    InterruptRecord record;
    FnFilteredPyramid<float, float, 1> pyramid;
    pyramid.levels = 4;
    pyramid.SetInterrupt(&record);
    FnMapStack<FnFloatMap> two;
    ASSERT_TRUE(two.BuildHalved(&tiny, 2));
    pyramid.process(&two);
    EXPECT_EQ(record.error, kFnNoMemory);
}

TEST(FnFilteredPyramid, EveryFailedAllocationAbortsAndLeaksNothing) {
    for (int32_t count : {1, 2}) {
        Threads threads(count);
        FnFloatMap level0(40, 30);
        int32_t error = 0;
        bool stood = false;
        const int failures = failEach(
            [&] {
                InterruptRecord record;
                FnMapStack<FnFloatMap> stack;
                stood = stack.BuildHalved(&level0, 3);
                if (!stood) return;
                FnFilteredPyramidAlpha<float, float, 1> pyramid;
                pyramid.SetInterrupt(&record);
                pyramid.process(&stack);
                error = record.error;
            },
            [&](int n) {
                // A fan-out without memory runs on the caller instead.
                if (stood && count == 1) {
                    EXPECT_EQ(error, kFnNoMemory) << n;
                }
            });
        EXPECT_GT(failures, 8);
    }
}

}  // namespace
