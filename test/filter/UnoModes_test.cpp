// The accumulation modes, sample by sample, against their formulas in whole numbers.
#include <cmath>

#include "RK/indep/filter/RKp_UnoModes.h"
#include "RK/indep/filter/RKp_UnoRows.h"
#include "test/filter/Masks.h"

namespace {

constexpr int32_t kEveryMode[] = {RK_kUnoUnion,  RK_kUnoSubtract,   RK_kUnoIntersect, RK_kUnoLighten,
                                  RK_kUnoDarken, RK_kUnoDifference, RK_kUnoAdd};

// The formulas once more, with exact quotients: the rounded product over 255, and the product over 32768 with
// ties down.
int64_t product(int64_t a, int64_t b, uint8_t) { return (2 * a * b + 255) / 510; }
int64_t product(int64_t a, int64_t b, uint16_t) { return (a * b + 16383) >> 15; }
template <class S>
S combined(int32_t mode, S s, S d) {
    const int64_t full = test::kFullSample<S>, is = full - s, id = full - d;
    switch (mode) {
        case RK_kUnoSubtract: return static_cast<S>(product(is, d, S{}));
        case RK_kUnoIntersect: return static_cast<S>(product(s, d, S{}));
        case RK_kUnoLighten: return s > d ? s : d;
        case RK_kUnoDarken: return s < d ? s : d;
        case RK_kUnoDifference: return static_cast<S>(std::abs(int64_t{s} - d));
        case RK_kUnoAdd: return static_cast<S>(std::min(full, int64_t{s} + d));
        default: return static_cast<S>(full - product(is, id, S{}));
    }
}

template <class S>
void expectRow(int32_t mode, const std::vector<S>& src, const std::vector<S>& dst) {
    std::vector<S> got = dst, apart(dst.size());
    const RK_Long count = static_cast<RK_Long>(src.size());
    ASSERT_EQ(0, RKp_MaskAccumulate<S>(nullptr, mode, count, src.data(), got.data()));
    RKp_MaskTransfer<S>(nullptr, mode, count, src.data(), dst.data(), apart.data());
    for (size_t i = 0; i < src.size(); ++i)
        ASSERT_EQ(got[i], combined(mode, src[i], dst[i]))
            << "mode " << mode << ": " << +src[i] << " on " << +dst[i];
    ASSERT_EQ(got, apart) << "mode " << mode;
}

TEST(UnoModes, EveryPairOfBytes) {
    std::vector<uint8_t> src, dst;
    for (int s = 0; s < 256; ++s)
        for (int d = 0; d < 256; ++d)
            src.push_back(static_cast<uint8_t>(s)), dst.push_back(static_cast<uint8_t>(d));
    for (int32_t mode : kEveryMode) ASSERT_NO_FATAL_FAILURE(expectRow(mode, src, dst));
}

std::vector<uint16_t> edges16() {
    return {0,     1,     2,     3,     127,   128,   16382, 16383, 16384,
            16385, 32766, 32767, 32768, 32769, 40000, 65534, 65535};
}

TEST(UnoModes, DeepSamplesAtTheEdgesAndAtRandom) {
    std::vector<uint16_t> src, dst;
    for (uint16_t s : edges16())
        for (int32_t d = 0; d < 65536; d += 7) src.push_back(s), dst.push_back(static_cast<uint16_t>(d));
    test::Random r(5);
    for (int i = 0; i < 200000; ++i) {
        const bool wild = i % 3 == 0;
        src.push_back(wild ? static_cast<uint16_t>(r.next() >> 16) : test::sample(r, uint16_t{}));
        dst.push_back(wild ? static_cast<uint16_t>(r.next() >> 16) : test::sample(r, uint16_t{}));
    }
    for (int32_t mode : kEveryMode) {
        ASSERT_NO_FATAL_FAILURE(expectRow(mode, src, dst));
        ASSERT_NO_FATAL_FAILURE(expectRow(mode, dst, src));
    }
}

// ---- Vector code ----------------------------------------------------------------------------------------

// The processor record of a test, until it ends.
class WithRecord {
  public:
    explicit WithRecord(const KIT_CPU_Data& record) : before_(*KIT_G_CPU_DataP) { RefHost::SetCPU(record); }
    ~WithRecord() { RefHost::SetCPU(before_); }
    WithRecord(const WithRecord&) = delete;
    WithRecord& operator=(const WithRecord&) = delete;

