// Every mode's rows through the pipeline, as digests: the same bytes from every compiler, ABI and processor
// record.
#include "test/composite/ModeRows.h"

using namespace test;

namespace {

struct Digests {
    const char* mode;
    uint64_t at8, at16, at_float;
};
constexpr Digests kDigests[] = {
#include "test/composite/ModeDigests.inc"
};

// Plain, then with an opacity, then with a matte, then with both; some rows with rgb_only.
template <class P>
uint64_t digestOf(const ModeName& m) {
    Random r(uint32_t(m.number + 100));
    uint64_t h = digest("", 0);
    for (int round = 0; round < 16; ++round) {
        std::vector<P> s(256), d(256), matte(256);
        for (size_t i = 0; i < s.size(); ++i) {
            s[i] = pixel<P>(r);
            d[i] = pixel<P>(r);
            matte[i] = pixel<P>(r);
        }
        const RK_Channel<P> opacity = round & 1 ? pixel<P>(r).alpha : kFull<P>;
        const auto mode = blending<P>(m.number, opacity, round % 8 == 7, int32_t(r.next()));
        const bool has_matte = (round & 2) || m.number == RK_Xfer_MatteMix;
        EXPECT_EQ(compositeRow<P>(mode, s, has_matte ? matte.data() : nullptr, d), 0);
        h = digest(d.data(), d.size() * sizeof(P), h);
    }
    return h;
}

std::string line(const char* name, uint64_t a, uint64_t b, uint64_t c) {
    char out[128];
    std::snprintf(out, sizeof out, "{\"%s\", 0x%016llxu, 0x%016llxu, 0x%016llxu},", name,
                  (unsigned long long)a, (unsigned long long)b, (unsigned long long)c);
    return out;
}

}  // namespace

TEST(ModeDigests, AreThoseOfEveryBuild) {
    ASSERT_EQ(sizeof kDigests / sizeof kDigests[0], modes().size());
    const Digests* expected = kDigests;
    for (const ModeName& m : modes()) {
        EXPECT_EQ(line(m.name, digestOf<RK_Pixel8>(m), digestOf<RK_Pixel16>(m), digestOf<RK_PixelFloat>(m)),
                  line(expected->mode, expected->at8, expected->at16, expected->at_float));
        ++expected;
    }
}
