#include "RK/indep/filter/RK_BoxBlur.h"

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/filter/Blurs.h"
#include "test/plain/Compare.h"

namespace {

using test::Blur;
using test::Canvas;
using test::kWhole;

template <class P>
class BoxBlurDepth : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(BoxBlurDepth, Depths);
class BoxBlur : public test::Tidy {};

// One white pixel in the middle of a black line, blurred.
template <class P>
Canvas<P> spread(int width, const Blur& blur) {
    Canvas<P> src(width, 1), dst(width, 1);
    const auto w = kWhole<P>;
    src(width / 2, 0) = {w, w, w, w};
    EXPECT_EQ(0, blur(src, dst));
    return dst;
}

// ---- Radii ----------------------------------------------------------------------------------------------

TYPED_TEST(BoxBlurDepth, ARadiusOf0ReturnsItsInput) {
    for (const int passes : {1, 2, 5})
        for (const uint32_t flags : {15u, 31u, 1u, 6u, 0u})
            for (const bool columns : {false, true}) {
                Canvas<TypeParam> src(23, 21), dst(23, 21);
                src.random(uint32_t(passes));
                for (int y = 0; y < 21; ++y)
                    for (int x = 0; x < 23; ++x)
                        if (sizeof(TypeParam) == 16 && src(x, y).alpha < 1e-30f) src(x, y) = {};
                Blur blur;
                blur.radius = 0, blur.passes = passes, blur.flags = flags;
                EXPECT_EQ(0, blur.columns(columns)(src, dst));
                EXPECT_LE(apart(src, dst), sizeof(TypeParam) == 16 ? 1e-30 : 0);
            }
}

TEST_F(BoxBlur, ARadiusOf2HasFiveEqualTaps) {
    Blur blur;
    const auto dst = spread<RK_Pixel8>(11, blur);
    for (int x = 0; x < 11; ++x) EXPECT_EQ(dst(x, 0).red, x >= 3 && x <= 7 ? 51 : 0) << x;
}

TEST_F(BoxBlur, ARadiusOf1AndAHalfHasOutermostTapsOfHalfTheWeight) {
    Blur blur;
    blur.radius = 1.5f;
    const int want8[] = {0, 0, 32, 64, 64, 64, 32, 0, 0};  // 255 / 8 and 255 / 4, rounded
    const auto at8 = spread<RK_Pixel8>(9, blur);
    const auto at16 = spread<RK_Pixel16>(9, blur);
    const auto at32 = spread<RK_PixelFloat>(9, blur);
    for (int x = 0; x < 9; ++x) {
        EXPECT_EQ(at8(x, 0).green, want8[x]) << x;
        EXPECT_EQ(at16(x, 0).green, want8[x] * 128) << x;
        EXPECT_EQ(at32(x, 0).green, static_cast<float>(want8[x]) / 256) << x;
    }
}

TEST_F(BoxBlur, TheFractionIsCutToA1024thAtDepth8Only) {
    Blur blur;
    blur.radius = 1 - 1.99f / 1024;  // f is 1 of 1024ths there
    const auto at8 = spread<RK_Pixel8>(3, blur);
    const int64_t D = 3 * 1024 - 2;
    EXPECT_EQ(at8(1, 0).red, (255 * 1024 + D / 2) / D);
    EXPECT_EQ(at8(0, 0).red, (255 * 1023 + D / 2) / D);
    const auto at32 = spread<RK_PixelFloat>(3, blur);
    const float f = 1 - blur.radius, whole = 3 - 2 * f;
    EXPECT_EQ(at32(0, 0).red, static_cast<float>((1 - double{f}) / double{whole}));
}

// ---- Edges ----------------------------------------------------------------------------------------------

TYPED_TEST(BoxBlurDepth, AFlatPictureWithRenormalisedEdgesStaysFlat) {
    const auto w = kWhole<TypeParam>;
    for (const float radius : {0.5f, 1.0f, 2.25f, 8.5f, 50.0f, 300.75f})
        for (const int passes : {1, 3})
            for (const bool columns : {false, true}) {
                Canvas<TypeParam> src(61, 37), dst(61, 37);
                src.picture.fill({w, static_cast<decltype(w)>(w / 2), static_cast<decltype(w)>(w / 5), 0});
                Blur blur;
                blur.radius = radius, blur.passes = passes, blur.flags = 31;
                EXPECT_EQ(0, blur.columns(columns)(src, dst));
                EXPECT_LE(apart(src, dst), sizeof(TypeParam) == 16 ? 1e-6 : 0) << radius;
                EXPECT_TRUE(dst.picture.guardsWhole());
            }
}

TYPED_TEST(BoxBlurDepth, AFlatPictureWithFadingEdgesDarkensTowardsThem) {
    const auto w = kWhole<TypeParam>;
    Canvas<TypeParam> src(20, 1), dst(20, 1);
    src.picture.fill({w, w, w, w});
    Blur blur;
    blur.radius = 4;
    EXPECT_EQ(0, blur(src, dst));
    for (int x = 0; x < 20; ++x) {
        const int inside = std::min(x, 4) + 1 + std::min(19 - x, 4);
        EXPECT_NEAR(dst(x, 0).blue, double(w) * inside / 9, sizeof(TypeParam) == 16 ? 1e-6 : 0.51) << x;
    }
}

// ---- Channels -------------------------------------------------------------------------------------------

TYPED_TEST(BoxBlurDepth, AChannelThatIsNotNamedComesThroughEveryPassUnchanged) {
    for (uint32_t flags = 0; flags < 32; ++flags)
        for (const int passes : {1, 2, 3}) {
            Canvas<TypeParam> src(40, 3), all(40, 3), dst(40, 3);
            src.random(flags);
            Blur blur;
            blur.radius = 2.5f, blur.passes = passes, blur.flags = flags | 15;
            EXPECT_EQ(0, blur(src, all));
            blur.flags = flags;
            EXPECT_EQ(0, blur(src, dst));
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < 40; ++x) {
                    const TypeParam &a = all(x, y), &s = src(x, y);
                    const TypeParam want = {flags & 1 ? a.alpha : s.alpha, flags & 2 ? a.red : s.red,
                                            flags & 4 ? a.green : s.green, flags & 8 ? a.blue : s.blue};
                    ASSERT_TRUE(test::sameBytes(want, dst(x, y))) << flags << " at " << x << "," << y;
                }
        }
}

