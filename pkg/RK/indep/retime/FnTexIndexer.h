// The geometry of a map: per axis its size, origin, edge mode and sub-range.
#ifndef FN_TEX_INDEXER_H
#define FN_TEX_INDEXER_H

#include "RK/host/KIT.h"

// What is read outside first..last. A mode outside this list acts as kTransparent.
enum FnEdgeMode : int32_t {
    kFnTransparent = 0,  // no pixel: the map's default
    kFnClamp = 1,
    kFnMirror = 2,  // the edge pixel repeats; period 2 * count
    kFnWrap = 3,
};

constexpr int32_t kFnNoPixel = -1;

// A stretch of indices that map to in-range indices in one direction.
struct FnRun {
    int32_t index;      // of the first, or kFnNoPixel
    int32_t direction;  // +1, -1, or 0 when all map to the same
    int32_t count;
};

// The mapped indices of i and i + 1, either of which may be kFnNoPixel.
struct FnPair {
    int32_t first, second;
    bool adjacent;  // both exist and second is first + 1
};

struct FnAxis {
    int32_t size;
    float origin;
    int32_t int_origin;
    int32_t edge_mode;
    int32_t first, last, count;  // the sub-range; count 0: no pixel at all
    int32_t saved_origin, saved_flag;

    // Origins are not subtracted by any of these.
    int32_t MapIndex(int64_t i) const {
        if (i >= first && i <= last) return static_cast<int32_t>(i);
        return MapOutside(i);
    }
    FnRun RunFrom(int64_t i) const;
    FnPair PairFrom(int64_t i) const;
    // Sorts, then clamps to the size; a size below 1 leaves no pixel.
    void SetRange(int32_t a, int32_t b);

  private:
    int32_t MapOutside(int64_t i) const;
};

// Virtual operations in slot order.
class FnTexIndexer : public KIT_MemTrackedObject {
  public:
    FnTexIndexer() : FnTexIndexer(0, 0) {}
    FnTexIndexer(int32_t width, int32_t height);
    virtual ~FnTexIndexer() = default;
    virtual void SetRanges(int32_t x_first, int32_t x_last, int32_t y_first, int32_t y_last);
    virtual void SetEdgeModes(int32_t x_mode, int32_t y_mode);
    // Also stores them as floats.
    virtual void SetOrigins(int32_t x_origin, int32_t y_origin);
    // The integer origin becomes floor(origin + 0.5).
    virtual void SetFloatOrigins(float x_origin, float y_origin);

    int32_t Width() const { return axis[0].size; }
    int32_t Height() const { return axis[1].size; }
    // Whether either axis has no pixel, so that every read gives the default.
    bool IsEmpty() const { return axis[0].count < 1 || axis[1].count < 1; }
    void ResetEdgesAndOrigins() {
        SetEdgeModes(kFnTransparent, kFnTransparent);
        SetOrigins(0, 0);
    }
    // Everything but the sizes, ranges clamped to this map's own sizes.
    void TakeSettings(const FnTexIndexer& other);

    FnAxis axis[2];  // x, y
};

#endif
