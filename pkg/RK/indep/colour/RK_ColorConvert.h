// One pixel between RGB and the spaces HLS and YIQ, and measures of one pixel.
//
// A pixel in a space is three numbers of 16.16, 65536 being 1:
//   HLS: hue in degrees, 0 to 360; lightness; saturation       YIQ: Y; I and Q, signed
//
// Forms: _Straight takes 8 bits, _Straight16 16 bits, _StraightFloat float. _Premul takes a premultiplied
// pixel of 8 bits, divides its colours by its alpha (what exceeds full becomes full) and goes on as
// _Straight; the other way it gives an opaque pixel, and so alpha 255.
//
// `reference` is not read; the other pointers must not be null. Alpha is neither read nor, but for _Premul,
// written. A number that does not fit its 16.16, and NaN, becomes INT32_MIN. All return 0.
#ifndef RK_COLOR_CONVERT_H
#define RK_COLOR_CONVERT_H

#include "RK/indep/frame/RK.h"

// ---- HLS ------------------------------------------------------------------------------------------------

// Grey has hue and saturation 0; the hue of equal largest channels is that of red before green before blue.
RK_API RK_Long RK_RGBtoHLS_Straight(RK_EffectRef reference, const RK_Pixel8* in, int32_t hls[3]);
RK_API RK_Long RK_RGBtoHLS_Straight16(RK_EffectRef reference, const RK_Pixel16* in, int32_t hls[3]);
RK_API RK_Long RK_RGBtoHLS_StraightFloat(RK_EffectRef reference, const RK_PixelFloat* in, int32_t hls[3]);
RK_API RK_Long RK_RGBtoHLS_Premul(RK_EffectRef reference, const RK_Pixel8* in, int32_t hls[3]);

// Rounded to the nearest, not clamped: at 8 and 16 bits the low bits are stored.
RK_API RK_Long RK_HLStoRGB_Straight(RK_EffectRef reference, const int32_t hls[3], RK_Pixel8* out);
RK_API RK_Long RK_HLStoRGB_Straight16(RK_EffectRef reference, const int32_t hls[3], RK_Pixel16* out);
RK_API RK_Long RK_HLStoRGB_StraightFloat(RK_EffectRef reference, const int32_t hls[3], RK_PixelFloat* out);
RK_API RK_Long RK_HLStoRGB_Premul(RK_EffectRef reference, const int32_t hls[3], RK_Pixel8* out);

// ---- YIQ ------------------------------------------------------------------------------------------------

// Each product is rounded before the three are added.
RK_API RK_Long RK_RGBtoYIQ_Straight(RK_EffectRef reference, const RK_Pixel8* in, int32_t yiq[3]);
RK_API RK_Long RK_RGBtoYIQ_Straight16(RK_EffectRef reference, const RK_Pixel16* in, int32_t yiq[3]);
RK_API RK_Long RK_RGBtoYIQ_StraightFloat(RK_EffectRef reference, const RK_PixelFloat* in, int32_t yiq[3]);
RK_API RK_Long RK_RGBtoYIQ_Premul(RK_EffectRef reference, const RK_Pixel8* in, int32_t yiq[3]);

// Clamped at 8 and 16 bits.
RK_API RK_Long RK_YIQtoRGB_Straight(RK_EffectRef reference, const int32_t yiq[3], RK_Pixel8* out);
RK_API RK_Long RK_YIQtoRGB_Straight16(RK_EffectRef reference, const int32_t yiq[3], RK_Pixel16* out);
RK_API RK_Long RK_YIQtoRGB_StraightFloat(RK_EffectRef reference, const int32_t yiq[3], RK_PixelFloat* out);
RK_API RK_Long RK_YIQtoRGB_Premul(RK_EffectRef reference, const int32_t yiq[3], RK_Pixel8* out);

// ---- Measures -------------------------------------------------------------------------------------------

// 30 red + 59 green + 11 blue, unscaled: up to 25500 at 8 bits, 3276800 at 16. Float: 0.299, 0.587, 0.114.
RK_API RK_Long RK_Luminance_Straight(RK_EffectRef reference, const RK_Pixel8* in, uint32_t* luminance);
RK_API RK_Long RK_Luminance_Straight16(RK_EffectRef reference, const RK_Pixel16* in, uint32_t* luminance);
RK_API RK_Long RK_Luminance_StraightFloat(RK_EffectRef reference, const RK_PixelFloat* in, float* luminance);
RK_API RK_Long RK_Luminance_Premul(RK_EffectRef reference, const RK_Pixel8* in, uint32_t* luminance);

// The hue of HLS, the whole circle being 255, at 16 bits too; at float 1.
RK_API RK_Long RK_Hue_Straight(RK_EffectRef reference, const RK_Pixel8* in, uint32_t* hue);
RK_API RK_Long RK_Hue_Straight16(RK_EffectRef reference, const RK_Pixel16* in, uint32_t* hue);
RK_API RK_Long RK_Hue_StraightFloat(RK_EffectRef reference, const RK_PixelFloat* in, float* hue);
RK_API RK_Long RK_Hue_Premul(RK_EffectRef reference, const RK_Pixel8* in, uint32_t* hue);

// The mean of the largest and the smallest channel, rounded down.
RK_API RK_Long RK_Lightness_Straight(RK_EffectRef reference, const RK_Pixel8* in, uint32_t* lightness);
RK_API RK_Long RK_Lightness_Straight16(RK_EffectRef reference, const RK_Pixel16* in, uint32_t* lightness);
RK_API RK_Long RK_Lightness_StraightFloat(RK_EffectRef reference, const RK_PixelFloat* in, float* lightness);
RK_API RK_Long RK_Lightness_Premul(RK_EffectRef reference, const RK_Pixel8* in, uint32_t* lightness);

// Not the saturation of HLS: the spread of the channels times twice the distance of their middle from black
// or white, whichever is nearer.
RK_API RK_Long RK_Saturation_Straight(RK_EffectRef reference, const RK_Pixel8* in, uint32_t* saturation);
RK_API RK_Long RK_Saturation_Straight16(RK_EffectRef reference, const RK_Pixel16* in, uint32_t* saturation);
RK_API RK_Long RK_Saturation_StraightFloat(RK_EffectRef reference, const RK_PixelFloat* in,
                                           float* saturation);
RK_API RK_Long RK_Saturation_Premul(RK_EffectRef reference, const RK_Pixel8* in, uint32_t* saturation);

#endif
