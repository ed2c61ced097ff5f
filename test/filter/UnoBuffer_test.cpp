// Mask buffers: making, filling, fading, inverting.
#include "RK/indep/filter/RK_UnoBuffer.h"

#include <cmath>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "test/filter/Masks.h"

namespace {

using test::Mask;

class UnoBuffer : public test::Tidy {};

// ---- Making ---------------------------------------------------------------------------------------------

TEST_F(UnoBuffer, ANewOneCarriesItsStampSizeAndDepth) {
    RK_UnoBuffer *byte = nullptr, *deep = nullptr;
    ASSERT_EQ(0, RK_NewUnoBuffer(7, 3, &byte));
    ASSERT_EQ(0, RK_NewDeepUnoBuffer(5, 2, &deep));
    EXPECT_EQ(byte->magic, 0xFEEDABBAu);
    EXPECT_EQ(byte->width, 7);
    EXPECT_EQ(byte->height, 3);
    EXPECT_EQ(byte->depth, 8);
    EXPECT_EQ(byte->reserved, 0u);
    EXPECT_EQ(byte->Rowbytes(), 7);
    EXPECT_EQ(KIT_GetHandleSize(byte->pixels), 21u);
    EXPECT_EQ(deep->depth, 16);
    EXPECT_EQ(deep->Rowbytes(), 10);
    EXPECT_EQ(KIT_GetHandleSize(deep->pixels), 20u);
    EXPECT_EQ(0, RK_DisposeUnoBuffer(byte));
    EXPECT_EQ(0, RK_DisposeUnoBuffer(deep));
}

TEST_F(UnoBuffer, TheStoreIsSizedByDepthWithTwoExceptions) {
    struct {
        int32_t depth;
        size_t bytes;
    } const cases[] = {{0, 30}, {1, 15}, {7, 0}, {8, 15}, {16, 30}, {24, 45}, {32, 60}};
    for (const auto& one : cases) {
        const RK_UnoBuffer buffer(5, 3, one.depth);
        EXPECT_EQ(KIT_GetHandleSize(buffer.pixels), one.bytes) << one.depth;
        EXPECT_EQ(buffer.depth, one.depth);
    }
}

TEST_F(UnoBuffer, EveryFailedAllocationGives4AndLeavesNull) {
    for (int64_t n : {1, 2}) {
        RK_UnoBuffer* out = reinterpret_cast<RK_UnoBuffer*>(&n);
        RefHost::FailAllocation(n);
        EXPECT_EQ(4, RK_NewUnoBuffer(7, 3, &out)) << n;
        EXPECT_EQ(out, nullptr);
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "memory for mask buffer"));
        EXPECT_TRUE(tidy());
    }
    RefHost::FailAllocation(3);
    RK_UnoBuffer* out = nullptr;
    EXPECT_EQ(0, RK_NewUnoBuffer(7, 3, &out)) << "there are two allocations";
    EXPECT_EQ(0, RK_DisposeUnoBuffer(out));
    RefHost::FailAllocation(1);
    EXPECT_EQ(4, test::thrownBy([] { RK_UnoBuffer buffer(7, 3, 8); }));
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "memory for mask buffer"));
}

TEST_F(UnoBuffer, SizesThatNoMemoryHoldsGive4) {
    struct {
        int32_t width, height, depth;
    } const cases[] = {{-1, 5, 8},
                       {5, -1, 16},
                       {INT32_MAX, INT32_MAX, 32},
                       {INT32_MIN, 1, 8},
                       {1, INT32_MIN, 8},
                       {3, 3, -8},
                       {3, 3, INT32_MIN},
                       {INT32_MAX, INT32_MAX, INT32_MAX},
                       {INT32_MIN, INT32_MIN, INT32_MAX}};
    for (const auto& one : cases) {
        EXPECT_EQ(4, test::thrownBy([&] { RK_UnoBuffer buffer(one.width, one.height, one.depth); }))
            << one.width << " x " << one.height << " at " << one.depth;
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "memory for mask buffer"));
        EXPECT_TRUE(tidy());
    }
}

TEST_F(UnoBuffer, SizesWithoutSamplesAreMadeAndEveryOperationLeavesThem) {
    for (int32_t width : {0, 4, -2}) {
        RK_UnoBuffer empty(width, width == 4 ? 0 : width, 8);
        EXPECT_EQ(0, RK_FillUnoBuffer(1, &empty));
        EXPECT_EQ(0, RK_FadeUnoBuffer(nullptr, 0.5f, &empty));
        EXPECT_EQ(0, RK_InvertUnoBuffer(nullptr, &empty));
    }
}