  private:
    const KIT_CPU_Data before_;
};

// A row from `at` on, with canaries around, under a record: in place, apart, weighted, and from noise.
template <class S>
std::vector<S> rowUnder(const KIT_CPU_Data& record, int32_t mode, size_t at, RK_Long count) {
    const WithRecord with(record);
    test::Random r(static_cast<uint32_t>(mode * 97 + count));
    std::vector<S> src(at + static_cast<size_t>(count) + 8), rows[3];
    for (S& s : src) s = test::sample(r, S{});
    rows[0].resize(src.size());
    for (S& s : rows[0]) s = test::sample(r, S{});
    rows[1] = rows[2] = rows[0];
    const S* const dst = rows[1].data() + at;
    std::vector<uint32_t> words(37);
    for (uint32_t& w : words) w = r.next();
    RKp_NoiseTable noise = {words.data(), words.data() + 5, words.data() + words.size()};
    RKp_MaskAccumulate<S>(&noise, mode, count, src.data() + at, rows[0].data() + at);
    RKp_MaskTransfer<S>(&noise, mode, count, src.data() + at, dst, rows[1].data() + at);
    RKp_MaskAccumulateWeighted<S>(&noise, mode, 200, 190, count, src.data() + at, rows[2].data() + at);
    std::vector<S> all = rows[0];
    for (int i : {1, 2}) all.insert(all.end(), rows[i].begin(), rows[i].end());
    all.push_back(static_cast<S>(noise.cursor - noise.begin));
    return all;
}

template <class S>
void expectRecordsAgree() {
    for (int32_t mode : {-1, 1, 2, 3, 4, 5, 6, 7})
        for (RK_Long count = 0; count <= 1100; count += count < 100 ? 1 : 500)
            for (size_t at : {0u, 1u, 7u})
                ASSERT_EQ(rowUnder<S>({0, 0}, mode, at, count), rowUnder<S>({1, 1}, mode, at, count))
                    << "mode " << mode << ", " << count << " samples from " << at;
}
TEST(UnoModes, NoProcessorRecordChangesAByte) {
    expectRecordsAgree<uint8_t>();
    expectRecordsAgree<uint16_t>();
}

TEST(UnoModes, BytesWidenAsChannelsDo) {
    for (int s = 0; s < 256; ++s)
        ASSERT_EQ(RKp_UnoWidened(static_cast<uint8_t>(s)), (s * 32768 + 128) / 255) << s;
}

TEST(UnoModes, UnknownNumbersAreUnions) {
    const std::vector<uint8_t> src = {0, 10, 128, 255}, dst = {77, 200, 128, 3};
    for (int32_t mode : {0, 8, -2, 1000, INT32_MIN, INT32_MAX})
        ASSERT_NO_FATAL_FAILURE(expectRow(mode, src, dst));
}

TEST(UnoModes, EveryShortCountLeavesWhatIsBeyond) {
    test::Random r(9);
    for (int32_t mode : kEveryMode) {
        for (size_t count = 0; count <= 67; ++count) {
            std::vector<uint8_t> src(count), dst(count);
            for (uint8_t& s : src) s = test::sample(r, uint8_t{});
            for (uint8_t& d : dst) d = test::sample(r, uint8_t{});
            std::vector<uint8_t> row = dst;
            row.resize(count + 16, 0x55);
            RKp_MaskAccumulate<uint8_t>(nullptr, mode, static_cast<RK_Long>(count), src.data(), row.data());
            for (size_t i = 0; i < row.size(); ++i)
                ASSERT_EQ(row[i], i < count ? combined(mode, src[i], dst[i]) : 0x55)
                    << mode << " of " << count;
        }
    }
}

// The term of the 16-bit products is 16383: with a neighbour some pair of samples would differ.
TEST(UnoModes, TheDeepTermIsTold) {
    using D = RKp_UnoDepth<uint16_t>;
    EXPECT_EQ(D::mul(1, 16384), 0) << "16384 would give 1";
    EXPECT_EQ(D::mul(1, 16385), 1) << "16382 would give 0";
    EXPECT_EQ(D::subtract(32767, 16384), 0);
    EXPECT_EQ(D::subtract(32767, 16385), 1);
    EXPECT_EQ(D::unite(32767, 16384), 32768) << "what is missing rounds down at a tie";
    EXPECT_EQ(D::unite(32767, 16383), 32767);
}

TEST(UnoModes, FloatFollowsTheFormulasStepByStep) {
    test::Random r(3);
    std::vector<float> src(5000), dst(5000), out(5000);
    for (float& s : src) s = test::channel(r, float{}, true);
    for (float& d : dst) d = test::channel(r, float{}, true);
    const auto wanted = [](int32_t mode, float s, float d) {
        const float is = 1.0f - s, id = 1.0f - d;
        switch (mode) {
            case RK_kUnoSubtract: return is * d;
            case RK_kUnoIntersect: return s * d;
            case RK_kUnoLighten: return std::max(s, d);
            case RK_kUnoDarken: return std::min(s, d);
            case RK_kUnoDifference: return std::fabs(s - d);
            case RK_kUnoAdd: return std::min(1.0f, s + d);
            default: {
                const float both = is * id;
                return 1.0f - both;
            }
        }
    };
    for (int32_t mode : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8}) {
        RKp_MaskTransfer<float>(nullptr, mode, 5000, src.data(), dst.data(), out.data());
        for (size_t i = 0; i < out.size(); ++i) {
            const float w = wanted(mode, src[i], dst[i]);
            ASSERT_TRUE(test::sameBytes(out[i], w) || (std::isnan(out[i]) && std::isnan(w)))
                << "mode " << mode << ": " << src[i] << " on " << dst[i] << " gave " << out[i] << ", not "
                << w;
        }
    }
}

