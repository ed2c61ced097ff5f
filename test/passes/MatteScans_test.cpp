#include "RK/indep/passes/RKp_MatteScans.h"

#include <cmath>
#include <limits>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/passes/Scans.h"

namespace {

using test::eachForm;
using test::Matte;
using test::scanned;
using test::scanPairs;

constexpr float kDenormal = 1e-39f;

template <class P>
struct Pick;
template <>
struct Pick<RK_Pixel8> {
    using Exact = test::Exact8;
};
template <>
struct Pick<RK_Pixel16> {
    using Exact = test::Exact16;
};

template <class P>
P made(double a, double r, double g, double b) {
    using C = decltype(P::alpha);
    return {static_cast<C>(a), static_cast<C>(r), static_cast<C>(g), static_cast<C>(b)};
}

// The row against the exact rules, with the special alphas of the path.
template <class P>
void expectExact(const test::ScanPair<P>& pair, RKp_ScanFunc<P>* scan, const std::vector<P>& row,
                 bool in_place) {
    using E = typename Pick<P>::Exact;
    const std::vector<P> got = scanned(scan, row, in_place);
    for (size_t i = 0; i < row.size(); ++i) {
        const P p = row[i];
        const auto rule = [&](int64_t c) {
            return test::exactChannel<E>(pair.matte, pair.forward, p.alpha, c);
        };
        P want = made<P>(p.alpha, double(rule(p.red)), double(rule(p.green)), double(rule(p.blue)));
        if (in_place && !pair.forward && p.alpha == 0) want = P{};
        if (in_place && !pair.forward && p.alpha == E::kFull) want = p;
        ASSERT_TRUE(test::sameBytes(want, got[i]))
            << (in_place ? "in place" : "apart") << ", alpha " << p.alpha << ", colours " << int(p.red) << " "
            << int(p.green) << " " << int(p.blue) << " gave " << int(got[i].red) << " " << int(got[i].green)
            << " " << int(got[i].blue);
    }
}

// ---- The rules ------------------------------------------------------------------------------------------

TEST(MatteScans, EveryAlphaAndColourAtEightBitsFollowsTheRule) {
    std::vector<RK_Pixel8> row;
    for (int a = 0; a < 256; ++a)
        for (int c = 0; c < 256; ++c)
            row.push_back({uint8_t(a), uint8_t(c), uint8_t(255 - c), uint8_t(c * 7)});
    for (const auto& pair : scanPairs<RK_Pixel8>()) {
        eachForm(pair, [&](auto* scan) {
            expectExact(pair, scan, row, true);
            expectExact(pair, scan, row, false);
        });
    }
}

TEST(MatteScans, EveryAlphaAtSixteenBitsFollowsTheRule) {
    test::Random r(3);
    std::vector<RK_Pixel16> row;
    for (int a = 0; a <= 32768; ++a) {
        const auto push = [&](int c, int d, int e) { row.push_back(made<RK_Pixel16>(a, c, d, e)); };
        push(0, 1, 32768);
        push(16383, 16384, 16385);
        push(a, std::max(a - 1, 0), std::min(a + 1, 32768));
        for (int k = 0; k < 4; ++k) push(int(r.below(32769)), int(r.below(32769)), int(r.below(32769)));
    }
    for (const auto& pair : scanPairs<RK_Pixel16>()) {
        eachForm(pair, [&](auto* scan) {
            expectExact(pair, scan, row, true);
            expectExact(pair, scan, row, false);
        });
    }
}

// Each step rounded to float; a an alpha that is no special one.
float floatRule(Matte matte, bool forward, float a, float c) {
    volatile float step;
    if (matte == Matte::Black) return forward ? c * a : c / a;
    if (matte == Matte::White) {
        step = 1.0f - c;
        step = forward ? step * a : step / a;
        return 1.0f - step;
    }
    if (forward) {
        if (c >= 0.5f) {
            step = c - 0.5f;
            step = step * a;
            return step + 0.5f;
        }
        step = 1.0f - a;
        volatile float far = 0.5f - c;
        step = step * far;
        return c + step;
    }
    step = c >= 0.5f ? c - 0.5f : 0.5f - c;
    step = step / a;
    if (c >= 0.5f) return step < 0.5f ? step + 0.5f : 1.0f;
    return step < 0.5f ? 0.5f - step : 0.0f;
}

TEST(MatteScans, FloatPixelsFollowTheRuleInSinglePrecisionSteps) {
    test::Random r(5);
    std::vector<RK_PixelFloat> row;
    const float alphas[] = {1e-30f, 1.17549435e-38f, 0.25f, 0.5f, 0.99999994f, 1.0000001f, 2.0f, -0.5f, 1.0f};
    for (float a : alphas)
        for (float c : {0.0f, 1.0f, 0.5f, 0.49999997f, 0.75f, 1.5f, -0.25f, 3.0f, 1e-39f})
            row.push_back({a, c, 1 - c, c / 3});
    for (int i = 0; i < 50000; ++i)
        row.push_back({r.unit() * 0.999f + 0.0005f, r.unit(), r.unit() * 2 - 0.5f, r.unit()});
    for (const auto& pair : scanPairs<RK_PixelFloat>()) {
        eachForm(pair, [&](auto* scan) {
            for (bool in_place : {true, false}) {
                const std::vector<RK_PixelFloat> got = scanned(scan, row, in_place);
                for (size_t i = 0; i < row.size(); ++i) {
                    const RK_PixelFloat& p = row[i];
                    const auto rule = [&](float c) {
                        return floatRule(pair.matte, pair.forward, p.alpha, c);
                    };
                    RK_PixelFloat want = {p.alpha, rule(p.red), rule(p.green), rule(p.blue)};
                    if (in_place && !pair.forward && p.alpha == 1.0f) want = p;
                    ASSERT_TRUE(test::sameBytes(want, got[i]))
                        << "alpha " << p.alpha << " red " << p.red << " gave " << got[i].red << " not "
                        << want.red;
                }
            }
        });
    }
}

// ---- Rounding -------------------------------------------------------------------------------------------

TEST(MatteScans, PremultiplyingRoundsAndDoesNotTruncate) {
    const auto with = [](int term, int product) { return (product + term + ((product + term) >> 8)) >> 8; };
    eachForm(scanPairs<RK_Pixel8>()[0], [&](auto* scan) {
        EXPECT_EQ(128, scanned(scan, RK_Pixel8{128, 255, 0, 0}, true).red);
        EXPECT_EQ(127, (255 * 128) >> 8);
        EXPECT_EQ(1, scanned(scan, RK_Pixel8{1, 128, 0, 0}, true).red);
        EXPECT_EQ(0, with(127, 128));
        EXPECT_EQ(0, scanned(scan, RK_Pixel8{1, 127, 0, 0}, true).red);
        EXPECT_EQ(1, with(129, 127));
    });
}

TEST(MatteScans, TheTermAtSixteenBitsIs16383) {
    eachForm(scanPairs<RK_Pixel16>()[0], [](auto* scan) {
        EXPECT_EQ(32768, scanned(scan, RK_Pixel16{32768, 32768, 0, 0}, true).red);
        // 16384 would give 1, and 16382 would give 0 below.
        EXPECT_EQ(0, scanned(scan, RK_Pixel16{16384, 1, 0, 0}, true).red);
        EXPECT_EQ(1, scanned(scan, RK_Pixel16{1, 16385, 0, 0}, true).red);
    });
    // White: 32768 - mul15(1, 16384), and 32768 - mul15(16385, 1).
    eachForm(scanPairs<RK_Pixel16>()[2], [](auto* scan) {
        EXPECT_EQ(32768, scanned(scan, RK_Pixel16{16384, 32767, 0, 0}, true).red);
        EXPECT_EQ(32767, scanned(scan, RK_Pixel16{1, 16383, 0, 0}, true).red);
    });
}

TEST(MatteScans, UnmultiplyingRoundsByHalfTheAlphaCutDown) {
    eachForm(scanPairs<RK_Pixel8>()[1], [](auto* scan) {
        // 42.5 goes up; one less than half of 6 would leave it.
        EXPECT_EQ(43, scanned(scan, RK_Pixel8{6, 1, 0, 0}, true).red);
        EXPECT_EQ(42, (1 * 255 + 2) / 6);
        // Half of 7 is 3; 4 would go up.
        EXPECT_EQ(36, scanned(scan, RK_Pixel8{7, 1, 0, 0}, true).red);
        EXPECT_EQ(37, (1 * 255 + 4) / 7);
    });
    eachForm(scanPairs<RK_Pixel16>()[1], [](auto* scan) {
        EXPECT_EQ(10923, scanned(scan, RK_Pixel16{3, 1, 0, 0}, true).red);
        EXPECT_EQ(10922, (1 * 32768 + 0) / 3);
        // Half of 3 is 1; 2 would go up.
        EXPECT_EQ(21845, scanned(scan, RK_Pixel16{3, 2, 0, 0}, true).red);
        EXPECT_EQ(21846, (2 * 32768 + 2) / 3);
    });
}

TEST(MatteScans, TheQuotientAtSixteenBitsNeverExceedsFull) {
    eachForm(scanPairs<RK_Pixel16>()[1], [](auto* scan) {
        for (int a : {1, 2, 100, 16384, 32767, 32768})
            for (int c : {a, a + 1, 32767, 32768}) {
                const RK_Pixel16 p = made<RK_Pixel16>(a, std::min(c, 32768), 0, 0);
                const int got = scanned(scan, p, false).red;
                EXPECT_LE(got, 32768);
                EXPECT_EQ(p.red >= a ? 32768 : test::Exact16::div(a, p.red), got);
            }
    });
}

// ---- Special alphas -------------------------------------------------------------------------------------

template <class P>
void expectInPlaceSpecials(const std::vector<P>& untouched_at_full, const std::vector<P>& clear) {
    for (const auto& pair : scanPairs<P>()) {
        if (pair.forward) continue;
        eachForm(pair, [&](auto* scan) {
            for (const P& p : untouched_at_full) EXPECT_TRUE(test::sameBytes(p, scanned(scan, p, true)));
            for (const P& p : clear) EXPECT_TRUE(test::sameBytes(P{}, scanned(scan, p, true)));
        });
    }
}

TEST(MatteScans, InPlaceAnAlphaOfZeroZeroesThePixelAndAFullOneLeavesIt) {
    expectInPlaceSpecials<RK_Pixel8>({{255, 0, 128, 255}, {255, 1, 127, 254}},
                                     {{0, 1, 2, 3}, {0, 255, 128, 0}});
    // A colour above full is left too.
    expectInPlaceSpecials<RK_Pixel16>({{32768, 0, 16384, 32768}, {32768, 1, 40000, 65535}},
                                      {{0, 1, 2, 3}, {0, 32768, 16384, 0}});
    // White's rule would lose the small colour, grey's the one out of range.
    expectInPlaceSpecials<RK_PixelFloat>({{1.0f, 1e-12f, 3.0f, -2.0f}, {1.0f, -0.0f, 0.5f, 1e-40f}},
                                         {{0.0f, 1.0f, -2.0f, 0.5f}, {-0.0f, 1.0f, 0.25f, 0.0f}});
}

TEST(MatteScans, InPlaceSpecialPixelsMayStandAmongOthers) {
    const std::vector<RK_PixelFloat> row = {{1.0f, 1e-12f, 3.0f, -2.0f},
                                            {0.5f, 0.25f, 0.25f, 0.25f},
                                            {0.0f, 1.0f, 1.0f, 1.0f},
                                            {kDenormal, 0.25f, 0.0f, 0.5f},
                                            {0.25f, 0.5f, 0.5f, 0.5f}};
    eachForm(scanPairs<RK_PixelFloat>()[1], [&](auto* scan) {
        const std::vector<RK_PixelFloat> got = scanned(scan, row, true);
        EXPECT_TRUE(test::sameBytes(row[0], got[0]));
        EXPECT_TRUE(test::sameBytes(RK_PixelFloat{0.5f, 0.5f, 0.5f, 0.5f}, got[1]));
        EXPECT_TRUE(test::sameBytes(RK_PixelFloat{}, got[2]));
        EXPECT_TRUE(test::sameBytes(RK_PixelFloat{kDenormal, 1.0f, 1.0f, 1.0f}, got[3]));
        EXPECT_TRUE(test::sameBytes(RK_PixelFloat{0.25f, 2.0f, 2.0f, 2.0f}, got[4]));
    });
}

// Black gives full, white 0, grey full from the middle up and 0 below it.
template <class P>
void expectApartAtZero(double full, double grey, const P& p) {
    for (const auto& pair : scanPairs<P>()) {
        if (pair.forward) continue;
        eachForm(pair, [&](auto* scan) {
            const auto want = [&](double c) {
                if (pair.matte == Matte::Grey) return c >= grey ? full : 0.0;
                return pair.matte == Matte::Black ? full : 0.0;
            };
            P expected = made<P>(0, want(p.red), want(p.green), want(p.blue));
            expected.alpha = p.alpha;
            EXPECT_TRUE(test::sameBytes(expected, scanned(scan, p, false)));
        });
    }
}

TEST(MatteScans, FromRowToRowAnAlphaOfZeroTakesAFullQuotientThroughTheRule) {
    expectApartAtZero<RK_Pixel8>(255, 128, {0, 128, 127, 0});
    expectApartAtZero<RK_Pixel8>(255, 128, {0, 255, 0, 200});
    expectApartAtZero<RK_Pixel16>(32768, 16384, {0, 16384, 16383, 0});
    expectApartAtZero<RK_Pixel16>(32768, 16384, {0, 32768, 0, 30000});
    expectApartAtZero<RK_PixelFloat>(1.0, 0.5, {0.0f, 0.5f, 0.49999997f, 0.0f});
    expectApartAtZero<RK_PixelFloat>(1.0, 0.5, {-0.0f, 2.0f, -1.0f, 0.75f});
}

TEST(MatteScans, ADenormalAlphaMakesEveryColourOneForEveryMatteOnBothPaths) {
    for (float a : {kDenormal, -kDenormal, std::numeric_limits<float>::denorm_min(), 1.17549421e-38f})
        for (const auto& pair : scanPairs<RK_PixelFloat>()) {
            if (pair.forward) continue;
            eachForm(pair, [&](auto* scan) {
                for (bool in_place : {true, false}) {
                    const RK_PixelFloat got = scanned(scan, RK_PixelFloat{a, 0.0f, 0.25f, 0.75f}, in_place);
                    EXPECT_TRUE(test::sameBytes(RK_PixelFloat{a, 1.0f, 1.0f, 1.0f}, got));
                }
            });
        }
    // The smallest normal alpha divides.
    eachForm(scanPairs<RK_PixelFloat>()[1], [](auto* scan) {
        EXPECT_EQ(0.0f, scanned(scan, RK_PixelFloat{1.17549435e-38f, 0.0f, 1.0f, 1.0f}, true).red);
    });
}

TEST(MatteScans, PremultiplyingKnowsNoSpecialAlpha) {
    // Full alpha runs white's rule, which loses a small colour.
    eachForm(scanPairs<RK_PixelFloat>()[2], [](auto* scan) {
        EXPECT_EQ(0.0f, scanned(scan, RK_PixelFloat{1.0f, 1e-12f, 1.0f, 1.0f}, true).red);
    });
    eachForm(scanPairs<RK_PixelFloat>()[0], [](auto* scan) {
        const RK_PixelFloat got = scanned(scan, RK_PixelFloat{0.0f, -1.0f, 1.0f, HUGE_VALF}, true);
        EXPECT_TRUE(got.red == 0.0f && std::signbit(got.red));
        EXPECT_TRUE(std::isnan(got.blue));
    });
}

TEST(MatteScans, GreyPremultipliedAtAlphaZeroIsTheMiddle) {
    eachForm(scanPairs<RK_Pixel8>()[4], [](auto* scan) {
        for (int c = 0; c < 256; ++c) EXPECT_EQ(128, scanned(scan, RK_Pixel8{0, uint8_t(c), 0, 0}, true).red);
    });
    eachForm(scanPairs<RK_Pixel16>()[4], [](auto* scan) {
        for (int c : {0, 1, 16383, 16384, 16385, 32768})
            EXPECT_EQ(16384, scanned(scan, RK_Pixel16{0, uint16_t(c), 0, 0}, true).red);
    });
    eachForm(scanPairs<RK_PixelFloat>()[4], [](auto* scan) {
        for (float c : {0.0f, 0.25f, 0.5f, 1.0f, 4.0f})
            EXPECT_EQ(0.5f, scanned(scan, RK_PixelFloat{0.0f, c, 0, 0}, true).red);
    });
}

TEST(MatteScans, ANaNColourLiesBelowTheMiddleAndANaNQuotientIsFarthest) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    eachForm(scanPairs<RK_PixelFloat>()[5], [&](auto* scan) {
        const RK_PixelFloat got = scanned(scan, RK_PixelFloat{0.5f, nan, 0.75f, 0.25f}, true);
        EXPECT_EQ(0.0f, got.red);
        const RK_PixelFloat of_nan = scanned(scan, RK_PixelFloat{nan, 0.25f, 0.75f, 0.5f}, true);
        EXPECT_EQ(0.0f, of_nan.red);
        EXPECT_EQ(1.0f, of_nan.green);
        EXPECT_EQ(1.0f, of_nan.blue);
    });
}

