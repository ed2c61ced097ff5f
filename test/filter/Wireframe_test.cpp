#include "RK/indep/filter/RK_Wireframe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "RK/host/SEQ.h"
#include "RK/host/SHIM.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/filter/Bitmap.h"

bool operator==(const Point& a, const Point& b) { return a.v == b.v && a.h == b.h; }
void PrintTo(const Point& p, std::ostream* out) { *out << "(" << p.h << ", " << p.v << ")"; }

namespace {

using Points = std::vector<Point>;
constexpr uint32_t kSite = 15;

// Points as x, y.
Point at(int x, int y) { return {static_cast<int16_t>(y), static_cast<int16_t>(x)}; }

Points pointsOf(const SEQ_List* list) {
    Points points(static_cast<size_t>(SEQ_Count(list)));
    for (size_t i = 0; i < points.size(); ++i)
        EXPECT_EQ(0, SEQ_Get(list, static_cast<int32_t>(i), &points[i]));
    return points;
}

bool isClear(const RK_Wireframe& w) {
    const RK_Wireframe clear = {};
    return std::memcmp(&w, &clear, sizeof w) == 0;
}

// A wireframe that is disposed of.
struct Frame : RK_Wireframe {
    Frame() : RK_Wireframe{} {}
    ~Frame() { EXPECT_EQ(0, RK_DisposeWireframe(this)); }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
};

// The points that a call gives; the result goes to `error`.
Points generated(test::Bitmap& bitmap, int32_t step, int32_t max_points, uint32_t flags = 0,
                 const GEO_Rect* rect = nullptr) {
    Frame frame;
    EXPECT_EQ(0, RK_GenerateWireframe(nullptr, bitmap.handle(), step, max_points, flags, rect, &frame));
    EXPECT_EQ(1u, frame.flags);
    EXPECT_EQ(frame.count, SEQ_Count(frame.points));
    EXPECT_EQ(0, bitmap.locks());
    return pointsOf(frame.points);
}

class Wireframe : public test::Tidy {};

TEST_F(Wireframe, TheOutlineIsWhereAlphaCrossesOneHalf) {
    test::Bitmap bitmap(12, 12);
    for (int y = 4; y < 8; ++y)
        for (int x = 4; x < 8; ++x) bitmap.at(x, y).alpha = 0x80;
    // At a step of 1 the neighbours on both sides are compared, so that the outline is two pixels wide; a
    // corner of the square counts from within only.
    Points wanted;
    for (int y = 1; y < 11; ++y) {
        for (int x = 1; x < 11; ++x) {
            const auto in = [](int a) { return a >= 4 && a < 8; };
            const bool across = in(y) && in(x - 1) != in(x + 1), down = in(x) && in(y - 1) != in(y + 1);
            if (across || down) wanted.push_back(at(x, y));
        }
    }
    ASSERT_EQ(28u, wanted.size());
    EXPECT_EQ(wanted, generated(bitmap, 1, 1000));
    bitmap.at(5, 4).alpha = 0x7F;  // just below one half
    EXPECT_NE(wanted, generated(bitmap, 1, 1000));
}

TEST_F(Wireframe, TheGridBeginsAndEndsAStepInside) {
    test::Bitmap bitmap(20, 14);
    for (int y = 0; y < 14; ++y)
        for (int x = 0; x < 20; ++x) bitmap.at(x, y).alpha = ((x + y) & 1) != 0 ? 255 : 0;
    // Step 3: one pixel to the left, two to the right, so that a chequer differs everywhere.
    Points wanted;
    for (int y = 3; y < 11; y += 3)
        for (int x = 3; x < 17; x += 3) wanted.push_back(at(x, y));
    EXPECT_EQ(wanted, generated(bitmap, 3, 1000));
    // Step 4: two and two; the chequer is the same there.
    EXPECT_EQ(Points{}, generated(bitmap, 4, 1000));
}

TEST_F(Wireframe, ARectangleIsCutToTheBitmapAndItsCornersComeFirst) {
    test::Bitmap bitmap(16, 16);
    for (int y = 0; y < 16; ++y)
        for (int x = 8; x < 16; ++x) bitmap.at(x, y).alpha = 255;
    const GEO_Rect rect = {2, -5, 9, 12};
    EXPECT_EQ((Points{at(0, 2), at(12, 2), at(12, 9), at(0, 9), at(8, 4), at(8, 6)}),
              generated(bitmap, 2, 100, 0x10, &rect));
    EXPECT_EQ((Points{at(8, 4), at(8, 6)}), generated(bitmap, 2, 100, 0x0F, &rect));
    EXPECT_EQ((Points{at(0, 0), at(16, 0), at(16, 16), at(0, 16)}), generated(bitmap, 8, 4, 0x10));
    const GEO_Rect outside = {20, 20, 30, 30};
    EXPECT_EQ(Points{}, generated(bitmap, 2, 100, 0, &outside));
}

TEST_F(Wireframe, TheStepGrowsUntilARaggedOutlineFits) {
    test::Bitmap bitmap(101, 101);
    test::Random random(7);
    for (int y = 0; y < 101; ++y)
        for (int x = 0; x < 101; ++x) bitmap.at(x, y).alpha = static_cast<uint8_t>(random.below(256));
    const Points all = generated(bitmap, 1, 100000);
    EXPECT_GT(all.size(), 4000u);
    for (int32_t most : {1000, 100, 30, 4, 0}) {
        const Points points = generated(bitmap, 1, most);
        EXPECT_LE(points.size(), static_cast<size_t>(most));
        // It is what the first step that fits gives by itself.
        int32_t step = 1;
        for (; generated(bitmap, step, 100000).size() > static_cast<size_t>(most);) ++step;
        EXPECT_EQ(generated(bitmap, step, 100000), points);
        EXPECT_GT(step, 1);
    }
}

TEST_F(Wireframe, AStepBelowOneCountsAsOne) {
    test::Bitmap bitmap(9, 9);
    for (int y = 0; y < 9; ++y) bitmap.at(4, y).alpha = 200;
    const Points one = generated(bitmap, 1, 100);
    EXPECT_EQ(14u, one.size());
    EXPECT_EQ(one, generated(bitmap, 0, 100));
    EXPECT_EQ(one, generated(bitmap, INT32_MIN, 100));
    EXPECT_EQ(Points{}, generated(bitmap, INT32_MAX, 100));
}

TEST_F(Wireframe, TooFewPointsForTheCornersAreAFailure) {
    test::Bitmap bitmap(9, 9);
    bitmap.at(4, 4).alpha = 255;
    for (const auto& [most, flags] : {std::pair<int32_t, uint32_t>{3, 0x10}, {-1, 0}, {INT32_MIN, 0x10}}) {
        RK_Wireframe frame = {1, 2, nullptr, {nullptr, nullptr}, nullptr};
        EXPECT_EQ(3, RK_GenerateWireframe(nullptr, bitmap.handle(), 1, most, flags, nullptr, &frame));
        EXPECT_TRUE(test::onlyBadParam(kSite));
        EXPECT_TRUE(isClear(frame));
    }
}

TEST_F(Wireframe, BitmapsThatCannotBeReadLeaveTheRecordClear) {
    test::Bitmap bitmap(9, 9), deep(4, 4, 64);
    RAS_World* none = nullptr;
    for (RAS_World** bad : {static_cast<RAS_World**>(nullptr), &none, deep.handle()}) {
        RK_Wireframe frame = {1, 2, nullptr, {nullptr, nullptr}, nullptr};
        EXPECT_EQ(3, RK_GenerateWireframe(nullptr, bad, 1, 10, 0, nullptr, &frame));
        EXPECT_TRUE(test::onlyBadParam(kSite));
        EXPECT_TRUE(isClear(frame));
    }
    EXPECT_EQ(3, RK_GenerateWireframe(nullptr, bitmap.handle(), 1, 10, 0, nullptr, nullptr));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    RefHost::FailCall("RAS_LoadLockPixels", 61);
    RK_Wireframe frame = {1, 2, nullptr, {nullptr, nullptr}, nullptr};
    EXPECT_EQ(61, RK_GenerateWireframe(nullptr, bitmap.handle(), 1, 10, 0, nullptr, &frame));
    EXPECT_TRUE(isClear(frame));
}

TEST_F(Wireframe, EveryAllocationMayFail) {
    test::Bitmap bitmap(64, 64);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; x += 3) bitmap.at(x, y).alpha = 255;
    RefHost::FailAllocation(0);
    { generated(bitmap, 1, 100000, 0x10); }
    const int64_t allocations = RefHost::AllocationsSince();
    ASSERT_GT(allocations, 10);
    for (int64_t n = 1; n <= allocations; ++n) {
        RK_Wireframe frame;
        RefHost::FailAllocation(n);
        EXPECT_EQ(4, RK_GenerateWireframe(nullptr, bitmap.handle(), 1, 100000, 0x10, nullptr, &frame));
        EXPECT_TRUE(isClear(frame));
        EXPECT_EQ(0, bitmap.locks());
    }
    RefHost::FailCall("SEQ_New", 77);
    RK_Wireframe frame;
    EXPECT_EQ(77, RK_GenerateWireframe(nullptr, bitmap.handle(), 1, 100000, 0x10, nullptr, &frame));
    EXPECT_TRUE(isClear(frame));
}

