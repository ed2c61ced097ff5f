// Fills, fades, accumulation, transfer and conversion of masks against their plain twins.
#include <gtest/gtest.h>

#include "refhost/RefHost.h"
#include "test/plain/filter/Masks.h"

namespace {

using plain::Mask;
using test::Buffer;
using test::FirstCheckIn;
using test::Random;
using test::randomDepth;
using test::randomMask;
using test::side;

int sideOrNone(Random& r) { return r.below(32) == 0 ? 0 : side(r); }
plain::Noise noise() { return {RKp_G_Noise.begin, RKp_G_Noise.cursor, RKp_G_Noise.end}; }
GEO_Rect inside(Random& r, const Mask& m) {
    const auto part = [&](int size, int16_t& low, int16_t& high) {
        low = static_cast<int16_t>(r.below(static_cast<uint32_t>(size) + 1));
        high = static_cast<int16_t>(low + static_cast<int>(r.below(static_cast<uint32_t>(size - low) + 1)));
    };
    GEO_Rect rect;
    part(m.height, rect.top, rect.bottom);
    part(m.width, rect.left, rect.right);
    if (r.below(4) == 0) rect.left = 0, rect.right = static_cast<int16_t>(m.width);
    return rect;
}

TEST(MasksAgainstPlain, FillsAreEqual) {
    Random r(1);
    const int count = test::amount(6000);
    for (int i = 0; i < count; ++i) {
        const Mask before = randomMask(r, side(r), side(r), randomDepth(r));
        Mask expected = before;
        Buffer got(before);
        const GEO_Rect whole = {0, 0, static_cast<int16_t>(before.height),
                                static_cast<int16_t>(before.width)};
        const uint32_t kind = r.below(3);
        const bool all = kind == 2 || r.below(2) == 0;
        const GEO_Rect rect = all ? whole : inside(r, before);
        const uint8_t value8 = test::channel(r, uint8_t{});
        const uint16_t value16 = static_cast<uint16_t>(r.next());
        const float value = test::channel(r, 0.0f, true);
        const bool fits = before.depth >= 8 << kind;
        RK_Long result = -1;
        if (kind == 0) {
            result = all ? RK_FillUnoBuffer(value8, &got.uno) : RK_FillUnoBuffer(value8, rect, &got.uno);
            plain::fillMask(value8, rect, expected);
        } else if (kind == 1) {
            result =
                all ? RK_FillDeepUnoBuffer(value16, &got.uno) : RK_FillDeepUnoBuffer(value16, rect, &got.uno);
            if (fits) plain::fillMask(value16, rect, expected);
        } else {
            result = RK_FillFloatUnoBuffer(value, &got.uno);
            if (fits) plain::fillMask(value, rect, expected);
        }
        RefHost::TakeReports();
        ASSERT_EQ(result, fits ? 0 : 3);
        ASSERT_EQ(test::difference(before, expected, got), "")
            << "fill of " << (8 << kind) << " bits, " << test::show(rect) << (all ? ", whole" : "");
    }
}

TEST(MasksAgainstPlain, FadesAndInversionsAreEqual) {
    Random r(2);
    // Halves of a step of either depth among them.
    static const float parts[] = {0.0f,
                                  1.0f,
                                  0.5f,
                                  16384.5f / 32768.0f,
                                  -0.5f,
                                  2.0f,
                                  1e9f,
                                  3.5f / 32768.0f,
                                  -1e30f,
                                  1e-39f,
                                  63.5f / 255.0f,
                                  std::numeric_limits<float>::quiet_NaN(),
                                  std::numeric_limits<float>::infinity()};
    static const int32_t fixed[] = {0,       1,       0x8000, 0x7F7F,    0xFFFF,   0x10000,
                                    0x10001, 0x20000, -1,     INT32_MIN, INT32_MAX};
    const int count = test::amount(6000);
    for (int i = 0; i < count; ++i) {
        const Mask before = randomMask(r, sideOrNone(r), sideOrNone(r), randomDepth(r), true);
        Mask expected = before;
        Buffer got(before);
        const uint32_t kind = r.below(3);
        const float part = r.below(3) == 0 ? parts[r.below(13)] : r.unit();
        const int32_t amount = r.below(3) == 0 ? fixed[r.below(11)] : static_cast<int32_t>(r.below(0x10001));
        if (kind == 0) {
            ASSERT_EQ(RK_FadeUnoBuffer(nullptr, part, &got.uno), 0);
            plain::fade(part, expected);
        } else {
            const bool has_rows = before.depth != 32 && before.width > 0;
            FirstCheckIn check(r.below(4) == 0, has_rows ? before.height : 0);
            const RK_Long result = kind == 1 ? RK_InvertUnoBuffer(check.progress(), &got.uno)
                                             : RK_InvertAndFadeUnoBuffer(check.progress(), amount, &got.uno);
            ASSERT_EQ(result, check.result());
            if (has_rows) {
                ASSERT_TRUE(check.calledAsItShould());
            }
            plain::invertAndFade(kind == 1 ? 0x10000 : amount, expected, check.rowsDone());
        }
        ASSERT_EQ(test::difference(before, expected, got), "")
            << (kind == 0   ? "fade " + std::to_string(part)
                : kind == 1 ? "inversion"
                            : "fade of inverse")
            << (kind == 2 ? " " + std::to_string(amount) : "");
    }
}

int modeOf(Random& r) {
    static const int others[] = {0, 8, 100, -2, INT32_MAX, INT32_MIN};
    const int mode = static_cast<int>(r.below(9));
    return mode == 0 ? -1 : mode == 8 ? others[r.below(6)] : mode;
}
float shareOf(Random& r) {
    static const float special[] = {
        0.0f, 1.0f, 1.0f, 1.0f, 0.5f, 0.002f, 0.998f, 1e-39f, 16384.5f / 32768.0f, 32767.5f / 32768.0f};
    return r.below(2) == 0 ? special[r.below(10)] : r.unit();
}
// A mask of a size that the passes spread over threads, now and then.
Mask maskOf(Random& r, int depth, bool wild) {
    if (r.below(400) == 0) return randomMask(r, 800, 96 + static_cast<int>(r.below(10)), depth, wild);
    return randomMask(r, side(r), side(r), depth, wild);
}
// Mostly the whole of a mask or a bit beside it.
GEO_Rect rectOf(Random& r, const Mask& m) {
    if (r.below(2) == 0) return {0, 0, static_cast<int16_t>(m.height), static_cast<int16_t>(m.width)};
    return test::randomRect(r, m.width, m.height);
}
Point pointOf(Random& r, const Mask& m) {
    if (r.below(2) == 0) return {0, 0};
    return {test::about(r, m.height), test::about(r, m.width)};
}
std::string show(int mode, const GEO_Rect& rect, Point point) {
    return "mode " + std::to_string(mode) + ", " + test::show(rect) + ", to v " + std::to_string(point.v) +
           ", h " + std::to_string(point.h);
}
// Whether a pass that stops after row 63 is told what becomes of the rows below.
bool mayStop(Random& r, int mode, int64_t rows) {
    return r.below(4) == 0 && (rows != 64 || (mode != 3 && mode != 5));
}

TEST(MasksAgainstPlain, AccumulationIsEqualInEveryMode) {
    Random r(3);
    const int count = test::amount(20000);
    for (int i = 0; i < count; ++i) {
        const int mode = modeOf(r), depth = randomDepth(r);
        const Mask src = maskOf(r, depth, false),
                   before = maskOf(r, r.below(4) == 0 ? randomDepth(r) : depth, false);
        const bool plain_form = r.below(2) == 0;
        const float limit = plain_form ? 1.0f : shareOf(r), opacity = plain_form ? 1.0f : shareOf(r);
        const GEO_Rect rect = rectOf(r, src);
        const Point point = pointOf(r, before);
        Mask expected = before;
        Buffer from(src), got(before);
        plain::Noise drawn = noise();
        const plain::Meeting m = plain::meeting(rect, point, src, src, before);
        const int64_t rows = m.empty() ? 0 : m.bottom - m.top;
        const RK_Long told = plain::accumulate(src, mode, limit, opacity, rect, point, expected, drawn, 0);
        expected = before;
        FirstCheckIn check(mayStop(r, mode, rows), told == 0 ? rows : 0);
        drawn = noise();
        plain::accumulate(src, mode, limit, opacity, rect, point, expected, drawn, check.rowsDone());
        const RK_Long result =
            plain_form ? RK_AccumulateUnoBuffers(check.progress(), &from.uno, mode, rect, point, &got.uno)
                       : RK_AccumulateUnoBuffers(check.progress(), &from.uno, mode, limit, opacity, rect,
                                                 point, &got.uno);
        RefHost::TakeReports();
        const std::string shown = show(mode, rect, point) + " from depth " + std::to_string(depth) +
                                  " limit " + std::to_string(limit) + " opacity " + std::to_string(opacity);
        ASSERT_EQ(result, told != 0 ? told : check.result()) << shown;
        ASSERT_TRUE(check.calledAsItShould()) << shown;
        ASSERT_EQ(test::difference(before, expected, got), "") << shown;
        ASSERT_EQ(RKp_G_Noise.cursor, drawn.cursor) << shown;
    }
}
TEST(MasksAgainstPlain, AccumulationIsEqualInPlace) {
    Random r(6);
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const int mode = modeOf(r);
        const Mask before = maskOf(r, r.below(2) == 0 ? 8 : 16, false);
        const float limit = shareOf(r), opacity = shareOf(r);
        const GEO_Rect rect = rectOf(r, before);
        const Point point = {rect.top, rect.left};
        Mask expected = before;
        Buffer got(before);
        plain::Noise drawn = noise();
        plain::accumulate(before, mode, limit, opacity, rect, point, expected, drawn);
        ASSERT_EQ(RK_AccumulateUnoBuffers(nullptr, &got.uno, mode, limit, opacity, rect, point, &got.uno), 0);
        ASSERT_EQ(test::difference(before, expected, got), "") << show(mode, rect, point) << ", in place";
    }
}

