#include "RK/indep/filter/RK_GuessAlpha.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "RK/indep/filter/RKp_AlphaAnalysis.h"
#include "RK/indep/filter/RKp_LockedBitmap.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

struct Guess {
    RK_AlphaKind kind;
    RK_Pixel8 matte;
};

uint8_t mostFrequent(const uint32_t (&histogram)[256]) {
    return static_cast<uint8_t>(std::max_element(histogram, histogram + 256) -
                                histogram);  // the lowest of equals
}

Guess guess(const RKp_AlphaAnalysis& a) {
    if (a.visible_count == 0) return {RK_kAlphaUndetermined, {}};
    const RK_Pixel8& faint = *a.min_alpha_pixel;
    const auto near = [&](const RK_Pixel8& matte) {
        const auto within = [&](int32_t c, int32_t k) { return std::abs(k - c) <= a.min_alpha; };
        return within(faint.red, matte.red) && within(faint.green, matte.green) &&
               within(faint.blue, matte.blue);
    };
    const RK_Pixel8 white = {255, 255, 255, 255}, black = {255, 0, 0, 0};
    if (a.white_clear != 0 && a.white_clear == a.clear_count && near(white))
        return {RK_kAlphaPremultiplied, white};
    if (a.black_clear != 0 && a.black_clear == a.clear_count && !a.colour_exceeds_alpha)
        return {RK_kAlphaPremultiplied, black};
    if (a.other_clear != 0 && !a.clear_colours_vary && a.visible_colours_vary) {
        const RK_Pixel8 matte = {255, mostFrequent(a.hist_r), mostFrequent(a.hist_g), mostFrequent(a.hist_b)};
        if (near(matte)) return {RK_kAlphaPremultiplied, matte};
    }
    return {RK_kAlphaStraight, {}};
}

Guess guessOf(RAS_World** bitmap, const RK_LayerDef* layer) {
    if (bitmap == nullptr) return guess(RKp_AnalyseAlpha(*layer));
    const RKp_LockedBitmap pixels(bitmap);
    return guess(RKp_AnalyseAlpha(pixels.Record()));
}

}  // namespace

RK_Long RK_GuessAlphaMessage(RAS_World** bitmap, const RK_LayerDef* layer, void*, int32_t* kind,
                             RK_Pixel8* matte, char* message) {
    if (message != nullptr) *message = '\0';
    const bool known = bitmap != nullptr
                           ? RKp_LockedBitmap::Takes(bitmap)
                           : layer != nullptr && layer->data != nullptr && RKp_WorldDepth(layer) == 8;
    if (!known || kind == nullptr) return RKp_ReportBadParam(RKp_kSiteGuessAlpha);
    return RKp_AtBorder([&] {
        const Guess found = guessOf(bitmap, layer);
        *kind = found.kind;
        if (found.kind == RK_kAlphaPremultiplied && matte != nullptr) *matte = found.matte;
        if (found.kind == RK_kAlphaUndetermined && message != nullptr)
            std::snprintf(message, RK_kGuessAlphaMessageBytes, "%s", RKp_Text(RK_kMsg_CannotGuessAlpha));
    });
}

RK_Long RK_GuessAlpha(RAS_World** bitmap, const RK_LayerDef* layer, void* reserved, int32_t* kind,
                      RK_Pixel8* matte) {
    return RK_GuessAlphaMessage(bitmap, layer, reserved, kind, matte, nullptr);
}
