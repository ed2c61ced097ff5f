// Masks as the tool holds them, of 8 or 16 bits.
#ifndef TOOL_MASKS_H
#define TOOL_MASKS_H

#include <memory>

#include "Library.h"
#include "MaskArguments.h"
#include "Progress.h"
#include "RK/indep/filter/RK_UnoBuffer.h"

struct DisposeMask {
    void operator()(RK_UnoBuffer* mask) const { RK_DisposeUnoBuffer(mask); }
};
using MaskPtr = std::unique_ptr<RK_UnoBuffer, DisposeMask>;

// A mask of nothing. Throws a Failure that names `shown`.
MaskPtr NewMask(int32_t width, int32_t height, int depth, const std::string& shown);

// The mask of a world of its depth, 8 or 16, with `pad` samples of nothing at each side.
MaskPtr MaskOf(RK_World& world, RK_MaskKind kind, int32_t pad, Progress& progress, const std::string& shown);

// Blurs rows and columns. What lies outside counts as nothing.
void BlurMaskBothWays(RK_UnoBuffer& mask, MaskBlur blur, double radius, Progress& progress,
                      const std::string& shown);

// An opaque grey world of the mask's size, of depth 8, 16 or 32.
WorldPtr GreyOf(const RK_UnoBuffer& mask, int depth);

// Multiplies the world's alpha by the mask, whose first sample lies at (x, y).
void MergeMask(const RK_UnoBuffer& mask, Place at, RK_World& world, Progress& progress,
               const std::string& shown);

#endif
