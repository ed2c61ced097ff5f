// The vector rows of Over and Copy against their defaults, bit for bit. They run when the machine has their
// instructions, whatever processor record the suite runs under.
#include "RK/indep/composite/RKp_RowVariants.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "refhost/RefHost.h"
#include "test/agree/Rows.h"

namespace {

using agree::kPlaces;
using agree::Row;
using agree::Source;
using agree::Values;

constexpr size_t kMaxShort = 67;
constexpr size_t kLong = 5003;

template <class P>
RK_BlendModeDescriptor<P> planOf(int32_t mode, RK_Channel<P> opacity, bool rgb_only) {
    RK_BlendingMode<P> record = {mode, 0, opacity, rgb_only};
    return {record, false, nullptr};
}

template <class P>
class Pair {
  public:
    Pair(RK_RowFunc<P>* body, RK_RowFunc<P>* variant, int32_t mode)
        : body_(body), variant_(variant), mode_(mode) {}

    void setPlan(RK_Channel<P> opacity, bool rgb_only) {
        plan_ = planOf<P>(mode_, opacity, rgb_only);
        said_ = "opacity " + std::to_string(static_cast<double>(opacity)) + (rgb_only ? ", colour only" : "");
    }

    // `src` null: the source is the output row itself.
    void compare(const std::vector<P>* src_row, size_t from, const std::vector<P>* matte_row, size_t at,
                 const std::vector<P>& dst_row, size_t to) const {
        const Source<P> src(src_row ? *src_row : dst_row, from), matte(matte_row ? *matte_row : dst_row, at);
        Row<P> wanted(dst_row, to), got(dst_row, to);
        const RK_Long count = static_cast<RK_Long>(dst_row.size());
        const P* const m = matte_row ? matte.data() : nullptr;
        ASSERT_EQ(0, body_(count, &plan_, nullptr, src_row ? src.data() : wanted.data(), m, wanted.data()));
        ASSERT_EQ(0, variant_(count, &plan_, nullptr, src_row ? src.data() : got.data(), m, got.data()));
        ASSERT_TRUE(agree::sameRows(dst_row, wanted.data(), got.data()))
            << said_ << ", from " << from << " to " << to << (src_row ? "" : ", in place");
        ASSERT_TRUE(src.unchanged() && matte.unchanged() && wanted.guardsWhole() && got.guardsWhole())
            << said_;
    }