TEST_F(UnoBuffer, ANullOutIsABadParameter) {
    EXPECT_EQ(3, RK_NewUnoBuffer(1, 1, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteUno));
    EXPECT_EQ(3, RK_NewDeepUnoBuffer(1, 1, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteUno));
}

TEST_F(UnoBuffer, DisposingOfNothingIsSilent) { EXPECT_EQ(0, RK_DisposeUnoBuffer(nullptr)); }

TEST_F(UnoBuffer, ADamagedOneIsReportedAndFreedAllTheSame) {
    RK_UnoBuffer* buffer = nullptr;
    ASSERT_EQ(0, RK_NewUnoBuffer(4, 4, &buffer));
    buffer->magic ^= 1;
    EXPECT_EQ(0, RK_DisposeUnoBuffer(buffer));
    EXPECT_TRUE(test::onlyDamagedMask());
    EXPECT_TRUE(tidy());

    ASSERT_EQ(0, RK_NewUnoBuffer(4, 4, &buffer));
    KIT_FreeHandle(buffer->pixels);
    buffer->pixels = nullptr;
    EXPECT_EQ(3, RK_DisposeUnoBuffer(buffer)) << "without a store";
    EXPECT_TRUE(test::onlyDamagedMask());
    {
        RK_UnoBuffer stamped(4, 4, 8);
        stamped.magic = 0;
    }
    EXPECT_TRUE(test::onlyDamagedMask());
}

// ---- Filling --------------------------------------------------------------------------------------------

// Every byte 0x11, so that what a fill leaves can be told.
template <class S>
void pale(Mask<S>& mask) {
    std::memset(*mask->pixels, 0x11, KIT_GetHandleSize(mask->pixels));
}
template <class S>
S paleSample() {
    S s;
    std::memset(&s, 0x11, sizeof s);
    return s;
}

TEST_F(UnoBuffer, AFillReachesEverySample) {
    Mask<uint8_t> bytes(9, 4);
    EXPECT_EQ(0, RK_FillUnoBuffer(200, &bytes));
    EXPECT_EQ(bytes.samples(), std::vector<uint8_t>(36, 200));
    Mask<uint16_t> deep(9, 4);
    EXPECT_EQ(0, RK_FillDeepUnoBuffer(0xABCD, &deep));
    EXPECT_EQ(deep.samples(), std::vector<uint16_t>(36, 0xABCD));
    Mask<float> floats(9, 4);
    EXPECT_EQ(0, RK_FillFloatUnoBuffer(-2.5f, &floats));
    EXPECT_EQ(floats.samples(), std::vector<float>(36, -2.5f));
}

template <class S, class Fill>
void expectRects(Fill fill, S value) {
    const GEO_Rect rects[] = {{0, 0, 5, 8}, {2, 0, 4, 8}, {1, 2, 4, 7}, {0, 0, 1, 1}, {4, 7, 5, 8},
                              {2, 2, 2, 6}, {1, 5, 4, 5}, {4, 1, 2, 3}, {1, 6, 3, 2}};
    for (const GEO_Rect& rect : rects) {
        Mask<S> mask(8, 5);
        pale(mask);
        ASSERT_EQ(0, fill(value, rect, &mask));
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 8; ++x) {
                const bool inside = x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom;
                ASSERT_EQ(mask.at(x, y), inside ? value : paleSample<S>()) << x << ", " << y;
            }
    }
}

TEST_F(UnoBuffer, ARectangleIsFilledWhetherOrNotItSpansTheWidth) {
    expectRects<uint8_t>(
        [](uint8_t v, const GEO_Rect& r, RK_UnoBuffer* b) { return RK_FillUnoBuffer(v, r, b); }, uint8_t{99});
    expectRects<uint16_t>(
        [](uint16_t v, const GEO_Rect& r, RK_UnoBuffer* b) { return RK_FillDeepUnoBuffer(v, r, b); },
        uint16_t{12345});
}

TEST_F(UnoBuffer, ANarrowValueGoesIntoTheFirstBytesOfEachRow) {
    Mask<uint16_t> deep(4, 3);
    pale(deep);
    EXPECT_EQ(0, RK_FillUnoBuffer(0xEE, &deep));
    for (int y = 0; y < 3; ++y)
        for (int i = 0; i < 8; ++i) EXPECT_EQ(deep->Row<uint8_t>(y)[i], i < 4 ? 0xEE : 0x11) << i;

    Mask<float> floats(4, 3);
    pale(floats);
    EXPECT_EQ(0, RK_FillDeepUnoBuffer(0xBEEF, GEO_Rect{1, 1, 3, 4}, &floats));
    for (int y = 0; y < 3; ++y)
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(floats->Row<uint16_t>(y)[i], y >= 1 && i >= 1 && i < 4 ? 0xBEEF : 0x1111) << i;
}

