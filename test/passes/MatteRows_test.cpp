#include <limits>

#include "RK/indep/frame/RK_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_Premul.h"
#include "RK/indep/world/RK_World.h"
#include "test/Reports.h"
#include "test/passes/Scans.h"
#include "test/world/OddWorld.h"

namespace {

using test::Exact8;

class MatteRows : public test::Tidy {};

std::vector<RK_Pixel8> everyPair() {
    std::vector<RK_Pixel8> row;
    for (int a = 0; a < 256; ++a)
        for (int c = 0; c < 256; ++c)
            row.push_back({uint8_t(a), uint8_t(c), uint8_t(255 - c), uint8_t(c ^ a)});
    return row;
}

RK_Pixel8 multiplied(const RK_Pixel8& p) {
    const auto c = [&](int x) { return uint8_t(Exact8::mul(x, p.alpha)); };
    return {p.alpha, c(p.red), c(p.green), c(p.blue)};
}
RK_Pixel8 divided(const RK_Pixel8& p) {
    const auto c = [&](int x) { return uint8_t(Exact8::div(p.alpha, x)); };
    return {p.alpha, c(p.red), c(p.green), c(p.blue)};
}
RK_Pixel8 dividedInPlace(const RK_Pixel8& p) {
    return p.alpha == 0 ? RK_Pixel8{} : p.alpha == 255 ? p : divided(p);
}

template <class Rule>
void expectRow(const std::vector<RK_Pixel8>& from, const std::vector<RK_Pixel8>& got, Rule rule) {
    for (size_t i = 0; i < from.size(); ++i) ASSERT_TRUE(test::sameBytes(rule(from[i]), got[i])) << i;
}

TEST_F(MatteRows, BlackMatteMultipliesFromRowToRowAndInPlace) {
    const std::vector<RK_Pixel8> row = everyPair();
    std::vector<RK_Pixel8> apart(row.size()), by_null = row, by_equal = row, argb = row;
    EXPECT_EQ(0, RK_BlackMatte(nullptr, 65536, row.data(), apart.data()));
    EXPECT_EQ(0, RK_BlackMatte(nullptr, 65536, nullptr, by_null.data()));
    EXPECT_EQ(0, RK_BlackMatte(nullptr, 65536, by_equal.data(), by_equal.data()));
    EXPECT_EQ(0, RK_BlackMatteARGB(nullptr, 65536, argb.data()));
    for (const auto* got : {&apart, &by_null, &by_equal, &argb}) expectRow(row, *got, multiplied);
}

TEST_F(MatteRows, DeBlackMatteHasSpecialAlphasInPlaceOnly) {
    const std::vector<RK_Pixel8> row = everyPair();
    std::vector<RK_Pixel8> apart(row.size()), by_null = row, by_equal = row, argb = row;
    EXPECT_EQ(0, RK_DeBlackMatte(nullptr, 65536, row.data(), apart.data()));
    EXPECT_EQ(0, RK_DeBlackMatte(nullptr, 65536, nullptr, by_null.data()));
    EXPECT_EQ(0, RK_DeBlackMatte(nullptr, 65536, by_equal.data(), by_equal.data()));
    EXPECT_EQ(0, RK_DeBlackMatteARGB(nullptr, 65536, argb.data()));
    expectRow(row, apart, divided);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{0, 255, 255, 255}, apart[7]));
    for (const auto* got : {&by_null, &by_equal, &argb}) expectRow(row, *got, dividedInPlace);
}

TEST_F(MatteRows, AlphaLastRowsZeroAtZeroSkipAtFullAndScaleBetween) {
    for (bool forward : {true, false}) {
        const std::vector<RK_Pixel8> row = everyPair();
        std::vector<uint8_t> bgra;
        for (const RK_Pixel8& p : row) bgra.insert(bgra.end(), {p.blue, p.green, p.red, p.alpha});
        EXPECT_EQ(0, forward ? RK_BlackMatteBGRA(nullptr, 65536, bgra.data())
                             : RK_DeBlackMatteBGRA(nullptr, 65536, bgra.data()));
        for (size_t i = 0; i < row.size(); ++i) {
            const RK_Pixel8 p = row[i].alpha == 0 ? RK_Pixel8{}
                                : forward         ? multiplied(row[i])
                                                  : dividedInPlace(row[i]);
            ASSERT_TRUE(bgra[4 * i] == p.blue && bgra[4 * i + 1] == p.green && bgra[4 * i + 2] == p.red &&
                        bgra[4 * i + 3] == p.alpha)
                << i;
        }
    }
}

