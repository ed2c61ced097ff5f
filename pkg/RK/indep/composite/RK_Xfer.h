// Transfer modes: their numbers, the records that carry one, and the plan that drives a composite's rows.
#ifndef RK_XFER_H
#define RK_XFER_H

#include "RK/indep/frame/RK.h"

// ---- Mode numbers: RK_Xfer_Replace (-3) to RK_Xfer_DarkerColour (36) ------------------------------------
enum RK_Xfer : int32_t {
    RK_Xfer_Replace = -3,
    RK_Xfer_MatteMix,
    RK_Xfer_None,  // refused by every lookup
    RK_Xfer_Copy,
    RK_Xfer_Behind,
    RK_Xfer_Over,
    RK_Xfer_Dissolve,
    RK_Xfer_Add,
    RK_Xfer_Multiply,
    RK_Xfer_Screen,
    RK_Xfer_Overlay,
    RK_Xfer_SoftLight,
    RK_Xfer_HardLight,
    RK_Xfer_Darken,
    RK_Xfer_Lighten,
    RK_Xfer_ClassicDifference,
    RK_Xfer_Hue,
    RK_Xfer_Saturation,
    RK_Xfer_Colour,
    RK_Xfer_Luminosity,
    RK_Xfer_StencilAlpha,
    RK_Xfer_StencilLuma,
    RK_Xfer_SilhouetteAlpha,
    RK_Xfer_SilhouetteLuma,
    RK_Xfer_PremulOver,
    RK_Xfer_AlphaAdd,
    RK_Xfer_ClassicDodge,
    RK_Xfer_ClassicBurn,
    RK_Xfer_Exclusion,
    RK_Xfer_Difference,
    RK_Xfer_Dodge,
    RK_Xfer_Burn,
    RK_Xfer_LinearDodge,
    RK_Xfer_LinearBurn,
    RK_Xfer_LinearLight,
    RK_Xfer_VividLight,
    RK_Xfer_PinLight,
    RK_Xfer_HardMix,
    RK_Xfer_LighterColour,
    RK_Xfer_DarkerColour
};
constexpr int32_t RK_kFirstMode = RK_Xfer_Replace;
constexpr int32_t RK_kLastMode = RK_Xfer_DarkerColour;

// A mode's property as hosts read it: 1 or 0; 0 for every number above 25 or outside the modes.
RK_API RK_Long RK_GetTransferFlags(RK_Long mode);

// What every mode of a class does around its arithmetic.
enum RK_ModeClass : int32_t {
    RK_kModeRefused,
    RK_kModePlain,      // writes what it writes
    RK_kModeGuard,      // writes alpha, which rgb_only saves and restores
    RK_kModeOverFirst,  // the source goes behind first; then colour changes
    RK_kModeWrapBlack,  // blends against a neutral black, white or grey
    RK_kModeWrapWhite,
    RK_kModeWrapGrey
};
struct RK_ModeInfo {
    const char* name;  // without prefix, such as "Over"
    const char* does;  // one line for people
    RK_ModeClass mode_class;
    int32_t flag;
};
// Tells of a mode -3..36, the refused -1 included; 3 for any other number or a null `info`, nothing written.
RK_API RK_Long RK_GetModeInfo(RK_Long mode, RK_ModeInfo* info);

// ---- Records --------------------------------------------------------------------------------------------

// The plain record of hosts and plug-ins: twelve bytes, shared across that door.
struct RK_CompositeMode {
    int32_t xfer;
    int32_t rand_seed;   // of RK_Xfer_Dissolve
    uint8_t opacity;     // 255 is opaque
    uint8_t rgb_only;    // non-zero: the destination alpha survives unchanged
    uint16_t opacity16;  // 32768 is opaque
};
static_assert(sizeof(RK_CompositeMode) == 12 && offsetof(RK_CompositeMode, opacity) == 8 &&
                  offsetof(RK_CompositeMode, rgb_only) == 9 && offsetof(RK_CompositeMode, opacity16) == 10,
              "RK_CompositeMode has changed");

// The record that no depth limits. Its first ten bytes lie as the plain record's.
struct RK_API RK_CompositeModePlus {
    // Leaves every field as it finds it.
    RK_CompositeModePlus() {}  // NOLINT: on purpose
    RK_CompositeModePlus(RK_Long xfer, float opacity, const RK_LinearBlendingTables* tables, bool rgb_only,
                         RK_Long rand_seed);
    // The 16-bit opacity wins unless the two fields disagree by a whole 8-bit step. Does not write `tables`.
    explicit RK_CompositeModePlus(const RK_CompositeMode& plain);

    int32_t xfer;
    int32_t rand_seed;
    uint8_t reserved;
    uint8_t rgb_only;
    const RK_LinearBlendingTables* tables;  // null: blend in the pixels' own encoding
    float opacity;                          // 0.0..1.0
};
RK_ASSERT_OFFSET(RK_CompositeModePlus, xfer, 0, 0);
RK_ASSERT_OFFSET(RK_CompositeModePlus, rand_seed, 4, 4);
RK_ASSERT_OFFSET(RK_CompositeModePlus, rgb_only, 9, 9);
RK_ASSERT_OFFSET(RK_CompositeModePlus, tables, 12, 16);
RK_ASSERT_OFFSET(RK_CompositeModePlus, opacity, 16, 24);

