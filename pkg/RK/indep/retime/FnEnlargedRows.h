// What the tweener leaves, enlarged to the picture's size: a row at a time, when a pass comes to it.
#ifndef FN_ENLARGED_ROWS_H
#define FN_ENLARGED_ROWS_H

#include "RK/indep/retime/FnBuffer.h"
#include "RK/indep/retime/FnTexture.h"

// What the tweener leaves for a picture.
struct FnTweenResult {
    FnIntMap classes;
    FnVectorMap a, b;
};

// One row of vectors and classes.
struct FnTweenRow {
    const HvVec2* a;
    const HvVec2* b;
    const int* classes;
    bool one_source;  // somewhere in it
};

// Vectors are mixed bilinearly across, then down, by arithmetic alone, undefined ones too, and keep their
// scale; classes are the nearest. Places are those of FnMoveSampler and ImageZoomerBase. Each source row is
// mixed across once per thread, for all rows that it serves.
class FnEnlargedRows {
  public:
    // False when memory is short. The maps stay in use.
    bool Make(const FnTweenResult& tween, int32_t width, float step);
    // Lines for so many threads.
    bool Reserve(int32_t threads);
    // Valid until the thread's next row.
    FnTweenRow Row(int32_t y, int32_t thread);

  private:
    struct Column {
        int32_t left, right;  // or kFnNoPixel
        float between;
    };
    struct Held {
        int64_t rows[2][2];  // by map and parity
        int64_t class_row;
        bool one_source;
    };
    static constexpr int64_t kNothing = INT64_MIN;

    // Source row y of a map, mixed across.
    const HvVec2* Across(int map, int64_t y, int32_t thread);
    HvVec2* Line(int32_t thread, int i) { return lines_.data() + (int64_t{thread} * 6 + i) * width_; }
    void Classes(int32_t y, int32_t thread);

    const FnTweenResult* tween_ = nullptr;
    int32_t width_ = 0;
    float step_ = 0.0f;
    FnBuffer<Column> columns_;
    FnBuffer<int32_t> class_columns_;
    FnBuffer<HvVec2> lines_;  // of each thread: two mixed rows of either map, then the row of either
    FnBuffer<int> classes_;
    FnBuffer<Held> held_;
};

#endif
