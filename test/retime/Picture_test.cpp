// Building a picture along vectors, blending, the nearer frame, snapped times.
#include "RK/indep/retime/BuildPictureT.h"
#include "RK/indep/retime/FnFrameBlender.h"
#include "test/plain/retime/PlainPicture.h"
#include "test/retime/RetimeTest.h"

using namespace retime_test;

namespace {

template <class Pixel>
struct Depth {
    static constexpr int kScale = std::is_same_v<Pixel, FnPixel8> ? 0xFF : std::is_same_v<Pixel, FnPixel16> ? 0x8000 : 1;
    static constexpr float kFull = std::is_same_v<Pixel, FnPixel8> ? 255.0f : std::is_same_v<Pixel, FnPixel16> ? 32768.0f : 1.0f;
};

template <class Pixel>
void fillPair(FnPicture<Pixel>& picture, plain::Grid<plain::Px>& grid, int w, int h, uint32_t seed) {
    test::Random r(seed);
    ASSERT_TRUE(picture.Resize(w, h));
    picture.SetEdgeModes(kFnClamp, kFnClamp);
    grid = plain::Grid<plain::Px>(w, h);
    grid.edge = 'c';
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            using C = typename Pixel::Channel;
            C c[4];
            for (C& v : c) v = r.below(6) == 0 ? C(r.below(2) ? Depth<Pixel>::kFull : 0) : C(r.unit() * Depth<Pixel>::kFull);
            picture.Row(y)[x] = FnMakePixel<Pixel>(c[0], c[1], c[2], c[3]);
            grid.at(x, y) = {float(c[0]), float(c[1]), float(c[2]), float(c[3])};
        }
}

template <class Pixel>
int unequal(const FnPicture<Pixel>& picture, const plain::Grid<plain::Px>& grid) {
    int count = 0;
    for (int y = 0; y < grid.h; ++y)
        for (int x = 0; x < grid.w; ++x) {
            const Pixel& p = picture.Row(y)[x];
            const float c[4] = {float(p.a), float(p.r), float(p.g), float(p.b)};
            for (size_t i = 0; i < 4; ++i)
                count += std::memcmp(&c[i], &grid.at(x, y)[i], 4) != 0 && !(c[i] == 0 && grid.at(x, y)[i] == 0 && Depth<Pixel>::kFull != 1);
        }
    return count;
}

plain::Grid<plain::V> vectors(int w, int h, uint32_t seed, bool odd) {
    test::Random r(seed);
    plain::Grid<plain::V> g(w, h);
    for (plain::V& v : g.v) {
        v = {r.unit() * 6 - 3, r.unit() * 6 - 3};
        if (r.below(5) == 0) v = {float(int(r.below(5)) - 2), float(int(r.below(5)) - 2)};
        if (odd && r.below(8) == 0) v = plain::kGone;
        if (odd && r.below(20) == 0) v = {3e9f, NAN};
        if (odd && r.below(30) == 0) v.x = 3e38f;
    }
    return g;
}

