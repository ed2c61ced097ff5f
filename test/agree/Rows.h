// Rows of pixels for comparing two forms of a row function: values, places in memory, and what counts as
// equal.
#ifndef TEST_AGREE_ROWS_H
#define TEST_AGREE_ROWS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "RK/indep/frame/RKp_Depth.h"
#include "test/Pixels.h"

namespace agree {

// ---- Values ---------------------------------------------------------------------------------------------

// Special and random ones mixed; runs of opaque and clear pixels among them; only one of those; any bits at
// all.
enum class Values { Mixed, Runs, Opaque, Clear, Wild };
constexpr Values kValues[] = {Values::Mixed, Values::Runs, Values::Opaque, Values::Clear, Values::Wild};

inline void wildChannel(test::Random& r, uint8_t* out) { *out = static_cast<uint8_t>(r.next() >> 24); }
// Above 32768 too.
inline void wildChannel(test::Random& r, uint16_t* out) { *out = static_cast<uint16_t>(r.next() >> 16); }
// NaN, infinities, denormals and -0 among others, as alpha too.
inline void wildChannel(test::Random& r, float* out) {
    static const float odd[] = {-0.0f,
                                std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity(),
                                -std::numeric_limits<float>::infinity(),
                                std::numeric_limits<float>::denorm_min(),
                                -1e-39f,
                                std::numeric_limits<float>::min(),
                                -1e-30f,
                                3e38f,
                                -3e38f,
                                0.0f,
                                1.0f,
                                0.5f};
    *out = r.below(2) ? odd[r.below(13)] : (r.unit() - 0.5f) * 4;
}

template <class P>
std::vector<P> values(test::Random& r, size_t count, Values kind) {
    using Channel = typename RKp_Depth<P>::Channel;
    const auto full = static_cast<Channel>(RKp_Depth<P>::kFull);
    std::vector<P> row(count);
    size_t run_left = 0;
    int run = 0;  // of opaque, clear or mixed pixels
    for (P& p : row) {
        p = test::pixel<P>(r);
        if (run_left-- == 0) run = static_cast<int>(r.below(3)), run_left = r.below(24);
        const bool in_run = kind == Values::Runs && run != 2;
        if (kind == Values::Opaque || (in_run && run == 0)) p.alpha = full;
        if (kind == Values::Clear || (in_run && run == 1)) p.alpha = 0;
        if (kind == Values::Wild) {
            wildChannel(r, &p.alpha), wildChannel(r, &p.red);
            wildChannel(r, &p.green), wildChannel(r, &p.blue);
        }
    }
    return row;
}

// ---- Places ---------------------------------------------------------------------------------------------

// Every place modulo 16 that the pixel type may have.
template <class P>
constexpr size_t kPlaces = 16 / alignof(P);

// A row at `place` that may be written, between guards.
template <class P>
class Row {
  public:
    Row(const std::vector<P>& pixels, size_t place)
        : count_(pixels.size()), at_(kGuard + place * alignof(P)), bytes_(new uint8_t[size()]) {
        std::memset(bytes_.get(), kGuardByte, size());
        if (count_ > 0) std::memcpy(bytes_.get() + at_, pixels.data(), count_ * sizeof(P));
    }
    P* data() { return reinterpret_cast<P*>(bytes_.get() + at_); }
    bool guardsWhole() const {
        const auto whole = [](const uint8_t* from, const uint8_t* to) {
            return std::all_of(from, to, [](uint8_t b) { return b == kGuardByte; });
        };
        const uint8_t* const end = bytes_.get() + at_ + count_ * sizeof(P);
        return whole(bytes_.get(), bytes_.get() + at_) && whole(end, bytes_.get() + size());
    }

  private:
    static constexpr size_t kGuard = 64;
    static constexpr uint8_t kGuardByte = 0x55;
    size_t size() const { return at_ + count_ * sizeof(P) + kGuard; }
    size_t count_, at_;
    std::unique_ptr<uint8_t[]> bytes_;
};

// A row at `place` that is only read. Its block ends with it, so that a sanitizer sees what reads on.
template <class P>
class Source {
  public:
    Source(const std::vector<P>& pixels, size_t place)
        : pixels_(pixels), bytes_(new uint8_t[place * alignof(P) + pixels.size() * sizeof(P) + 1]) {
        // One byte stands before the row, since a row of no pixels has no place of its own.
        data_ = reinterpret_cast<P*>(bytes_.get() + place * alignof(P));
        if (!pixels.empty()) std::memcpy(data_, pixels.data(), pixels.size() * sizeof(P));
    }
    const P* data() const { return data_; }
    bool unchanged() const {
        return pixels_.empty() || std::memcmp(data_, pixels_.data(), pixels_.size() * sizeof(P)) == 0;
    }

  private:
    const std::vector<P>& pixels_;
    std::unique_ptr<uint8_t[]> bytes_;
    P* data_;
};

// ---- Equality -------------------------------------------------------------------------------------------

// Equal bits. Which of two NaNs an operation passes on depends on the order of its operands, which is the
// compiler's choice; so all NaNs are one.
template <class Channel>
bool same(Channel a, Channel b) {
    if constexpr (std::is_floating_point_v<Channel>) {
        if (std::isnan(a) && std::isnan(b)) return true;
    }
    return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class P>
std::string text(const P& p) {
    const auto channel = [](auto c) {
        char out[40];
        std::snprintf(out, sizeof out, "%.9g", static_cast<double>(c));
        return std::string(out);
    };
    return "(" + channel(p.alpha) + ", " + channel(p.red) + ", " + channel(p.green) + ", " + channel(p.blue) +
           ")";
}

// Fails, naming the pixel, where `got` differs from `wanted`; `given` is what stood there before.
template <class P>
testing::AssertionResult sameRows(const std::vector<P>& given, const P* wanted, const P* got) {
    for (size_t i = 0; i < given.size(); ++i) {
        const P w = wanted[i], g = got[i];
        if (same(w.alpha, g.alpha) && same(w.red, g.red) && same(w.green, g.green) && same(w.blue, g.blue))
            continue;
        return testing::AssertionFailure()
               << "pixel " << i << " of " << given.size() << ": from " << text(given[i]) << " default "
               << text(w) << " variant " << text(g);
    }
    return testing::AssertionSuccess();
}

}  // namespace agree

#endif