// ---- Algebra --------------------------------------------------------------------------------------------

template <class S>
class UnoAlgebra : public testing::Test {
  protected:
    UnoAlgebra() : a(300), b(300) {
        test::Random r(11);
        for (S& s : a) s = test::sample(r, S{});
        for (S& s : b) s = test::sample(r, S{});
    }
    static std::vector<S> run(int32_t mode, const std::vector<S>& s, std::vector<S> d) {
        RKp_MaskAccumulate<S>(nullptr, mode, static_cast<RK_Long>(s.size()), s.data(), d.data());
        return d;
    }
    std::vector<S> of(int64_t value) const { return std::vector<S>(a.size(), static_cast<S>(value)); }
    std::vector<S> a, b;
};
using IntegerSamples = testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(UnoAlgebra, IntegerSamples);

TYPED_TEST(UnoAlgebra, TheSymmetricModesCommute) {
    for (int32_t mode :
         {RK_kUnoUnion, RK_kUnoIntersect, RK_kUnoLighten, RK_kUnoDarken, RK_kUnoDifference, RK_kUnoAdd})
        EXPECT_EQ(this->run(mode, this->a, this->b), this->run(mode, this->b, this->a)) << mode;
}

TYPED_TEST(UnoAlgebra, NothingAndEverythingAreNeutralOrAbsorb) {
    const auto zero = this->of(0), full = this->of(test::kFullSample<TypeParam>);
    EXPECT_EQ(this->run(RK_kUnoUnion, zero, this->b), this->b);
    EXPECT_EQ(this->run(RK_kUnoUnion, full, this->b), full);
    EXPECT_EQ(this->run(RK_kUnoSubtract, zero, this->b), this->b);
    EXPECT_EQ(this->run(RK_kUnoSubtract, full, this->b), zero);
    EXPECT_EQ(this->run(RK_kUnoIntersect, full, this->b), this->b);
    EXPECT_EQ(this->run(RK_kUnoIntersect, zero, this->b), zero);
    EXPECT_EQ(this->run(RK_kUnoLighten, zero, this->b), this->b);
    EXPECT_EQ(this->run(RK_kUnoDarken, full, this->b), this->b);
    EXPECT_EQ(this->run(RK_kUnoAdd, zero, this->b), this->b);
    EXPECT_EQ(this->run(RK_kUnoAdd, full, this->b), full);
}

