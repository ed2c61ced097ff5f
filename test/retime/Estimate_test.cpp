// Luminance frames, the block solve with its modes, the quantiser, and the coarse-to-fine estimate.
#include "RK/indep/retime/FnLuminance.h"
#include "RK/indep/retime/FnMotionPyramid.h"
#include "RK/indep/retime/FnMotionSolve.h"
#include "test/plain/retime/PlainEstimate.h"
#include "test/retime/RetimeTest.h"

using namespace retime_test;

namespace {

const FnLuminanceWeights kWeights = {0.2988804, 0.58676529, 0.11435428};

template <class Pixel>
void compareLuminance(float full, float factor, int w, int h, float detail, const FnLuminanceWeights& weights) {
    constexpr int kScale = std::is_same_v<Pixel, FnPixel8> ? 0xFF : std::is_same_v<Pixel, FnPixel16> ? 0x8000 : 1;
    FnPicture<Pixel> pictures[2];
    plain::Grid<plain::RGB> grids[2] = {{w, h}, {w, h}};
    test::Random r(77);
    for (int p = 0; p < 2; ++p) {
        ASSERT_TRUE(pictures[p].Resize(w, h));
        pictures[p].SetEdgeModes(kFnClamp, kFnClamp);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                using C = typename Pixel::Channel;
                const Pixel pixel = FnMakePixel<Pixel>(C(r.unit() * full), C(r.unit() * full), C(r.unit() * full),
                                                       C(r.unit() * full));
                pictures[p].Row(y)[x] = pixel;
                grids[p].at(x, y) = {float(pixel.r), float(pixel.g), float(pixel.b)};
            }
    }
    FnMotionEstimateMapStackHolder holder;
    InterruptRecord record;
    const int32_t error =
        FnMakeLuminance<Pixel, FnPixelFloat, kScale>(pictures[0], pictures[1], detail, weights, &record, &holder);
    ASSERT_EQ(error, 0);
    const int sw = std::max(int(float(w) * detail), 1), sh = std::max(int(float(h) * detail), 1);
    const float ratio = float(w) / float(sw);
    ASSERT_EQ(differing(*holder.first_luminance, plain::luminance(grids[0], sw, sh, ratio, weights.red, weights.green,
                                                                  weights.blue, factor)),
              0);
    ASSERT_EQ(differing(*holder.second_luminance, plain::luminance(grids[1], sw, sh, ratio, weights.red, weights.green,
                                                                   weights.blue, factor)),
              0);
    EXPECT_EQ(holder.first_luminance->axis[0].edge_mode, kFnClamp);
}

TEST(Luminance, AgreesWithThePlainFormAtEachDepthAndThreadCount) {
    for (int32_t count : {1, 2, 3}) {
        Threads threads(count);
        compareLuminance<FnPixel8>(255, 0.003921568859368563f, 83, 47, 0.2f, kWeights);
        compareLuminance<FnPixel16>(32768, 3.0517578125e-5f, 83, 47, 0.37f, kWeights);
        compareLuminance<FnPixelFloat>(1, 1.0f, 83, 47, 1.0f, kWeights);
        compareLuminance<FnPixelFloat>(1, 1.0f, 5, 3, 0.05f, {0, 0, 0});
        compareLuminance<FnPixel8>(255, 0.003921568859368563f, 1, 1, 0.2f, {1, 0, 0});
    }
}

TEST(Luminance, KeepsTheMaximumWhenToldTo) {
    FnPicture<FnPixelFloat> in(1, 1);
    FnFloatMap out(1, 1);
    out.Fill(0.75f);
    in.Fill(FnMakePixel<FnPixelFloat>(0, 0.5f, 0.5f, 0.5f));
    FnMotionEstimateLuminanceFrameGenerator<FnPixelFloat, FnPixelFloat, 1> generate({1, 0, 0});
    generate.keep_maximum = true;
    generate.process(&in, &out);
    EXPECT_EQ(out.Row(0)[0], 0.75f);
    generate.keep_maximum = false;
    generate.process(&in, &out);
    EXPECT_EQ(out.Row(0)[0], 0.5f);
}