template <class Pixel>
void compareBuilding() {
    constexpr int kScale = Depth<Pixel>::kScale;
    FnPicture<Pixel> f1, f2, out;
    plain::Grid<plain::Px> g1, g2;
    fillPair(f1, g1, 33, 21, 1);
    fillPair(f2, g2, 33, 21, 2);
    for (int threads = 1; threads <= 3; ++threads)
        for (int variant = 0; variant < 32; ++variant) {
            Threads set(threads);
            plain::PictureSettings s;
            s.full = Depth<Pixel>::kFull;
            s.t = variant % 3 == 0 ? 0.5f : variant % 3 == 1 ? 0.255f : 0.97f;
            s.sinc = variant & 1, s.nearerOnly = variant & 2, s.soften = variant & 4, s.paint = (variant & 24) == 24;
            s.probes = (variant & 24) == 8, s.lowCounts = variant & 16;
            const plain::Grid<plain::V> v1 = vectors(33, 21, 3, variant > 4), v2 = vectors(33, 21, 4, variant > 4);
            plain::Grid<int> classes(33, 21);
            test::Random r(9);
            for (int& c : classes.v) c = int(r.below(4));
            FnVectorMap m1, m2;
            FnIntMap mc;
            toMap(v1, m1), toMap(v2, m2), toMap(classes, mc);
            ASSERT_TRUE(out.Resize(33, 21));
            FnTweenParameters p;
            p.t = s.t;
            p.flags = (s.sinc ? kFnSincSampling : 0u) | (s.paint ? kFnPaintClasses : 0u);
            FnMotionEstimateGradientTweenerBuildPicture<Pixel, FnPixelFloat, kScale> build(p);
            build.class_map = &mc, build.v1 = &m1, build.v2 = &m2, build.f1 = &f1, build.f2 = &f2;
            if (s.probes) build.p1 = &f1, build.p2 = &f2;
            build.vector_scale = 1.5f;
            build.nearer_only = s.nearerOnly, build.probe_sense = s.lowCounts, build.soften = s.soften;
            build.ProcessMap(&out);
            const auto expected = plain::buildPicture(v1, v2, classes, g1, g2, g1, g2, 1.5f, s);
            if (kScale != 1) {
                ASSERT_EQ(unequal(out, expected), 0) << variant;
            } else {
                // The sign of a NaN is the processor's; compare everything else.
                for (int y = 0; y < 21; ++y)
                    for (int x = 0; x < 33; ++x)
                        for (size_t c = 0; c < 4; ++c) {
                            const float a = reinterpret_cast<const float*>(&out.Row(y)[x])[c], b = expected.at(x, y)[c];
                            ASSERT_TRUE(test::sameBytes(a, b) || (std::isnan(a) && std::isnan(b))) << variant;
                        }
            }
        }
}

TEST(BuildPicture, AgreesWithThePlainFormAt8Bits) { compareBuilding<FnPixel8>(); }
TEST(BuildPicture, AgreesWithThePlainFormAt16Bits) { compareBuilding<FnPixel16>(); }
TEST(BuildPicture, AgreesWithThePlainFormInFloat) { compareBuilding<FnPixelFloat>(); }

template <class Pixel>
void compareFrames() {
    constexpr int kScale = Depth<Pixel>::kScale;
    FnPicture<Pixel> f1, f2, out;
    plain::Grid<plain::Px> g1, g2;
    fillPair(f1, g1, 47, 30, 5);
    fillPair(f2, g2, 47, 30, 6);
    for (int threads = 1; threads <= 3; ++threads)
        for (bool sinc : {false, true}) {
            Threads set(threads);
            const plain::Grid<plain::V> a = vectors(9, 6, 7, false), b = vectors(9, 6, 8, false);
            const plain::Grid<int> classes(9, 6, 0);
            FnTweenResult tween;
            toMap(a, tween.a), toMap(b, tween.b), toMap(classes, tween.classes);
            tween.a.SetEdgeModes(kFnMirror, kFnMirror);
            tween.a.SetOrigins(3, 3);
            ASSERT_TRUE(out.Resize(47, 30));
            InterruptRecord record;
            ASSERT_EQ((FnBuildFrame<Pixel, FnPixelFloat, kScale>(&out, f1, f2, &tween, 0.3f, sinc, &record)), 0);
            plain::PictureSettings s;
            s.full = Depth<Pixel>::kFull;
            s.t = 0.3f;
            s.sinc = sinc;
            ASSERT_EQ(unequal(out, plain::buildFrame(a, b, classes, g1, g2, 47, 30, s)), 0);
            EXPECT_EQ(tween.a.axis[0].edge_mode, kFnTransparent);
            EXPECT_EQ(tween.a.axis[1].int_origin, 0);
        }
}