TEST_F(UnoBuffer, AValueWiderThanTheSamplesIsRefused) {
    Mask<uint8_t> bytes(4, 3);
    Mask<uint16_t> deep(4, 3);
    pale(bytes), pale(deep);
    EXPECT_EQ(3, RK_FillDeepUnoBuffer(0, &bytes));
    EXPECT_EQ(3, RK_FillDeepUnoBuffer(0, GEO_Rect{0, 0, 1, 1}, &bytes));
    EXPECT_EQ(3, RK_FillFloatUnoBuffer(0, &bytes));
    EXPECT_EQ(3, RK_FillFloatUnoBuffer(0, &deep));
    EXPECT_EQ(bytes.samples(), std::vector<uint8_t>(12, 0x11));
    EXPECT_EQ(deep.samples(), std::vector<uint16_t>(12, 0x1111));
}

// Bytes per row are 0 at these depths but for the last: all rows are one.
TEST_F(UnoBuffer, ByteFillsAtOddDepthsStayInsideTheStore) {
    for (int32_t depth : {0, 1, 24}) {
        RK_UnoBuffer buffer(5, 3, depth);
        EXPECT_EQ(0, RK_FillUnoBuffer(0x77, &buffer)) << depth;
        EXPECT_EQ(buffer.Row<uint8_t>(2)[4], 0x77);
    }
    for (int32_t depth : {4, 12, 2}) {
        RK_UnoBuffer buffer(5, 3, depth);
        EXPECT_EQ(3, RK_FillUnoBuffer(0x77, &buffer)) << depth << " has no whole bytes";
    }
}

// ---- Fading and inverting -------------------------------------------------------------------------------

int64_t mul(int64_t a, int64_t b, uint8_t) {
    const int64_t t = a * b + 128;
    return (t + (t >> 8)) >> 8;
}
int64_t mul(int64_t a, int64_t b, uint16_t) { return (a * b + 16383) >> 15; }

template <class S>
std::vector<S> everySample() {
    std::vector<S> all;
    for (int32_t i = 0; i < (sizeof(S) == 1 ? 256 : 65536); i += sizeof(S) == 1 ? 1 : 5)
        all.push_back(static_cast<S>(i));
    for (int32_t i : {1, 2, 16383, 16384, 16385, 32767, 32768, 32769, 65535})
        if (sizeof(S) == 2) all.push_back(static_cast<S>(i));
    return all;
}

TEST_F(UnoBuffer, AFadeRoundsItsAmountAndThenEachProduct) {
    Mask<uint8_t> bytes(256, 1);
    struct {
        float amount;
        int64_t k8, k16;
    } const cases[] = {{0, 0, 0},
                       {1, 255, 32768},
                       {0.5f, 128, 16384},
                       {0.25f, 64, 8192},
                       {1.5f, 383, 49152},
                       {-1, -254, -32767},
                       {-0.25f, -63, -8191},
                       {1e30f, INT32_MIN, INT32_MIN},
                       {std::nanf(""), INT32_MIN, INT32_MIN},
                       {0.0019f, 0, 62}};
    for (const auto& one : cases) {
        const std::vector<uint8_t> all = everySample<uint8_t>();
        bytes.set(all);
        ASSERT_EQ(0, RK_FadeUnoBuffer(nullptr, one.amount, &bytes));
        const std::vector<uint8_t> got = bytes.samples();
        for (size_t i = 0; i < all.size(); ++i)
            ASSERT_EQ(got[i], static_cast<uint8_t>(mul(all[i], one.k8, uint8_t{})))
                << i << " by " << one.amount;
        const std::vector<uint16_t> every = everySample<uint16_t>();
        Mask<uint16_t> deep(static_cast<int32_t>(every.size()), 1);
        deep.set(every);
        ASSERT_EQ(0, RK_FadeUnoBuffer(nullptr, one.amount, &deep));
        const std::vector<uint16_t> faded = deep.samples();
        for (size_t i = 0; i < every.size(); ++i)
            ASSERT_EQ(faded[i], static_cast<uint16_t>(mul(every[i], one.k16, uint16_t{})))
                << every[i] << " by " << one.amount;
    }
}

