// The library as the tool holds it: its life, its worlds, its result codes.
#ifndef TOOL_LIBRARY_H
#define TOOL_LIBRARY_H

#include <memory>
#include <string>

#include "RK/indep/frame/RK.h"
#include "RK/indep/world/RK_World.h"

// Starts the package, and stops it. Throws a Failure when it does not start. Reports are not printed: they
// become part of an error line.
class Library {
  public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

using WorldPtr = std::unique_ptr<RK_World>;

constexpr int32_t kLargestSide = 30000;

// A world of the size and depth (8, 16, 32), its pixels not set. Throws a Failure that names `shown`.
WorldPtr NewWorld(int32_t width, int32_t height, int depth, const std::string& shown);

// What a result code means, with the library's last report where there is one.
std::string Explain(RK_Long code);

// Throws a Failure for any code but 0, and Stopped for 517.
void CheckResult(RK_Long code, const std::string& shown);

// Straight to premultiplied or back, in place, by the library at float depth: full alpha changes nothing,
// unmultiply makes a pixel of alpha 0 all zero.
void PremultiplyRow(RK_PixelFloat* row, int32_t count);
void UnmultiplyRow(RK_PixelFloat* row, int32_t count);

#endif