TEST(BuildFrame, AgreesWithThePlainFormAtEachDepth) {
    compareFrames<FnPixel8>();
    compareFrames<FnPixel16>();
    compareFrames<FnPixelFloat>();
}

// Short vectors, so that most groups of pixels lie inside; here and there a missing vector or an element of one source.
template <class Pixel>
void compareWideFrames() {
    constexpr int kScale = Depth<Pixel>::kScale;
    FnPicture<Pixel> f1, f2, out;
    plain::Grid<plain::Px> g1, g2;
    fillPair(f1, g1, 131, 37, 5);
    fillPair(f2, g2, 131, 37, 6);
    for (int threads = 1; threads <= 3; ++threads)
        for (int kind = 0; kind < 3; ++kind) {
            Threads set(threads);
            plain::Grid<plain::V> a = vectors(26, 8, 7, false), b = vectors(26, 8, 8, false);
            for (plain::Grid<plain::V>* field : {&a, &b})
                for (plain::V& v : field->v) v.x *= 0.1f, v.y *= 0.1f;
            plain::Grid<int> classes(26, 8, 0);
            if (kind == 1) a.at(9, 4) = b.at(17, 2) = {FLT_MAX, FLT_MAX};
            if (kind == 2) classes.at(3, 3) = 1, classes.at(12, 6) = 2, classes.at(20, 1) = 3;
            FnTweenResult tween;
            toMap(a, tween.a), toMap(b, tween.b), toMap(classes, tween.classes);
            ASSERT_TRUE(out.Resize(131, 37));
            InterruptRecord record;
            ASSERT_EQ((FnBuildFrame<Pixel, FnPixelFloat, kScale>(&out, f1, f2, &tween, 0.4f, false, &record)), 0);
            plain::PictureSettings s;
            s.full = Depth<Pixel>::kFull;
            s.t = 0.4f;
            ASSERT_EQ(unequal(out, plain::buildFrame(a, b, classes, g1, g2, 131, 37, s)), 0) << threads << kind;
        }
}

TEST(BuildFrame, AgreesWithThePlainFormWhereGroupsOfPixelsLieInside) {
    compareWideFrames<FnPixel8>();
    compareWideFrames<FnPixel16>();
    compareWideFrames<FnPixelFloat>();
}

TEST(BuildFrame, FrameTimesCopyAFrame) {
    FnPicture<FnPixel8> f1(3, 2), f2(3, 2), out(3, 2);
    f1.Fill(FnMakePixel<FnPixel8>(1, 2, 3, 4));
    f2.Fill(FnMakePixel<FnPixel8>(5, 6, 7, 8));
    FnTweenResult none;
    InterruptRecord record;
    const float times[4] = {0.0f, 1.0f, -0.3f, -0.0f};
    const unsigned char expected[4] = {4, 8, 8, 4};
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ((FnBuildFrame<FnPixel8, FnPixelFloat, 0xFF>(&out, f1, f2, &none, times[i], false, &record)), 0);
        EXPECT_EQ(out.Row(1)[2].b, expected[i]) << times[i];
    }
}

TEST(BuildFrame, EveryFailedAllocationAndEveryCheckStopsIt) {
    Threads one(1);
    FnPicture<FnPixel8> f1(20, 12), f2(20, 12), out(20, 12);
    FnTweenResult tween;
    tween.a.Resize(4, 3), tween.b.Resize(4, 3), tween.classes.Resize(4, 3);
    int32_t error = 0;
    auto build = [&](InterruptRecord* record) {
        error = FnBuildFrame<FnPixel8, FnPixelFloat, 0xFF>(&out, f1, f2, &tween, 0.5f, false, record);
    };
    const int failures = failEach(
        [&] {
            InterruptRecord record;
            build(&record);
        },
        [&](int) { EXPECT_EQ(error, 4); });
    EXPECT_EQ(failures, 5);
    for (int stop = 0;; ++stop) {
        Stopper stopper{stop, 99};
        InterruptRecord record;
        record.refcon = &stopper;
        record.callback = Stopper::Call;
        build(&record);
        if (stopper.answers >= 0) break;
        ASSERT_EQ(error, 99);
    }
    EXPECT_EQ(error, 0);
}

