// What the command line of `rk composite` asks for.
#ifndef TOOL_COMPOSITE_ARGUMENTS_H
#define TOOL_COMPOSITE_ARGUMENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ArgumentWords.h"
#include "ModeNames.h"
#include "RK/indep/composite/RK_TransferRect.h"
#include "ResultArguments.h"

struct LayerArguments {
    std::string front;
    const Mode* mode = nullptr;
    float opacity = 1.0f;
    Place at;
    std::string matte;  // empty: none
    RK_MaskKind matte_kind = RK_kMaskAlpha;
    Place matte_at;
    RK_Long field = RK_kBothFields;
    bool rgb_only = false;
    int32_t seed = 0;
};

struct CompositeArguments : ResultArguments {
    std::string back;
    std::vector<LayerArguments> layers;  // lowest first
    bool json = false;
};

// Empty when help was asked for and printed. Throws a Failure of status 2 for what cannot be meant so.
std::optional<CompositeArguments> ParseComposite(const std::vector<std::string>& arguments);

#endif