TEST_F(UnoBuffer, AFloatFadeIsAProduct) {
    Mask<float> mask(17, 5, 3);
    const std::vector<float> before = mask.samples();
    EXPECT_EQ(0, RK_FadeUnoBuffer(nullptr, 0.3f, &mask));
    for (size_t i = 0; i < before.size(); ++i) EXPECT_EQ(mask.samples()[i], before[i] * 0.3f);
}

TEST_F(UnoBuffer, AFadeOfOneChangesNothingAndTwiceAHalfIsAQuarterOfWhite) {
    Mask<uint16_t> deep(300, 7, 5);
    const auto before = deep.samples();
    RK_FadeUnoBuffer(nullptr, 1.0f, &deep);
    EXPECT_EQ(deep.samples(), before);
    deep.fill(32768);
    RK_FadeUnoBuffer(nullptr, 0.5f, &deep);
    RK_FadeUnoBuffer(nullptr, 0.5f, &deep);
    EXPECT_EQ(deep.samples(), std::vector<uint16_t>(2100, 8192));
}

template <class S>
void expectInverted(int32_t amount) {
    const int64_t full = test::kFullSample<S>;
    const auto k = static_cast<int64_t>(amount * std::ldexp(1.0, -16) * static_cast<double>(full) + 0.5);
    const std::vector<S> all = everySample<S>();
    Mask<S> mask(static_cast<int32_t>(all.size()), 1);
    mask.set(all);
    ASSERT_EQ(0, RK_InvertAndFadeUnoBuffer(nullptr, amount, &mask));
    const std::vector<S> got = mask.samples();
    for (size_t i = 0; i < all.size(); ++i)
        ASSERT_EQ(got[i], static_cast<S>(mul(full - all[i], k, S{}))) << all[i] << " at " << amount;
}

TEST_F(UnoBuffer, AnInversionIsFadedByAnAmountInAndOutOfRange) {
    for (int32_t amount : {0, 1, 0x7FFF, 0x8000, 0x8001, 0xC000, 0xFFFF, 0x10000, 0x10001, 0x20000, -1,
                           -0x10000, INT32_MAX, INT32_MIN}) {
        expectInverted<uint8_t>(amount);
        expectInverted<uint16_t>(amount);
    }
}

TEST_F(UnoBuffer, InvertingTwiceGivesTheMaskBack) {
    Mask<uint8_t> bytes(31, 70, 8);
    Mask<uint16_t> deep(31, 70, 8);
    const auto before8 = bytes.samples();
    const auto before16 = deep.samples();
    RK_InvertUnoBuffer(nullptr, &bytes);
    RK_InvertUnoBuffer(nullptr, &deep);
    for (size_t i = 0; i < before8.size(); ++i) ASSERT_EQ(bytes.samples()[i], 255 - before8[i]);
    EXPECT_NE(deep.samples(), before16);
    RK_InvertUnoBuffer(nullptr, &bytes);
    RK_InvertUnoBuffer(nullptr, &deep);
    EXPECT_EQ(bytes.samples(), before8);
    EXPECT_EQ(deep.samples(), before16);
}

TEST_F(UnoBuffer, AFloatInversionIsLeftAloneAndOddDepthsAreRefused) {
    Mask<float> floats(6, 6, 2);
    const auto before = floats.samples();
    EXPECT_EQ(0, RK_InvertUnoBuffer(nullptr, &floats));
    EXPECT_EQ(floats.samples(), before);
    for (int32_t depth : {0, 1, 24}) {
        RK_UnoBuffer odd(4, 4, depth);
        EXPECT_EQ(3, RK_InvertUnoBuffer(nullptr, &odd)) << depth;
        EXPECT_EQ(3, RK_FadeUnoBuffer(nullptr, 0.5f, &odd)) << depth;
    }
}

TEST_F(UnoBuffer, AnInversionChecksInAfterEvery64thRow) {
    for (int32_t height : {63, 64, 65, 200}) {
        Mask<uint8_t> mask(5, height);
        test::Watched watched;
        EXPECT_EQ(0, RK_InvertUnoBuffer(&watched.info, &mask));
        std::vector<std::pair<RK_Long, RK_Long>> wanted;
        for (RK_Long i = 63; i < height; i += 64) wanted.emplace_back(i, height);
        EXPECT_EQ(watched.calls, wanted) << height;
        EXPECT_EQ(mask.samples(), std::vector<uint8_t>(static_cast<size_t>(height) * 5, 255));
    }
}