TYPED_TEST(UnoAlgebra, AMaskWithItself) {
    EXPECT_EQ(this->run(RK_kUnoDifference, this->a, this->a), this->of(0));
    EXPECT_EQ(this->run(RK_kUnoLighten, this->a, this->a), this->a);
    EXPECT_EQ(this->run(RK_kUnoDarken, this->a, this->a), this->a);
}

TYPED_TEST(UnoAlgebra, UnionIsTheComplementOfTheIntersectionOfComplements) {
    const auto full = this->of(test::kFullSample<TypeParam>);
    const auto inverse = [&](const std::vector<TypeParam>& m) {
        return this->run(RK_kUnoDifference, full, m);
    };
    EXPECT_EQ(this->run(RK_kUnoUnion, this->a, this->b),
              inverse(this->run(RK_kUnoIntersect, inverse(this->a), inverse(this->b))));
    EXPECT_EQ(this->run(RK_kUnoSubtract, this->a, this->b),
              this->run(RK_kUnoIntersect, inverse(this->a), this->b));
}

// ---- Weights --------------------------------------------------------------------------------------------

template <class S>
S weighted(int32_t mode, int64_t limit, int64_t opacity, S s, int64_t d, int64_t noise) {
    const int64_t full = test::kFullSample<S>;
    int64_t m = s * opacity;
    if (sizeof(S) == 1)
        m = (m + 128 + ((m + 128) >> 8)) >> 8;
    else
        m = (m + 16383) >> 15;
    if (mode != RK_kUnoDither) return static_cast<S>(std::min(full, d + m));
    if (d >= limit) return static_cast<S>(d);
    if (sizeof(S) == 2) return static_cast<S>(d + (m * (limit - d) >> 15));
    const int64_t u = m * (limit - d) + (noise & 255);
    return static_cast<S>(d + ((u + (u >> 8)) >> 8));
}

template <class S>
void expectWeighted(int32_t mode, int32_t limit, int32_t opacity) {
    test::Random r(static_cast<uint32_t>(limit) + static_cast<uint32_t>(opacity) * 31 +
                   static_cast<uint32_t>(mode));
    std::vector<S> src(400), dst(400);
    for (S& s : src) s = r.below(5) ? test::sample(r, S{}) : static_cast<S>(r.next());
    for (S& d : dst) d = r.below(5) ? test::sample(r, S{}) : static_cast<S>(r.next());
    std::vector<uint32_t> words(13);
    for (uint32_t& w : words) w = r.next();
    RKp_NoiseTable noise = {words.data(), words.data() + 4, words.data() + words.size()};
    std::vector<S> got = dst;
    ASSERT_EQ(0, RKp_MaskAccumulateWeighted<S>(&noise, mode, limit, opacity, 400, src.data(), got.data()));
    for (size_t i = 0; i < got.size(); ++i)
        ASSERT_EQ(got[i], weighted(mode, limit, opacity, src[i], dst[i], words[(5 + i) % 13]))
            << "mode " << mode << " limit " << limit << " opacity " << opacity << ": " << +src[i] << " on "
            << +dst[i];
    const bool draws = mode == RK_kUnoDither && sizeof(S) == 1;
    EXPECT_EQ(noise.cursor - noise.begin, draws ? (4 + 400) % 13 : 4) << "draws";
}

TEST(UnoWeighted, EveryModeLimitAndOpacityInAndOutOfRange) {
    for (int32_t mode : {-1, 0, 1, 3, 5, 7}) {
        for (int32_t limit : {0, 1, 100, 254, 255, 256, 32768, -1, 70000, INT32_MAX, INT32_MIN}) {
            for (int32_t opacity : {0, 1, 127, 128, 255, 256, 510, -1, -255, INT32_MAX, INT32_MIN}) {
                ASSERT_NO_FATAL_FAILURE(expectWeighted<uint8_t>(mode, limit, opacity));
                ASSERT_NO_FATAL_FAILURE(expectWeighted<uint16_t>(mode, limit, opacity));
            }
            for (int32_t opacity : {16384, 32767, 32768, 32769, 65536, -32768})
                ASSERT_NO_FATAL_FAILURE(expectWeighted<uint16_t>(mode, limit, opacity));
        }
    }
}