TEST_F(BoxBlur, AChannelThatIsNotNamedIsZeroWhereTheSourceHasNoPixel) {
    Canvas<RK_Pixel8> src(4, 1), dst(12, 1);
    src.picture.fill({200, 100, 50, 25});
    dst.random(1).at(-4, 0);
    Blur blur;
    blur.flags = RK_kBlurAlpha | RK_kBlurRed;
    for (const uint8_t copy : {0, 1}) {
        blur.force_copy = copy;
        EXPECT_EQ(0, blur(src, dst));
        for (int x = 0; x < 12; ++x) {
            EXPECT_EQ(dst(x, 0).green, x >= 4 && x < 8 ? 50 : 0) << x;
            EXPECT_EQ(dst(x, 0).red > 0, x >= 2 && x < 10) << x;
        }
    }
}

// ---- Places ---------------------------------------------------------------------------------------------

TYPED_TEST(BoxBlurDepth, LinesOutsideTheSourceBecomeZero) {
    for (const bool columns : {false, true})
        for (const int passes : {1, 2}) {
            Canvas<TypeParam> src(6, 6), dst(30, 40);
            src.random(1).at(100, -7);
            dst.random(2).at(90, -20);
            Blur blur;
            blur.passes = passes;
            EXPECT_EQ(0, blur.columns(columns)(src, dst));
            EXPECT_TRUE(dst.picture.guardsWhole());
            const TypeParam zero = {};
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 30; ++x) {
                    const int across = columns ? x - 10 : y - 13, along = columns ? y - 13 : x - 10;
                    if (across < 0 || across >= 6 || along < -2 * passes || along >= 6 + 2 * passes) {
                        ASSERT_TRUE(test::sameBytes(zero, dst(x, y))) << x << "," << y;
                    }
                }
        }
}

