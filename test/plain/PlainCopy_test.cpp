// Draft and sampled copies against their plain twins: any two rectangles, partly and wholly outside, empty,
// equal.
#include <gtest/gtest.h>

#include "RK/indep/passes/RK_CopyBits.h"
#include "test/plain/PlainCopy.h"
#include "test/plain/SampleWorlds.h"

namespace {

using test::randomRect;
using test::side;
using test::World;

// Two rectangles, or the wholes; now and then the same one for both, or one of the other's size.
struct Rects {
    GEO_Rect s, d;
    bool has_s, has_d;
    Rects(test::Random& r, const RK_LayerDef& src, const RK_LayerDef& dst)
        : s(randomRect(r, src.width, src.height)),
          d(randomRect(r, dst.width, dst.height)),
          has_s(r.below(3) != 0),
          has_d(r.below(3) != 0) {
        if (r.below(6) == 0) d = s;
        if (r.below(6) == 0) {
            d.right = static_cast<int16_t>(d.left + s.right - s.left);
            d.bottom = static_cast<int16_t>(d.top + s.bottom - s.top);
        }
    }
    const GEO_Rect* source() const { return has_s ? &s : nullptr; }
    const GEO_Rect* destination() const { return has_d ? &d : nullptr; }
    std::string told() const {
        return "from " + (has_s ? test::show(s) : "whole") + "\n  to " + (has_d ? test::show(d) : "whole");
    }
};

template <class S, class D>
void draftMany() {
    test::Random r(sizeof(S) * 3 + sizeof(D));
    test::GuardedRows src_rows, dst_rows;
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        World<S> src(r, side(r), side(r));
        test::guardSome(r, src_rows, src);
        const bool match = r.below(5) == 0;
        const World<D> dst(r, match ? src.record.width : side(r), match ? src.record.height : side(r));
        const Rects rects(r, src.record, dst.record);
        World<D> expected(dst), got(dst);
        test::guardSome(r, dst_rows, got);
        plain::copyDraft<S, D>(src.record, expected.record, rects.source(), rects.destination());
        ASSERT_EQ(RK_CopyBits_Draft(nullptr, &src.record, &got.record, rects.source(), rects.destination()),
                  0);
        ASSERT_EQ(test::difference(dst, expected, got), "")
            << src.record.width << " by " << src.record.height << ", " << rects.told();
    }
}
TEST(CopiesAgainstPlain, DraftOfOneDepth) {
    draftMany<RK_Pixel8, RK_Pixel8>();
    draftMany<RK_Pixel16, RK_Pixel16>();
    draftMany<RK_PixelFloat, RK_PixelFloat>();
}
TEST(CopiesAgainstPlain, DraftBetweenDepths) {
    draftMany<RK_Pixel8, RK_Pixel16>();
    draftMany<RK_Pixel8, RK_PixelFloat>();
    draftMany<RK_Pixel16, RK_Pixel8>();
    draftMany<RK_Pixel16, RK_PixelFloat>();
    draftMany<RK_PixelFloat, RK_Pixel8>();
    draftMany<RK_PixelFloat, RK_Pixel16>();
}

struct Aborts {
    int calls = 0, stop_at = 0;
    static RK_Long abort(void* refcon) {
        Aborts* const a = static_cast<Aborts*>(refcon);
        return ++a->calls == a->stop_at ? 521 : 0;
    }
};

template <class P, class Sample>
void sampledMany(decltype(RK_CopyBits_HQ_Straight)* copy, Sample sample) {
    test::Random r(sizeof(P) + 31);
    test::GuardedRows src_rows, dst_rows;
    const int count = test::amount(1500);
    for (int i = 0; i < count; ++i) {
        const int width = side(r), height = side(r);
        World<P> src = test::sampleWorld<P>(r, width, height);
        test::guardSome(r, src_rows, src);
        const World<P> dst(r, side(r), r.below(16) == 0 ? 150 : side(r));
        const Rects rects(r, src.record, dst.record);
        World<P> expected(dst), got(dst);
        test::guardSome(r, dst_rows, got);
        Aborts a{0, static_cast<int>(r.below(8))}, b = a;
        RK_ProgressInfo expected_progress{&a, Aborts::abort, nullptr},
            got_progress{&b, Aborts::abort, nullptr};
        const int error = plain::copySampled<P>(&expected_progress, src.record, expected.record,
                                                rects.source(), rects.destination(), sample);
        ASSERT_EQ(copy(&got_progress, &src.record, &got.record, rects.source(), rects.destination()), error);
        ASSERT_EQ(test::difference(dst, expected, got), "")
            << width << " by " << height << ", " << rects.told();
        ASSERT_EQ(a.calls, b.calls) << rects.told();
    }
}
template <class P>
P sampleStraight(int32_t x, int32_t y, const RK_SampPB& pb, bool area) {
    return plain::sampled(x, y, pb, area, KIT_G_CPU_DataP->has_sse2 != 0, static_cast<P*>(nullptr));
}
RK_Pixel8 samplePremul(int32_t x, int32_t y, const RK_SampPB& pb, bool area) {
    return area ? plain::areaPremul(x, y, pb) : plain::bilinearPremul(x, y, *pb.src);
}
TEST(CopiesAgainstPlain, SampledStraight) {
    sampledMany<RK_Pixel8>(RK_CopyBits_HQ_Straight, sampleStraight<RK_Pixel8>);
    sampledMany<RK_Pixel16>(RK_CopyBits_HQ_Straight, sampleStraight<RK_Pixel16>);
    sampledMany<RK_PixelFloat>(RK_CopyBits_HQ_Straight, sampleStraight<RK_PixelFloat>);
}
TEST(CopiesAgainstPlain, SampledPremultiplied) {
    sampledMany<RK_Pixel8>(RK_CopyBits_HQ_Premul, samplePremul);
    sampledMany<RK_Pixel16>(RK_CopyBits_HQ_Premul, sampleStraight<RK_Pixel16>);
    sampledMany<RK_PixelFloat>(RK_CopyBits_HQ_Premul, sampleStraight<RK_PixelFloat>);
}

}  // namespace
