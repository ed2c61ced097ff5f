#include "RK/host/SHIM.h"

#include <atomic>

#include "refhost/Internal.h"

namespace {
std::atomic<int32_t> g_brackets{0};

Point g_pen = {0, 0};
RefHost::LineFunc* g_draw = nullptr;
void* g_draw_refcon = nullptr;
}  // namespace

// This platform makes no window-system objects for a bitmap; the brackets are only counted.
void SHIM_BeginGdiMinimalisticWindowCreationMode() { ++g_brackets; }
void SHIM_EndGdiMinimalisticWindowCreationMode() { --g_brackets; }

void MoveTo(int16_t h, int16_t v) { g_pen = {v, h}; }
void Line(int16_t dh, int16_t dv) {
    const Point from = g_pen;
    g_pen = {static_cast<int16_t>(from.v + dv), static_cast<int16_t>(from.h + dh)};
    if (g_draw) g_draw(g_draw_refcon, from, g_pen);
}

namespace RefHost {
void SetLineFunc(LineFunc* draw, void* refcon) {
    g_draw = draw;
    g_draw_refcon = refcon;
}
int32_t MinimalisticBrackets() { return g_brackets.load(); }
}  // namespace RefHost