template <class P>
struct RK_ChannelOf;
template <>
struct RK_ChannelOf<RK_Pixel8> {
    using Type = uint8_t;
};
template <>
struct RK_ChannelOf<RK_Pixel16> {
    using Type = uint16_t;
};
template <>
struct RK_ChannelOf<RK_PixelFloat> {
    using Type = float;
};
template <class P>
using RK_Channel = typename RK_ChannelOf<P>::Type;

// The record at one depth. Opaque is 255, 32768 or 1.0.
template <class P>
struct RK_BlendingMode {
    int32_t xfer;
    int32_t rand_seed;
    RK_Channel<P> opacity;
    uint8_t rgb_only;
};
// opacity * full + 0.5 in float, truncated and stored without a clamp.
template <class P>
RK_API RK_BlendingMode<P> RK_MakeBlendingMode(const RK_CompositeModePlus& mode);

template <class P>
struct RK_BlendModeDescriptor;

// Composites `count` pixels of `src` onto `out`, which is read and written. Of `matte` only alpha is read; it may
// be null where the lookup was asked for no matte. 0 or an error. A count below 1 does nothing.
template <class P>
using RK_RowFunc = RK_Long(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                           const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out);

template <class P>
struct RK_InnerBlendingFunc {
    RK_RowFunc<P>* func;
};

// Looks up a mode's row function. -1 and numbers outside -3..36: "unimplemented blending mode." is reported, the
// result is 5 and `out` is not written. 3 for a null `out`.
template <class P, bool has_matte, bool linear>
RK_API RK_Long RK_GetInnerBlendingFunc(RK_Long mode, RK_InnerBlendingFunc<P>* out);

// The plan: made once per composite, it drives every row.
template <class P>
struct RK_API RK_BlendModeDescriptor {
    // A refused mode is reported, and leaves the plan without class and with a null mode_func.
    RK_BlendModeDescriptor(RK_BlendingMode<P>& mode, bool has_matte, const RK_LinearBlendingTables* tables);
    // The default body behind it: makes the plan in the memory at `self`. An empty lookup slot is reported, and 3 is
    // thrown.
    static void Make_S(RK_BlendModeDescriptor* self, RK_BlendingMode<P>& mode, bool has_matte,
                       const RK_LinearBlendingTables* tables);

    RK_BlendingMode<P> mode;
    RK_RowFunc<P>* over_func;                                  // of RK_Xfer_Behind, in the same variant
    RK_Long (*pre_scan)(RK_Long count, const P* src, P* dst);  // null outside the wrap classes
    RK_Long (*post_scan)(RK_Long count, const P* src, P* dst);
    RK_RowFunc<P>* mode_func;
    RK_Long (*alpha_merge)(RK_Long count, const P* src, RK_Channel<P> opacity, const P* matte, P* out);
    uint8_t wrap_neutral;  // pre_scan first, post_scan last
    uint8_t over_first;    // over_func before mode_func
    uint8_t guard_alpha;   // rgb_only must save and restore alpha
    uint8_t merge_alpha;   // the mode leaves alpha alone: alpha_merge must run
    const RK_LinearBlendingTables* tables;
};

// ---- One pixel ------------------------------------------------------------------------------------------
// Slot n holds mode n, 0..36; 37 to 39 are null; the negative modes have no form for one pixel. `tables` null: the
// pixels' own encoding.

constexpr int32_t RK_kPixelTableSize = 40;
template <class P>
using RK_PixelXfer = void(const P* src, const RK_LinearBlendingTables* tables, P* dst);
template <class P>
using RK_PixelXferOpacity = void(const P* src, const RK_LinearBlendingTables* tables, RK_Channel<P> opacity, P* dst);
template <class P>
using RK_PixelXferOpacity2 = void(const P* src, const RK_LinearBlendingTables* tables, RK_Channel<P> opacity1,
                                  RK_Channel<P> opacity2, P* dst);

RK_API extern RK_PixelXfer<RK_Pixel8>* const RKp_G_Xfer1_table8[RK_kPixelTableSize];
RK_API extern RK_PixelXfer<RK_Pixel16>* const RKp_G_Xfer1_table16[RK_kPixelTableSize];
RK_API extern RK_PixelXfer<RK_PixelFloat>* const RKp_G_Xfer1_tableF[RK_kPixelTableSize];
RK_API extern RK_PixelXferOpacity<RK_Pixel8>* const RKp_G_Xfer1_Opacity_table8[RK_kPixelTableSize];
RK_API extern RK_PixelXferOpacity<RK_Pixel16>* const RKp_G_Xfer1_Opacity_table16[RK_kPixelTableSize];
RK_API extern RK_PixelXferOpacity<RK_PixelFloat>* const RKp_G_Xfer1_Opacity_tableF[RK_kPixelTableSize];
RK_API extern RK_PixelXferOpacity2<RK_Pixel8>* const RKp_G_Xfer1_Opacity2_table8[RK_kPixelTableSize];
RK_API extern RK_PixelXferOpacity2<RK_Pixel16>* const RKp_G_Xfer1_Opacity2_table16[RK_kPixelTableSize];
RK_API extern RK_PixelXferOpacity2<RK_PixelFloat>* const RKp_G_Xfer1_Opacity2_tableF[RK_kPixelTableSize];

#endif