TEST(Luminance, EveryFailedAllocationGivesFourOrAThousandAndEveryCheckStops) {
    Threads one(1);
    FnPicture<FnPixel8> a(40, 30), b(40, 30);
    int32_t error = 0;
    auto make = [&](InterruptRecord* record) {
        FnMotionEstimateMapStackHolder holder;
        error = FnMakeLuminance<FnPixel8, FnPixelFloat, 0xFF>(a, b, 0.5f, kWeights, record, &holder);
    };
    const int failures = failEach(
        [&] {
            InterruptRecord record;
            make(&record);
        },
        [&](int n) { EXPECT_TRUE(error == 4 || error == 1000) << n << ": " << error; });
    EXPECT_EQ(failures, 2 * 6);  // the map and its pixels, taps, columns, scratch, lines
    for (int stop = 0;; ++stop) {
        Stopper stopper{stop, 99};
        InterruptRecord record;
        record.refcon = &stopper;
        record.callback = Stopper::Call;
        make(&record);
        if (stopper.answers >= 0) break;
        ASSERT_EQ(error, 99);
    }
    EXPECT_EQ(error, 0);
}

// ---- One step -------------------------------------------------------------------------------------------

FnGradientSums Sums(int n, float E1, float E2, float A, float B, float C, float P, float Q) {
    return {n, E1, E2, A, B, C, P, Q};
}

TEST(SolveStep, NeedsMoreThanASixthOfTheSamples) {
    HvVec2 v = {1, 1};
    EXPECT_TRUE(FnSolveStep(Sums(4, 0, 0, 1, 0, 1, 0, 0), 29, 0.01f, &v).done);
    EXPECT_EQ(v, kFnUndefined);
    v = {1, 1};
    EXPECT_FALSE(FnSolveStep(Sums(5, 0, 0, 1, 0, 1, 0, 0), 29, 0.01f, &v).done);
    EXPECT_EQ(v, (HvVec2{1, 1}));
    EXPECT_TRUE(FnSolveStep(Sums(0, 0, 0, 0, 0, 0, 0, 0), 0, 0.01f, &v).done);
}

TEST(SolveStep, AnErrorBelowTheThresholdKeepsTheVector) {
    HvVec2 v = {1, 2};
    FnSolution s = FnSolveStep(Sums(10, 0.0999f, 1, 5, 1, 5, 3, 3), 10, 0.01f, &v);
    EXPECT_FALSE(s.done);
    EXPECT_EQ(s.error, 0.0f);
    EXPECT_EQ(v, (HvVec2{1, 2}));
    s = FnSolveStep(Sums(4, 2.0f, 1, 5, 1, 5, 3, 3), 4, 0.5f, &v);  // equal is not below
    EXPECT_EQ(s.error, 0.5f);
    EXPECT_NE(v, (HvVec2{1, 2}));
}

TEST(SolveStep, AFlatBlockBecomesUndefined) {
    HvVec2 v = {0, 0};
    EXPECT_TRUE(FnSolveStep(Sums(10, 10, 10, 0, 0, 0, 0, 0), 10, 0.01f, &v).done);
    EXPECT_EQ(v, kFnUndefined);
}

