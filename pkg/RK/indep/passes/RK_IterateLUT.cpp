#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/passes/RKp_IterateRowsT.h"
#include "RK/indep/world/RK_WorldXT.h"

namespace {

struct Tables {
    const uint8_t *alpha, *red, *green, *blue;
};

// `in` may be `out`.
void LookUpRow(int32_t x, int32_t end, const RK_Pixel8* in, const Tables& tables, RK_Pixel8* out) {
    for (; x < end; ++x) {
        const RK_Pixel8 p = in[x];
        out[x] = {tables.alpha[p.alpha], tables.red[p.red], tables.green[p.green], tables.blue[p.blue]};
    }
}

// Kept: the flag is the only depth test, so a float world passes.
bool Unfit(const RK_LayerDef& world) { return world.data == nullptr || (world.world_flags & 1) != 0; }

}  // namespace

RK_Long RK_IterateLUT_Static(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                             RK_LayerDef* src, const GEO_Rect* rect, const uint8_t* a_lut,
                             const uint8_t* r_lut, const uint8_t* g_lut, const uint8_t* b_lut,
                             RK_LayerDef* dst) {
    if ((src != nullptr && Unfit(*src)) || dst == nullptr || Unfit(*dst))
        return RKp_ReportBadParam(RKp_kSiteIterate);

    uint8_t identity[256];
    for (int32_t i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
    const auto orIdentity = [&](const uint8_t* table) { return table != nullptr ? table : identity; };
    const Tables tables = {orIdentity(a_lut), orIdentity(r_lut), orIdentity(g_lut), orIdentity(b_lut)};

    RK_WorldX<RK_Pixel8> from(src != nullptr ? src : dst, false);
    RK_WorldX<RK_Pixel8> to(dst, false);
    const RKp_IterateArea source = RKp_PlaceSource(from.record, {0, 0});
    RKp_IterateArea area;
    if (!RKp_IterateClip(rect, to.record, src != nullptr ? &source : nullptr, area)) return RK_kOK;
    return RKp_AtBorder([&] {
        return RKp_WalkRows(area, {effect_data, progress_base, progress_final}, [&](int32_t y, RK_Long&) {
            LookUpRow(area.left, area.right, from.row(y), tables, to.row(y));
            return true;
        });
    });
}
