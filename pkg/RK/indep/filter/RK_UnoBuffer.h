// Single-channel images: the masks that shapes and mattes are built on.
#ifndef RK_UNO_BUFFER_H
#define RK_UNO_BUFFER_H

#include "RK/host/KIT.h"
#include "RK/indep/frame/RK.h"

constexpr uint32_t RK_kUnoMagic = 0xFEEDABBA;

// Samples of one channel, row after row without padding. Full scale is 255 at depth 8, 32768 at 16, 1.0
// at 32.
struct RK_API RK_UnoBuffer {
    // Owns a store of width * height * depth / 8 bytes, its samples not set; a depth of 0 takes 2 bytes a
    // sample and one of 1 takes 1. Throws 4 when the store cannot be had, also for a negative size.
    RK_UnoBuffer(int32_t width, int32_t height, int32_t depth);
    // A damaged buffer is reported, and its store freed all the same.
    ~RK_UnoBuffer();
    RK_UnoBuffer(const RK_UnoBuffer&) = delete;
    RK_UnoBuffer& operator=(const RK_UnoBuffer&) = delete;

    int64_t Rowbytes() const { return int64_t{width} * depth / 8; }
    // The first sample of row y; `pixels` must not be null. Holds until the store is moved.
    template <class Sample>
    Sample* Row(int32_t y) const {
        return reinterpret_cast<Sample*>(static_cast<uint8_t*>(*pixels) +
                                         static_cast<ptrdiff_t>(y * Rowbytes()));
    }

    uint32_t magic;  // RK_kUnoMagic while the buffer lives
    int32_t width, height;
    uint32_t reserved;  // zero
    KIT_Handle pixels;  // owned
    int32_t depth;      // bits per sample
};
RK_ASSERT_OFFSET(RK_UnoBuffer, magic, 0, 0);
RK_ASSERT_OFFSET(RK_UnoBuffer, width, 4, 4);
RK_ASSERT_OFFSET(RK_UnoBuffer, height, 8, 8);
RK_ASSERT_OFFSET(RK_UnoBuffer, reserved, 12, 12);
RK_ASSERT_OFFSET(RK_UnoBuffer, pixels, 16, 16);
RK_ASSERT_OFFSET(RK_UnoBuffer, depth, 20, 24);
static_assert(sizeof(RK_UnoBuffer) == (sizeof(void*) == 4 ? 24 : 32), "RK_UnoBuffer has changed its size");

// How a source sample s and a destination sample d combine; ~x is full - x.
enum RK_UnoMode : int32_t {
    RK_kUnoDither = -1,     // the union, its rounding dithered by the package's noise
    RK_kUnoUnion = 1,       // ~(~s * ~d); unknown numbers count as this
    RK_kUnoSubtract = 2,    // ~s * d
    RK_kUnoIntersect = 3,   // s * d
    RK_kUnoLighten = 4,     // the larger
    RK_kUnoDarken = 5,      // the smaller
    RK_kUnoDifference = 6,  // |s - d|
    RK_kUnoAdd = 7          // s + d, at most full
};

// Common to the operations below. A buffer whose magic is wrong is reported and used all the same. A null
// buffer, or one without a store, is reported, and the result is 3 with nothing done. Sizes below 1 are of no
// samples. Where a pass takes `progress` (null: none) it checks in after each row i, from 0, whose low six
// bits are all set, with i and the number of rows; a non-zero answer is the result, and rows done stay done.

// ---- Making ---------------------------------------------------------------------------------------------

// A buffer of depth 8, or 16, its samples not set. 0; 4 without memory, also for a negative size; 3,
// reported, for a null `out`. On failure *out is null.
RK_API RK_Long RK_NewUnoBuffer(int32_t width, int32_t height, RK_UnoBuffer** out);
RK_API RK_Long RK_NewDeepUnoBuffer(int32_t width, int32_t height, RK_UnoBuffer** out);
// Frees a buffer made by these two; null is allowed and gives 0. A damaged one is reported and freed all the
// same.
RK_API RK_Long RK_DisposeUnoBuffer(RK_UnoBuffer* buffer);

