#include "RK/indep/passes/RK_Iterate.h"

#include <stdexcept>
#include <vector>

#include "RK/indep/frame/RK_OverFuncs.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

// Everything that a pass called, in order.
struct Call {
    RK_Long x, y;
    const void* in;
    const void* out;
    bool operator==(const Call& o) const { return x == o.x && y == o.y && in == o.in && out == o.out; }
};
struct Report {
    RK_Long current, maximum;
    bool operator==(const Report& o) const { return current == o.current && maximum == o.maximum; }
};
std::ostream& operator<<(std::ostream& to, const Call& c) { return to << "(" << c.x << ", " << c.y << ")"; }
std::ostream& operator<<(std::ostream& to, const Report& r) { return to << r.current << " of " << r.maximum; }

struct Log {
    std::vector<Call> calls;
    std::vector<Report> progress;
    // The answer of call or report number n, from 0, and of every other one.
    size_t special_call = SIZE_MAX, special_report = SIZE_MAX;
    RK_Long call_answer = 0, report_answer = 0, other_reports = 0;
};

RK_Long pixelCall(void* refcon, RK_Long x, RK_Long y, void* in, void* out) {
    Log& log = *static_cast<Log*>(refcon);
    log.calls.push_back({x, y, in, out});
    return log.calls.size() - 1 == log.special_call ? log.call_answer : 0;
}
RK_Long progressCall(RK_EffectRef effect_ref, RK_Long current, RK_Long maximum) {
    Log& log = *static_cast<Log*>(effect_ref);
    log.progress.push_back({current, maximum});
    return log.progress.size() - 1 == log.special_report ? log.report_answer : log.other_reports;
}
RK_EffectData effectOf(Log& log) {
    RK_EffectData effect = {};
    effect.progress_func = progressCall;
    effect.effect_ref = &log;
    return effect;
}

// ---- The pass as it is told, in plain loops -------------------------------------------------------------

enum class Form { Iterate, Origin, Unclipped };
struct Edges {
    int left, top, right, bottom;
};

// False: the pass ends at once, without progress.
bool areaOf(Form form, const RK_LayerDef* src, const GEO_Rect* rect, Point origin, const RK_LayerDef& dst,
            Edges& e) {
    const bool limited = src != nullptr && form != Form::Unclipped;
    const int ox = form == Form::Iterate ? 0 : origin.h, oy = form == Form::Iterate ? 0 : origin.v;
    e = {0, 0, dst.width, dst.height};
    if (rect) {
        if (rect->right < 1 || rect->left > dst.width || rect->bottom < 1 || rect->top > dst.height)
            return false;
        if (limited && (rect->left > ox + src->width || rect->top > oy + src->height)) return false;
        e = {std::max<int>(rect->left, 0), std::max<int>(rect->top, 0), std::min<int>(rect->right, dst.width),
             std::min<int>(rect->bottom, dst.height)};
    }
    if (limited)
        e = {std::max(e.left, ox), std::max(e.top, oy), std::min(e.right, ox + src->width),
             std::min(e.bottom, oy + src->height)};
    return form == Form::Iterate || (e.left < e.right && e.top < e.bottom);
}

template <class P>
const P* at(const RK_LayerDef& world, int x, int y) {
    return reinterpret_cast<const P*>(static_cast<const uint8_t*>(world.data) + y * world.rowbytes) + x;
}

// The calls and reports that the pass owes. An `in` of null stands for a pixel of zeros.
template <class P>
Log expectedLog(Form form, const RK_LayerDef* src, const GEO_Rect* rect, Point origin, const RK_LayerDef& dst,
                RK_Long base, RK_Long final) {
    Log log;
    Edges e;
    if (form == Form::Iterate || src == nullptr) origin = {0, 0};
    if (!areaOf(form, src, rect, origin, dst, e)) return log;
    for (int y = e.top; y < e.bottom; ++y) {
        for (int x = e.left; x < e.right; ++x) {
            const P* out = at<P>(dst, x, y);
            const P* in = out;
            if (src) {
                const int sx = x - origin.h, sy = y - origin.v;
                const bool there = sx >= 0 && sy >= 0 && sx < src->width && sy < src->height;
                in = there ? at<P>(*src, sx, sy) : nullptr;
            }
            log.calls.push_back({x, y, in, out});
        }
        if (final != 0) log.progress.push_back({base + 1 + (y - e.top), final});
    }
    return log;
}