TYPED_TEST(BoxBlurDepth, WorldsThatLieApartGiveZeros) {
    for (const int32_t far : {50, -50, 1000000, INT32_MAX, INT32_MIN})
        for (const bool across : {false, true})
            for (const int32_t premultiplied : {0, 1}) {
                Canvas<TypeParam> src(8, 8), dst(8, 8), zeros(8, 8);
                src.random(1);
                dst.random(2).at(across ? 0 : far, across ? far : 0);
                Blur blur;
                blur.passes = 3, blur.flags = 31,
                blur.dst_premultiplied = blur.src_premultiplied = premultiplied;
                EXPECT_EQ(0, blur(src, dst));
                EXPECT_TRUE(dst.picture == zeros.picture);
            }
}

// What the ranges cut off is what the destination cannot see.
TEST_F(BoxBlur, APartIsThatPartOfTheWhole) {
    for (const bool columns : {false, true})
        for (const int passes : {1, 2, 4})
            for (const float radius : {1.0f, 3.3f, 40.0f}) {
                Canvas<RK_Pixel8> src(50, 45), whole(150, 145), part(23, 17);
                src.random(1).at(40, 30);
                whole.at(0, 0);
                Blur blur;
                blur.passes = passes, blur.radius = radius;
                blur.columns(columns);
                EXPECT_EQ(0, blur(src, whole));
                for (const auto& [x0, y0] : {std::pair<int, int>{60, 40}, {0, 0}, {80, 66}, {30, 100}}) {
                    part.random(7).at(x0, y0);
                    EXPECT_EQ(0, blur(src, part));
                    for (int y = 0; y < 17; ++y)
                        for (int x = 0; x < 23; ++x)
                            ASSERT_TRUE(test::sameBytes(whole(x0 + x, y0 + y), part(x, y)));
                }
            }
}

TEST_F(BoxBlur, ManyPassesAreManyBlursOfAWideEnoughWorld) {
    for (const float radius : {0.7f, 2.0f, 5.5f}) {
        Canvas<RK_Pixel8> src(40, 3), at_once(100, 3), a(100, 3), b(100, 3);
        src.random(4).at(30, 0);
        Blur blur;
        blur.radius = radius, blur.passes = 3;
        EXPECT_EQ(0, blur(src, at_once));
        blur.passes = 1;
        EXPECT_EQ(0, blur(src, a));
        EXPECT_EQ(0, blur(a, b));
        EXPECT_EQ(0, blur(b, a));
        EXPECT_TRUE(at_once.picture == a.picture) << radius;
    }
}

TYPED_TEST(BoxBlurDepth, ReadingRowsAndWritingColumnsTransposes) {
    for (const int passes : {1, 2})
        for (const uint32_t flags : {15u, 31u, 9u})
            for (const int32_t premultiplied : {0, 1})
                for (const auto& [width, height] : {std::pair<int, int>{70, 67}, {5, 90}, {130, 3}}) {
                    Canvas<TypeParam> src(width, height), rows(width, height), columns(height, width);
                    src.random(11);
                    Blur blur;
                    blur.radius = 3.5f, blur.passes = passes, blur.flags = flags;
                    blur.dst_premultiplied = premultiplied;
                    EXPECT_EQ(0, blur(src, rows));
                    const Canvas<TypeParam> want = transposed(rows);
                    blur.dst_direction = -1;  // any but 0
                    EXPECT_EQ(0, blur(src, columns));
                    EXPECT_TRUE(columns.picture == want.picture);
                    // And columns of the transposed source, into columns and into rows.
                    const Canvas<TypeParam> turned = transposed(src);
                    columns.random(1), rows.random(1);
                    blur.src_direction = 7;
                    EXPECT_EQ(0, blur(turned, columns));
                    EXPECT_TRUE(columns.picture == want.picture);
                    blur.dst_direction = 0;
                    EXPECT_EQ(0, blur(turned, rows));
                    EXPECT_TRUE(transposed(rows).picture == want.picture);
                }
}

