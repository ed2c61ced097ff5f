// One pixel alone against the same pixel in a row through the pipeline: the same bytes at 8 and 16 bits for
// every source alpha above 0.
#include "test/composite/ModeRows.h"

using namespace test;

namespace {

// Exempt: Dissolve is made on rows only, and the choosers compare other lumas there.
std::vector<ModeName> agreeing() {
    std::vector<ModeName> list;
    for (const ModeName& m : modes())
        if (m.number >= 0 && m.number != RK_Xfer_Dissolve && m.number != RK_Xfer_LighterColour &&
            m.number != RK_Xfer_DarkerColour)
            list.push_back(m);
    return list;
}

// Composites the rows both ways and compares. Pixels whose scaled alpha is 0 are not compared.
template <class P>
void compare(const ModeName& m, const std::vector<P>& s, const std::vector<P>& d, RK_Channel<P> opacity,
             const P* matte) {
    using D = RKp_Depth<P>;
    std::vector<P> row = d;
    ASSERT_EQ(compositeRow(blending<P>(m.number, opacity), s, matte, row), 0);
    for (size_t i = 0; i < s.size(); ++i) {
        auto sa = D::mul(s[i].alpha, opacity);
        if (matte != nullptr) sa = D::mul(matte[i].alpha, sa);
        if (sa == 0) continue;
        const P one = matte != nullptr ? alone(m.number, s[i], d[i], opacity, matte[i].alpha)
                                       : alone(m.number, s[i], d[i], opacity);
        ASSERT_TRUE(sameBytes(one, row[i]))
            << m.name << ": " << text(s[i]) << " on " << text(d[i]) << " opacity " << opacity << " alone "
            << text(one) << " row " << text(row[i]);
    }
}

template <class P>
struct PixelAgainstRow : ::testing::Test {};
using IntegerDepths = ::testing::Types<RK_Pixel8, RK_Pixel16>;
TYPED_TEST_SUITE(PixelAgainstRow, IntegerDepths);

}  // namespace

TEST(PixelAgainstRow8, OverEveryPairOfAlphas) {
    Random r(1);
    for (const ModeName& m : agreeing())
        for (int sa = 1; sa < 256; ++sa) {
            std::vector<RK_Pixel8> s(256), d(256);
            for (int da = 0; da < 256; ++da) {
                s[size_t(da)] = pixel<RK_Pixel8>(r);
                d[size_t(da)] = pixel<RK_Pixel8>(r);
                s[size_t(da)].alpha = uint8_t(sa);
                d[size_t(da)].alpha = uint8_t(da);
            }
            ASSERT_NO_FATAL_FAILURE(compare<RK_Pixel8>(m, s, d, 255, nullptr));
        }
}

TYPED_TEST(PixelAgainstRow, OverRandomPixelsOpacitiesAndMattes) {
    using P = TypeParam;
    Random r(2);
    for (const ModeName& m : agreeing())
        for (int round = 0; round < 40; ++round) {
            std::vector<P> s(500), d(500), matte(500);
            for (size_t i = 0; i < s.size(); ++i) {
                s[i] = pixel<P>(r);
                d[i] = pixel<P>(r);
                matte[i] = pixel<P>(r);
            }
            const RK_Channel<P> opacity = round % 2 ? pixel<P>(r).alpha : kFull<P>;
            if (opacity == 0) continue;
            ASSERT_NO_FATAL_FAILURE(compare<P>(m, s, d, opacity, round % 4 < 2 ? nullptr : matte.data()));
        }
}

// Every source colour, destination colour and source alpha, on a destination alpha that wanders.
TEST(PixelAgainstRow8, OverEverySourceColourDestinationColourAndSourceAlpha) {
    for (const int32_t number :
         {RK_Xfer_Over, RK_Xfer_Add, RK_Xfer_SoftLight, RK_Xfer_Exclusion, RK_Xfer_VividLight}) {
        RK_ModeInfo info;
        ASSERT_EQ(RK_GetModeInfo(number, &info), 0);
        for (int sa = 1; sa < 256; ++sa) {
            // Three destination colours to a pixel.
            std::vector<RK_Pixel8> s, d;
            for (int sc = 0; sc < 256; ++sc)
                for (int dc = 0; dc < 256; dc += 3) {
                    const uint8_t c = uint8_t(sc);
                    s.push_back({uint8_t(sa), c, c, c});
                    d.push_back({uint8_t((sc * 7 + dc * 5 + sa * 3) & 255), uint8_t(dc),
                                 uint8_t(std::min(dc + 1, 255)), uint8_t(std::min(dc + 2, 255))});
                }
            ASSERT_NO_FATAL_FAILURE(
                compare<RK_Pixel8>({number, info.name, info.mode_class}, s, d, 255, nullptr));
        }
    }
}

// Where the source is clear a wrapped row still goes onto the background and off it; the pixel alone stays.
TEST(PixelAgainstRow8, AClearSourceIsEachOnesOwnAffair) {
    const RK_Pixel8 s = {0, 9, 9, 9}, d = {1, 127, 128, 200};
    EXPECT_EQ(text(composite(RK_Xfer_Add, s, d)), "(1, 0, 255, 255)");
    EXPECT_EQ(text(alone(RK_Xfer_Add, s, d)), text(d));
}
