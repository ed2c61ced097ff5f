// A transform that is stopped, or gets no memory: what is finished stays, nothing is lost, and its scratch is
// rows.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "RK/indep/composite/RK_BlendScratch.h"
#include "RK/indep/frame/RKp_Report.h"
#include "refhost/RefHost.h"
#include "test/Reports.h"
#include "test/sample/TransformTest.h"

namespace {

using test::modeOf;
using test::rotation;
using test::scaling;
using test::translation;

// One kind of transform each.
struct Kind {
    const char* name;
    std::vector<GEO_Matrix3> matrices;
    RK_Long quality;
    int32_t xfer;
    int32_t progress_mask;  // progress after rows that have none of these bits, when all rows are drawn
};
std::vector<Kind> kinds() {
    const std::vector<GEO_Matrix3> slides = {translation(0.25, 0.5), translation(1.25, 1.5),
                                             translation(2.25, 2.5)};
    const std::vector<GEO_Matrix3> grows = {scaling(0.9, 3.9), scaling(1, 4), scaling(1.1, 4.1)};
    const auto turned = [](double degrees) {
        GEO_Matrix3 m = rotation(degrees, 9, 6);
        for (auto& row : m.m) row[0] *= 3, row[1] *= 3;
        return m;
    };
    const std::vector<GEO_Matrix3> turns = {turned(2), turned(5), turned(8)};
    return {{"still", {scaling(1.1, 5)}, RK_kBest, RK_Xfer_Over, 31},
            {"still and reduced", {scaling(0.4, 5)}, RK_kBest, RK_Xfer_Over, 31},
            {"draft", {scaling(1.1, 10)}, RK_kDraft, RK_Xfer_Screen, 63},
            {"sliding", slides, RK_kBest, RK_Xfer_Over, 7},
            {"sliding draft", slides, RK_kDraft, RK_Xfer_Over, 7},
            {"growing", grows, RK_kBest, RK_Xfer_Multiply, 7},
            {"turning", turns, RK_kBest, RK_Xfer_Over, 7},
            {"at rest, three alike",
             {scaling(1.1, 5), scaling(2, 2), scaling(1.1, 5)},
             RK_kBest,
             RK_Xfer_Over,
             7},
            {"stencil, still", {scaling(0.7, 5)}, RK_kBest, RK_Xfer_StencilAlpha, 31},
            {"stencil, sliding", slides, RK_kBest, RK_Xfer_StencilLuma, 7},
            {"stencil, turning", turns, RK_kBest, RK_Xfer_StencilAlpha, 7}};
}

template <class P>
class TransformFailure : public test::TransformTest<P> {
  protected:
    using World = RK_WorldX<P>;
    TransformFailure() : mask_world(9, 40, 0) {
        this->randomise(mask_world, 3);
        RefHost::TakeReports();
    }
    RK_Long draw(const Kind& kind, World& to, RK_Long field, bool masked, RK_BlendScratch* scratch = nullptr,
                 const GEO_Rect* rect = nullptr) {
        const RK_TransformMask mask = {&mask_world, 1, 2, RK_kMaskInvertedAlpha};
        const RK_CompositeMode mode = modeOf<P>(kind.xfer);
        const auto count = static_cast<RK_Long>(kind.matrices.size());
        if (scratch != nullptr)
            return RK_TransformWorldPlus(this->progress, kind.quality, 0, field, &this->src, &mode, nullptr,
                                         masked ? &mask : nullptr, scratch, kind.matrices.data(), count, 1,
                                         rect, &to);
        return RK_TransformWorld(this->progress, kind.quality, 0, field, &this->src, &mode, nullptr,
                                 masked ? &mask : nullptr, kind.matrices.data(), count, 1, rect, &to);
    }
    World mask_world;
};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(TransformFailure, Depths, );

// ---- Stopped --------------------------------------------------------------------------------------------

struct Calls {
    std::vector<std::pair<RK_Long, RK_Long>> made;
    size_t stop_at = 0;
    static RK_Long progress(void* refcon, RK_Long current, RK_Long maximum) {
        Calls& calls = *static_cast<Calls*>(refcon);
        calls.made.emplace_back(current, maximum);
        return calls.made.size() == calls.stop_at ? 8642 : 0;
    }
};

TYPED_TEST(TransformFailure, AnAbortAtAnyCallEndsItThereAndFinishedRowsStay) {
    const GEO_Rect rect = {3, 2, 300, 22};
    for (const Kind& kind : kinds()) {
        typename TestFixture::World tall(24, 150, 0);
        this->randomise(tall, 8);
        for (const RK_Long field : {RK_Long{0}, RK_kEvenField, RK_kOddField, RK_Long{3}}) {
            const auto whole = this->copyOf(tall);
            Calls calls;
            RK_ProgressInfo info = {&calls, nullptr, &Calls::progress};
            this->progress = &info;
            ASSERT_EQ(0, this->draw(kind, *whole, field, field == 3, nullptr, &rect)) << kind.name;
            const auto all = calls.made;
            ASSERT_FALSE(all.empty()) << kind.name;

            // Calls come after rows of the destination, told from the drawn rectangle's top.
            const int32_t mask = field != 0 ? kind.progress_mask * 2 + 1 : kind.progress_mask;
            const int32_t top = rect.top, height = static_cast<int32_t>(all[0].second);
            std::vector<std::pair<RK_Long, RK_Long>> wanted;
            for (int32_t y = top; y < top + height; ++y)
                if ((y & mask) == 0) wanted.emplace_back(y - top, height);
            EXPECT_EQ(all, wanted) << kind.name << ", field " << field;

            for (size_t stop = 1; stop <= all.size(); ++stop) {
                const auto cut = this->copyOf(tall);
                calls = Calls{{}, stop};
                EXPECT_EQ(8642, this->draw(kind, *cut, field, field == 3, nullptr, &rect));
                EXPECT_EQ(calls.made.size(), stop);
                const RK_Long last = top + all[stop - 1].first;
                // A stencil has cleared around its drawing before its first row.
                const bool clears = kind.xfer == RK_Xfer_StencilAlpha || kind.xfer == RK_Xfer_StencilLuma;
                for (int32_t y = 0; y < 150; ++y)
                    for (int32_t x = 0; x < 24; ++x) {
                        const TypeParam &done = whole->row(y)[x], &got = cut->row(y)[x],
                                        &before = tall.row(y)[x];
                        const bool finished = y <= last || y >= top + height;
                        const bool may_be_done = clears && test::sameBytes(done, got);
                        ASSERT_TRUE(may_be_done || test::sameBytes(finished ? done : before, got))
                            << kind.name << ", call " << stop << " at " << x << ", " << y;
                    }
            }
            this->progress = nullptr;
        }
    }
}

// A translation stops where its transfer does.
TYPED_TEST(TransformFailure, AnAbortOfATranslationIsThatOfItsTransfer) {
    typename TestFixture::World tall(24, 400, 0), tall_src(20, 390, 0);
    this->randomise(tall, 8);
    this->randomise(tall_src, 9);
    const GEO_Matrix3 m = translation(3, 5);
    const RK_CompositeMode mode = modeOf<TypeParam>(RK_Xfer_Screen);
    const RK_CompositeModePlus plus(mode);
    // The working rectangle is a pixel larger all around: rows 4 to 396.
    const GEO_Rect moved = {-1, -1, 391, 21};
    for (const RK_Long field : {RK_Long{0}, RK_kOddField}) {
        for (size_t stop = 0; stop <= 4; ++stop) {
            const auto wanted = this->copyOf(tall), got = this->copyOf(tall);
            Calls transfers{{}, stop}, transforms{{}, stop};
            RK_ProgressInfo info = {&transfers, nullptr, &Calls::progress};
            const RK_Long result = RK_TransferRect(&info, nullptr, nullptr, field, &moved, &tall_src.record,
                                                   &plus, nullptr, nullptr, 2, 4, &wanted->record);
            info.refcon = &transforms;
            EXPECT_EQ(result, RK_TransformWorld(&info, RK_kBest, 0, field, &tall_src, &mode, nullptr, nullptr,
                                                &m, 1, 1, nullptr, got.get()));
            EXPECT_EQ(result, stop == 0 || stop > 3 ? 0 : 8642);
            EXPECT_EQ(transfers.made, transforms.made);
            EXPECT_TRUE(this->same(*wanted, *got));
        }
    }
}

TYPED_TEST(TransformFailure, ProgressWithoutAFunctionIsNone) {
    RK_ProgressInfo info = {nullptr, nullptr, nullptr};
    this->progress = &info;
    for (const Kind& kind : kinds()) EXPECT_EQ(0, this->draw(kind, this->dst, 0, false));
}

// ---- Without memory -------------------------------------------------------------------------------------

// A scratch of a caller's own, from the host like a caller's would be.
struct OwnScratch {
    OwnScratch(RK_Long width, size_t pixel) : rows{} {
        rows.alpha_save = KIT_AllocatePtr(static_cast<size_t>(width) * pixel / 4, "own");
        rows.matte_row = KIT_AllocatePtr(static_cast<size_t>(width) * pixel, "own");
        rows.row_work = KIT_AllocatePtr(static_cast<size_t>(width) * pixel, "own");
    }
    ~OwnScratch() {
        KIT_FreePtr(rows.alpha_save);
        KIT_FreePtr(rows.matte_row);
        KIT_FreePtr(rows.row_work);
    }
    RK_BlendScratch rows;
};

TYPED_TEST(TransformFailure, EveryAllocationThatFailsGives4DrawsNothingAndLosesNothing) {
    ASSERT_EQ(0, this->draw(kinds()[0], this->dst, 0, false));  // the process-wide blocks are made
    OwnScratch own(this->dst.width(), sizeof(TypeParam));
    for (const Kind& kind : kinds()) {
        for (const bool masked : {false, true}) {
            for (RK_BlendScratch* const scratch : {static_cast<RK_BlendScratch*>(nullptr), &own.rows}) {
                int64_t failures = 0;
                for (int64_t n = 1;; ++n) {
                    const auto untouched = this->copyOf(this->dst), got = this->copyOf(this->dst);
                    // The rows of the process-wide scratch are made anew in every call.
                    ASSERT_EQ(0, RKp_ReallocScratch(1, 1, true, nullptr));
                    const RefHost::MemoryUse before = RefHost::Memory();
                    RefHost::FailAllocation(n);
                    const RK_Long result = this->draw(kind, *got, 0, masked, scratch);
                    const bool reached = RefHost::AllocationsSince() >= n;
                    RefHost::FailAllocation(0);
                    const RefHost::MemoryUse after = RefHost::Memory();
                    EXPECT_EQ(before.blocks, after.blocks) << kind.name << ", allocation " << n;
                    if (!reached) {
                        EXPECT_EQ(0, result) << kind.name;
                        EXPECT_FALSE(this->same(*untouched, *got)) << kind.name;
                        EXPECT_TRUE(test::noReports());
                        break;
                    }
                    ++failures;
                    EXPECT_EQ(4, result) << kind.name << ", allocation " << n;
                    EXPECT_TRUE(this->same(*untouched, *got)) << kind.name << ", allocation " << n;
                    EXPECT_TRUE(
                        test::onlyReport(RefHost::ReportKind::Memory, 0, RKp_Text(RK_kMsg_BlendingScratch)));
                    if (scratch != nullptr) {
                        EXPECT_EQ(before.bytes, after.bytes);
                    }
                }
                // Three rows of scratch, and what a motion keeps of its matrices.
                const std::string name = kind.name;
                const bool turning = name.find("turning") != std::string::npos;
                const bool rests = name.find("at rest") != std::string::npos;
                const bool sliding =
                    kind.matrices.size() > 1 && kind.quality == RK_kBest && !turning && !rests;
                EXPECT_EQ(failures, (scratch != nullptr ? 0 : 3) + (turning ? 2 : sliding ? 1 : 0)) << name;
            }
        }
    }
}

// ---- Scratch --------------------------------------------------------------------------------------------

// The most bytes that the host's accounts had while rows were drawn.
struct Peak {
    int64_t bytes = 0;
    static RK_Long progress(void* refcon, RK_Long, RK_Long) {
        int64_t& most = static_cast<Peak*>(refcon)->bytes;
        most = std::max(most, RefHost::Memory().bytes);
        return 0;
    }
};

TYPED_TEST(TransformFailure, ScratchIsThreeRowsAndAFewRecordsForEachMatrix) {
    constexpr int32_t kWidth = 900, kHeight = 64;
    typename TestFixture::World wide(kWidth, kHeight, 0);
    this->randomise(wide, 5);
    std::vector<Kind> some = kinds();
    some.push_back({"many", {}, RK_kBest, RK_Xfer_Over, 7});
    for (int i = 0; i < 300; ++i) some.back().matrices.push_back(rotation(i * 0.01, 9, 6));
    for (const Kind& kind : some) {
        ASSERT_EQ(0, RKp_ReallocScratch(1, 1, true, nullptr));
        const int64_t before = RefHost::Memory().bytes;
        Peak peak;
        RK_ProgressInfo info = {&peak, nullptr, &Peak::progress};
        this->progress = &info;
        ASSERT_EQ(0, this->draw(kind, wide, 0, true));
        this->progress = nullptr;
        const auto channel = static_cast<int64_t>(sizeof(TypeParam)) / 4;
        const int64_t rows = kWidth * channel * (4 + 4 + 1);
        const int64_t records = static_cast<int64_t>(kind.matrices.size()) * 256;
        EXPECT_GE(peak.bytes - before, rows - 9 * channel) << kind.name;
        EXPECT_LE(peak.bytes - before, rows + records) << kind.name;
        // The rows stay for the next call, the records do not.
        EXPECT_LE(RefHost::Memory().bytes - before, rows) << kind.name;
    }
}

}  // namespace
