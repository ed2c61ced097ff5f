// How a variant of each kind of row function is compared with its default.
#ifndef TEST_AGREE_CHECKERS_H
#define TEST_AGREE_CHECKERS_H

#include "RK/indep/frame/RKp_SlotTypes.h"
#include "test/agree/Rows.h"

namespace agree {

// compare(default, variant) for a function type. A variant of a type that has none does not compile.
template <class Function>
struct Checker;

constexpr size_t kMaxShort = 67;
constexpr size_t kLong = 5003;

// ---- Matte scans ----------------------------------------------------------------------------------------

template <class P>
struct Checker<RKp_ScanFunc<P>> {
    using Scan = RKp_ScanFunc<P>;

    static void inPlace(Scan* body, Scan* variant, const std::vector<P>& row, size_t place,
                        bool src_is_null) {
        Row<P> wanted(row, place), got(row, place);
        const RK_Long count = static_cast<RK_Long>(row.size());
        ASSERT_EQ(0, body(count, nullptr, wanted.data()));
        ASSERT_EQ(0, variant(count, src_is_null ? nullptr : got.data(), got.data()));
        ASSERT_TRUE(sameRows(row, wanted.data(), got.data())) << "in place at " << place;
        ASSERT_TRUE(wanted.guardsWhole() && got.guardsWhole()) << "in place at " << place;
    }

    static void apart(Scan* body, Scan* variant, const std::vector<P>& row, size_t src_place,
                      size_t dst_place) {
        const std::vector<P> before(row.size());
        const Source<P> src(row, src_place);
        Row<P> wanted(before, dst_place), got(before, dst_place);
        const RK_Long count = static_cast<RK_Long>(row.size());
        ASSERT_EQ(0, body(count, src.data(), wanted.data()));
        ASSERT_EQ(0, variant(count, src.data(), got.data()));
        ASSERT_TRUE(sameRows(row, wanted.data(), got.data())) << "from " << src_place << " to " << dst_place;
        ASSERT_TRUE(src.unchanged() && wanted.guardsWhole() && got.guardsWhole())
            << "from " << src_place << " to " << dst_place;
    }

    // Alphas in order, each with colours that matter to it: all of them at 8 bits; at 16 bits edges, both
    // sides of a step of the quotient, and random ones.
    static std::vector<P> everyAlpha(test::Random& r) {
        std::vector<P> row;
        if constexpr (std::is_same_v<P, RK_Pixel8>) {
            for (int a = 0; a < 256; ++a)
                for (int c = 0; c < 256; ++c)
                    row.push_back({uint8_t(a), uint8_t(c), uint8_t(c ^ 0x55), uint8_t(255 - c)});
        } else if constexpr (std::is_same_v<P, RK_Pixel16>) {
            const auto bounded = [](int64_t c) { return uint16_t(std::clamp<int64_t>(c, 0, 32768)); };
            for (int a = 0; a <= 32768; ++a) {
                const auto push = [&](int64_t c) {
                    row.push_back(
                        {uint16_t(a), bounded(c), bounded(32768 - c), bounded(16384 + (c - 16384) / 2)});
                };
                for (int c : {0, 1, a - 1, a, a + 1, 16384, 16383, 16384 - a, 16384 + a, 32767, 32768})
                    push(c);
                for (int k = 0; k < 3; ++k) {
                    const int64_t step = (int64_t{r.below(32769)} * a - a / 2 + 32767) / 32768;
                    push(step - 1), push(step), push(16384 + step - 1), push(16384 + step),
                        push(16384 - step);
                    push(r.below(32769));
                }
            }
        } else {
            static const float edges[] = {0.0f,
                                          -0.0f,
                                          1.0f,
                                          0.5f,
                                          0.49999997f,
                                          0.99999994f,
                                          1.0000001f,
                                          2.0f,
                                          -1.0f,
                                          1e-45f,
                                          -1e-45f,
                                          1.17549421e-38f,
                                          1.17549435e-38f,
                                          3e38f,
                                          -3e38f,
                                          1e-20f,
                                          std::numeric_limits<float>::infinity(),
                                          -std::numeric_limits<float>::infinity(),
                                          std::numeric_limits<float>::quiet_NaN()};
            for (float a : edges)
                for (float c : edges) row.push_back({a, c, -c, 1 - c});
            for (int i = 0; i < 100000; ++i) row.push_back(test::pixel<P>(r));
        }
        return row;
    }

