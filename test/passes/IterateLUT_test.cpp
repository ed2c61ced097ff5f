#include <vector>

#include "RK/indep/passes/RK_Iterate.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

class IterateLUT : public test::Tidy {};

struct Luts {
    uint8_t a[256], r[256], g[256], b[256];
};
Luts randomLuts(uint32_t seed) {
    test::Random random(seed);
    Luts luts;
    for (uint8_t* table : {luts.a, luts.r, luts.g, luts.b})
        for (int i = 0; i < 256; ++i) table[i] = uint8_t(random.next() >> 24);
    return luts;
}
RK_Pixel8 lookedUp(const Luts& luts, const RK_Pixel8& p) {
    return {luts.a[p.alpha], luts.r[p.red], luts.g[p.green], luts.b[p.blue]};
}

RK_Long apply(const Luts& luts, RK_LayerDef* src, const GEO_Rect* rect, RK_LayerDef* dst,
              RK_EffectData* effect = nullptr, RK_Long base = 0, RK_Long final = 0) {
    return RK_IterateLUT(effect, base, final, src, rect, luts.a, luts.r, luts.g, luts.b, dst);
}

struct Rows {
    std::vector<RK_Long> current;
    size_t special = SIZE_MAX;
    RK_Long answer = 0, others = 0;
};
RK_Long progress(RK_EffectRef effect_ref, RK_Long current, RK_Long) {
    Rows& rows = *static_cast<Rows*>(effect_ref);
    rows.current.push_back(current);
    return rows.current.size() - 1 == rows.special ? rows.answer : rows.others;
}
RK_EffectData effectOf(Rows& rows) {
    RK_EffectData effect = {};
    effect.progress_func = progress;
    effect.effect_ref = &rows;
    return effect;
}

}  // namespace

TEST_F(IterateLUT, EachChannelGoesThroughItsOwnTableInTheClippedArea) {
    const Luts luts = randomLuts(1);
    test::Picture<RK_Pixel8> small(6, 9, 2), large(20, 20, 1);
    small.fillRandom(4);
    large.fillRandom(5);
    const GEO_Rect rects[] = {{0, 0, 7, 13},  {1, 2, 3, 10}, {-4, -3, 2, 2}, {3, 8, 60, 70},
                              {0, 0, 0, 13},  {0, 6, 7, 13}, {0, 7, 7, 13},  {0, 13, 7, 20},
                              {0, 14, 7, 20}, {3, 9, 5, 2},  {5, 3, 2, 9},   {-32768, -32768, 32767, 32767}};
    for (test::Picture<RK_Pixel8>* source : {static_cast<test::Picture<RK_Pixel8>*>(nullptr), &small, &large})
        for (int i = -1; i < int(std::size(rects)); ++i) {
            const GEO_Rect* rect = i < 0 ? nullptr : &rects[i];
            test::Picture<RK_Pixel8> dst(13, 7, 1);
            dst.fillRandom(6);
            const test::Picture<RK_Pixel8> before = dst;
            RK_LayerDef d = dst.record(), s = source ? source->record() : d;
            ASSERT_EQ(apply(luts, source ? &s : nullptr, rect, &d), 0);
            for (int y = 0; y < 7; ++y)
                for (int x = 0; x < 13; ++x) {
                    bool in = rect == nullptr ||
                              (x >= rect->left && x < rect->right && y >= rect->top && y < rect->bottom);
                    if (source) in = in && x < source->width() && y < source->height();
                    const RK_Pixel8 was = before.at(x, y);
                    const RK_Pixel8 want = !in ? was : lookedUp(luts, source ? source->at(x, y) : was);
                    ASSERT_TRUE(test::sameBytes(dst.at(x, y), want)) << x << ", " << y << " rectangle " << i;
                }
            EXPECT_TRUE(dst.guardsWhole());
        }
    EXPECT_TRUE(small.guardsWhole());
}

TEST_F(IterateLUT, ANullTableChangesNothing) {
    const Luts luts = randomLuts(2);
    for (int given = 0; given < 16; ++given) {
        test::Picture<RK_Pixel8> dst(16, 16);
        for (int i = 0; i < 256; ++i)
            dst.at(i % 16, i / 16) = {uint8_t(i), uint8_t(i + 1), uint8_t(i + 2), uint8_t(i + 3)};
        RK_LayerDef d = dst.record();
        ASSERT_EQ(RK_IterateLUT(nullptr, 0, 0, nullptr, nullptr, given & 1 ? luts.a : nullptr,
                                given & 2 ? luts.r : nullptr, given & 4 ? luts.g : nullptr,
                                given & 8 ? luts.b : nullptr, &d),
                  0);
        for (int i = 0; i < 256; ++i) {
            const RK_Pixel8 p = dst.at(i % 16, i / 16);
            EXPECT_EQ(p.alpha, given & 1 ? luts.a[i] : uint8_t(i));
            EXPECT_EQ(p.red, given & 2 ? luts.r[uint8_t(i + 1)] : uint8_t(i + 1));
            EXPECT_EQ(p.green, given & 4 ? luts.g[uint8_t(i + 2)] : uint8_t(i + 2));
            EXPECT_EQ(p.blue, given & 8 ? luts.b[uint8_t(i + 3)] : uint8_t(i + 3));
        }
    }
}