// ---- Rows -----------------------------------------------------------------------------------------------

template <class P>
void expectRowManners() {
    test::Random r(9);
    std::vector<P> row(53);
    for (P& p : row) p = test::pixel<P>(r);
    for (const auto& pair : scanPairs<P>()) {
        eachForm(pair, [&](auto* scan) {
            // Null and equal rows are both in place.
            std::vector<P> by_null = row, by_equal = row;
            EXPECT_EQ(0, scan(53, nullptr, by_null.data()));
            EXPECT_EQ(0, scan(53, by_equal.data(), by_equal.data()));
            for (size_t i = 0; i < row.size(); ++i) EXPECT_TRUE(test::sameBytes(by_null[i], by_equal[i]));
            // No pixels, no change, and no look at the rows.
            for (RK_Long count :
                 {RK_Long{0}, RK_Long{-1}, RK_Long{-8}, std::numeric_limits<RK_Long>::min()}) {
                EXPECT_EQ(0, scan(count, nullptr, nullptr));
                EXPECT_EQ(0, scan(count, row.data(), by_null.data()));
            }
            for (size_t i = 0; i < row.size(); ++i) EXPECT_TRUE(test::sameBytes(by_null[i], by_equal[i]));
            // A pixel's neighbours do not matter.
            for (size_t n = 1; n < 20; ++n) {
                std::vector<P> part = row;
                EXPECT_EQ(0, scan(static_cast<RK_Long>(n), nullptr, part.data()));
                for (size_t i = 0; i < row.size(); ++i)
                    EXPECT_TRUE(test::sameBytes(i < n ? by_null[i] : row[i], part[i])) << n << " " << i;
            }
        });
    }
}
TEST(MatteScans, RowsAreInPlaceByNullOrByEqualityAndTouchCountPixels) {
    expectRowManners<RK_Pixel8>();
    expectRowManners<RK_Pixel16>();
    expectRowManners<RK_PixelFloat>();
}