RK_Long run(Form form, RK_EffectData* effect, RK_Long base, RK_Long final, RK_LayerDef* src,
            const GEO_Rect* rect, const Point* origin, void* refcon, RK_PixelFunc* fn, RK_LayerDef* dst) {
    switch (form) {
        case Form::Iterate:
            return RK_Iterate(effect, base, final, src, rect, refcon, fn, dst);
        case Form::Origin:
            return RK_IterateOrigin(effect, base, final, src, rect, origin, refcon, fn, dst);
        default:
            return RKp_Slot<RKp_kSlot_IterateOriginUnclipped>()(effect, base, final, src, rect, origin,
                                                                refcon, fn, dst);
    }
}

const Form kForms[] = {Form::Iterate, Form::Origin, Form::Unclipped};
uint32_t siteOf(Form form) { return form == Form::Iterate ? 14 : 82; }

template <class P>
class IteratePass : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(IteratePass, Depths);
class Iterate : public test::Tidy {};

// Runs a pass and compares its calls and reports with what it owes. Where zeros are owed the address is the
// pass's own.
template <class P>
void expectPass(Form form, RK_LayerDef* src, const GEO_Rect* rect, const Point* origin, RK_LayerDef& dst,
                RK_Long base, RK_Long final) {
    Log log;
    RK_EffectData effect = effectOf(log);
    ASSERT_EQ(run(form, &effect, base, final, src, rect, origin, &log, pixelCall, &dst), 0);
    const Point place = origin ? *origin : Point{0, 0};
    const Log owed = expectedLog<P>(form, src, rect, place, dst, base, final);
    ASSERT_EQ(log.calls.size(), owed.calls.size());
    for (size_t i = 0; i < owed.calls.size(); ++i) {
        Call call = log.calls[i];
        if (owed.calls[i].in == nullptr) call.in = nullptr;
        ASSERT_EQ(call, owed.calls[i]) << "call " << i;
    }
    ASSERT_EQ(log.progress, owed.progress);
}

const GEO_Rect kRects[] = {{0, 0, 5, 11},
                           {1, 2, 3, 10},
                           {-4, -3, 2, 2},
                           {3, 8, 60, 70},
                           {0, 0, 0, 11},
                           {0, 0, 5, 0},
                           {0, 11, 5, 20},
                           {0, 12, 5, 20},
                           {5, 0, 9, 11},
                           {6, 0, 9, 11},
                           {3, 3, 2, 9},
                           {1, 9, 4, 3},
                           {2, 4, 2, 4},
                           {0, 0, 1, 1},
                           {-9, 0, 0, 11},
                           {0, -9, 5, -1},
                           {0, 7, 5, 11},
                           {0, 8, 5, 11},
                           {0, 9, 5, 11},
                           {4, 0, 5, 11},
                           {-32768, -32768, 32767, 32767},
                           {32767, 32767, -32768, -32768},
                           {0, 2, 5, 3}};

}  // namespace

// ---- The walk -------------------------------------------------------------------------------------------

TYPED_TEST(IteratePass, CallsEveryPixelOfTheClippedAreaInOrder) {
    using P = TypeParam;
    test::Picture<P> dst(11, 5, 1), same(11, 5, 0), small(8, 3, 2), large(14, 9, 2);
    RK_LayerDef d = dst.record(), s0 = same.record(), s1 = small.record(), s2 = large.record();
    RK_LayerDef* const sources[] = {nullptr, &s0, &s1, &s2, &d};
    for (const Form form : kForms)
        for (RK_LayerDef* src : sources) {
            expectPass<P>(form, src, nullptr, nullptr, d, 10, 99);
            expectPass<P>(form, src, nullptr, nullptr, d, 10, 0);
            for (const GEO_Rect& rect : kRects) expectPass<P>(form, src, &rect, nullptr, d, -3, 1);
        }
}