// Columns go abreast through all passes where the scratch has room for several, rows one after the other.
TYPED_TEST(BoxBlurDepth, LongColumnsAreTheRowsOfTheTransposed) {
    test::Random r(sizeof(TypeParam));
    for (int round = 0; round < test::amount(240); ++round) {
        const int length = 30 + static_cast<int>(r.below(260)), lines = 1 + static_cast<int>(r.below(40)),
                  out_length = 20 + static_cast<int>(r.below(300)),
                  out_lines = 1 + static_cast<int>(r.below(40));
        Canvas<TypeParam> src(lines, length), dst(out_lines, out_length), want(out_length, out_lines);
        src.random(r.next()).at(static_cast<int>(r.below(9)), static_cast<int>(r.below(60)));
        dst.random(r.next()).at(static_cast<int>(r.below(9)), static_cast<int>(r.below(90)) - 20);
        Canvas<TypeParam> turned = transposed(src);
        turned.at(src.world->record.origin_y, src.world->record.origin_x);
        want.at(dst.world->record.origin_y, dst.world->record.origin_x);
        Blur blur;
        blur.radius = r.below(3) == 0 ? static_cast<float>(r.below(60)) : r.unit() * 20;
        blur.passes = 1 + static_cast<int>(r.below(10));
        blur.flags = r.below(2) == 0 ? 15 + 16 * r.below(2) : r.below(32);
        blur.src_premultiplied = r.below(2) != 0, blur.dst_premultiplied = r.below(3) != 0;
        blur.force_copy = r.below(2) != 0;
        EXPECT_EQ(0, blur(turned, want));
        EXPECT_EQ(0, blur.columns()(src, dst));
        ASSERT_TRUE(transposed(dst).picture == want.picture)
            << round << ": radius " << blur.radius << " passes " << blur.passes << " flags " << blur.flags;
        ASSERT_TRUE(dst.picture.guardsWhole());
    }
}

TYPED_TEST(BoxBlurDepth, LongColumnsMayBeBlurredInPlaceThroughACopy) {
    for (const float radius : {0.0f, 2.5f, 9.0f, 31.0f})
        for (const int passes : {1, 2, 3, 9})
            for (const int32_t premultiplied : {0, 1}) {
                Canvas<TypeParam> world(37, 300), want(37, 300);
                world.random(8);
                Blur blur;
                blur.radius = radius, blur.passes = passes, blur.flags = 31;
                blur.src_premultiplied = blur.dst_premultiplied = premultiplied;
                blur.columns();
                EXPECT_EQ(0, blur(world, want));
                blur.force_copy = 1;
                EXPECT_EQ(0, blur(world, world));
                EXPECT_TRUE(world.picture == want.picture) << radius << " " << passes;
            }
}

TEST_F(BoxBlur, OriginsAreTakenOnEachWorldsOwnAxes) {
    // Source rows: x runs along, y across. Destination columns: y runs along, x across.
    Canvas<RK_Pixel8> src(9, 5), dst(7, 11);
    src.random(1).at(100, 200);
    dst.at(203, 98);
    Blur blur;
    blur.radius = 0, blur.dst_direction = 1;
    EXPECT_EQ(0, blur(src, dst));
    for (int y = 0; y < 11; ++y)
        for (int x = 0; x < 7; ++x) {
            const int sx = y - 2, sy = x + 3;
            const bool inside = sx >= 0 && sx < 9 && sy >= 0 && sy < 5;
            ASSERT_TRUE(test::sameBytes(inside ? src(sx, sy) : RK_Pixel8{}, dst(x, y))) << x << "," << y;
        }
}