// ---- Filling --------------------------------------------------------------------------------------------
// Every row of the buffer, or of `rect`, which must lie inside it: it is not clipped. A rectangle without
// area is filled nowhere. A value narrower than the buffer's samples goes, at its own width, into the first
// bytes of each row; one that is wider gives 3 with nothing written.

RK_API RK_Long RK_FillUnoBuffer(uint8_t value, RK_UnoBuffer* buffer);
RK_API RK_Long RK_FillUnoBuffer(uint8_t value, const GEO_Rect& rect, RK_UnoBuffer* buffer);
RK_API RK_Long RK_FillDeepUnoBuffer(uint16_t value, RK_UnoBuffer* buffer);
RK_API RK_Long RK_FillDeepUnoBuffer(uint16_t value, const GEO_Rect& rect, RK_UnoBuffer* buffer);
RK_API RK_Long RK_FillFloatUnoBuffer(float value, RK_UnoBuffer* buffer);

// ---- Fading and inverting -------------------------------------------------------------------------------

// Each sample becomes full minus itself. A float buffer is left alone and gives 0; depths other than 8, 16,
// 32 give 3.
RK_API RK_Long RK_InvertUnoBuffer(RK_ProgressInfo* progress, RK_UnoBuffer* buffer);
// The same, and then times `amount`, 16.16 with 0x10000 as one. An amount outside 0..0x10000 leaves the
// range, and the low bits are stored.
RK_API RK_Long RK_InvertAndFadeUnoBuffer(RK_ProgressInfo* progress, int32_t amount, RK_UnoBuffer* buffer);
// Each sample times `amount`, which is first rounded to the depth's scale; at float it is taken as it is.
// Does not call progress. Depths other than 8, 16, 32 give 3.
RK_API RK_Long RK_FadeUnoBuffer(RK_ProgressInfo* progress, float amount, RK_UnoBuffer* buffer);

// ---- Combining ------------------------------------------------------------------------------------------
// `rect` of the source is laid onto the destination with its top left at `point`; what lies outside either
// buffer is cut off, and when nothing is left the result is 0 with nothing done. Modes 3 and 5 also clear all
// of the destination that the rectangle does not reach. The buffers are different ones, or one used in place:
// `point` is the rectangle's own top left.

// dst = mode(src, dst). From 8 bits to 8, or from 16 to 16; also from 8 to 16 in mode 7. Other depths give 3
// with nothing written.
RK_API RK_Long RK_AccumulateUnoBuffers(RK_ProgressInfo* progress, const RK_UnoBuffer* src, int32_t mode,
                                       const GEO_Rect& rect, const Point& point, RK_UnoBuffer* dst);
// With `limit` and `opacity`, fractions of full. Where both are full it is the plain form. Otherwise the
// source is scaled by `opacity` and added, whatever the mode; in mode -1 it moves the destination towards
// `limit` instead, and what has reached that stays.
RK_API RK_Long RK_AccumulateUnoBuffers(RK_ProgressInfo* progress, const RK_UnoBuffer* src, int32_t mode,
                                       float limit, float opacity, const GEO_Rect& rect, const Point& point,
                                       RK_UnoBuffer* dst);
// dst = mode(src_a, src_b), both read at the rectangle's own place. The three depths must be equal, 8, 16 or
// 32; others give 3 with nothing written. At float mode -1 is a plain union.
RK_API RK_Long RK_TransferUnoBuffers(RK_ProgressInfo* progress, const RK_UnoBuffer* src_a,
                                     const RK_UnoBuffer* src_b, int32_t mode, const GEO_Rect& rect,
                                     const Point& point, RK_UnoBuffer* dst);

// The samples of a 16-bit source in `rect`, cut to both buffers, divided by `divisor` and moved to the
// destination's depth. A source of another depth, or a destination not of 8, 16 or 32 bits, gives 0 with
// nothing done. A divisor of 0 gives 3.
RK_API RK_Long RK_ConvertDeepUnoBuffer(RK_ProgressInfo* progress, const RK_UnoBuffer* src,
                                       const GEO_Rect& rect, uint16_t divisor, RK_UnoBuffer* dst);

#endif