    static void compare(Scan* body, Scan* variant) {
        test::Random r(7);
        for (Values kind : kValues) {
            for (size_t count = 0; count <= kMaxShort; ++count) {
                const std::vector<P> row = values<P>(r, count, kind);
                for (size_t to = 0; to < kPlaces<P>; ++to) {
                    ASSERT_NO_FATAL_FAILURE(inPlace(body, variant, row, to, count % 2 == 0));
                    for (size_t from = 0; from < kPlaces<P>; ++from)
                        ASSERT_NO_FATAL_FAILURE(apart(body, variant, row, from, to));
                }
            }
            const std::vector<P> row = values<P>(r, kLong, kind);
            ASSERT_NO_FATAL_FAILURE(inPlace(body, variant, row, 1, true));
            ASSERT_NO_FATAL_FAILURE(inPlace(body, variant, row, 1, false));
            ASSERT_NO_FATAL_FAILURE(apart(body, variant, row, 0, 3));
        }
        const std::vector<P> all = everyAlpha(r);
        ASSERT_NO_FATAL_FAILURE(inPlace(body, variant, all, 0, true));
        ASSERT_NO_FATAL_FAILURE(apart(body, variant, all, 0, 0));

        for (RK_Long none : {RK_Long{-1}, RK_Long{-16}, std::numeric_limits<RK_Long>::min()}) {
            const std::vector<P> before = values<P>(r, 16, Values::Mixed);
            Row<P> row(before, 0);
            ASSERT_EQ(0, variant(none, nullptr, row.data()));
            ASSERT_TRUE(sameRows(before, before.data(), row.data())) << "count " << none;
        }
    }
};

// ---- Alpha merge ----------------------------------------------------------------------------------------

template <class P>
struct Checker<RKp_AlphaMergeFunc<P>> {
    using Merge = RKp_AlphaMergeFunc<P>;
    using Channel = typename RKp_Depth<P>::Channel;

    // `src` null: the source is the output row itself.
    static void one(Merge* body, Merge* variant, const std::vector<P>* src_row, size_t src_place,
                    Channel opacity, const std::vector<P>* matte_row, size_t matte_place,
                    const std::vector<P>& dst_row, size_t dst_place) {
        const Source<P> src(src_row ? *src_row : dst_row, src_place);
        const Source<P> matte(matte_row ? *matte_row : dst_row, matte_place);
        Row<P> wanted(dst_row, dst_place), got(dst_row, dst_place);
        const RK_Long count = static_cast<RK_Long>(dst_row.size());
        const P* const m = matte_row ? matte.data() : nullptr;
        ASSERT_EQ(0, body(count, src_row ? src.data() : wanted.data(), opacity, m, wanted.data()));
        ASSERT_EQ(0, variant(count, src_row ? src.data() : got.data(), opacity, m, got.data()));
        ASSERT_TRUE(sameRows(dst_row, wanted.data(), got.data()))
            << "from " << src_place << " to " << dst_place << " opacity " << static_cast<double>(opacity)
            << (m ? " with a matte" : "");
        ASSERT_TRUE(src.unchanged() && matte.unchanged() && wanted.guardsWhole() && got.guardsWhole());
    }

    static std::vector<Channel> opacities() {
        if constexpr (std::is_same_v<P, RK_Pixel8>) {
            std::vector<Channel> all(256);
            for (size_t i = 0; i < 256; ++i) all[i] = static_cast<Channel>(i);
            return all;
        } else if constexpr (std::is_same_v<P, RK_Pixel16>) {
            return {0, 1, 2, 9999, 16383, 16384, 16385, 32767, 32768, 33096, 65535};
        } else {
            return {0.0f,
                    -0.0f,
                    1e-40f,
                    0.25f,
                    0.5f,
                    0.99999994f,
                    1.0f,
                    1.01f,
                    -0.5f,
                    std::numeric_limits<float>::quiet_NaN(),
                    std::numeric_limits<float>::infinity()};
        }
    }

    static void compare(Merge* body, Merge* variant) {
        test::Random r(11);
        const std::vector<Channel> all = opacities();
        const auto full = static_cast<Channel>(RKp_Depth<P>::kFull),
                   grey = static_cast<Channel>(RKp_Depth<P>::kGrey);
        for (Values kind : kValues) {
            for (size_t count = 0; count <= kMaxShort; ++count) {
                const std::vector<P> src = values<P>(r, count, kind), dst = values<P>(r, count, kind);
                const std::vector<P> matte = values<P>(r, count, Values::Runs);
                for (size_t to = 0; to < kPlaces<P>; ++to) {
                    for (size_t from = 0; from < kPlaces<P>; ++from) {
                        const size_t at = r.below(kPlaces<P>);
                        for (Channel opacity : {full, grey}) {
                            ASSERT_NO_FATAL_FAILURE(
                                one(body, variant, &src, from, opacity, nullptr, 0, dst, to));
                            ASSERT_NO_FATAL_FAILURE(
                                one(body, variant, &src, from, opacity, &matte, at, dst, to));
                        }
                    }
                    ASSERT_NO_FATAL_FAILURE(one(body, variant, nullptr, 0, full, &matte, 0, dst, to));
                }
            }
            const std::vector<P> src = values<P>(r, kLong, kind), dst = values<P>(r, kLong, kind);
            const std::vector<P> matte = values<P>(r, kLong, kind);
            for (Channel opacity : all) {
                ASSERT_NO_FATAL_FAILURE(one(body, variant, &src, 1, opacity, nullptr, 0, dst, 0));
                ASSERT_NO_FATAL_FAILURE(one(body, variant, &src, 0, opacity, &matte, 2, dst, 1));
            }
        }
    }
};

}  // namespace agree

#endif
