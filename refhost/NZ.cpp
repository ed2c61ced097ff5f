#include "RK/host/NZ.h"

#include <array>

#include "refhost/Internal.h"

namespace {

// A prime count keeps the noise from lining up with rows of even widths.
constexpr int32_t kCount = 8191;

// A xorshift sequence from a fixed seed: the same noise on every machine.
constexpr std::array<uint32_t, kCount> makeNoise() {
    std::array<uint32_t, kCount> table{};
    uint32_t state = 0x9E3779B9u;
    for (int32_t i = 0; i < kCount; ++i) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        table[static_cast<size_t>(i)] = state;
    }
    return table;
}
constexpr std::array<uint32_t, kCount> kNoise = makeNoise();

}  // namespace

RK_Long NZ_GetPrimeSizedTable(const uint32_t** table, int32_t* count) {
    if (!table || !count) return 3;
    if (const RK_Long code = RefHost::FailingCall("NZ_GetPrimeSizedTable")) return code;
    *table = kNoise.data();
    *count = kCount;
    return 0;
}