TYPED_TEST(IteratePass, AnOriginPlacesTheSource) {
    using P = TypeParam;
    test::Picture<P> dst(11, 5, 1), source(6, 3, 2);
    RK_LayerDef d = dst.record(), s = source.record();
    const int16_t at_h[] = {0, 2, 5, 8, 11, 12, -1, -5, -6, -7, 32767, -32768};
    const int16_t at_v[] = {0, 1, 3, 5, 6, -1, -2, -3, -4, 32767, -32768};
    for (const Form form : {Form::Origin, Form::Unclipped})
        for (const int16_t h : at_h)
            for (const int16_t v : at_v) {
                const Point origin = {v, h};
                expectPass<P>(form, &s, nullptr, &origin, d, 0, 5);
                expectPass<P>(form, nullptr, nullptr, &origin, d, 0, 5);
                for (const GEO_Rect& rect : kRects) expectPass<P>(form, &s, &rect, &origin, d, 0, 5);
            }
}

TYPED_TEST(IteratePass, RowsOfEveryLengthAreWalkedOnce) {
    using P = TypeParam;
    for (int width = 0; width <= 33; ++width) {
        test::Picture<P> dst(width, 2, 1);
        RK_LayerDef d = dst.record();
        for (const Form form : kForms) expectPass<P>(form, nullptr, nullptr, nullptr, d, 0, 0);
    }
}

TYPED_TEST(IteratePass, RowsMayRunBackwards) {
    using P = TypeParam;
    test::Picture<P> dst(5, 4, 1), source(5, 4, 3);
    RK_LayerDef d = dst.record(), s = source.record();
    d.data = dst.row(3);
    d.rowbytes = -d.rowbytes;
    const Point origin = {1, 1};
    for (const Form form : kForms) expectPass<P>(form, &s, nullptr, &origin, d, 0, 0);
}

TYPED_TEST(IteratePass, RandomRectanglesAndPlacesAgreeWithPlainLoops) {
    using P = TypeParam;
    test::Random random(23);
    test::Picture<P> pictures[] = {test::Picture<P>(9, 7, 1), test::Picture<P>(4, 12, 0),
                                   test::Picture<P>(17, 3, 2)};
    const auto edge = [&] {
        return static_cast<int16_t>(random.below(16) == 0 ? int(random.below(65536)) - 32768
                                                          : int(random.below(26)) - 6);
    };
    for (int i = 0; i < 3000; ++i) {
        RK_LayerDef d = pictures[random.below(3)].record(), s = pictures[random.below(3)].record();
        const GEO_Rect rect = {edge(), edge(), edge(), edge()};
        const Point origin = {edge(), edge()};
        expectPass<P>(kForms[random.below(3)], random.below(5) ? &s : nullptr,
                      random.below(5) ? &rect : nullptr, random.below(5) ? &origin : nullptr, d,
                      int(random.below(100)), int(random.below(3)));
    }
}

namespace {
template <class P>
RK_Long copyAndSpoil(void*, RK_Long, RK_Long, void* in, void* out) {
    std::memcpy(out, in, sizeof(P));
    std::memset(in, 0xFF, sizeof(P));
    return 0;
}
}  // namespace

TYPED_TEST(IteratePass, OutsideTheSourceThePixelIsZeroEvenAfterAFunctionWroteToIt) {
    using P = TypeParam;
    test::Picture<P> dst(6, 4), source(2, 2);
    dst.fillRandom(1);
    source.fillRandom(2);
    const test::Picture<P> before = source;
    RK_LayerDef d = dst.record(), s = source.record();
    const Point origin = {1, 2};
    ASSERT_EQ(run(Form::Unclipped, nullptr, 0, 0, &s, nullptr, &origin, nullptr, copyAndSpoil<P>, &d), 0);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) {
            const bool there = x >= 2 && x < 4 && y >= 1 && y < 3;
            EXPECT_TRUE(test::sameBytes(dst.at(x, y), there ? before.at(x - 2, y - 1) : P{}))
                << x << ", " << y;
        }
    EXPECT_TRUE(dst.guardsWhole());
}

