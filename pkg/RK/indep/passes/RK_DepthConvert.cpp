#include "RK/indep/passes/RK_DepthConvert.h"

#include <type_traits>

#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RKp_CopyArea.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"

namespace {

// The rule of the world converter, by destination and source; what is not told here is that of all passes.
template <class To, class From>
struct Convert {
    static To pixel(const From& p) { return RKp_ConvertPixel<To>(p); }
};

// The values of RKp_8To16 by another formula, which 32 bits hold and vector code can do.
uint16_t widened(uint8_t c) { return static_cast<uint16_t>((uint32_t{c} * 0x808080u + 33200u) >> 16); }
template <>
struct Convert<RK_Pixel16, RK_Pixel8> {
    static RK_Pixel16 pixel(const RK_Pixel8& p) {
        return {widened(p.alpha), widened(p.red), widened(p.green), widened(p.blue)};
    }
};

// Kept: alpha goes by a float product, the colours by a double one.
template <>
struct Convert<RK_PixelFloat, RK_Pixel8> {
    static RK_PixelFloat pixel(const RK_Pixel8& p) {
        return {static_cast<float>(p.alpha) * 0.003921569f, RKp_8ToFloat(p.red), RKp_8ToFloat(p.green),
                RKp_8ToFloat(p.blue)};
    }
};

template <class To, class From>
void convertRows(const RK_LayerDef& src, const RK_LayerDef& dst) {
    for (int32_t y = 0; y < src.height; ++y) {
        const From* const in = reinterpret_cast<const From*>(RKp_CopyRow(src, y));
        To* const out = reinterpret_cast<To*>(RKp_CopyRowOut(dst, y));
        for (int32_t x = 0; x < src.width; ++x) out[x] = Convert<To, From>::pixel(in[x]);
    }
}

template <class To, class From>
void convertWorld(const RK_LinearBlendingTables* tables, const RK_LayerDef& src, const RK_LayerDef& dst) {
    if constexpr (sizeof(To) == sizeof(From)) {
        if (src.width > 0 && src.height > 0) RKp_MoveWorld(src, dst, sizeof(To));
    } else {
        constexpr bool through_tables =
            sizeof(To) == sizeof(RK_PixelFloat) || sizeof(From) == sizeof(RK_PixelFloat);
        if (through_tables && tables != nullptr)
            RKp_VERIFICATION("Invalid tables for linearized blending");
        else
            convertRows<To, From>(src, dst);
    }
}

}  // namespace

void RK_DepthConvertWorld(const RK_LinearBlendingTables* tables, const RK_World* src, RK_World* dst) {
    if (src == nullptr || dst == nullptr) {
        RKp_VERIFICATION("Bad parameter to RK_DepthConvertWorld()");
        return;
    }
    if (src->record.width != dst->record.width || src->record.height != dst->record.height) return;
    const bool known = RK_WorldKinds::WithKind(src->Depth(), [](auto*) {}) &&
                       RK_WorldKinds::WithKind(dst->Depth(), [](auto*) {});
    if (!known) {
        RKp_VERIFICATION("Unknown bit depth attempting to depth convert.");
        return;
    }
    if (src->record.data == nullptr || dst->record.data == nullptr) return;
    RK_WorldKinds::WithKind(src->Depth(), [&](auto* from) {
        RK_WorldKinds::WithKind(dst->Depth(), [&](auto* to) {
            convertWorld<typename std::remove_pointer_t<decltype(to)>::Pixel,
                         typename std::remove_pointer_t<decltype(from)>::Pixel>(tables, src->record,
                                                                                dst->record);
        });
    });
}

void RK_ResetDitherRandomIndex() { RKp_G_Noise.cursor = RKp_G_Noise.begin; }