TYPED_TEST(BoxBlurDepth, RowsMayLieBackwardsInMemory) {
    for (const bool columns : {false, true})
        for (const int passes : {1, 2}) {
            Canvas<TypeParam> src(31, 29), want(31, 29), got(31, 29), flipped(31, 29);
            src.random(3);
            for (int y = 0; y < 29; ++y)
                for (int x = 0; x < 31; ++x) flipped(x, 28 - y) = src(x, y);
            Blur blur;
            blur.radius = 2.5f, blur.passes = passes;
            blur.columns(columns);
            EXPECT_EQ(0, blur(src, want));
            for (Canvas<TypeParam>* canvas : {&flipped, &got}) {
                canvas->world->record.data = canvas->picture.row(28);
                canvas->world->record.rowbytes = -canvas->world->record.rowbytes;
            }
            EXPECT_EQ(0, blur(flipped, got));
            for (int y = 0; y < 29; ++y)
                for (int x = 0; x < 31; ++x) ASSERT_TRUE(test::sameBytes(want(x, y), got(x, 28 - y)));
            EXPECT_TRUE(got.picture.guardsWhole());
        }
}

TEST_F(BoxBlur, RowsMayBeginAtAnyByteAtDepth8) {
    Canvas<RK_Pixel8> src(20, 9), want(20, 9);
    src.random(5);
    Blur blur;
    EXPECT_EQ(0, blur(src, want));
    std::vector<uint8_t> bytes(9 * 83), out(9 * 83, 0x55);
    for (int y = 0; y < 9; ++y) std::memcpy(&bytes[size_t(y) * 83], &src(0, y), 80);
    Canvas<RK_Pixel8> odd(20, 9), got(20, 9);
    odd.world->record.data = bytes.data(), odd.world->record.rowbytes = 83;
    got.world->record.data = out.data(), got.world->record.rowbytes = 83;
    EXPECT_EQ(0, blur(odd, got));
    for (int y = 0; y < 9; ++y) {
        EXPECT_EQ(0, std::memcmp(&out[size_t(y) * 83], &want(0, y), 80)) << y;
        EXPECT_EQ(out[size_t(y) * 83 + 80], 0x55);
    }
}

TYPED_TEST(BoxBlurDepth, AWorldMayBeBlurredInPlaceThroughACopy) {
    for (const bool columns : {false, true})
        for (const int passes : {1, 2, 3})
            for (const int32_t premultiplied : {0, 1}) {
                Canvas<TypeParam> world(77, 71), want(77, 71);
                world.random(8).at(5, 6);
                want.at(5, 6);
                Blur blur;
                blur.radius = 4.25f, blur.passes = passes;
                blur.src_premultiplied = blur.dst_premultiplied = premultiplied;
                blur.columns(columns);
                EXPECT_EQ(0, blur(world, want));
                blur.force_copy = 1;
                EXPECT_EQ(0, blur(world, world));
                EXPECT_TRUE(world.picture == want.picture);
            }
}

TYPED_TEST(BoxBlurDepth, TwoOneAxisBlursCommuteWithinOneUnit) {
    const double unit = sizeof(TypeParam) == 16 ? 1e-6 : 1;
    for (const int passes : {1, 2}) {
        Canvas<TypeParam> src(64, 48), rows(64, 48), columns(64, 48), a(64, 48), b(64, 48);
        src.random(9);
        Blur blur;
        blur.radius = 3.5f, blur.passes = passes;
        EXPECT_EQ(0, blur(src, rows));
        EXPECT_EQ(0, blur.columns()(rows, a));
        EXPECT_EQ(0, blur(src, columns));
        EXPECT_EQ(0, blur.columns(false)(columns, b));
        EXPECT_LE(apart(a, b), passes * unit);
    }
}

