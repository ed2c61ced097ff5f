// Rows of deep pixels taken down to 8 bits, with and without the package's noise.
#ifndef RKP_DITHER_H
#define RKP_DITHER_H

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Globals.h"

// The package's noise, drawn word by word. The package's own cursor moves on when this ends, so there is one
// at a time; the package must live.
class RKp_NoiseDraws {
  public:
    RKp_NoiseDraws() = default;
    ~RKp_NoiseDraws() { RKp_G_Noise.cursor = noise_.cursor; }
    RKp_NoiseDraws(const RKp_NoiseDraws&) = delete;
    RKp_NoiseDraws& operator=(const RKp_NoiseDraws&) = delete;
    // The cursor moves, wraps at the end, and is read then.
    uint32_t next() {
        if (++noise_.cursor == noise_.end) noise_.cursor = noise_.begin;
        return *noise_.cursor;
    }

  private:
    RKp_NoiseTable noise_ = RKp_G_Noise;
};

// A word read as unsigned, times 2^-40.
inline float RKp_FloatNoise(uint32_t word) {
    auto n = static_cast<float>(static_cast<int32_t>(word));
    if (n < 0.0f) n += 4294967296.0f;
    return n * 9.094947e-13f;
}

// A channel is (255 c + n) >> 15; n is 16384, or when dithered the low 15 bits of a word of its own. Words
// are drawn for alpha, red, green, blue.
void RKp_Row16To8(const RK_Pixel16* src, int32_t count, bool dither, RK_Pixel8* out);

// Words are drawn for alpha, red, blue, green; the noise of one, less 1/512, is added to its channel. Where
// the processor record allows vector code and the source lies on a 16-byte boundary the SSE2 form runs.
void RKp_RowFloatTo8(const RK_PixelFloat* src, int32_t count, bool dither, RK_Pixel8* out);

// Adds 0.5 and truncates. Alpha without dither is not held to 0..255: its low bits are stored.
void RKp_RowFloatTo8_Static(const RK_PixelFloat* src, int32_t count, bool dither, RK_Pixel8* out);
// Takes the nearest whole number, ties to even; every channel is held. The source lies on a 16-byte boundary.
void RKp_RowFloatTo8_SSE2(const RK_PixelFloat* src, int32_t count, bool dither, RK_Pixel8* out);

#endif
