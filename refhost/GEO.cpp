#include "RK/host/GEO.h"

#include <algorithm>
#include <cmath>

#include "refhost/Internal.h"

namespace {

constexpr size_t kTableBytes = 256 * 256;
uint8_t* g_multiply = nullptr;  // both tables in one block, or null
uint8_t* g_divide = nullptr;

void fillTables() {
    for (uint32_t a = 0; a < 256; ++a) {
        for (uint32_t x = 0; x < 256; ++x) {
            const uint32_t t = a * x + 128;
            g_multiply[a * 256 + x] = static_cast<uint8_t>((t + (t >> 8)) >> 8);
            g_divide[a * 256 + x] =
                a == 0 ? 255 : static_cast<uint8_t>(std::min<uint32_t>(255, (x * 255 + (a >> 1)) / a));
        }
    }
}

}  // namespace

bool GEO_SectRect(const GEO_Rect* a, const GEO_Rect* b, GEO_Rect* out) {
    const GEO_Rect both = {std::max(a->top, b->top), std::max(a->left, b->left),
                           std::min(a->bottom, b->bottom), std::min(a->right, b->right)};
    const bool some = both.top < both.bottom && both.left < both.right;
    *out = some ? both : GEO_Rect{0, 0, 0, 0};
    return some;
}

int32_t GEO_RoundDouble(double value) {
    const double whole = std::round(value);
    return whole >= -2147483648.0 && whole <= 2147483647.0 ? static_cast<int32_t>(whole) : INT32_MIN;
}

RK_Long GEO_PrepareFCMD(int32_t, int32_t, int32_t, const uint8_t** multiply, const uint8_t** divide) {
    *multiply = *divide = nullptr;
    if (const RK_Long code = RefHost::FailingCall("GEO_PrepareFCMD")) return code;
    if (!g_multiply) {
        g_multiply = static_cast<uint8_t*>(RefHost::AllocateBlock(2 * kTableBytes));
        if (!g_multiply) return 4;
        g_divide = g_multiply + kTableBytes;
        fillTables();
    }
    *multiply = g_multiply;
    *divide = g_divide;
    return 0;
}

RK_Long GEO_UnprepareFCMD() {
    if (const RK_Long code = RefHost::FailingCall("GEO_UnprepareFCMD")) return code;
    if (g_multiply) RefHost::FreeBlock(g_multiply);
    g_multiply = g_divide = nullptr;
    return 0;
}

RK_Long GEO_CheckVersions(RK_Long, RK_Long version) { return RefHost::CheckPackage("GEO", version); }
