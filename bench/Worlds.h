// What the benchmarks of sampling and geometry share: worlds of a content, poses, and processor records.
#ifndef BENCH_WORLDS_H
#define BENCH_WORLDS_H

#include <cmath>

#include "RK/host/GEO.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "bench/Bench.h"

namespace bench {

constexpr int32_t kWidth = 1920, kHeight = 1080;

template <class P>
void paint(RK_WorldX<P>& world, Alphas kind) {
    const std::vector<P> row = pixels<P>(RK_Long{world.width()} * world.height(), kind);
    for (int32_t y = 0; y < world.height(); ++y)
        std::memcpy(static_cast<void*>(world.row(y)), row.data() + size_t(y) * size_t(world.width()),
                    size_t(world.width()) * sizeof(P));
}

// The function table as a processor record fills it, for one benchmark's time.
struct Record {
    const char* name;
    bool sse2, ssse3;
};
constexpr Record kRecords[] = {{"none", false, false}, {"both", true, true}};
class WithRecord {
  public:
    explicit WithRecord(const Record& record) {
        std::memcpy(kept_, RKp_G_OverFuncs, sizeof kept_);
        RKp_FillOverFuncs(record.sse2, record.ssse3);
    }
    ~WithRecord() { std::memcpy(RKp_G_OverFuncs, kept_, sizeof kept_); }
    WithRecord(const WithRecord&) = delete;
    WithRecord& operator=(const WithRecord&) = delete;

  private:
    void* kept_[RK_kSlotCount];
};

// No float sampler depends on the record.
template <class P>
std::vector<Record> recordsOf() {
    if (sizeof(P) == sizeof(RK_PixelFloat)) return {kRecords[0]};
    return {kRecords[0], kRecords[1]};
}

// Turned about the frame's middle, scaled, then moved.
inline GEO_Matrix3 pose(double degrees, double scale, double x, double y) {
    const double a = degrees * 3.14159265358979323846 / 180, c = std::cos(a) * scale, s = std::sin(a) * scale;
    const double cx = kWidth / 2.0, cy = kHeight / 2.0;
    return {{{c, s, 0}, {-s, c, 0}, {cx - cx * c + cy * s + x, cy - cx * s - cy * c + y, 1}}};
}

template <class P>
std::string depthName() {
    return std::to_string(sizeof(P) * 2);
}

}  // namespace bench

#endif
