// The plain 8-bit row functions, and the change of matte of a premultiplied 8-bit world.
#include <cstring>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_Premul.h"
#include "RK/indep/world/RK_WorldDepth.h"

namespace {

using D = RKp_Depth<RK_Pixel8>;
using Scan = RKp_ScanFunc<RK_Pixel8>;

// The scan, on rows that are there.
RK_Long run(Scan* scan, RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst) {
    if (count < 1) return RK_kOK;
    return dst == nullptr ? RKp_ReportBadParam(RKp_kSiteIterate) : scan(count, src, dst);
}

// scale(a, c) for the three colours of each half transparent pixel.
template <class Scale>
RK_Long scaleBGRA(RK_Long count, uint8_t* row, Scale scale) {
    if (count < 1) return RK_kOK;
    if (row == nullptr) return RKp_ReportBadParam(RKp_kSiteIterate);
    for (RK_Long i = 0; i < count; ++i, row += 4) {
        const int32_t a = row[3];
        if (a == 255) continue;
        if (a == 0) {
            std::memset(row, 0, 4);
            continue;
        }
        for (int k = 0; k < 3; ++k) row[k] = static_cast<uint8_t>(scale(a, row[k]));
    }
    return RK_kOK;
}

// Channel bytes in memory order.
struct Bytes {
    uint8_t at[4];
};

// What black lacks to the matte at each alpha, in the order of the world's bytes. The alpha byte is 0.
void fillShares(const Bytes& colour, int alpha_at, Bytes (&shares)[256]) {
    for (int a = 0; a < 256; ++a) {
        for (int k = 0; k < 4; ++k) shares[a].at[k] = static_cast<uint8_t>(D::mul(colour.at[k], 255 - a));
        shares[a].at[alpha_at] = 0;
    }
}

RK_Long changeMatte(RK_LayerDef* world, const Bytes& colour, int alpha_at, RK_Long forward,
                    const char* only8) {
    if (world == nullptr) return RKp_ReportBadParam(RKp_kSiteIterate);
    if (RKp_WorldDepth(world) != 8) return RKp_VERIFICATION(only8);
    bool black = true;
    for (int k = 0; k < 4; ++k) black &= k == alpha_at || colour.at[k] == 0;
    if (black || world->width < 1 || world->height < 1) return RK_kOK;
    if (world->data == nullptr) return RKp_ReportBadParam(RKp_kSiteIterate);

    Bytes shares[256];
    fillShares(colour, alpha_at, shares);
    for (int32_t y = 0; y < world->height; ++y) {
        uint8_t* p = static_cast<uint8_t*>(world->data) + static_cast<ptrdiff_t>(y) * world->rowbytes;
        for (int32_t x = 0; x < world->width; ++x, p += 4) {
            if (p[alpha_at] == 255) continue;
            const Bytes share = shares[p[alpha_at]];
            // Sums wrap.
            for (int k = 0; k < 4; ++k)
                p[k] = static_cast<uint8_t>(forward != 0 ? p[k] + share.at[k] : p[k] - share.at[k]);
        }
    }
    return RK_kOK;
}

RK_Pixel8 orBlack(const RK_Pixel8* color) { return color == nullptr ? RK_Pixel8{} : *color; }

}  // namespace

RK_Long RK_BlackMatte(RK_EffectRef, RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst) {
    return run(RKp_Slot<RKp_kSlot_Premul_Black8>(), count, src, dst);
}
RK_Long RK_DeBlackMatte(RK_EffectRef, RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst) {
    return run(RKp_Slot<RKp_kSlot_Unmul_Black8>(), count, src, dst);
}
RK_Long RK_BlackMatteARGB(RK_EffectRef, RK_Long count, RK_Pixel8* row) {
    return run(RKp_Slot<RKp_kSlot_Premul_Black8>(), count, nullptr, row);
}
RK_Long RK_DeBlackMatteARGB(RK_EffectRef, RK_Long count, RK_Pixel8* row) {
    return run(RKp_Slot<RKp_kSlot_Unmul_Black8>(), count, nullptr, row);
}
RK_Long RK_BlackMatteBGRA(RK_EffectRef, RK_Long count, uint8_t* row) {
    return scaleBGRA(count, row, [](int32_t a, int32_t c) { return D::mul(a, c); });
}
RK_Long RK_DeBlackMatteBGRA(RK_EffectRef, RK_Long count, uint8_t* row) {
    return scaleBGRA(count, row, [](int32_t a, int32_t c) { return D::div(a, c); });
}

RK_Long RK_MatteBlackToMatteColorARGB(RK_LayerDef* world, const RK_Pixel8* color, RK_Long forward) {
    const RK_Pixel8 c = orBlack(color);
    return changeMatte(world, {{0, c.red, c.green, c.blue}}, 0, forward,
                       "RK_MatteBlackToMatteColorARGB only works on 8bpc RK_EffectWorlds");
}
RK_Long RK_MatteBlackToMatteColorBGRA(RK_LayerDef* world, const RK_Pixel8* color, RK_Long forward) {
    const RK_Pixel8 c = orBlack(color);
    return changeMatte(world, {{c.blue, c.green, c.red, 0}}, 3, forward,
                       "RK_MatteBlackToMatteColorBGRA only works on 8bpc RK_EffectWorlds");
}
