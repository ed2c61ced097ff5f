#include "RK/indep/composite/RK_Rand.h"

#include "test/composite/ModeRows.h"

using namespace test;

TEST(Rand, OfSeedZeroMovesToTheHighestPositive) {
    uint32_t seed = 0;
    EXPECT_EQ(RK_Rand(&seed), 0x7FFF);
    EXPECT_EQ(seed, 0x7FFFFFFFu);
}

TEST(Rand, AddsItsTwoProducts) {
    uint32_t seed = 1;
    EXPECT_EQ(RK_Rand(&seed), 48271 >> 7);
    EXPECT_EQ(seed, 48271u);
    seed = 44488;  // hi 1, lo 0
    RK_Rand(&seed);
    EXPECT_EQ(seed, 3399u);
    seed = 44489;
    RK_Rand(&seed);
    EXPECT_EQ(seed, 3399u + 48271u);
    EXPECT_NE(seed, 48271u - 3399u);
}

TEST(Rand, WrapsAt32Bits) {
    uint32_t seed = 0xFFFFFFFFu;
    const uint64_t exact = uint64_t{0xFFFFFFFFu / 44488} * 3399 + uint64_t{0xFFFFFFFFu % 44488} * 48271;
    const RK_Long r = RK_Rand(&seed);
    EXPECT_EQ(seed, static_cast<uint32_t>(exact));
    EXPECT_EQ(r, RK_Long(seed >> 7 & 0x7FFF));
}

TEST(Rand, HasItsSequence) {
    uint32_t seed = 12345, h = 0;
    for (int i = 0; i < 100000; ++i) {
        const RK_Long r = RK_Rand(&seed);
        ASSERT_TRUE(r >= 0 && r <= 32767);
        h = h * 31 + uint32_t(r);
    }
    EXPECT_EQ(h, 4116100378u);
}