TEST_F(IterateLUT, AFloatWorldChangesByteByByteInTheFirstQuarterOfItsRows) {
    const Luts luts = randomLuts(3);
    test::Picture<RK_PixelFloat> dst(8, 2);
    dst.fillRandom(7);
    const test::Picture<RK_PixelFloat> before = dst;
    RK_LayerDef d = dst.record();
    ASSERT_EQ(apply(luts, nullptr, nullptr, &d), 0);
    for (int y = 0; y < 2; ++y) {
        const auto* was = reinterpret_cast<const RK_Pixel8*>(before.row(y));
        const auto* is = reinterpret_cast<const RK_Pixel8*>(dst.row(y));
        for (int i = 0; i < 32; ++i)
            EXPECT_TRUE(test::sameBytes(is[i], i < 8 ? lookedUp(luts, was[i]) : was[i])) << i;
    }
    EXPECT_TRUE(dst.guardsWhole());
}

TEST_F(IterateLUT, DepthsAreNotComparedAndOnlyBit0IsLookedAt) {
    const Luts luts = randomLuts(4);
    test::Picture<RK_Pixel8> dst(4, 2), source(4, 2);
    source.fillRandom(1);
    RK_LayerDef d = dst.record(), s = source.record();
    s.world_flags = 0x02000000u;
    d.world_flags = 0x01000000u;  // an index of 16 bits without the bit
    ASSERT_EQ(apply(luts, &s, nullptr, &d), 0);
    EXPECT_TRUE(test::sameBytes(dst.at(3, 1), lookedUp(luts, source.at(3, 1))));
}

TEST_F(IterateLUT, NullWorldsAndBit0AreBadParameters) {
    const Luts luts = randomLuts(5);
    test::Picture<RK_Pixel8> dst(4, 2);
    const test::Picture<RK_Pixel8> before = dst;
    RK_LayerDef good = dst.record(), empty = good, deep = good;
    empty.data = nullptr;
    deep.world_flags = 0x00000001u;
    const std::pair<RK_LayerDef*, RK_LayerDef*> bad[] = {
        {&empty, &good}, {&good, nullptr}, {nullptr, nullptr}, {nullptr, &empty},
        {&good, &empty}, {&deep, &good},   {&good, &deep},     {nullptr, &deep}};
    Rows rows;
    RK_EffectData effect = effectOf(rows);
    const GEO_Rect nothing = {0, 0, 0, 0};
    for (const auto& [src, to] : bad)
        for (const GEO_Rect* rect : {static_cast<const GEO_Rect*>(nullptr), &nothing}) {
            EXPECT_EQ(apply(luts, src, rect, to, &effect, 0, 5), 3);
            EXPECT_TRUE(test::onlyBadParam(14));
        }
    EXPECT_TRUE(rows.current.empty());
    EXPECT_TRUE(dst == before);
}

TEST_F(IterateLUT, TheLastRowsProgressResultIsReturned) {
    const Luts luts = randomLuts(6);
    test::Picture<RK_Pixel8> dst(4, 5);
    RK_LayerDef d = dst.record();
    for (size_t row = 0; row < 5; ++row) {
        Rows rows;
        rows.special = row;
        rows.answer = 42;
        RK_EffectData effect = effectOf(rows);
        EXPECT_EQ(apply(luts, nullptr, nullptr, &d, &effect, 10, 5), row == 4 ? 42 : 0);
        EXPECT_EQ(rows.current, (std::vector<RK_Long>{11, 12, 13, 14, 15}));
        rows.others = 7;
        rows.current.clear();
        EXPECT_EQ(apply(luts, nullptr, nullptr, &d, &effect, 10, 5), row == 4 ? 42 : 7);
        rows.current.clear();
        EXPECT_EQ(apply(luts, nullptr, nullptr, &d, &effect, 10, 0), 0);
        EXPECT_TRUE(rows.current.empty());
    }
}

TEST_F(IterateLUT, AnAbortLeavesTheRowsAfterItUnwritten) {
    const Luts luts = randomLuts(7);
    for (size_t row = 0; row < 5; ++row) {
        test::Picture<RK_Pixel8> dst(4, 5);
        dst.fillRandom(2);
        const test::Picture<RK_Pixel8> before = dst;
        RK_LayerDef d = dst.record();
        Rows rows;
        rows.special = row;
        rows.answer = 517;
        RK_EffectData effect = effectOf(rows);
        EXPECT_EQ(apply(luts, nullptr, nullptr, &d, &effect, 0, 5), 517);
        for (size_t y = 0; y < 5; ++y) {
            const RK_Pixel8 was = before.at(1, int(y));
            EXPECT_TRUE(test::sameBytes(dst.at(1, int(y)), y <= row ? lookedUp(luts, was) : was)) << y;
        }
    }
}

TEST_F(IterateLUT, NonsenseSizesWriteNothing) {
    const Luts luts = randomLuts(8);
    test::Picture<RK_Pixel8> dst(4, 5);
    const test::Picture<RK_Pixel8> before = dst;
    for (const auto& [width, height] :
         {std::pair<int32_t, int32_t>{INT32_MIN, 5}, {-1, 5}, {4, -1}, {0, 5}, {INT32_MAX, 0}}) {
        RK_LayerDef good = dst.record(), bad = good;
        bad.width = width;
        bad.height = height;
        EXPECT_EQ(apply(luts, &bad, nullptr, &good), 0);
        EXPECT_EQ(apply(luts, &good, nullptr, &bad), 0);
        EXPECT_EQ(apply(luts, nullptr, nullptr, &bad), 0);
    }
    EXPECT_TRUE(dst == before);
}
