// The scans by name, as default and as vector form, and their rules in exact arithmetic.
#ifndef TEST_PASSES_SCANS_H
#define TEST_PASSES_SCANS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "RK/indep/frame/RKp_SlotTypes.h"
#include "RK/indep/passes/RKp_AlphaMerge.h"
#include "RK/indep/passes/RKp_MatteScans.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"

namespace test {

enum class Matte { Black, White, Grey };

// A matte and a direction, and the two functions that do it. A vector form that does not exist is null.
template <class P>
struct ScanPair {
    const char* name;
    Matte matte;
    bool forward;
    RKp_ScanFunc<P>*plain, *vector;
};

// In the order of their slots.
template <class P>
std::array<ScanPair<P>, 6> scanPairs() {
    RKp_ScanFunc<P>* first = nullptr;
    if constexpr (!std::is_same_v<P, RK_Pixel16>) first = RKp_Premul_Black_SSSE3<P>;
    return {{{"premultiply by black", Matte::Black, true, RKp_Premul_Black<P>, first},
             {"unmultiply by black", Matte::Black, false, RKp_Unmul_Black<P>, RKp_Unmul_Black_SSSE3<P>},
             {"premultiply by white", Matte::White, true, RKp_Premul_White<P>, RKp_Premul_White_SSSE3<P>},
             {"unmultiply by white", Matte::White, false, RKp_Unmul_White<P>, RKp_Unmul_White_SSSE3<P>},
             {"premultiply by grey", Matte::Grey, true, RKp_Premul_Grey<P>, RKp_Premul_Grey_SSSE3<P>},
             {"unmultiply by grey", Matte::Grey, false, RKp_Unmul_Grey<P>, RKp_Unmul_Grey_SSSE3<P>}}};
}

// work(function) for both forms, the vector form where this machine can run it.
template <class P, class Work>
void eachForm(const ScanPair<P>& pair, Work work) {
    {
        SCOPED_TRACE(std::string(pair.name) + ", default");
        work(pair.plain);
    }
    if (pair.vector && RefHost::DetectCPU().has_ssse3) {
        SCOPED_TRACE(std::string(pair.name) + ", vector form");
        work(pair.vector);
    }
}

// A row after the scan.
template <class P>
std::vector<P> scanned(RKp_ScanFunc<P>* scan, const std::vector<P>& row, bool in_place) {
    std::vector<P> out = in_place ? row : std::vector<P>(row.size());
    EXPECT_EQ(0, scan(static_cast<RK_Long>(row.size()), in_place ? nullptr : row.data(), out.data()));
    return out;
}

// One pixel after the scan, in the middle of enough others of its kind to be in a vector.
template <class P>
P scanned(RKp_ScanFunc<P>* scan, const P& pixel, bool in_place) {
    const std::vector<P> out = scanned(scan, std::vector<P>(37, pixel), in_place);
    for (const P& p : out) EXPECT_TRUE(sameBytes(p, out[0]));
    return out[0];
}

// ---- The rules, in int64_t ------------------------------------------------------------------------------

struct Exact8 {
    static constexpr int64_t kFull = 255, kGrey = 128;
    // The nearest integer to ab / 255, which never lies halfway.
    static int64_t mul(int64_t a, int64_t b) { return (2 * a * b + 255) / 510; }
    static int64_t div(int64_t a, int64_t x) {
        return a == 0 ? 255 : std::min<int64_t>(255, (x * 255 + a / 2) / a);
    }
};
struct Exact16 {
    static constexpr int64_t kFull = 32768, kGrey = 16384;
    static int64_t mul(int64_t a, int64_t b) { return (a * b + 16383) / 32768; }
    static int64_t div(int64_t a, int64_t x) { return x >= a ? 32768 : (x * 32768 + a / 2) / a; }
};

// A colour channel after the scan's rule, special alphas apart.
template <class E>
int64_t exactChannel(Matte matte, bool forward, int64_t a, int64_t c) {
    if (matte == Matte::Black) return forward ? E::mul(c, a) : E::div(a, c);
    if (matte == Matte::White)
        return E::kFull - (forward ? E::mul(E::kFull - c, a) : E::div(a, E::kFull - c));
    if (forward)
        return c >= E::kGrey ? E::mul(c - E::kGrey, a) + E::kGrey : c + E::mul(E::kFull - a, E::kGrey - c);
    const int64_t d = E::div(a, c >= E::kGrey ? c - E::kGrey : E::kGrey - c);
    if (c >= E::kGrey) return d < E::kGrey ? d + E::kGrey : E::kFull;
    return d < E::kGrey ? E::kGrey - d : 0;
}

}  // namespace test

#endif