TEST_F(Wireframe, AMadeRecordHoldsPointsAtZero) {
    Frame frame;
    ASSERT_EQ(0, RK_AllocWireframe(40, 5, &frame));
    EXPECT_EQ(5u, frame.flags);
    EXPECT_EQ(40, frame.count);
    EXPECT_EQ(Points(40, at(0, 0)), pointsOf(frame.points));
    EXPECT_TRUE(!frame.xform_points[0] && !frame.xform_points[1] && !frame.extra);
    Frame empty;
    EXPECT_EQ(0, RK_AllocWireframe(0, 1, &empty));
    EXPECT_EQ(0, RK_DrawWireframe(&empty));

    RK_Wireframe bad = {1, 2, nullptr, {nullptr, nullptr}, nullptr};
    EXPECT_EQ(3, RK_AllocWireframe(-1, 1, &bad));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_TRUE(isClear(bad));
    EXPECT_EQ(3, RK_AllocWireframe(1, 1, nullptr));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    for (int64_t n = 1; n <= 3; ++n) {
        RefHost::FailAllocation(n);
        EXPECT_EQ(4, RK_AllocWireframe(40, 1, &bad));
        EXPECT_TRUE(isClear(bad));
    }
}

// ---- Transformation -------------------------------------------------------------------------------------

