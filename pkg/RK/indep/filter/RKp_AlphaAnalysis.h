// What a pass over an image's pixels finds out about its alpha.
#ifndef RKP_ALPHA_ANALYSIS_H
#define RKP_ALPHA_ANALYSIS_H

#include "RK/indep/frame/RK.h"

// "Clear" pixels have alpha 0, "visible" ones another.
struct RKp_AlphaAnalysis {
    uint32_t hist_r[256], hist_g[256], hist_b[256];  // colours of the clear pixels
    bool clear_colours_vary;
    bool visible_colours_vary;
    bool colour_exceeds_alpha;  // some visible pixel has a colour channel above its alpha
    uint8_t min_alpha;          // the lowest of the visible pixels; 255 without one
    uint32_t white_clear, black_clear, other_clear;
    uint32_t visible_count, clear_count;
    const RK_Pixel8*
        min_alpha_pixel;  // the first visible pixel with min_alpha; the image's first while that is 255
};

// Looks at every pixel of an 8-bit image, whose data is not null.
RKp_AlphaAnalysis RKp_AnalyseAlpha(const RK_LayerDef& image);

#endif
