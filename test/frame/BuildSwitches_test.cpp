// Fails when the switches of cmake/Arithmetic.cmake are lost.
#include <gtest/gtest.h>

#include <cmath>

float BuildSwitches_ProductPlusSum(float a, float b, float c);  // compiled for processors that could fuse

namespace {

#ifdef __FAST_MATH__
constexpr bool kFastMath = true;
#else
constexpr bool kFastMath = false;
#endif

// Opaque to the optimizer, so that the machine does the sums and not the compiler.
float now(float x) {
    volatile float kept = x;
    return kept;
}

}  // namespace

TEST(BuildSwitches, FloatsAreRoundedAtEachStep) {
    EXPECT_EQ(__FLT_EVAL_METHOD__, 0);
    // 1 + 2^-24 rounds back to 1; a wider intermediate would keep the small term and show it.
    const float small = now(std::ldexp(1.0f, -24));
    EXPECT_EQ((now(1.0f) + small) - now(1.0f), 0.0f);
    EXPECT_EQ((now(3e38f) * now(10.0f)) * now(0.01f), INFINITY);
}

TEST(BuildSwitches, FloatsAreNotReorderedAndNaNsAreNoticed) {
    EXPECT_FALSE(kFastMath);
    const float big = now(16777216.0f), one = now(1.0f);
    EXPECT_EQ((big + one) - big, 0.0f);
    const float nan = now(NAN);
    EXPECT_FALSE(nan == nan);
    EXPECT_TRUE(std::signbit(now(-0.0f) * one));
}

// (1 + 2^-12)^2 - (1 + 2^-11) is 2^-24 when the product is not rounded, and 0 when it is.
TEST(BuildSwitches, ProductsAndSumsAreNotFused) {
    const float a = now(1.0f + std::ldexp(1.0f, -12)), c = now(-(1.0f + std::ldexp(1.0f, -11)));
    EXPECT_EQ(a * a + c, 0.0f);
    // A processor that cannot fuse cannot run that function, and has nothing to show.
    if (__builtin_cpu_supports("fma")) {
        EXPECT_EQ(BuildSwitches_ProductPlusSum(a, a, c), 0.0f);
    }
}
