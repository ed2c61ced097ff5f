// What the digest tests share: a hash of pixels, and the cases by name.
#ifndef TEST_AGREE_DIGESTS_H
#define TEST_AGREE_DIGESTS_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <string>

#include "test/Pixels.h"

namespace digests {

class Hash {
  public:
    void bytes(const void* p, size_t count) {
        for (size_t i = 0; i < count; ++i)
            value_ = (value_ ^ static_cast<const uint8_t*>(p)[i]) * 0x100000001B3u;
    }
    void channel(uint8_t c) { bytes(&c, 1); }
    void channel(uint16_t c) { bytes(&c, 2); }
    // Which NaN an operation makes is the processor's affair.
    void channel(float c) {
        uint32_t bits = 0x7FC00000u;
        if (!std::isnan(c)) std::memcpy(&bits, &c, sizeof bits);
        bytes(&bits, 4);
    }
    template <class P>
    void pixels(const P* p, int count) {
        for (int i = 0; i < count; ++i) {
            channel(p[i].alpha);
            channel(p[i].red);
            channel(p[i].green);
            channel(p[i].blue);
        }
    }
    template <class P>
    void picture(const test::Picture<P>& picture) {
        for (int y = 0; y < picture.height(); ++y) pixels(picture.row(y), picture.width());
    }
    uint64_t value() const { return value_; }

  private:
    uint64_t value_ = 0xCBF29CE484222325u;
};

using Digests = std::map<std::string, uint64_t>;

template <class P>
std::string depthName() {
    return sizeof(P) == 4 ? "8" : sizeof(P) == 8 ? "16" : "float";
}

inline void add(Digests& digests, const std::string& name, const Hash& hash) {
    EXPECT_TRUE(digests.emplace(name, hash.value()).second) << "two cases are named " << name;
}

// The cases of samplers, transforms, copies, tables and decimation.
void addSampling(Digests& digests);
// The cases of masks.
void addMasks(Digests& digests);

}  // namespace digests

#endif