TEST(MasksAgainstPlain, TransferIsEqualInEveryMode) {
    Random r(4);
    const int count = test::amount(20000);
    for (int i = 0; i < count; ++i) {
        const int mode = modeOf(r), depth = randomDepth(r);
        const auto other = [&] { return r.below(16) == 0 ? randomDepth(r) : depth; };
        // Which of two zeros or NaNs is the greater, nobody says.
        const bool wild = mode != 4 && mode != 5 && mode != 7;
        const Mask a = maskOf(r, depth, wild), b = maskOf(r, other(), wild),
                   before = maskOf(r, other(), wild);
        const GEO_Rect rect = rectOf(r, r.below(2) == 0 ? a : b);
        const Point point = pointOf(r, before);
        Mask expected = before;
        Buffer first(a), second(b), got(before);
        const plain::Meeting m = plain::meeting(rect, point, a, b, before);
        const int64_t rows = m.empty() ? 0 : m.bottom - m.top;
        const bool equal = a.depth == b.depth && a.depth == before.depth;
        FirstCheckIn check(mayStop(r, mode, rows), equal ? rows : 0);
        plain::Noise drawn = noise();
        const RK_Long told = plain::transfer(a, b, mode, rect, point, expected, drawn, check.rowsDone());
        const RK_Long result =
            RK_TransferUnoBuffers(check.progress(), &first.uno, &second.uno, mode, rect, point, &got.uno);
        RefHost::TakeReports();
        ASSERT_EQ(result, told != 0 ? told : check.result()) << show(mode, rect, point);
        ASSERT_TRUE(check.calledAsItShould()) << show(mode, rect, point);
        ASSERT_EQ(test::difference(before, expected, got), "") << show(mode, rect, point);
        ASSERT_EQ(RKp_G_Noise.cursor, drawn.cursor) << show(mode, rect, point);
    }
}