TEST(SolveStep, AnIllConditionedBlockMovesAlongTheStrongGradientWithItsOddAxes) {
    HvVec2 v = {0, 0};
    // B is 0 and the horizontal gradient is the strong one, yet the axis taken is (0, 1).
    FnSolveStep(Sums(1, 1, 1, 100, 0, 1, 30, 50), 1, 0.01f, &v);
    EXPECT_EQ(v.x, 0.0f);
    EXPECT_EQ(v.y, -0.5f);
    v = {0, 0};
    FnSolveStep(Sums(1, 1, 1, 100, 10, 1, 30, 50), 1, 0.01f, &v);
    EXPECT_NE(v.x, 0.0f);
    v = {0, 0};
    EXPECT_TRUE(FnSolveStep(Sums(1, 1, 1, INFINITY, 10, 1, 30, 50), 1, 0.01f, &v).done);
    EXPECT_EQ(v, kFnUndefined);
    v = {0, 0};
    EXPECT_TRUE(FnSolveStep(Sums(1, NAN, NAN, NAN, NAN, NAN, NAN, NAN), 1, 0.01f, &v).done);
}

TEST(Solve1D, TellsFailureOnlyForDifferingListsWithoutGradient) {
    const float flat[3] = {1, 1, 1}, other[3] = {2, 2, 2}, ramp[3] = {0, 1, 2}, moved[3] = {1, 2, 3};
    EXPECT_TRUE(FnSolve1D(flat, flat, 3).success);
    EXPECT_FALSE(FnSolve1D(flat, other, 3).success);
    const FnSolution1D s = FnSolve1D(ramp, moved, 3);
    EXPECT_EQ(s.value, 1.0f);
    EXPECT_EQ(s.sum_abs, 2.0f);
    EXPECT_TRUE(FnSolve1D(flat, other, 1).success);
}

// ---- The block pass -------------------------------------------------------------------------------------

TEST(BlockEstimate, AgreesWithThePlainFormInEveryMode) {
    for (int threads = 1; threads <= 3; ++threads)
        for (int variant = 0; variant < 24; ++variant) {
            Threads set(threads);
            const int size = variant % 3;
            const int w = size == 0 ? 53 : size == 1 ? 24 : 5, h = size == 0 ? 38 : size == 1 ? 11 : 4;
            plain::Grid<float> R = pattern(w, h, 0, 0, 1), T = pattern(w, h, 1.3f, -0.6f, 2), mask = noise(w, h, 3);
            if (variant >= 18) R = noise(w, h, 8), R.edge = 'm';
            if (variant == 20)
                for (float& f : T.v) f = 0.5f;
            FnFloatMap r, t, m;
            toMap(R, r), toMap(T, t), toMap(mask, m);
            plain::Settings s;
            s.projection = variant & 1, s.activity = variant & 2;
            s.block = variant % 5 == 4 ? 9 : 6;
            s.threshold = variant % 7 == 0 ? 0.0f : 0.01f;
            const plain::Grid<float>* pm = variant % 4 >= 2 ? &mask : nullptr;
            const int across = plain::blocksOver(w, s.block, 2), down = plain::blocksOver(h, s.block, 2);
            plain::Grid<plain::V> expected(across, down);
            test::Random random(uint32_t(variant) + 5);
            for (plain::V& v : expected.v) {
                v = {random.unit() * 4 - 2, random.unit() * 4 - 2};
                if (random.below(6) == 0) v = {0, 0};
                if (random.below(12) == 0) v = plain::kGone;
                if (random.below(12) == 0) v = {random.unit() * 1e10f, 30};
            }
            FnVectorMap map, positions(across, down);
            FnFloatMap errors(across, down), confidence(across, down);
            toMap(expected, map);
            FnBlockEstimate estimate;
            estimate.blocks = {s.block, s.block, 2};
            estimate.error_threshold = s.threshold;
            estimate.projection_mode = s.projection;
            estimate.activity_mode = s.activity;
            estimate.info = {&positions, &errors, &confidence};
            estimate.Process(&map, {&r, &t, pm ? &m : nullptr});
            plain::Info info = {{across, down}, {across, down}, {across, down}};
            plain::estimateBlocks(expected, R, T, pm, s, threads, &info);
            ASSERT_EQ(differing(map, expected), 0) << variant << " " << threads;
            ASSERT_EQ(differing(positions, info.positions), 0) << variant;
            ASSERT_EQ(differing(errors, info.errors), 0) << variant;
            ASSERT_EQ(differing(confidence, info.confidence), 0) << variant;
        }
}