TEST_F(UnoBuffer, AnInversionStopsAtEachCheckInAndRowsDoneStay) {
    for (bool abort_only : {false, true}) {
        for (size_t stop : {1u, 2u, 3u}) {
            Mask<uint8_t> mask(5, 200);
            test::Watched watched;
            watched.stop_at = stop;
            watched.code = abort_only ? 42 : RK_kUserAbort;
            if (abort_only) watched.abortsOnly();
            EXPECT_EQ(watched.code, RK_InvertUnoBuffer(&watched.info, &mask));
            EXPECT_EQ(watched.calls.size(), stop);
            for (int y = 0; y < 200; ++y) ASSERT_EQ(mask.at(0, y), y < int(stop) * 64 ? 255 : 0) << y;
        }
    }
}

TEST_F(UnoBuffer, AFadeNeverChecksIn) {
    Mask<uint8_t> mask(5, 300);
    test::Watched watched;
    watched.stop_at = 1;
    EXPECT_EQ(0, RK_FadeUnoBuffer(&watched.info, 0.5f, &mask));
    EXPECT_TRUE(watched.calls.empty());
}

// ---- Damage ---------------------------------------------------------------------------------------------

TEST_F(UnoBuffer, AWrongMagicIsReportedAndTheOperationGoesOn) {
    Mask<uint8_t> mask(4, 4);
    mask->magic = 7;
    EXPECT_EQ(0, RK_FillUnoBuffer(9, &mask));
    EXPECT_TRUE(test::onlyDamagedMask());
    EXPECT_EQ(mask.at(3, 3), 9);
    EXPECT_EQ(0, RK_InvertUnoBuffer(nullptr, &mask));
    EXPECT_TRUE(test::onlyDamagedMask());
    EXPECT_EQ(mask.at(3, 3), 246);
    EXPECT_EQ(0, RK_FadeUnoBuffer(nullptr, 0.0f, &mask));
    EXPECT_TRUE(test::onlyDamagedMask());
    EXPECT_EQ(mask.at(3, 3), 0);
    mask->magic = RK_kUnoMagic;
}

TEST_F(UnoBuffer, WithoutABufferOrAStoreEveryOperationReportsAndGives3) {
    RK_UnoBuffer bare(4, 4, 8);
    const KIT_Handle held = bare.pixels;
    bare.pixels = nullptr;
    const GEO_Rect rect = {0, 0, 1, 1};
    for (RK_UnoBuffer* buffer : {static_cast<RK_UnoBuffer*>(nullptr), &bare}) {
        EXPECT_EQ(3, RK_FillUnoBuffer(1, buffer));
        EXPECT_TRUE(test::onlyDamagedMask());
        EXPECT_EQ(3, RK_FillUnoBuffer(1, rect, buffer));
        EXPECT_TRUE(test::onlyDamagedMask());
        EXPECT_EQ(3, RK_FillDeepUnoBuffer(1, buffer));
        EXPECT_TRUE(test::onlyDamagedMask());
        EXPECT_EQ(3, RK_FillDeepUnoBuffer(1, rect, buffer));
        EXPECT_TRUE(test::onlyDamagedMask());
        EXPECT_EQ(3, RK_FillFloatUnoBuffer(1, buffer));
        EXPECT_TRUE(test::onlyDamagedMask());
        EXPECT_EQ(3, RK_InvertUnoBuffer(nullptr, buffer));
        EXPECT_TRUE(test::onlyDamagedMask());
        EXPECT_EQ(3, RK_InvertAndFadeUnoBuffer(nullptr, 5, buffer));
        EXPECT_TRUE(test::onlyDamagedMask());
        EXPECT_EQ(3, RK_FadeUnoBuffer(nullptr, 1, buffer));
        EXPECT_TRUE(test::onlyDamagedMask());
    }
    bare.pixels = held;
}

TEST_F(UnoBuffer, AnInversionOverTwoThreadsGivesTheSameBytes) {
    Mask<uint16_t> one(61, 150, 4), two(61, 150, 4);
    RK_InvertAndFadeUnoBuffer(nullptr, 0xB000, &one);
    const test::InSlot threads(RKp_kSlot_IterateGeneric, reinterpret_cast<void*>(&test::onTwoThreads));
    RK_InvertAndFadeUnoBuffer(nullptr, 0xB000, &two);
    EXPECT_EQ(one.samples(), two.samples());
}

}  // namespace
