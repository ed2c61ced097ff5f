#include "Exif.h"

#include <cstring>

int ExifOrientation(const uint8_t* block, size_t count) {
    if (count < 8) return 1;
    const bool big = std::memcmp(block, "MM\0*", 4) == 0;
    if (!big && std::memcmp(block, "II*\0", 4) != 0) return 1;
    const auto word = [&](size_t at) -> uint32_t {
        return big ? block[at] << 8 | block[at + 1] : block[at + 1] << 8 | block[at];
    };
    const auto dword = [&](size_t at) {
        return big ? word(at) << 16 | word(at + 2) : word(at + 2) << 16 | word(at);
    };

    // The first directory: a count, then entries of 12 bytes: tag, type, number of values, value.
    const size_t directory = dword(4);
    if (directory > count - 2) return 1;
    const size_t entries = word(directory);
    constexpr uint32_t kOrientationTag = 0x0112, kShort = 3;
    for (size_t i = 0; i < entries; ++i) {
        const size_t at = directory + 2 + i * 12;
        if (at + 12 > count) return 1;
        if (word(at) != kOrientationTag || word(at + 2) != kShort) continue;
        const uint32_t value = word(at + 8);
        return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
    }
    return 1;
}