TEST(MatteScans, AlphaPassesBitForBit) {
    uint32_t signalling = 0x7F812345u;
    RK_PixelFloat p = {0, 0.25f, 0.5f, 0.75f};
    std::memcpy(&p.alpha, &signalling, 4);
    const std::vector<RK_PixelFloat> row(9, p);
    for (const auto& pair : scanPairs<RK_PixelFloat>()) {
        eachForm(pair, [&](auto* scan) {
            for (bool in_place : {true, false})
                for (const RK_PixelFloat& out : scanned(scan, row, in_place))
                    EXPECT_EQ(0, std::memcmp(&out.alpha, &signalling, 4));
        });
    }
}

// ---- The table ------------------------------------------------------------------------------------------

template <class P>
void expectSlots(int first) {
    const auto pairs = scanPairs<P>();
    for (int i = 0; i < 6; ++i) {
        const auto& pair = pairs[static_cast<size_t>(i)];
        RKp_ScanFunc<P>* want = KIT_G_CPU_DataP->has_ssse3 && pair.vector ? pair.vector : pair.plain;
        EXPECT_EQ(reinterpret_cast<void*>(want), RKp_G_OverFuncs[first + i]) << "slot " << first + i;
    }
}
TEST(MatteScans, TheTableHoldsThemInTheirOrder) {
    expectSlots<RK_Pixel8>(35);
    expectSlots<RK_Pixel16>(72);
    expectSlots<RK_PixelFloat>(106);
}

}  // namespace
