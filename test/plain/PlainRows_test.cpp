// Rows through plans, the pipeline and bare row functions against their plain twins: a million random and
// special pixels per mode and depth, in rows of odd lengths and alignments.
#include <gtest/gtest.h>

#include "RK/indep/composite/RK_BlendPipeline.h"
#include "test/plain/Compare.h"
#include "test/plain/PlainModes.h"

namespace {

using test::show;

constexpr int kLongestRow = 300;

template <class P>
struct RowCase {
    RK_BlendingMode<P> mode;
    bool plan_has_matte, passes_matte, bare;  // bare: the mode's row function without the pipeline
    int count;
    const P *src, *matte;
    std::vector<P> before;
};

template <class P>
std::string describe(const RowCase<P>& c, int i) {
    std::ostringstream out;
    out << test::modeName(c.mode.xfer) << ", depth " << test::kDepth<P> << ", pixel " << i << " of "
        << c.count << (c.bare ? ", bare row function" : ", pipeline")
        << (c.plan_has_matte ? ", plan with matte" : "") << (c.passes_matte ? ", matte passed" : "")
        << (c.mode.rgb_only ? ", rgb_only" : "") << ", opacity " << test::showChannel(c.mode.opacity)
        << ", seed " << c.mode.rand_seed << "\n  source " << show(c.src[i]) << "\n  on     "
        << show(c.before[static_cast<size_t>(i)]);
    if (c.passes_matte) out << "\n  matte alpha " << test::showChannel(c.matte[i].alpha);
    return out.str();
}

// What the library makes of the case, in place.
template <class P>
RK_Long runLibrary(RowCase<P>& c, P* out) {
    const P* matte = c.passes_matte ? c.matte : nullptr;
    RK_BlendModeDescriptor<P> plan(c.mode, c.plan_has_matte, nullptr);
    if (!c.bare) {
        std::vector<RK_Channel<P>> alpha_save(static_cast<size_t>(c.count) + 1);
        return RK_BlendPipeline<P>(nullptr, c.count, &plan, c.src, matte, alpha_save.data(), out);
    }
    RK_InnerBlendingFunc<P> found{};
    const RK_Long err = c.plan_has_matte ? RK_GetInnerBlendingFunc<P, true, false>(c.mode.xfer, &found)
                                         : RK_GetInnerBlendingFunc<P, false, false>(c.mode.xfer, &found);
    return err != 0 ? err : found.func(c.count, &plan, nullptr, c.src, matte, out);
}

class RowsAgainstPlain : public testing::TestWithParam<int> {};

template <class P>
void compareRows(int mode) {
    const std::vector<P>& pool = test::pool<P>();
    const int wanted = test::amount(1 << 20);
    const size_t shift = 311 + static_cast<size_t>(mode - RK_kFirstMode) * 89;
    test::Random r(static_cast<uint32_t>(mode) + 1000);
    std::vector<P> expected_row, got_row;
    for (int done = 0; done < wanted;) {
        RowCase<P> c{};
        c.count = 1 + static_cast<int>(r.below(kLongestRow));
        c.mode = {mode, static_cast<int32_t>(r.next()), test::opacity<P>(r),
                  static_cast<uint8_t>(r.below(4) == 0)};
        const uint32_t matte_form = r.below(5);  // 0, 1: none; 2, 3: as planned; 4: passed to a plan without
        c.plan_has_matte = matte_form == 2 || matte_form == 3;
        c.passes_matte = matte_form >= 2;
        c.bare = r.below(4) == 0;
        const size_t at = static_cast<size_t>(r.below(static_cast<uint32_t>(wanted)));
        c.src = &pool[at];
        c.matte = &pool[at + 150];
        const auto first = pool.begin() + static_cast<std::ptrdiff_t>(at + shift - 300);
        c.before.assign(first, first + c.count);

        const size_t lead = r.below(4);  // another alignment of the output
        got_row.assign(lead, P{});
        got_row.insert(got_row.end(), c.before.begin(), c.before.end());
        expected_row = c.before;
        const P* matte = c.passes_matte ? c.matte : nullptr;
        const int expected_error =
            c.bare ? plain::rowFunction(c.mode, c.plan_has_matte, c.count, c.src, matte, expected_row.data())
                   : plain::row(c.mode, c.plan_has_matte, c.count, c.src, matte, expected_row.data());
        const RK_Long error = runLibrary(c, got_row.data() + lead);
        ASSERT_EQ(error, expected_error) << describe(c, 0);
        const int i = test::firstDifference(expected_row.data(), got_row.data() + lead, c.count);
        if (i >= 0)
            FAIL() << describe(c, i) << "\n  expected " << show(expected_row[static_cast<size_t>(i)])
                   << "\n  got      " << show(got_row[lead + static_cast<size_t>(i)]);
        done += c.count;
    }
}

TEST_P(RowsAgainstPlain, EqualAtEveryByteAt8Bits) { compareRows<RK_Pixel8>(GetParam()); }
TEST_P(RowsAgainstPlain, EqualAtEveryByteAt16Bits) { compareRows<RK_Pixel16>(GetParam()); }
TEST_P(RowsAgainstPlain, EqualAtEveryBitAtFloat) { compareRows<RK_PixelFloat>(GetParam()); }

std::vector<int> rowModes() {
    std::vector<int> modes;
    for (int m = RK_kFirstMode; m <= RK_kLastMode; ++m)
        if (m != RK_Xfer_None) modes.push_back(m);
    return modes;
}
INSTANTIATE_TEST_SUITE_P(Modes, RowsAgainstPlain, testing::ValuesIn(rowModes()),
                         [](const auto& mode) { return test::modeName(mode.param); });

}  // namespace