TEST(UnoWeighted, BytesIntoDeepSamplesAreScaledWidenedAndAdded) {
    for (int64_t opacity : {0, 1, 100, 128, 254, 255, 256, 600, -1, -300}) {
        std::vector<uint8_t> src;
        std::vector<uint16_t> dst, got;
        for (int s = 0; s < 256; ++s)
            for (uint16_t d : edges16()) src.push_back(static_cast<uint8_t>(s)), dst.push_back(d);
        got = dst;
        ASSERT_EQ(0, RKp_MaskAdd8To16(static_cast<int32_t>(opacity), static_cast<RK_Long>(src.size()),
                                      src.data(), got.data()));
        for (size_t i = 0; i < got.size(); ++i) {
            int64_t m = src[i] * opacity + 128;
            m = (m + (m >> 8)) >> 8;
            const int64_t wide =
                static_cast<int64_t>(std::floor(static_cast<double>(m * 32768 + 128) / 255.0));
            ASSERT_EQ(got[i], static_cast<uint16_t>(std::min<int64_t>(32768, dst[i] + wide)))
                << +src[i] << " on " << dst[i] << " at " << opacity;
        }
    }
}

// ---- Noise ----------------------------------------------------------------------------------------------

template <class S>
S dithered(int64_t s, int64_t d, int64_t noise) {
    const int64_t full = test::kFullSample<S>;
    if (sizeof(S) == 1) {
        const int64_t u = (255 - s) * (255 - d) + (noise & 255);
        return static_cast<S>(255 - ((u + (u >> 8)) >> 8));
    }
    return static_cast<S>(full - (((full - s) * (full - d) + (noise & 32767)) >> 15));
}

template <class S>
void expectDither() {
    test::Random r(21);
    std::vector<S> src(5000), dst(5000), apart(5000);
    for (S& s : src) s = r.below(5) ? test::sample(r, S{}) : static_cast<S>(r.next());
    for (S& d : dst) d = r.below(5) ? test::sample(r, S{}) : static_cast<S>(r.next());
    std::vector<uint32_t> words(1009);
    for (uint32_t& w : words) w = r.next();
    for (ptrdiff_t start : {0, 1, 500, 1007, 1008}) {
        RKp_NoiseTable noise = {words.data(), words.data() + start, words.data() + words.size()};
        RKp_NoiseTable again = noise;
        std::vector<S> got = dst;
        RKp_MaskAccumulate<S>(&noise, RK_kUnoDither, 5000, src.data(), got.data());
        RKp_MaskTransfer<S>(&again, RK_kUnoDither, 5000, src.data(), dst.data(), apart.data());
        for (size_t i = 0; i < got.size(); ++i)
            ASSERT_EQ(got[i], dithered<S>(src[i], dst[i], words[(static_cast<size_t>(start) + 1 + i) % 1009]))
                << i;
        ASSERT_EQ(got, apart);
        ASSERT_EQ(noise.cursor - noise.begin, (start + 5000) % 1009) << "once per sample";
        ASSERT_EQ(again.cursor, noise.cursor);
    }
}

TEST(UnoDither, ADrawMovesTheCursorAndThenReads) {
    expectDither<uint8_t>();
    expectDither<uint16_t>();
}

TEST(UnoDither, FullStaysForEveryNoiseAndNothingForAllButZero) {
    std::vector<uint32_t> words(256);
    for (uint32_t i = 0; i < 256; ++i) words[i] = i;
    RKp_NoiseTable noise = {words.data(), words.data(), words.data() + 256};
    std::vector<uint8_t> zero(256, 0), full(256, 255), got(256, 0);
    RKp_MaskAccumulate<uint8_t>(&noise, RK_kUnoDither, 256, zero.data(), got.data());
    // The draw of 0 falls just short of a whole 255: the word at the table's start, read last.
    std::vector<uint8_t> wanted = zero;
    wanted.back() = 1;
    EXPECT_EQ(got, wanted);
    RKp_MaskAccumulate<uint8_t>(&noise, RK_kUnoDither, 256, full.data(), got.data());
    EXPECT_EQ(got, full);
}

}  // namespace