void set(Frame& frame, const Points& points) {
    ASSERT_EQ(0, RK_AllocWireframe(static_cast<int32_t>(points.size()), 1, &frame));
    if (!points.empty())
        std::copy(points.begin(), points.end(), static_cast<Point*>(SEQ_Records(frame.points)));
}

const GEO_Matrix3 kMatrix = {{{2, 0.5, 0}, {0, -3, 0}, {10.25, 100, 1}}};

TEST_F(Wireframe, PointsGoThroughAMatrixIntoANewRecord) {
    Frame source, moved;
    set(source, {at(0, 0), at(3, 5), at(-7, 2), at(30000, 30000)});
    source.flags = 9;
    ASSERT_EQ(0, RK_TransformWireframe2D(&source, &kMatrix, &moved));
    EXPECT_EQ(9u, moved.flags);
    EXPECT_EQ(4, moved.count);
    // Rounded away from zero at halves, and held to 16 bits.
    EXPECT_EQ((Points{at(10, 100), at(16, 87), at(-4, 91), at(32767, -32768)}), pointsOf(moved.points));
    EXPECT_EQ((Points{at(0, 0), at(3, 5), at(-7, 2), at(30000, 30000)}), pointsOf(source.points));
}

TEST_F(Wireframe, AMatrixOfSpaceMovesPointsOfThePlane) {
    Frame source, moved;
    set(source, {at(0, 0), at(10, 20)});
    // x' = x + 4, y' = 2y, w = 1 + x / 10.
    const GEO_Matrix4 matrix = {{{1, 0, 5, 0.1}, {0, 2, 5, 0}, {9, 9, 9, 9}, {4, 0, 0, 1}}};
    ASSERT_EQ(0, RK_TransformWireframe3D(&source, &matrix, &moved));
    EXPECT_EQ((Points{at(4, 0), at(7, 20)}), pointsOf(moved.points));
    ASSERT_EQ(0, RK_TransformWireframe3D(&source, &matrix, &source));  // in place
    EXPECT_EQ((Points{at(4, 0), at(7, 20)}), pointsOf(source.points));
}