TEST_F(BoxBlur, OnePassIsTheDirectMeanOfItsWindow) {
    for (const float radius : {1.0f, 2.5f, 7.125f, 30.0f})
        for (const uint32_t flags : {15u, 31u}) {
            Canvas<RK_Pixel8> src(41, 1), dst(61, 1);
            src.random(12, false);
            dst.at(-10, 0);
            Blur blur;
            blur.radius = radius, blur.flags = flags;
            EXPECT_EQ(0, blur(src, dst));
            const int R = static_cast<int>(std::ceil(radius));
            const int64_t f = static_cast<int64_t>((static_cast<float>(R) - radius) * 1024);
            for (int x = 0; x < 61; ++x) {
                int64_t sum = 0, weight = 0, full = 0;
                for (int k = -R; k <= R; ++k) {
                    const int64_t w = std::abs(k) == R ? 1024 - f : 1024;
                    full += w;
                    const int at = x - 10 + k;
                    if (at < 0 || at > 40) continue;
                    sum += w * src(at, 0).blue;
                    weight += w;
                }
                const int64_t D = flags & 16 ? weight : full;
                ASSERT_EQ(dst(x, 0).blue, D == 0 ? 0 : (sum + D / 2) / D) << x << " " << radius;
            }
        }
}

// ---- Alpha ----------------------------------------------------------------------------------------------

TEST_F(BoxBlur, AStraightPictureIsWeightedByItsAlpha) {
    Canvas<RK_Pixel8> src(3, 1), dst(3, 1);
    src(0, 0) = {255, 100, 0, 0};
    src(1, 0) = {0, 255, 255, 255};  // clear: its colour does not count
    src(2, 0) = {255, 200, 0, 0};
    Blur blur;
    blur.radius = 1, blur.src_premultiplied = blur.dst_premultiplied = 0;
    EXPECT_EQ(0, blur(src, dst));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{170, 150, 0, 0}, dst(1, 0)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{85, 100, 0, 0}, dst(0, 0)));
}

TYPED_TEST(BoxBlurDepth, LoadingMultipliesTheNamedColoursAlone) {
    using C = decltype(TypeParam::alpha);
    const auto w = kWhole<TypeParam>;
    Canvas<TypeParam> src(9, 9), dst(9, 9);
    src.picture.fill({static_cast<C>(w / 2), w, w, w});
    for (const int passes : {0, 1, 3})
        for (const uint32_t flags : {2u, 5u, 12u, 15u, 1u, 0u})
            for (const bool columns : {false, true}) {
                Blur blur;
                blur.passes = passes, blur.flags = flags | RK_kBlurRenormalise;
                blur.src_premultiplied = 0;
                EXPECT_EQ(0, blur.columns(columns)(src, dst));
                const auto want = [&](uint32_t flag) {
                    return flags & flag ? static_cast<double>(src(4, 4).alpha) : static_cast<double>(w);
                };
                const double slack = sizeof(TypeParam) == 16 ? 1e-6 : 0;
                EXPECT_NEAR(dst(4, 4).alpha, src(4, 4).alpha, slack) << flags;
                EXPECT_NEAR(dst(4, 4).red, want(RK_kBlurRed), slack) << flags;
                EXPECT_NEAR(dst(4, 4).green, want(RK_kBlurGreen), slack) << flags;
                EXPECT_NEAR(dst(4, 4).blue, want(RK_kBlurBlue), slack) << flags;
            }
}

TYPED_TEST(BoxBlurDepth, WhereNoAlphaIsADividedPixelIsZeroAsAWholeIfAColourIsNamed) {
    using C = decltype(TypeParam::alpha);
    const auto w = kWhole<TypeParam>;
    Canvas<TypeParam> src(5, 1), dst(5, 1);
    src.picture.fill({0, w, static_cast<C>(w / 2), w});
    Blur blur;
    blur.dst_premultiplied = 0;
    for (const uint32_t flags : {15u, 14u, 4u, 5u, 31u}) {
        blur.flags = flags;
        dst.random(1);
        EXPECT_EQ(0, blur(src, dst));
        EXPECT_TRUE(test::sameBytes(TypeParam{}, dst(2, 0))) << flags;
    }
    for (const uint32_t flags : {1u, 17u, 0u}) {  // with alpha alone, or nothing, colours stay
        blur.flags = flags;
        EXPECT_EQ(0, blur(src, dst));
        EXPECT_TRUE(test::sameBytes(src(2, 0), dst(2, 0))) << flags;
    }
}