TEST_F(MatteRows, RowsReadTheTable) {
    static int calls;
    calls = 0;
    void* const held = RKp_G_OverFuncs[36];
    RKp_ScanFunc<RK_Pixel8>* spy = [](RK_Long count, const RK_Pixel8* src, RK_Pixel8*) -> RK_Long {
        calls += src == nullptr && count == 3;
        return 77;
    };
    ASSERT_EQ(0, RK_SetOverrideFunc(36, reinterpret_cast<void*>(spy)));
    RK_Pixel8 row[3] = {};
    EXPECT_EQ(77, RK_DeBlackMatteARGB(nullptr, 3, row));
    EXPECT_EQ(77, RK_DeBlackMatte(nullptr, 3, nullptr, row));
    RKp_G_OverFuncs[36] = held;
    EXPECT_EQ(2, calls);
}

TEST_F(MatteRows, ACountBelowOneDoesNothingAndANullRowIsReported) {
    for (RK_Long count : {RK_Long{0}, RK_Long{-1}, std::numeric_limits<RK_Long>::min()}) {
        EXPECT_EQ(0, RK_BlackMatte(nullptr, count, nullptr, nullptr));
        EXPECT_EQ(0, RK_DeBlackMatte(nullptr, count, nullptr, nullptr));
        EXPECT_EQ(0, RK_BlackMatteARGB(nullptr, count, nullptr));
        EXPECT_EQ(0, RK_DeBlackMatteARGB(nullptr, count, nullptr));
        EXPECT_EQ(0, RK_BlackMatteBGRA(nullptr, count, nullptr));
        EXPECT_EQ(0, RK_DeBlackMatteBGRA(nullptr, count, nullptr));
    }
    EXPECT_TRUE(test::noReports());
    const RK_Pixel8 src[1] = {};
    EXPECT_EQ(3, RK_BlackMatte(nullptr, 1, src, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, RK_DeBlackMatte(nullptr, 1, nullptr, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, RK_BlackMatteARGB(nullptr, 1, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, RK_DeBlackMatteARGB(nullptr, 1, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, RK_BlackMatteBGRA(nullptr, 1, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, RK_DeBlackMatteBGRA(nullptr, 1, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
}

// ---- The matte of a world -------------------------------------------------------------------------------

using Change = RK_Long(RK_LayerDef* world, const RK_Pixel8* color, RK_Long forward);

// The pixel with the share of the colour that its alpha leaves open, added or taken away, modulo 256.
RK_Pixel8 changed(const RK_Pixel8& p, const RK_Pixel8& colour, bool forward) {
    if (p.alpha == 255) return p;
    const auto c = [&](int x, int k) {
        const int share = int(Exact8::mul(k, 255 - p.alpha));
        return uint8_t(forward ? x + share : x - share);
    };
    return {p.alpha, c(p.red, colour.red), c(p.green, colour.green), c(p.blue, colour.blue)};
}
RK_Pixel8 reversed(const RK_Pixel8& p) { return {p.blue, p.green, p.red, p.alpha}; }

TEST_F(MatteRows, ChangingTheMatteAddsOrTakesTheColoursShareAndWraps) {
    const RK_Pixel8 colour = {17, 255, 100, 3};
    for (Change* change : {RK_MatteBlackToMatteColorARGB, RK_MatteBlackToMatteColorBGRA})
        for (RK_Long forward : {RK_Long{1}, RK_Long{-5}, RK_Long{0}}) {
            const bool argb = change == RK_MatteBlackToMatteColorARGB;
            test::Picture<RK_Pixel8> picture(256, 9, 2), before(256, 9, 2);
            before.fillRandom(uint32_t(forward + 9));
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 256; ++x) {
                    before.at(x, y).alpha = uint8_t(x);
                    picture.at(x, y) = argb ? before.at(x, y) : reversed(before.at(x, y));
                }
            RK_LayerDef world = picture.record();
            EXPECT_EQ(0, change(&world, &colour, forward));
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 256; ++x) {
                    const RK_Pixel8 want = changed(before.at(x, y), colour, forward != 0);
                    ASSERT_TRUE(test::sameBytes(argb ? want : reversed(want), picture.at(x, y)))
                        << x << " " << y;
                }
            EXPECT_TRUE(picture.guardsWhole());
        }
}

TEST_F(MatteRows, ThereAndBackIsTheSamePicture) {
    const RK_Pixel8 colour = {255, 200, 1, 255};
    test::Picture<RK_Pixel8> picture(67, 5);
    picture.fillRandom(1);
    const test::Picture<RK_Pixel8> before = picture;
    RK_LayerDef world = picture.record();
    EXPECT_EQ(0, RK_MatteBlackToMatteColorARGB(&world, &colour, 1));
    EXPECT_TRUE(picture != before);
    EXPECT_EQ(0, RK_MatteBlackToMatteColorARGB(&world, &colour, 0));
    EXPECT_TRUE(picture == before);
}

TEST_F(MatteRows, ABlackColourChangesNothing) {
    const RK_Pixel8 black = {200, 0, 0, 0};
    for (Change* change : {RK_MatteBlackToMatteColorARGB, RK_MatteBlackToMatteColorBGRA})
        for (const RK_Pixel8* colour : {&black, static_cast<const RK_Pixel8*>(nullptr)}) {
            test::Picture<RK_Pixel8> picture(11, 3);
            picture.fillRandom(2);
            const test::Picture<RK_Pixel8> before = picture;
            RK_LayerDef world = picture.record();
            EXPECT_EQ(0, change(&world, colour, 1));
            EXPECT_EQ(0, change(&world, colour, 0));
            EXPECT_TRUE(picture == before);
        }
}

TEST_F(MatteRows, RowsMayRunUpwards) {
    test::Picture<RK_Pixel8> picture(5, 4);
    picture.fill({100, 10, 20, 30});
    RK_LayerDef world = picture.record();
    world.data = picture.row(3);
    world.rowbytes = -world.rowbytes;
    const RK_Pixel8 colour = {0, 255, 255, 255};
    EXPECT_EQ(0, RK_MatteBlackToMatteColorARGB(&world, &colour, 1));
    for (int y = 0; y < 4; ++y) EXPECT_EQ(165, picture.at(4, y).red);
    EXPECT_TRUE(picture.guardsWhole());
}

TEST_F(MatteRows, AnotherDepthIsReportedBeforeBlackIsSeen) {
    test::Picture<RK_Pixel16> deep(3, 3);
    test::Picture<RK_PixelFloat> deepest(3, 3);
    for (RK_LayerDef world : {deep.record(), deepest.record()}) {
        for (const RK_Pixel8 colour : {RK_Pixel8{0, 0, 0, 0}, RK_Pixel8{0, 9, 9, 9}}) {
            EXPECT_EQ(3, RK_MatteBlackToMatteColorARGB(&world, &colour, 1));
            EXPECT_TRUE(
                test::onlyVerification("RK_MatteBlackToMatteColorARGB only works on 8bpc RK_EffectWorlds"));
            EXPECT_EQ(3, RK_MatteBlackToMatteColorBGRA(&world, &colour, 1));
            EXPECT_TRUE(
                test::onlyVerification("RK_MatteBlackToMatteColorBGRA only works on 8bpc RK_EffectWorlds"));
        }
    }
    test::OddWorld odd(24);
    const RK_Pixel8 colour = {0, 9, 9, 9};
    EXPECT_EQ(3, RK_MatteBlackToMatteColorARGB(&odd.record, &colour, 1));
    EXPECT_TRUE(test::onlyVerification("RK_MatteBlackToMatteColorARGB only works on 8bpc RK_EffectWorlds"));
}

TEST_F(MatteRows, NoWorldOrNoPixelsIsReported) {
    const RK_Pixel8 colour = {0, 9, 9, 9};
    for (Change* change : {RK_MatteBlackToMatteColorARGB, RK_MatteBlackToMatteColorBGRA}) {
        EXPECT_EQ(3, change(nullptr, &colour, 1));
        EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
        test::Picture<RK_Pixel8> picture(2, 2);
        RK_LayerDef world = picture.record();
        world.data = nullptr;
        EXPECT_EQ(3, change(&world, &colour, 1));
        EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
        world.width = 0;
        EXPECT_EQ(0, change(&world, &colour, 1));
        world.width = 2, world.height = -1;
        EXPECT_EQ(0, change(&world, &colour, 1));
    }
}

}  // namespace