TEST_F(Wireframe, AGivenTargetKeepsItsListAndFlags) {
    Frame source, target, longer;
    set(source, {at(1, 1), at(2, 2)});
    set(target, {at(9, 9), at(9, 9)});
    set(longer, {at(9, 9), at(9, 9), at(9, 9)});
    target.flags = 4;
    const SEQ_List* list = target.points;
    EXPECT_EQ(0, RK_TransformWireframe2D(&source, &kMatrix, &target));
    EXPECT_EQ(list, target.points);
    EXPECT_EQ(4u, target.flags);
    EXPECT_EQ((Points{at(12, 98), at(14, 95)}), pointsOf(target.points));
    EXPECT_EQ(52, RK_TransformWireframe2D(&source, &kMatrix, &longer));
    EXPECT_EQ(Points(3, at(9, 9)), pointsOf(longer.points));
    EXPECT_TRUE(test::noReports());
}

TEST_F(Wireframe, TransformsRefuseWhatIsNullOrDamaged) {
    Frame source, target;
    set(source, {at(1, 1)});
    const GEO_Matrix4 matrix = {};
    EXPECT_EQ(3, RK_TransformWireframe2D(nullptr, &kMatrix, &target));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_EQ(3, RK_TransformWireframe2D(&source, nullptr, &target));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_EQ(3, RK_TransformWireframe2D(&source, &kMatrix, nullptr));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_EQ(3, RK_TransformWireframe3D(nullptr, &matrix, &target));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_EQ(3, RK_TransformWireframe3D(&source, nullptr, &target));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_TRUE(isClear(target));
    RK_Wireframe damaged = {1, 1, nullptr, {nullptr, nullptr}, nullptr};  // a count without a list
    EXPECT_EQ(3, RK_TransformWireframe2D(&source, &kMatrix, &damaged));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_EQ(3, RK_TransformWireframe2D(&damaged, &kMatrix, &target));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    for (int64_t n = 1; n <= 2; ++n) {
        RefHost::FailAllocation(n);
        EXPECT_EQ(4, RK_TransformWireframe2D(&source, &kMatrix, &target));
        EXPECT_TRUE(isClear(target));
    }
}

// ---- Drawing and the end --------------------------------------------------------------------------------

TEST_F(Wireframe, DotsAreDrawnFromTheLastToTheFirst) {
    Points drawn;
    RefHost::SetLineFunc(
        [](void* refcon, Point from, Point to) {
            EXPECT_EQ(from, to);
            static_cast<Points*>(refcon)->push_back(to);
        },
        &drawn);
    Frame frame;
    set(frame, {at(1, 2), at(-3, 4), at(5, -6)});
    EXPECT_EQ(0, RK_DrawWireframe(&frame));
    EXPECT_EQ((Points{at(5, -6), at(-3, 4), at(1, 2)}), drawn);
    frame.flags = ~1u;
    EXPECT_EQ(0, RK_DrawWireframe(&frame));
    EXPECT_EQ(3u, drawn.size());
    frame.flags = 1;
    frame.count = 2;  // not what the list holds
    EXPECT_EQ(3, RK_DrawWireframe(&frame));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_EQ(3, RK_DrawWireframe(nullptr));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_EQ(3u, drawn.size());
    RefHost::SetLineFunc(nullptr, nullptr);
    frame.count = 3;
    EXPECT_EQ(0, RK_DrawWireframe(&frame));
}

TEST_F(Wireframe, DisposalClearsTheRecordAndKeepsTheFirstFailure) {
    RK_Wireframe frame;
    ASSERT_EQ(0, RK_AllocWireframe(3, 1, &frame));
    for (SEQ_List** list : {&frame.xform_points[0], &frame.xform_points[1], &frame.extra})
        ASSERT_EQ(0, SEQ_New(4, list));
    RefHost::FailCall("SEQ_Dispose", 31);
    RefHost::FailCall("SEQ_Dispose", 32);
    EXPECT_EQ(31, RK_DisposeWireframe(&frame));
    EXPECT_TRUE(isClear(frame));
    EXPECT_EQ(0, RK_DisposeWireframe(&frame));
    EXPECT_EQ(3, RK_DisposeWireframe(nullptr));
    EXPECT_TRUE(test::onlyBadParam(kSite));
}

}  // namespace