TEST_F(Iterate, WithoutASourceInAndOutAreOneAddress) {
    test::Picture<RK_Pixel16> dst(3, 2);
    RK_LayerDef d = dst.record();
    for (const Form form : kForms) {
        Log log;
        EXPECT_EQ(run(form, nullptr, 0, 0, nullptr, nullptr, nullptr, &log, pixelCall, &d), 0);
        ASSERT_EQ(log.calls.size(), 6u);
        for (const Call& call : log.calls) EXPECT_EQ(call.in, call.out);
    }
}

TEST_F(Iterate, AnEdgeEqualToTheSizeGoesOnAndReportsItsRows) {
    test::Picture<RK_Pixel8> dst(4, 3);
    RK_LayerDef d = dst.record();
    const GEO_Rect beyond_columns = {0, 4, 3, 9}, beyond_rows = {3, 0, 9, 4}, past = {0, 5, 3, 9};
    Log log;
    RK_EffectData effect = effectOf(log);
    EXPECT_EQ(run(Form::Iterate, &effect, 0, 9, nullptr, &beyond_columns, nullptr, &log, pixelCall, &d), 0);
    EXPECT_TRUE(log.calls.empty());
    EXPECT_EQ(log.progress, (std::vector<Report>{{1, 9}, {2, 9}, {3, 9}}));
    log.progress.clear();
    EXPECT_EQ(run(Form::Iterate, &effect, 0, 9, nullptr, &beyond_rows, nullptr, &log, pixelCall, &d), 0);
    EXPECT_EQ(run(Form::Iterate, &effect, 0, 9, nullptr, &past, nullptr, &log, pixelCall, &d), 0);
    EXPECT_EQ(run(Form::Origin, &effect, 0, 9, nullptr, &beyond_columns, nullptr, &log, pixelCall, &d), 0);
    EXPECT_TRUE(log.calls.empty());
    EXPECT_TRUE(log.progress.empty());
}

TEST_F(Iterate, ARectangleWhoseRightIs0ReportsNothing) {
    test::Picture<RK_Pixel8> dst(4, 3);
    RK_LayerDef d = dst.record();
    const GEO_Rect rect = {0, -5, 3, 0};
    for (const Form form : kForms) {
        Log log;
        RK_EffectData effect = effectOf(log);
        EXPECT_EQ(run(form, &effect, 0, 9, nullptr, &rect, nullptr, &log, pixelCall, &d), 0);
        EXPECT_TRUE(log.calls.empty());
        EXPECT_TRUE(log.progress.empty());
    }
}

// ---- Results and progress -------------------------------------------------------------------------------

TEST_F(Iterate, TheFirstResultThatIsNotZeroEndsThePass) {
    test::Picture<RK_Pixel8> dst(11, 3);
    RK_LayerDef d = dst.record();
    for (const Form form : kForms)
        for (size_t n = 0; n < 33; ++n)
            for (const RK_Long answer :
                 {RK_Long{1}, RK_Long{-1}, RK_Long{517}, std::numeric_limits<RK_Long>::min()}) {
                Log log;
                log.special_call = n;
                log.call_answer = answer;
                RK_EffectData effect = effectOf(log);
                EXPECT_EQ(run(form, &effect, 0, 3, nullptr, nullptr, nullptr, &log, pixelCall, &d), answer);
                EXPECT_EQ(log.calls.size(), n + 1);
                EXPECT_EQ(log.progress.size(), n / 11);
            }
}

TEST_F(Iterate, AnAbortAfterARowEndsThePassThere) {
    test::Picture<RK_PixelFloat> dst(3, 5);
    RK_LayerDef d = dst.record();
    for (const Form form : kForms)
        for (size_t row = 0; row < 5; ++row) {
            Log log;
            log.special_report = row;
            log.report_answer = 517;
            RK_EffectData effect = effectOf(log);
            EXPECT_EQ(run(form, &effect, 0, 5, nullptr, nullptr, nullptr, &log, pixelCall, &d), 517);
            EXPECT_EQ(log.calls.size(), 3 * (row + 1)) << "rows after it are untouched";
        }
}

