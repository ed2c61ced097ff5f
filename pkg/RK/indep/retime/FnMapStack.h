// Maps by level, each half the size of the one before.
#ifndef FN_MAP_STACK_H
#define FN_MAP_STACK_H

#include "RK/indep/retime/FnBuffer.h"
#include "RK/indep/retime/FnTexture.h"

// Level 0 is a map of somebody else; the stack owns the others.
template <class Map>
class FnMapStack {
  public:
    FnMapStack() = default;
    ~FnMapStack() { Drop(); }
    FnMapStack(const FnMapStack&) = delete;
    FnMapStack& operator=(const FnMapStack&) = delete;

    // Levels 1.. of the sizes that size_of(level, &width, &height) tells. False when memory is short, or when a level
    // is empty and may not be.
    template <class SizeOf>
    bool Build(Map* level0, int32_t levels, bool allow_empty, SizeOf&& size_of) {
        Drop();
        if (levels < 1 || !maps_.Allocate(levels)) return false;
        maps_[count_++] = level0;
        for (int32_t k = 1; k < levels; ++k) {
            int32_t width = 0, height = 0;
            size_of(k, &width, &height);
            Map* map = new Map;
            if (!map) return false;
            maps_[count_++] = map;
            if (!map->Resize(width, height)) return false;
            if (!allow_empty && !map->HasPixels()) return false;
            TakeFromBelow(*maps_[k - 1], *map);
        }
        return true;
    }
    // The same with halved sizes.
    bool BuildHalved(Map* level0, int32_t levels) {
        return Build(level0, levels, false, [level0](int32_t k, int32_t* width, int32_t* height) {
            *width = k < 31 ? level0->Width() >> k : 0;
            *height = k < 31 ? level0->Height() >> k : 0;
        });
    }
    int32_t Count() const { return count_; }
    Map* Level(int32_t k) { return maps_[k]; }

  private:
    // Edge modes, default and ranges as they are; the float origin halved and the integer origin truncated from it.
    static void TakeFromBelow(const Map& below, Map& map) {
        map.TakeSettings(below);
        map.SetDefault(below.Default());
        for (FnAxis& a : map.axis) {
            a.origin *= 0.5f;
            a.int_origin = FnTruncate(a.origin);
        }
    }
    void Drop() {
        for (int32_t k = 1; k < count_; ++k) delete maps_[k];
        maps_.Free();
        count_ = 0;
    }
    FnBuffer<Map*> maps_;
    int32_t count_ = 0;
};

#endif