TEST_F(BoxBlur, WithAlphaNotNamedColoursAreDividedByTheWindowsAlphaAndAlphaStays) {
    Canvas<RK_Pixel8> src(3, 1), dst(3, 1);
    src(0, 0) = {100, 50, 0, 0};
    src(1, 0) = {50, 20, 0, 0};
    src(2, 0) = {0, 0, 0, 0};
    Blur blur;
    blur.radius = 1, blur.flags = RK_kBlurRed, blur.dst_premultiplied = 0;
    EXPECT_EQ(0, blur(src, dst));
    const int t = (150 * 1024 + 127) / 255;
    EXPECT_EQ(dst(1, 0).red, (70 * 1024 + t / 2) / t);
    EXPECT_EQ(dst(1, 0).alpha, 50);
}

TEST_F(BoxBlur, DividedColoursAreHeldToFullAtDepths8And16) {
    Canvas<RK_Pixel8> src8(1, 1), dst8(1, 1);
    src8(0, 0) = {100, 101, 200, 100};
    Canvas<RK_Pixel16> src16(1, 1), dst16(1, 1);
    src16(0, 0) = {10000, 10001, 65535, 10000};
    Blur blur;
    blur.radius = 0, blur.dst_premultiplied = 0;
    EXPECT_EQ(0, blur(src8, dst8));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{100, 255, 255, 255}, dst8(0, 0)));
    EXPECT_EQ(0, blur(src16, dst16));
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{10000, 32768, 32768, 32768}, dst16(0, 0)));
}

TEST_F(BoxBlur, FloatsAreHeldTo0To1AtEveryStageAndNaNPasses) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Canvas<RK_PixelFloat> src(5, 1), dst(5, 1);
    src(0, 0) = {1, 5, -5, 1e-31f};
    src(4, 0) = {1, 1.0000001f, -0.0f, nan};
    Blur blur;
    blur.radius = 0, blur.passes = 2;
    EXPECT_EQ(0, blur(src, dst));
    EXPECT_TRUE(test::sameBytes(RK_PixelFloat{1, 1, 0, 0}, dst(0, 0)));
    EXPECT_EQ(dst(4, 0).red, 1.0f);
    EXPECT_FALSE(std::signbit(dst(4, 0).green));
    EXPECT_TRUE(std::isnan(dst(4, 0).blue));
    // Two passes over 4 and -2: held to 1 after the first, where their mean would be 2/3.
    src.picture.fill({});
    src(2, 0) = {4, -2, 0, 0};
    blur.radius = 1;
    EXPECT_EQ(0, blur(src, dst));
    EXPECT_EQ(dst(2, 0).alpha, 1.0f);
    EXPECT_EQ(dst(2, 0).red, 0.0f);
    EXPECT_EQ(dst(0, 0).alpha, static_cast<float>(1 / 3.0));
}

// ---- The retired blurs ----------------------------------------------------------------------------------

TEST_F(BoxBlur, TheFastBlursAreRetiredAndGive5WhateverTheyAreGiven) {
    EXPECT_EQ(5, RK_FastBlur_Premul());
    EXPECT_EQ(5, RK_FastBlur_Straight(1, 2.0, "three"));
    Canvas<RK_Pixel8> canvas(3, 3);
    canvas.random(1);
    const auto before = canvas.picture;
    RK_LayerDef record = canvas.picture.record();
    EXPECT_EQ(5, RKp_Slot<RKp_kSlot_FastBlur_Premul>()(&record, 3.0));
    EXPECT_EQ(5, RKp_Slot<RKp_kSlot_FastBlur_Straight>()(nullptr));
    EXPECT_TRUE(before == canvas.picture);
    EXPECT_EQ(RKp_G_OverFuncs[26], reinterpret_cast<void*>(RK_FastBlur_Straight));
    EXPECT_EQ(RKp_G_OverFuncs[27], reinterpret_cast<void*>(RK_FastBlur_Premul));
}

}  // namespace