TEST_F(Iterate, AnotherProgressResultSurvivesOnlyFromTheLastRow) {
    test::Picture<RK_Pixel16> dst(3, 5);
    RK_LayerDef d = dst.record();
    for (const Form form : kForms)
        for (size_t row = 0; row < 5; ++row) {
            Log log;
            log.special_report = row;
            log.report_answer = 42;
            RK_EffectData effect = effectOf(log);
            EXPECT_EQ(run(form, &effect, 0, 5, nullptr, nullptr, nullptr, &log, pixelCall, &d),
                      row == 4 ? 42 : 0);
            EXPECT_EQ(log.calls.size(), 15u);
        }
}

TEST_F(Iterate, WithoutPixelCallsEachProgressResultTakesTheOthersPlace) {
    test::Picture<RK_Pixel16> dst(3, 4);
    RK_LayerDef d = dst.record();
    const GEO_Rect no_columns = {0, 3, 4, 3};
    Log log;
    log.special_report = 1;
    log.report_answer = 42;
    log.other_reports = 7;
    RK_EffectData effect = effectOf(log);
    EXPECT_EQ(run(Form::Iterate, &effect, 0, 5, nullptr, &no_columns, nullptr, &log, pixelCall, &d), 7);
    EXPECT_EQ(log.progress.size(), 4u);
    log.progress.clear();
    log.report_answer = 517;
    EXPECT_EQ(run(Form::Iterate, &effect, 0, 5, nullptr, &no_columns, nullptr, &log, pixelCall, &d), 517);
    EXPECT_EQ(log.progress.size(), 2u);
}

TEST_F(Iterate, ProgressCountsFromTheClippedTopAndWraps) {
    test::Picture<RK_Pixel8> dst(2, 6);
    RK_LayerDef d = dst.record();
    const GEO_Rect rect = {3, 0, 6, 2};
    for (const Form form : kForms) {
        Log log;
        RK_EffectData effect = effectOf(log);
        EXPECT_EQ(run(form, &effect, INT32_MAX - 1, -1, nullptr, &rect, nullptr, &log, pixelCall, &d), 0);
        EXPECT_EQ(log.progress, (std::vector<Report>{{INT32_MAX, -1}, {INT32_MIN, -1}, {INT32_MIN + 1, -1}}));
    }
}

TEST_F(Iterate, WideProgressNumbersAreNotCutToNothing) {
    if (sizeof(RK_Long) == 4) return;
    const RK_Long wide = static_cast<RK_Long>(int64_t{1} << 32);
    test::Picture<RK_Pixel8> dst(2, 1);
    RK_LayerDef d = dst.record();
    Log log;
    RK_EffectData effect = effectOf(log);
    EXPECT_EQ(run(Form::Iterate, &effect, wide + 5, wide, nullptr, nullptr, nullptr, &log, pixelCall, &d), 0);
    EXPECT_EQ(log.progress, (std::vector<Report>{{6, wide}}))
        << "the count wraps at 32 bits, the maximum stays";
}

TEST_F(Iterate, NoProgressIsCalledWithoutAMaximumARecordOrAFunction) {
    test::Picture<RK_Pixel8> dst(2, 3);
    RK_LayerDef d = dst.record();
    for (const Form form : kForms) {
        Log log;
        log.other_reports = 517;
        RK_EffectData effect = effectOf(log), silent = effectOf(log);
        silent.progress_func = nullptr;
        EXPECT_EQ(run(form, &effect, 0, 0, nullptr, nullptr, nullptr, &log, pixelCall, &d), 0);
        EXPECT_EQ(run(form, nullptr, 0, 9, nullptr, nullptr, nullptr, &log, pixelCall, &d), 0);
        EXPECT_EQ(run(form, &silent, 0, 9, nullptr, nullptr, nullptr, &log, pixelCall, &d), 0);
        EXPECT_TRUE(log.progress.empty());
        EXPECT_EQ(log.calls.size(), 18u);
    }
}

namespace {
RK_Long throwing(void* refcon, RK_Long, RK_Long, void*, void*) {
    if (refcon == nullptr) throw RK_Long{77};
    throw std::runtime_error("a pixel function failed");
}
RK_Long throwingPart(void* refcon, RK_Long, RK_Long, RK_Long) {
    return throwing(refcon, 0, 0, nullptr, nullptr);
}
}  // namespace

