// What the command line of `rk transform` asks for.
#ifndef TOOL_TRANSFORM_ARGUMENTS_H
#define TOOL_TRANSFORM_ARGUMENTS_H

#include <optional>
#include <string>
#include <vector>

#include "ArgumentWords.h"
#include "ModeNames.h"
#include "Poses.h"
#include "RK/indep/sample/RK_TransformWorld.h"
#include "ResultArguments.h"

struct TransformArguments : ResultArguments {
    std::string in, onto, matte;  // empty: none
    Pose pose;
    std::optional<GEO_Vector2T<double>> anchor;
    std::optional<GEO_Matrix3> matrix;
    std::optional<Size> size;
    std::vector<Key> motion;
    double open = 0.5;  // frames
    int samples = 16;
    const Mode* mode = nullptr;
    double opacity = 1.0;
    RK_MaskKind matte_kind = RK_kMaskAlpha;
    Place matte_at;
    RK_Long quality = RK_kBest;
    RK_Long field = RK_kBothFields;
    bool json = false;
};

// Empty when help was asked for and printed. Throws a Failure of status 2 for what cannot be meant so.
std::optional<TransformArguments> ParseTransform(const std::vector<std::string>& arguments);

#endif
