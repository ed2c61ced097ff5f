// Blends of worlds and of one channel against their plain twins.
#include <gtest/gtest.h>

#include "RK/indep/composite/RK_Blend.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainBlend.h"

namespace {

using test::Random;
using test::World;

RK_Long ratioOf(Random& r) {
    static const int32_t special[] = {0,     -1,    1,     255,   256,   32767,     32768,    32769,
                                      65280, 65535, 65536, 65537, 70000, INT32_MIN, INT32_MAX};
    return r.below(3) == 0 ? special[r.below(15)] : static_cast<int32_t>(r.below(65537));
}
template <class P>
void blendMany(bool straight) {
    Random r(sizeof(P) + (straight ? 1 : 0));
    const int count = test::amount(3000);
    for (int i = 0; i < count; ++i) {
        const int width = test::side(r), height = test::side(r);
        const bool wild = r.below(3) == 0;
        World<P> first(r, width, height, wild), second(r, width, height, wild);
        const World<P> before(r, width, height);
        World<P> expected(before), got(before);
        const RK_Long ratio = ratioOf(r);
        const RK_Long result =
            straight ? RK_Blend_Straight(nullptr, &first.record, &second.record, ratio, &got.record)
                     : RK_Blend_Premul(nullptr, &first.record, &second.record, ratio, &got.record);
        ASSERT_EQ(result, 0);
        plain::blend<P>(straight, first.record, second.record, ratio, expected.record);
        ASSERT_EQ(test::difference(before, expected, got), "")
            << (straight ? "straight " : "premultiplied ") << ratio;
        if (straight && r.below(4) == 0) {
            World<P> plainly(before);
            ASSERT_EQ(RK_Blend(nullptr, &first.record, &second.record, ratio, &plainly.record), 0);
            ASSERT_EQ(test::difference(before, expected, plainly), "");
        }
        if (r.below(4) == 0) {  // onto one of the sources
            World<P> onto(r.below(2) == 0 ? first : second);
            World<P>& source = r.below(2) == 0 ? first : second;
            World<P> other(source);
            World<P> by_hand(onto);
            plain::blend<P>(straight, onto.record, other.record, ratio, by_hand.record);
            if (straight)
                RK_Blend_Straight(nullptr, &onto.record, &other.record, ratio, &onto.record);
            else
                RK_Blend_Premul(nullptr, &onto.record, &other.record, ratio, &onto.record);
            ASSERT_EQ(test::difference(first, by_hand, onto), "") << "in place " << ratio;
        }
    }
}
TEST(BlendAgainstPlain, PremultipliedIsEqual) {
    blendMany<RK_Pixel8>(false);
    blendMany<RK_Pixel16>(false);
    blendMany<RK_PixelFloat>(false);
}
TEST(BlendAgainstPlain, StraightIsEqual) {
    blendMany<RK_Pixel8>(true);
    blendMany<RK_Pixel16>(true);
    blendMany<RK_PixelFloat>(true);
}

template <class P, class C>
void channelMany() {
    Random r(sizeof(P));
    const int wanted = test::amount(1 << 20);
    const auto value = [&] {
        if constexpr (sizeof(C) == 4)
            return test::channel(r, C{}, true);
        else
            return test::channel(r, C{});
    };
    for (int done = 0; done < wanted;) {
        const size_t count = r.below(200);
        done += 100;
        std::vector<C> weights(count + 1);
        std::vector<P> pixels(count / 4 + 2);
        const auto channels = [](std::vector<P>& p) { return reinterpret_cast<C*>(p.data()); };
        for (C& w : weights) w = value();
        for (size_t i = 0; i < pixels.size() * 4; ++i) channels(pixels)[i] = value();
        const C opacity = value(), target = value();
        std::vector<P> expected = pixels, got = pixels;
        for (size_t i = 0; i < count; ++i) {
            C& v = channels(expected)[i];
            v = plain::towards(v, target, weights[i], opacity);
        }
        RK_BlendSingleChannel<P, C>(static_cast<RK_Long>(count), opacity, target, weights.data(), got.data());
        for (size_t i = 0; i < pixels.size() * 4; ++i)
            ASSERT_TRUE(test::sameChannel(channels(expected)[i], channels(got)[i]))
                << "value " << i << " of " << count << ": " << test::showChannel(channels(pixels)[i])
                << " towards " << test::showChannel(target) << " by "
                << test::showChannel(weights[std::min(i, count)]) << " at " << test::showChannel(opacity)
                << ", expected " << test::showChannel(channels(expected)[i]) << ", got "
                << test::showChannel(channels(got)[i]);
    }
}
TEST(BlendAgainstPlain, SingleChannelIsEqual) {
    channelMany<RK_Pixel8, uint8_t>();
    channelMany<RK_Pixel16, uint16_t>();
    channelMany<RK_PixelFloat, float>();
}
// Every value towards every target.
TEST(BlendAgainstPlain, SingleChannelIsEqualOnEveryPairOfBytes) {
    Random r(9);
    for (int target = 0; target < 256; ++target) {
        const uint8_t opacity = r.below(2) == 0 ? uint8_t(255) : test::channel(r, uint8_t{});
        std::vector<uint8_t> weights, values, expected;
        for (int v = 0; v < 256; ++v) {
            weights.push_back(test::channel(r, uint8_t{}));
            values.push_back(static_cast<uint8_t>(v));
            expected.push_back(
                plain::towards(values.back(), static_cast<uint8_t>(target), weights.back(), opacity));
        }
        RK_BlendSingleChannel<RK_Pixel8, uint8_t>(256, opacity, static_cast<uint8_t>(target), weights.data(),
                                                  reinterpret_cast<RK_Pixel8*>(values.data()));
        ASSERT_EQ(values, expected) << "target " << target;
    }
}

}  // namespace