TEST(BlockEstimate, ABlockThatMatchesKeepsItsVectorAndAFlatOneLosesIt) {
    FnFloatMap same(30, 30), flat(30, 30);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x) same.Row(y)[x] = float((x * 7 + y * 3) % 11) / 11.0f;
    flat.Fill(0.5f);
    FnVectorMap map(7, 7);
    FnBlockEstimate estimate;
    estimate.blocks = {6, 6, 2};
    estimate.Process(&map, {&same, &same, nullptr});
    EXPECT_EQ(map.Row(3)[3], (HvVec2{0, 0}));
    FnFloatMap grey(30, 30);
    estimate.Process(&map, {&grey, &flat, nullptr});
    EXPECT_EQ(map.Row(3)[3], kFnUndefined);
}

TEST(Quantise, RoundsEachComponentToItsLevelsStep) {
    FnVectorMap map(2, 1);
    map.Row(0)[0] = {0.149f, -0.051f};
    map.Row(0)[1] = {FLT_MAX, 0.149f};
    FnMotionEstimateGradientQuantise<HvVec2> quantise;
    quantise.process(&map, &map);
    EXPECT_EQ(map.Row(0)[0], (HvVec2{0.1f, -0.1f}));
    EXPECT_EQ(map.Row(0)[1].y, 0.149f);
    plain::Grid<plain::V> grid(40, 40);
    test::Random r(1);
    for (plain::V& v : grid.v) v = {r.unit() * 20 - 10, r.unit() * 20 - 10};
    for (int level = 0; level < 4; ++level) {
        FnVectorMap all;
        toMap(grid, all);
        quantise.level = level;
        quantise.process(&all, &all);
        plain::Grid<plain::V> expected = grid;
        plain::quantise(expected, level);
        EXPECT_EQ(differing(all, expected), 0);
    }
}

// ---- Coarse to fine -------------------------------------------------------------------------------------

TEST(EstimateField, LevelCountsFollowTheSmallerSide) {
    EXPECT_EQ(FnLevelCount(15, 4000), 1);
    EXPECT_EQ(FnLevelCount(4000, 15), 1);
    EXPECT_EQ(FnLevelCount(16, 16), 2);
    EXPECT_EQ(FnLevelCount(384, 216), 5);
    EXPECT_EQ(FnLevelCount(1, 1), 1);
    for (int w = 1; w < 200; w += 3)
        for (int h = 1; h < 200; h += 3) ASSERT_EQ(FnLevelCount(w, h), plain::levelsOf(w, h));
}

TEST(EstimateField, AgreesWithThePlainFormAtEachThreadCount) {
    const struct {
        int w, h, block;
        float dx, dy, smoothness, threshold;
    } cases[] = {{64, 48, 6, 3, -2, 500, 0.01f},  {71, 39, 4, -1.5f, 0.7f, -300, 0.0f}, {33, 20, 8, 6, 3, 0, 0.05f},
                 {15, 40, 6, 1, 1, 500, 0.01f},   {3, 3, 6, 0, 1, 500, 0.01f},          {1, 1, 6, 0, 0, 500, 0.01f},
                 {2, 30, 6, 0, 1, 500, 0.01f},    {50, 40, 40, 1, 0, 10, 0.01f}};
    for (int threads = 1; threads <= 3; ++threads)
        for (const auto& c : cases) {
            Threads set(threads);
            plain::Grid<float> first = pattern(c.w, c.h, 0, 0, 1), second = pattern(c.w, c.h, c.dx, c.dy, 2);
            FnFloatMap f, s;
            toMap(first, f), toMap(second, s);
            FnVectorMap field(c.w, c.h);
            InterruptRecord record;
            ASSERT_EQ(EstimateField({c.block, c.smoothness, c.threshold}, &f, &s, &record, &field), 0);
            ASSERT_EQ(differing(field, plain::estimateField(first, second, c.block, c.smoothness, c.threshold, threads)),
                      0)
                << c.w << "x" << c.h << " threads " << threads;
        }
}