TEST_F(Iterate, WhatAFunctionThrowsBecomesTheResult) {
    test::Picture<RK_Pixel8> dst(2, 3);
    RK_LayerDef d = dst.record();
    int something = 0;
    for (const Form form : kForms) {
        EXPECT_EQ(run(form, nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, throwing, &d), 77);
        EXPECT_EQ(run(form, nullptr, 0, 0, nullptr, nullptr, nullptr, &something, throwing, &d), 3);
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Exception, 0, "a pixel function failed"));
    }
    EXPECT_EQ(RK_IterateGeneric(2, nullptr, throwingPart), 77);
    EXPECT_EQ(RK_IterateGeneric(-1, &something, throwingPart), 3);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Exception, 0, "a pixel function failed"));
}

// ---- What is refused ------------------------------------------------------------------------------------

TYPED_TEST(IteratePass, NullArgumentsAreBadParametersOneByOne) {
    using P = TypeParam;
    test::Picture<P> dst(2, 3), source(2, 3);
    RK_LayerDef d = dst.record(), s = source.record(), empty = d;
    empty.data = nullptr;
    const GEO_Rect outside = {0, 0, 0, 0};
    for (const Form form : kForms) {
        Log log;
        log.other_reports = 1;
        RK_EffectData effect = effectOf(log);
        for (const GEO_Rect* rect : {static_cast<const GEO_Rect*>(nullptr), &outside}) {
            EXPECT_EQ(run(form, &effect, 0, 9, &empty, rect, nullptr, &log, pixelCall, &d), 3);
            EXPECT_TRUE(test::onlyBadParam(siteOf(form)));
            EXPECT_EQ(run(form, &effect, 0, 9, &s, rect, nullptr, &log, pixelCall, nullptr), 3);
            EXPECT_TRUE(test::onlyBadParam(siteOf(form)));
            EXPECT_EQ(run(form, &effect, 0, 9, &s, rect, nullptr, &log, pixelCall, &empty), 3);
            EXPECT_TRUE(test::onlyBadParam(siteOf(form)));
            EXPECT_EQ(run(form, &effect, 0, 9, nullptr, rect, nullptr, &log, pixelCall, &empty), 3);
            EXPECT_TRUE(test::onlyBadParam(siteOf(form)));
            EXPECT_EQ(run(form, &effect, 0, 9, &s, rect, nullptr, &log, nullptr, &d), 3);
            EXPECT_TRUE(test::onlyBadParam(siteOf(form)));
        }
        EXPECT_TRUE(log.calls.empty());
        EXPECT_TRUE(log.progress.empty());
    }
}

TEST_F(Iterate, UnequalDepthsAreRefusedBeforeAnyCall) {
    test::Picture<RK_Pixel8> p8(2, 3);
    test::Picture<RK_Pixel16> p16(2, 3);
    test::Picture<RK_PixelFloat> pf(2, 3);
    RK_LayerDef worlds[] = {p8.record(), p16.record(), pf.record()};
    const GEO_Rect nothing = {0, 0, 0, 0};
    for (const Form form : kForms)
        for (int i = 0; i < 3; ++i)
            for (int k = 0; k < 3; ++k) {
                if (i == k) continue;
                Log log;
                RK_EffectData effect = effectOf(log);
                EXPECT_EQ(
                    run(form, &effect, 0, 9, &worlds[i], &nothing, nullptr, &log, pixelCall, &worlds[k]), 3);
                EXPECT_TRUE(
                    test::onlyVerification("RK_Iterate requires source and dst worlds to be same depth"));
                EXPECT_TRUE(log.calls.empty() && log.progress.empty());
            }
}

TEST_F(Iterate, AnUnknownDepthIsRefusedAfterTheComparison) {
    uint8_t pixels[64] = {};
    test::OddWorld odd(24), other(24), different(25);
    for (test::OddWorld* world : {&odd, &other, &different}) {
        world->record.data = pixels;
        world->record.width = world->record.height = 1;
    }
    const GEO_Rect nothing = {0, 0, 0, 0};
    for (const Form form : kForms) {
        Log log;
        EXPECT_EQ(run(form, nullptr, 0, 0, nullptr, &nothing, nullptr, &log, pixelCall, &odd.record), 3);
        EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
        EXPECT_EQ(run(form, nullptr, 0, 0, &other.record, &nothing, nullptr, &log, pixelCall, &odd.record),
                  3);
        EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
        EXPECT_EQ(run(form, nullptr, 0, 0, &different.record, nullptr, nullptr, &log, pixelCall, &odd.record),
                  3);
        EXPECT_TRUE(test::onlyVerification("RK_Iterate requires source and dst worlds to be same depth"));
        EXPECT_TRUE(log.calls.empty());
    }
}

