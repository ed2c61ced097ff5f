#include "RK/indep/world/RKp_Dither.h"

#include "RK/host/KIT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"

namespace {

uint8_t withNoise(uint16_t c, uint32_t word) {
    return static_cast<uint8_t>((uint32_t{c} * 255u + (word & 0x7FFFu)) >> 15);
}

uint8_t withNoise(float x, uint32_t word) {
    return static_cast<uint8_t>(RKp_ColourFromFloat((x - 0.001953125f) + RKp_FloatNoise(word), 255.0f));
}

template <class P>
void convertRow(const P* src, int32_t count, RK_Pixel8* out) {
    for (int32_t x = 0; x < count; ++x) out[x] = RKp_ConvertPixel<RK_Pixel8>(src[x]);
}

}  // namespace

void RKp_Row16To8(const RK_Pixel16* src, int32_t count, bool dither, RK_Pixel8* out) {
    if (!dither) return convertRow(src, count, out);
    RKp_NoiseDraws noise;
    for (int32_t x = 0; x < count; ++x) {
        const RK_Pixel16 s = src[x];
        const uint32_t alpha = noise.next(), red = noise.next(), green = noise.next(), blue = noise.next();
        out[x] = {withNoise(s.alpha, alpha), withNoise(s.red, red), withNoise(s.green, green),
                  withNoise(s.blue, blue)};
    }
}

void RKp_RowFloatTo8_Static(const RK_PixelFloat* src, int32_t count, bool dither, RK_Pixel8* out) {
    if (!dither) return convertRow(src, count, out);
    RKp_NoiseDraws noise;
    for (int32_t x = 0; x < count; ++x) {
        const RK_PixelFloat s = src[x];
        // Kept: blue is drawn before green.
        const uint32_t alpha = noise.next(), red = noise.next(), blue = noise.next(), green = noise.next();
        out[x] = {withNoise(s.alpha, alpha), withNoise(s.red, red), withNoise(s.green, green),
                  withNoise(s.blue, blue)};
    }
}

// Kept: rows of one world may take different forms, by where they lie.
void RKp_RowFloatTo8(const RK_PixelFloat* src, int32_t count, bool dither, RK_Pixel8* out) {
    const bool vector = KIT_G_CPU_DataP->has_sse2 != 0 && reinterpret_cast<uintptr_t>(src) % 16 == 0;
    (vector ? RKp_RowFloatTo8_SSE2 : RKp_RowFloatTo8_Static)(src, count, dither, out);
}
