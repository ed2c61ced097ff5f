// How an image's alpha channel is to be read, told from its pixels.
#ifndef RK_GUESS_ALPHA_H
#define RK_GUESS_ALPHA_H

#include "RK/indep/frame/RK.h"

enum RK_AlphaKind : int32_t {
    RK_kAlphaStraight = 0,
    RK_kAlphaPremultiplied = 1,  // against the matte colour told with it
    RK_kAlphaUndetermined = 2    // nothing is visible
};

// What a message buffer must hold; a longer text is cut.
constexpr size_t RK_kGuessAlphaMessageBytes = 256;

// Looks at an image of 8 bits a channel: the bitmap, which is locked meanwhile, or where that is null the
// layer. A nearly transparent pixel of a premultiplied image lies close to the matte, at most its own alpha
// away; on that, and on the colours of the transparent pixels, stands the guess. `matte` is written with
// RK_kAlphaPremultiplied alone, opaque; it may be null. `reserved` is not used. 0; 3 with a report, nothing
// written, where both images, the layer's pixels or `kind` are null and for another depth; the host's code
// where the bitmap cannot be locked.
RK_API RK_Long RK_GuessAlpha(RAS_World** bitmap, const RK_LayerDef* layer, void* reserved, int32_t* kind,
                             RK_Pixel8* matte);
// The same, and the text to show in `message` (which may be null): that of RK_kAlphaUndetermined, otherwise
// empty.
RK_API RK_Long RK_GuessAlphaMessage(RAS_World** bitmap, const RK_LayerDef* layer, void* reserved,
                                    int32_t* kind, RK_Pixel8* matte, char* message);

#endif