TEST(SnapTime, SnapsToTwoHundredthsAfterTheWholeNumber) {
    EXPECT_EQ(FnSnapTime(0.0024), 0.0f);
    EXPECT_EQ(FnSnapTime(0.0026), 0.005f);
    EXPECT_EQ(FnSnapTime(0.5), 0.5f);
    EXPECT_EQ(FnSnapTime(1.0), 0.0f);
    EXPECT_EQ(FnSnapTime(7.25), 0.25f);
    EXPECT_EQ(FnSnapTime(0.9976), 1.0f);
    EXPECT_LT(FnSnapTime(-0.3), 0.0f);
    EXPECT_TRUE(FnIsFrameTime(FnSnapTime(-0.3)));
    EXPECT_EQ(FnSnapTime(-1.0), 0.0f);
}

TEST(Sinc, RunsUnlessBothFractionsAreNearAWholeNumber) {
    EXPECT_FALSE(FnSincIsBilinear(3.005f, 2.3f));
    EXPECT_TRUE(FnSincIsBilinear(3.005f, 2.995f));
    EXPECT_TRUE(FnSincIsBilinear(-3.005f, 2.0f));
    EXPECT_FALSE(FnSincIsBilinear(3.5f, 2.5f));
    const FnSincTaps taps(4.5f);
    EXPECT_EQ(taps.first, -6);
    // At a whole displacement the centre tap is 1 where its limit would be pi; the others are nearly 0.
    EXPECT_GT(taps.taps[10], 0.99f);
}

TEST(FrameBlender, MixesAllFourChannelsAndClamps) {
    FnPicture<FnPixel8> a(1, 1), b(1, 1), out(1, 1);
    a.Fill(FnMakePixel<FnPixel8>(0, 10, 255, 3));
    b.Fill(FnMakePixel<FnPixel8>(255, 11, 0, 4));
    FnMotionEstimateFrameBlender<FnPixel8, FnPixelFloat, 0xFF> blend;
    blend.process(&a, &b, &out);
    EXPECT_EQ(out.Row(0)[0].a, 128);  // 127.5 to even
    EXPECT_EQ(out.Row(0)[0].r, 10);   // 10.5 to even
    EXPECT_EQ(out.Row(0)[0].b, 4);    // 3.5 to even
    FnPicture<FnPixelFloat> fa(1, 1), fb(1, 1), fo(1, 1);
    fa.Fill(FnMakePixel<FnPixelFloat>(0, -1, 2, NAN));
    fb.Fill(FnMakePixel<FnPixelFloat>(1, -1, 2, 0));
    FnMotionEstimateFrameBlender<FnPixelFloat, FnPixelFloat, 1> float_blend;
    float_blend.t = 0.25f;
    float_blend.process(&fa, &fb, &fo);
    EXPECT_EQ(fo.Row(0)[0].a, 0.25f);
    EXPECT_EQ(fo.Row(0)[0].r, 0.0f);
    EXPECT_EQ(fo.Row(0)[0].g, 1.0f);
    EXPECT_EQ(fo.Row(0)[0].b, 0.0f);
}

TEST(NearestFrame, IsTheSecondAboveOneHalf) {
    FnPicture<FnPixel8> a(1, 1), b(1, 1), out(1, 1);
    b.Fill(FnMakePixel<FnPixel8>(9, 9, 9, 9));
    InterruptRecord record;
    for (float t : {0.0f, 0.5f, 0.50001f, 1.0f, NAN}) {
        ASSERT_EQ((FnNearestFrame<FnPixel8, FnPixelFloat, 0xFF>(&out, a, b, t, &record)), 0);
        EXPECT_EQ(out.Row(0)[0].a, t > 0.5f ? 9 : 0) << t;
    }
}

}  // namespace