TEST_F(Iterate, NonsenseSizesMakeNoCalls) {
    test::Picture<RK_Pixel8> picture(4, 4);
    RK_LayerDef good = picture.record();
    const Point places[] = {{0, 0}, {-1, -1}, {1, 1}, {-32768, -32768}, {32767, 32767}};
    const GEO_Rect all = {-32768, -32768, 32767, 32767};
    const std::pair<int32_t, int32_t> sizes[] = {
        {INT32_MIN, 4}, {-1, 4}, {0, 4}, {INT32_MIN, -1}, {INT32_MAX, 0}};
    for (const auto& [width, height] : sizes) {
        RK_LayerDef bad = good;
        bad.width = width;
        bad.height = height;
        for (const Point& origin : places)
            for (const GEO_Rect* rect : {static_cast<const GEO_Rect*>(nullptr), &all}) {
                Log log;
                for (const Form form : kForms) {
                    EXPECT_EQ(run(form, nullptr, 0, 0, nullptr, rect, &origin, &log, pixelCall, &bad), 0);
                    EXPECT_EQ(run(form, nullptr, 0, 0, &good, rect, &origin, &log, pixelCall, &bad), 0);
                }
                EXPECT_EQ(run(Form::Iterate, nullptr, 0, 0, &bad, rect, &origin, &log, pixelCall, &good), 0);
                EXPECT_EQ(run(Form::Origin, nullptr, 0, 0, &bad, rect, &origin, &log, pixelCall, &good), 0);
                EXPECT_TRUE(log.calls.empty());
                EXPECT_EQ(run(Form::Unclipped, nullptr, 0, 0, &bad, rect, &origin, &log, pixelCall, &good),
                          0);
                EXPECT_EQ(log.calls.size(), 16u) << "all outside the source";
            }
    }
}

TEST_F(Iterate, AnEndlessSourceReachesWhereverItBegins) {
    // More rows than any memory: only the first are ever read.
    test::Picture<RK_Pixel8> dst(4, 4), source(4, 4);
    RK_LayerDef d = dst.record(), s = source.record();
    s.width = s.height = INT32_MAX;
    const Point origin = {2, 2};
    for (const Form form : {Form::Origin, Form::Unclipped}) {
        Log log;
        EXPECT_EQ(run(form, nullptr, 0, 0, &s, nullptr, &origin, &log, pixelCall, &d), 0);
        ASSERT_EQ(log.calls.size(), form == Form::Origin ? 4u : 16u);
        EXPECT_EQ(log.calls.back().in, &source.at(1, 1));
    }
}

// ---- The generic pass -----------------------------------------------------------------------------------

namespace {

struct Parts {
    std::vector<RK_Long> i;
    RK_Long stop_at = -1;
    RK_Long iterations = 0;
};
RK_Long part(void* refcon, RK_Long thread_index, RK_Long i, RK_Long iterations) {
    Parts& parts = *static_cast<Parts*>(refcon);
    parts.i.push_back(i);
    parts.iterations = iterations;
    EXPECT_EQ(thread_index, 0);
    return i == parts.stop_at ? 1000 + i : 0;
}

}  // namespace

TEST_F(Iterate, TheGenericPassCallsItsPartsInOrder) {
    for (const RK_Long count : {1, 2, 9}) {
        Parts parts;
        EXPECT_EQ(RK_IterateGeneric(count, &parts, part), 0);
        EXPECT_EQ(parts.i.size(), size_t(count));
        for (RK_Long i = 0; i < count; ++i) EXPECT_EQ(parts.i[size_t(i)], i);
        EXPECT_EQ(parts.iterations, count);
    }
}