  private:
    RK_RowFunc<P>*body_, *variant_;
    int32_t mode_;
    RK_BlendModeDescriptor<P> plan_ = planOf<P>(RK_Xfer_Over, 0, false);
    std::string said_;
};

std::vector<uint8_t> opacities(const RK_Pixel8&) {
    std::vector<uint8_t> all(256);
    for (size_t i = 0; i < 256; ++i) all[i] = static_cast<uint8_t>(255 - i);
    return all;
}
std::vector<float> opacities(const RK_PixelFloat&) {
    return {1.0f,
            0.5f,
            0.0f,
            -0.0f,
            1e-40f,
            0.25f,
            0.99999994f,
            1.01f,
            -0.5f,
            3e38f,
            std::numeric_limits<float>::quiet_NaN(),
            std::numeric_limits<float>::infinity()};
}

// Every count up to 67 at every pair of places, two opacities; a long row at every opacity.
template <class P, bool has_matte>
void compareRows(RK_RowFunc<P>* body, RK_RowFunc<P>* variant, int32_t mode, bool rgb_only) {
    test::Random r(3);
    Pair<P> pair(body, variant, mode);
    const auto all = opacities(P{});
    const auto some = all[all.size() / 2];
    for (Values kind : agree::kValues) {
        for (size_t count = 0; count <= kMaxShort; ++count) {
            const std::vector<P> src = agree::values<P>(r, count, kind);
            const std::vector<P> dst = agree::values<P>(r, count, count % 3 == 0 ? Values::Opaque : kind);
            const std::vector<P> matte = agree::values<P>(r, count, Values::Runs);
            const std::vector<P>* const m = has_matte ? &matte : nullptr;
            for (size_t to = 0; to < kPlaces<P>; ++to) {
                for (size_t from = 0; from < kPlaces<P>; ++from) {
                    pair.setPlan((from + to + count) % 2 ? all[0] : some, rgb_only);
                    ASSERT_NO_FATAL_FAILURE(pair.compare(&src, from, m, r.below(kPlaces<P>), dst, to));
                }
                ASSERT_NO_FATAL_FAILURE(pair.compare(nullptr, 0, m, 1, dst, to));
            }
        }
        const std::vector<P> src = agree::values<P>(r, kLong, kind), dst = agree::values<P>(r, kLong, kind);
        const std::vector<P> matte = agree::values<P>(r, kLong, kind);
        for (auto opacity : all) {
            pair.setPlan(opacity, rgb_only);
            ASSERT_NO_FATAL_FAILURE(pair.compare(&src, 1, has_matte ? &matte : nullptr, 2, dst, 0));
        }
    }
}

// A count below 1 touches nothing.
template <class P>
void takesNothing(RK_RowFunc<P>* variant, int32_t mode) {
    const RK_BlendModeDescriptor<P> plan = planOf<P>(mode, 0, true);
    P pixel = {1, 0, 0, 0};
    const P before = pixel;
    for (RK_Long none : {RK_Long{0}, RK_Long{-1}, RK_Long{-16}, std::numeric_limits<RK_Long>::min()})
        ASSERT_EQ(0, variant(none, &plan, nullptr, nullptr, nullptr, &pixel));
    ASSERT_TRUE(test::sameBytes(before, pixel));
}

const KIT_CPU_Data machine = RefHost::DetectCPU();

template <class P>
void testOver() {
    if (!machine.has_ssse3) return;
    const RKp_RowVariants<P>& rows = RKp_RowVariantsOf<P>();
    for (bool rgb_only : {false, true}) {
        compareRows<P, false>(RKp_OverRow_Static<P, false>, rows.over_ssse3[0], RK_Xfer_Over, rgb_only);
        compareRows<P, true>(RKp_OverRow_Static<P, true>, rows.over_ssse3[1], RK_Xfer_Over, rgb_only);
    }
    takesNothing<P>(rows.over_ssse3[0], RK_Xfer_Over);
    takesNothing<P>(rows.over_ssse3[1], RK_Xfer_Over);
}
template <class P>
void testCopy() {
    if (!machine.has_sse2) return;
    const RKp_RowVariants<P>& rows = RKp_RowVariantsOf<P>();
    for (bool rgb_only : {false, true}) {
        compareRows<P, false>(RKp_CopyRow_Static<P, false>, rows.copy_sse2[0], RK_Xfer_Copy, rgb_only);
        compareRows<P, true>(RKp_CopyRow_Static<P, true>, rows.copy_sse2[1], RK_Xfer_Copy, rgb_only);
    }
    takesNothing<P>(rows.copy_sse2[0], RK_Xfer_Copy);
    takesNothing<P>(rows.copy_sse2[1], RK_Xfer_Copy);
}

TEST(RowVariants, OverAt8Bits) { testOver<RK_Pixel8>(); }
TEST(RowVariants, OverAtFloat) { testOver<RK_PixelFloat>(); }
TEST(RowVariants, CopyAt8Bits) { testCopy<RK_Pixel8>(); }
TEST(RowVariants, CopyAtFloat) { testCopy<RK_PixelFloat>(); }

// One result of Over at 8 bits depends on four bytes. All triples of source, destination and source alpha on
// an opaque pixel take every path of the mix; all triples of both alphas and either colour take every
// quotient.
TEST(RowVariants, OverAt8BitsOnEveryTripleOfBytes) {
    if (!machine.has_ssse3) return;
    Pair<RK_Pixel8> pair(RKp_OverRow_Static<RK_Pixel8, false>, RKp_OverRow_SSSE3<RK_Pixel8, false>,
                         RK_Xfer_Over);
    pair.setPlan(255, false);
    std::vector<RK_Pixel8> src(65536), dst(65536);
    for (uint32_t sa = 0; sa < 256; ++sa) {
        for (int sweep = 0; sweep < 3; ++sweep) {
            for (uint32_t x = 0; x < 256; ++x) {
                for (uint32_t y = 0; y < 256; ++y) {
                    const auto byte = [](uint32_t v) { return static_cast<uint8_t>(v); };
                    const uint8_t other = byte(x * 7 + y * 13 + sa * 29);
                    RK_Pixel8 &s = src[x * 256 + y], &d = dst[x * 256 + y];
                    // x, y: the colours of source and destination; or the destination's alpha and either
                    // colour. The other channels take the same pair from elsewhere.
                    if (sweep == 0) {
                        s = {byte(sa), byte(x), byte(255 - x), byte(x + 85)};
                        d = {255, byte(y), byte(y + 99), byte(255 - y)};
                    } else if (sweep == 1) {
                        s = {byte(sa), byte(y), byte(y + 1), byte(255 - y)};
                        d = {byte(x), other, byte(other + 99), 255};
                    } else {
                        s = {byte(sa), other, byte(255 - other), 0};
                        d = {byte(x), byte(y), byte(y + 128), byte(255 - y)};
                    }
                }
            }
            ASSERT_NO_FATAL_FAILURE(pair.compare(&src, 0, nullptr, 0, dst, 0)) << "alpha " << sa;
        }
    }
}

// The quotient of the rule itself, not only of the default: v against the result of a source on a row of its
// own.
TEST(RowVariants, OverAt8BitsDividesAsTheDivideTable) {
    if (!machine.has_ssse3) return;
    std::vector<RK_Pixel8> src, dst;
    for (uint32_t da = 1; da < 256; ++da)
        for (uint32_t d = 0; d < 256; ++d) {
            src.push_back({1, 0, 0, 0});
            dst.push_back({static_cast<uint8_t>(da), static_cast<uint8_t>(d), 0, 0});
        }
    std::vector<RK_Pixel8> out = dst;
    RK_BlendingMode<RK_Pixel8> record = {RK_Xfer_Over, 0, 255, 0};
    const RK_BlendModeDescriptor<RK_Pixel8> plan(record, false, nullptr);
    ASSERT_EQ(0, (RKp_OverRow_SSSE3<RK_Pixel8, false>(static_cast<RK_Long>(src.size()), &plan, nullptr,
                                                      src.data(), nullptr, out.data())));
    for (size_t i = 0; i < out.size(); ++i) {
        const int da = dst[i].alpha, p = RKp_G_fcm_table[da * 256 + dst[i].red];
        // p towards 0 by 1: one less from 129 / 255 on, as the wrapped product rounds.
        const int v = p - (p >= 129 ? 1 : 0);
        const int a = 255 - RKp_G_fcm_table[254 * 256 + (255 - da)];
        ASSERT_EQ(a, out[i].alpha);
        ASSERT_EQ(std::min(255, (v * 255 + (a >> 1)) / a), out[i].red)
            << "alpha " << da << " colour " << int(dst[i].red);
    }
}

}  // namespace
