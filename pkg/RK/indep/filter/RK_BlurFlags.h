// What the one-axis blurs RK_BoxBlur1D and RK_GaussianBlur1D share. A blur in both axes is two calls, the
// second reading what the first wrote.
//
// src, dst     worlds of one depth: 8, 16 or 32. They may share pixels only with `force_copy`, equal
// directions and
//              equal origins.
// radius       in pixels, fractional; 0 or more
// flags        RK_kBlur... below; a channel not named keeps the value of the pixel itself
// direction    non-zero: the lines of that world are its columns; 0: its rows. Reading rows and writing
// columns
//              transposes. Lines are aligned by origin_x and origin_y, each world's on its own axes: pixel k
//              of line i of `dst` lies on pixel k + (dst origin along - src origin along) of line i + (dst
//              origin across - src origin across) of `src`. A line that `src` does not have becomes zero.
// src_premultiplied  0: colours are multiplied by alpha as they are read, if any colour is named
// dst_premultiplied  0: the result is divided by its alpha
//
// Outside a line there is nothing: zero, with full weight, or with RK_kBlurRenormalise with no weight. There
// an unnamed channel is 0.
//
// Lines run through RK_IterateGeneric, one task each, and a module may spread them over threads. After lines
// 63, 127,
// ... on thread 0, progress_func, or without one abort_func, is called; what is not 0 stops the blur and is
// the result.
//
// The result is 0, or that, or with nothing written: 3 with a report for a null world, null pixels, a radius
// that is negative or NaN or 2147483648 and more; 3 for unequal or unknown depths; 4, reported, for memory. A
// blur that loads lines or has more passes takes two lines of scratch for each thread, the Gaussian one.
#ifndef RK_BLUR_FLAGS_H
#define RK_BLUR_FLAGS_H

#include "RK/indep/frame/RK.h"

constexpr uint32_t RK_kBlurAlpha = 1;
constexpr uint32_t RK_kBlurRed = 2;
constexpr uint32_t RK_kBlurGreen = 4;
constexpr uint32_t RK_kBlurBlue = 8;
constexpr uint32_t RK_kBlurAllChannels = 15;
// Divide by the weight that fell inside the line, so that edges do not darken.
constexpr uint32_t RK_kBlurRenormalise = 16;

#endif
