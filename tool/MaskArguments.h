// What the command line of `rk mask` asks for.
#ifndef TOOL_MASK_ARGUMENTS_H
#define TOOL_MASK_ARGUMENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ArgumentWords.h"
#include "ResultArguments.h"

// A picture that a mask is made of.
struct MaskSource {
    std::string path;
    std::optional<RK_MaskKind> kind;  // none: its alpha, or its luma where it has no alpha
};

// How a line of a mask is blurred.
enum class MaskBlur { Gaussian, Boxes, Box };

// What is done to the mask, in this order.
struct InvertMask {};
struct FadeMask {
    float amount;
};
struct BlurMask {
    double radius;
};
struct CombineMask {
    MaskSource source;
    int32_t mode;
    Place at;  // on the first picture
    float opacity, limit;
};
using MaskStep = std::variant<InvertMask, FadeMask, BlurMask, CombineMask>;

struct MaskArguments : ResultArguments {
    MaskSource first;
    int32_t pad = 0;  // samples of nothing at each side
    std::vector<MaskStep> steps;
    MaskBlur blur = MaskBlur::Gaussian;
    std::string into;  // the picture whose alpha is multiplied; empty: none
    Place into_at;
    std::optional<RK_Pixel8> colour;
};

// Empty when help was asked for and printed. Throws a Failure of status 2 for what cannot be meant so.
std::optional<MaskArguments> ParseMask(const std::vector<std::string>& arguments);

#endif