TEST(EstimateField, FindsAPan) {
    const plain::Grid<float> first = texture(96, 64, 0, 0, 1), second = texture(96, 64, 3, 2, 1);
    FnFloatMap f, s;
    toMap(first, f), toMap(second, s);
    FnVectorMap field(96, 64);
    InterruptRecord record;
    ASSERT_EQ(EstimateField({6, 500, 0.001f}, &f, &s, &record, &field), 0);
    // Content moved right by 3 and down by 2: it came from (x - 3, y - 2), so v = (3, -2).
    int close = 0;
    for (int y = 8; y < 56; ++y)
        for (int x = 8; x < 88; ++x)
            close += std::fabs(field.Row(y)[x].x - 3) < 0.3f && std::fabs(field.Row(y)[x].y + 2) < 0.3f;
    EXPECT_GT(close, 48 * 80 * 9 / 10);
}

TEST(EstimateField, FlatFramesGiveZeroVectors) {
    FnFloatMap f(40, 40), s(40, 40);
    s.Fill(1.0f);
    FnVectorMap field(40, 40);
    field.Fill({9, 9});
    InterruptRecord record;
    ASSERT_EQ(EstimateField({}, &f, &s, &record, &field), 0);
    EXPECT_EQ(field.Row(20)[20], (HvVec2{0, 0}));
}

TEST(EstimateField, EveryFailedAllocationAndEveryCheckStopsIt) {
    Threads one(1);
    plain::Grid<float> first = pattern(40, 36, 0, 0, 1), second = pattern(40, 36, 1, 1, 2);
    FnFloatMap f, s;
    toMap(first, f), toMap(second, s);
    FnVectorMap field(40, 36);
    int32_t error = 0;
    const int failures = failEach(
        [&] {
            InterruptRecord record;
            error = EstimateField({}, &f, &s, &record, &field);
        },
        [&](int n) { EXPECT_TRUE(error == 4 || error == 1000) << n << ": " << error; });
    EXPECT_GT(failures, 30);
    int stops = 0;
    for (int stop = 0;; ++stop, ++stops) {
        Stopper stopper{stop, 99};
        InterruptRecord record;
        record.refcon = &stopper;
        record.callback = Stopper::Call;
        error = EstimateField({}, &f, &s, &record, &field);
        if (stopper.answers >= 0) break;
        ASSERT_EQ(error, 99);
        ASSERT_EQ(stopper.answers, -1);
    }
    EXPECT_GT(stops, 200);
}

TEST(Pyramid, BelowItsFirstLevelVectorsAreOnlyPassedOn) {
    plain::Grid<float> first = pattern(64, 48, 0, 0, 1), second = pattern(64, 48, 3, 1, 2);
    FnFloatMap f, s;
    toMap(first, f), toMap(second, s);
    FnMapStack<FnFloatMap> reference, target;
    ASSERT_TRUE(reference.BuildHalved(&f, 2));
    ASSERT_TRUE(target.BuildHalved(&s, 2));
    FnMotionEstimateGradientPyramidParameters p;
    p.levels = 2;
    p.overlap = 2;
    p.first_level = 2;
    p.nearest_zoom = true;
    FnVectorMap blocks(FnBlockCount(64, 6, 2), FnBlockCount(48, 6, 2));
    blocks.Fill({5, 5});
    FnMotionEstimateGradientPyramid<float, float, 1, HvVec2, HvVec2, 1> pyramid(p);
    pyramid.reference = &reference;
    pyramid.target = &target;
    pyramid.process(&blocks);
    EXPECT_EQ(blocks.Row(4)[4], (HvVec2{0, 0}));
}

}  // namespace