TEST(MasksAgainstPlain, ConversionIsEqual) {
    Random r(5);
    static const uint16_t divisors[] = {0, 1, 2, 3, 4, 5, 8, 16, 255, 32768, 65535};
    const int count = test::amount(10000);
    for (int i = 0; i < count; ++i) {
        Mask src = maskOf(r, r.below(8) == 0 ? randomDepth(r) : 16, false);
        const Mask before = maskOf(r, randomDepth(r), true);
        if (src.depth == 16 && r.below(4) == 0)
            for (uint8_t& byte : src.bytes) byte = static_cast<uint8_t>(r.next() >> 24);
        const GEO_Rect rect = rectOf(r, src);
        const uint16_t divisor = divisors[r.below(11)];
        Mask expected = before;
        Buffer from(src), got(before);
        const plain::Meeting m = plain::meeting(rect, {rect.top, rect.left}, src, src, before);
        const bool works = src.depth == 16 && divisor != 0;
        FirstCheckIn check(r.below(4) == 0, m.empty() || !works ? 0 : m.bottom - m.top);
        plain::convertMask(src, rect, divisor, expected, check.rowsDone());
        const RK_Long result = RK_ConvertDeepUnoBuffer(check.progress(), &from.uno, rect, divisor, &got.uno);
        RefHost::TakeReports();
        ASSERT_EQ(result, src.depth == 16 && divisor == 0 ? 3 : check.result());
        ASSERT_TRUE(check.calledAsItShould());
        ASSERT_EQ(test::difference(before, expected, got), "")
            << "over " << divisor << ", " << test::show(rect);
    }
}

}  // namespace
