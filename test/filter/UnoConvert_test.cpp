// Deep masks moved to other depths.
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/filter/Masks.h"

namespace {

using test::Mask;

class UnoConvert : public test::Tidy {};

template <class S>
S moved(uint16_t v) {
    if constexpr (sizeof(S) == 1)
        return static_cast<uint8_t>((v * 255 + 16384) / 32768);
    else if constexpr (sizeof(S) == 2)
        return v;
    else
        return static_cast<float>(v) * 3.0517578e-5f;
}

template <class S>
void expectConverted(uint16_t divisor) {
    Mask<uint16_t> src(256, 256);
    for (int i = 0; i < 65536; ++i) src.at(i % 256, i / 256) = static_cast<uint16_t>(i);
    Mask<S> dst(256, 256);
    ASSERT_EQ(0, RK_ConvertDeepUnoBuffer(nullptr, &src, src.rect(), divisor, &dst));
    for (int i = 0; i < 65536; ++i)
        ASSERT_EQ(dst.at(i % 256, i / 256), moved<S>(static_cast<uint16_t>(i / divisor)))
            << i << " / " << divisor;
}

TEST_F(UnoConvert, EverySampleByEveryKindOfDivisor) {
    for (uint16_t divisor :
         {1, 2, 3, 4, 5, 7, 8, 10, 15, 16, 17, 255, 257, 16383, 32767, 32768, 65534, 65535}) {
        expectConverted<uint8_t>(divisor);
        expectConverted<uint16_t>(divisor);
        expectConverted<float>(divisor);
    }
}

TEST_F(UnoConvert, QuotientsAreWholeForEveryDivisorAtItsMultiples) {
    Mask<uint16_t> src(4, 1), dst(4, 1);
    for (int divisor = 1; divisor < 65536; ++divisor) {
        const int most = 65535 / divisor * divisor;
        const int samples[] = {most, most - 1, divisor, divisor - 1};
        for (int i = 0; i < 4; ++i) src.at(i, 0) = static_cast<uint16_t>(samples[i]);
        RK_ConvertDeepUnoBuffer(nullptr, &src, src.rect(), static_cast<uint16_t>(divisor), &dst);
        for (int i = 0; i < 4; ++i)
            ASSERT_EQ(dst.at(i, 0), samples[i] / divisor) << samples[i] << " / " << divisor;
    }
}

TEST_F(UnoConvert, TheRectangleIsCutToBothBuffers) {
    const GEO_Rect rects[] = {{0, 0, 9, 9},  {2, 3, 5, 6},   {-5, -5, 50, 50}, {3, -2, 4, 30},
                              {7, 0, 9, 12}, {0, 11, 9, 20}, {3, 3, 3, 9},     {6, 6, 2, 9}};
    for (const GEO_Rect& rect : rects) {
        Mask<uint16_t> src(12, 6, 3);
        Mask<uint8_t> dst(10, 8, 4);
        auto wanted = dst.samples();
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 10; ++x)
                if (x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom)
                    wanted[static_cast<size_t>(y * 10 + x)] = moved<uint8_t>(src.at(x, y) / 4);
        ASSERT_EQ(0, RK_ConvertDeepUnoBuffer(nullptr, &src, rect, 4, &dst));
        ASSERT_EQ(dst.samples(), wanted);
    }
}

TEST_F(UnoConvert, OtherSourcesAndOddDestinationsAreLeftAlone) {
    Mask<uint8_t> bytes(4, 4, 2), out(4, 4, 3);
    Mask<float> floats(4, 4, 2);
    Mask<uint16_t> deep(4, 4, 2);
    const auto before = out.samples();
    EXPECT_EQ(0, RK_ConvertDeepUnoBuffer(nullptr, &bytes, bytes.rect(), 1, &out));
    EXPECT_EQ(0, RK_ConvertDeepUnoBuffer(nullptr, &bytes, bytes.rect(), 0, &out)) << "at once";
    EXPECT_EQ(0, RK_ConvertDeepUnoBuffer(nullptr, &floats, bytes.rect(), 1, &out));
    EXPECT_EQ(out.samples(), before);
    for (int32_t depth : {0, 1, 24}) {
        RK_UnoBuffer odd(4, 4, depth);
        std::memset(*odd.pixels, 0x11, KIT_GetHandleSize(odd.pixels));
        EXPECT_EQ(0, RK_ConvertDeepUnoBuffer(nullptr, &deep, deep.rect(), 1, &odd));
        EXPECT_EQ(odd.Row<uint8_t>(0)[0], 0x11);
    }
}

TEST_F(UnoConvert, ADivisorOfZeroGives3) {
    Mask<uint16_t> src(4, 4, 2), dst(4, 4, 3);
    const auto before = dst.samples();
    EXPECT_EQ(3, RK_ConvertDeepUnoBuffer(nullptr, &src, src.rect(), 0, &dst));
    EXPECT_EQ(dst.samples(), before);
}

TEST_F(UnoConvert, ChecksInAndStops) {
    Mask<uint16_t> src(3, 140), dst(3, 140);
    src.fill(77);
    for (size_t stop : {0u, 1u, 2u}) {
        dst.fill(0);
        test::Watched watched;
        watched.stop_at = stop;
        EXPECT_EQ(stop ? RK_kUserAbort : 0,
                  RK_ConvertDeepUnoBuffer(&watched.info, &src, GEO_Rect{5, 0, 200, 3}, 1, &dst));
        std::vector<std::pair<RK_Long, RK_Long>> calls = {{63, 135}, {127, 135}};
        if (stop) calls.resize(stop);
        EXPECT_EQ(watched.calls, calls);
        for (int y = 0; y < 140; ++y)
            ASSERT_EQ(dst.at(2, y), y >= 5 && (stop == 0 || y < 5 + int(stop) * 64) ? 77 : 0) << y;
    }
}

TEST_F(UnoConvert, TwoThreadsGiveTheSameBytes) {
    Mask<uint16_t> src(99, 88, 5);
    Mask<uint8_t> one(99, 88), two(99, 88);
    RK_ConvertDeepUnoBuffer(nullptr, &src, src.rect(), 3, &one);
    const test::InSlot threads(RKp_kSlot_IterateGeneric, reinterpret_cast<void*>(&test::onTwoThreads));
    RK_ConvertDeepUnoBuffer(nullptr, &src, src.rect(), 3, &two);
    EXPECT_EQ(one.samples(), two.samples());
}

TEST_F(UnoConvert, DamagedBuffersAreReported) {
    Mask<uint16_t> src(4, 4, 2), dst(4, 4, 3);
    src->magic = 0;
    EXPECT_EQ(0, RK_ConvertDeepUnoBuffer(nullptr, &src, src.rect(), 1, &dst));
    EXPECT_TRUE(test::onlyDamagedMask());
    EXPECT_EQ(dst.samples(), src.samples());
    src->magic = RK_kUnoMagic;
    EXPECT_EQ(3, RK_ConvertDeepUnoBuffer(nullptr, nullptr, src.rect(), 1, &dst));
    EXPECT_TRUE(test::onlyDamagedMask());
    EXPECT_EQ(3, RK_ConvertDeepUnoBuffer(nullptr, &src, src.rect(), 1, nullptr));
    EXPECT_TRUE(test::onlyDamagedMask());
}

}  // namespace