TEST_F(Iterate, MinusOneIsOneUnitOfWorkForTheWhole) {
    Parts parts;
    EXPECT_EQ(RK_IterateGeneric(-1, &parts, part), 0);
    EXPECT_EQ(parts.i, (std::vector<RK_Long>{0}));
    EXPECT_EQ(parts.iterations, 1);
    parts.stop_at = 0;
    EXPECT_EQ(RK_IterateGeneric_Static(-1, &parts, part), 1000);
}

TEST_F(Iterate, OtherCountsBelow1CallNothing) {
    Parts parts;
    for (const RK_Long count :
         {RK_Long{0}, RK_Long{-2}, RK_Long{INT32_MIN}, std::numeric_limits<RK_Long>::min()})
        EXPECT_EQ(RK_IterateGeneric(count, &parts, part), 0);
    EXPECT_TRUE(parts.i.empty());
}

TEST_F(Iterate, TheGenericPassStopsAtTheFirstResult) {
    Parts parts;
    parts.stop_at = 3;
    EXPECT_EQ(RK_IterateGeneric(std::numeric_limits<RK_Long>::max(), &parts, part), 1003);
    EXPECT_EQ(parts.i.size(), 4u);
}

TEST_F(Iterate, AGenericPassWithoutAFunctionIsABadParameter) {
    for (const RK_Long count : {-1, 0, 5}) {
        EXPECT_EQ(RK_IterateGeneric(count, nullptr, nullptr), 3);
        EXPECT_TRUE(test::onlyBadParam(70));
    }
}

// ---- Slots ----------------------------------------------------------------------------------------------

namespace {
RK_Long otherGeneric(RK_Long iterations, void*, RK_GenericFunc*) { return iterations + 5; }
RK_Long otherIterate(RK_EffectData*, RK_Long, RK_Long, RK_LayerDef*, const GEO_Rect*, void*, RK_PixelFunc*,
                     RK_LayerDef*) {
    return 91;
}
RK_Long otherOrigin(RK_EffectData*, RK_Long, RK_Long, RK_LayerDef*, const GEO_Rect*, const Point*, void*,
                    RK_PixelFunc*, RK_LayerDef*) {
    return 92;
}
RK_Long otherLUT(RK_EffectData*, RK_Long, RK_Long, RK_LayerDef*, const GEO_Rect*, const uint8_t*,
                 const uint8_t*, const uint8_t*, const uint8_t*, RK_LayerDef*) {
    return 93;
}
}  // namespace

TEST_F(Iterate, TheExportsCallWhateverTheirSlotsHold) {
    const int slots[] = {42, 43, 44, 53};
    void* const others[] = {reinterpret_cast<void*>(otherIterate), reinterpret_cast<void*>(otherOrigin),
                            reinterpret_cast<void*>(otherLUT), reinterpret_cast<void*>(otherGeneric)};
    void* saved[4];
    for (int i = 0; i < 4; ++i) {
        saved[i] = RKp_G_OverFuncs[slots[i]];
        EXPECT_EQ(RK_SetOverrideFunc(slots[i], others[i]), 0);
    }
    EXPECT_EQ(RK_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr), 91);
    EXPECT_EQ(RK_IterateOrigin(nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 92);
    EXPECT_EQ(RK_IterateLUT(nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              93);
    EXPECT_EQ(RK_IterateGeneric(7, nullptr, nullptr), 12);
    for (int i = 0; i < 4; ++i) RK_SetOverrideFunc(slots[i], saved[i]);
}

TEST_F(Iterate, TheDefaultsStandInTheirSlots) {
    EXPECT_EQ(RKp_G_OverFuncs[42], reinterpret_cast<void*>(RK_Iterate_Static));
    EXPECT_EQ(RKp_G_OverFuncs[43], reinterpret_cast<void*>(RK_IterateOrigin_Static));
    EXPECT_EQ(RKp_G_OverFuncs[44], reinterpret_cast<void*>(RK_IterateLUT_Static));
    EXPECT_EQ(RKp_G_OverFuncs[51], reinterpret_cast<void*>(RK_IterateOriginUnclipped_Static));
    EXPECT_EQ(RKp_G_OverFuncs[53], reinterpret_cast<void*>(RK_IterateGeneric_Static));
}
