// The chief header: pixels, records, codes, rectangles. Types only.
#ifndef RK_H
#define RK_H

#include "RK/host/GEO.h"
#include "RK/host/Long.h"

// ---- Result and thrown codes ----------------------------------------------------------------------------

constexpr RK_Long RK_kOK = 0;
constexpr RK_Long RK_kNoBroker = 1;          // the broker client could not start
constexpr RK_Long RK_kBadParam = 3;          // internal or parameter error, reported where it needs to be
constexpr RK_Long RK_kOutOfMemory = 4;
constexpr RK_Long RK_kUnknownMode = 5;       // a transfer mode that no lookup knows
constexpr RK_Long RK_kVersionMismatch = 7;
constexpr RK_Long RK_kNoBitmap = 513;        // a world without a backing bitmap was asked for it
constexpr RK_Long RK_kObsolete = 515;
constexpr RK_Long RK_kBadParamReported = 516;  // told to the user already
constexpr RK_Long RK_kUserAbort = 517;

// Every report's location is this ORed with a small number of the site.
constexpr uint32_t RK_kLocation = 0x250000;
constexpr uint32_t RK_kBadDepthLocation = 0x2503E7;

// ---- Pixels: alpha first at every depth -----------------------------------------------------------------

struct RK_Pixel8 {
    uint8_t alpha, red, green, blue;
};
// White is 32768, not 65535.
struct RK_Pixel16 {
    uint16_t alpha, red, green, blue;
};
// Nominally 0.0..1.0; colour may leave it.
struct RK_PixelFloat {
    float alpha, red, green, blue;
};
// An accumulator; no world has this depth.
struct RK_PixelDouble {
    double alpha, red, green, blue;
};
static_assert(sizeof(RK_Pixel8) == 4 && sizeof(RK_Pixel16) == 8, "pixels have no padding");
static_assert(sizeof(RK_PixelFloat) == 16 && sizeof(RK_PixelDouble) == 32, "pixels have no padding");

// ---- The plain image record -----------------------------------------------------------------------------

class RK_World;
struct RAS_World;

// Pixel (x, y) lies at data + y * rowbytes + x * pixel size. rowbytes may exceed the width and may be negative.
struct RK_LayerDef {
    uint32_t reserved0, reserved1;
    uint32_t world_flags;  // bit 0: depth 16; bits 24..31: pixel format index; others are carried along
    void* data;            // first pixel of row 0; null: an empty record
    int32_t rowbytes;
    int32_t width, height;
    GEO_Rect extent;  // region of interest in the world's own coordinates
    uint32_t reserved2;
    uint32_t ownership_stamp;
    RK_World* world_object;  // null when the record stands alone
    uint32_t reserved3[2];
    RAS_World** ras_world;  // backing bitmap, or null
    int32_t origin_x, origin_y;
    uint32_t reserved4[2];
};
using RK_EffectWorld = RK_LayerDef;

#define RK_ASSERT_OFFSET(record, field, on32, on64)                                                    \
    static_assert(offsetof(record, field) == (sizeof(void*) == 4 ? (on32) : (on64)), #record "." #field \
                                                                                     " has moved")
RK_ASSERT_OFFSET(RK_LayerDef, reserved0, 0, 0);
RK_ASSERT_OFFSET(RK_LayerDef, reserved1, 4, 4);
RK_ASSERT_OFFSET(RK_LayerDef, world_flags, 8, 8);
RK_ASSERT_OFFSET(RK_LayerDef, data, 12, 16);
RK_ASSERT_OFFSET(RK_LayerDef, rowbytes, 16, 24);
RK_ASSERT_OFFSET(RK_LayerDef, width, 20, 28);
RK_ASSERT_OFFSET(RK_LayerDef, height, 24, 32);
RK_ASSERT_OFFSET(RK_LayerDef, extent, 28, 36);
RK_ASSERT_OFFSET(RK_LayerDef, reserved2, 36, 44);
RK_ASSERT_OFFSET(RK_LayerDef, ownership_stamp, 40, 48);
RK_ASSERT_OFFSET(RK_LayerDef, world_object, 44, 56);
RK_ASSERT_OFFSET(RK_LayerDef, reserved3, 48, 64);
RK_ASSERT_OFFSET(RK_LayerDef, ras_world, 56, 72);
RK_ASSERT_OFFSET(RK_LayerDef, origin_x, 60, 80);
RK_ASSERT_OFFSET(RK_LayerDef, origin_y, 64, 84);
RK_ASSERT_OFFSET(RK_LayerDef, reserved4, 68, 88);
static_assert(sizeof(RK_LayerDef) == (sizeof(void*) == 4 ? 76 : 96), "RK_LayerDef has changed its size");

// ---- Progress -------------------------------------------------------------------------------------------

// The record of the internal passes; the pointer to it, and either function, may be null.
struct RK_ProgressInfo {
    void* refcon;
    RK_Long (*abort_func)(void* refcon);                                       // non-zero aborts
    RK_Long (*progress_func)(void* refcon, RK_Long current, RK_Long maximum);  // non-zero aborts
};

// What a plug-in holds of its effect. The first argument of many exports; most ignore it.
using RK_EffectRef = void*;

// What a plug-in receives from its host. The library reads two fields, the rest is the host's.
struct RK_EffectData {
    uint32_t reserved0[4];
    RK_Long (*progress_func)(RK_EffectRef effect_ref, RK_Long current, RK_Long maximum);  // 517 aborts; may be null
    uint32_t reserved1[18];
    RK_EffectRef effect_ref;  // handed back to progress_func
};
RK_ASSERT_OFFSET(RK_EffectData, progress_func, 16, 16);
RK_ASSERT_OFFSET(RK_EffectData, effect_ref, 92, 96);

// ---- Functions that a caller gives ----------------------------------------------------------------------

// Called for a pixel; `in` and `out` point at the world's pixel type and may be the same. Non-zero stops the pass.
using RK_PixelFunc = RK_Long(void* refcon, RK_Long x, RK_Long y, void* in, void* out);
// Called for part `i` of `iterations`; non-zero stops.
using RK_GenericFunc = RK_Long(void* refcon, RK_Long thread_index, RK_Long i, RK_Long iterations);

struct RK_LinearBlendingTables;

#endif
