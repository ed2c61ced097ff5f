// Reductions and enlargements without a matrix: copies to another size, decimation, summed-area tables.
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/sample/RK_Decimate.h"
#include "RK/indep/sample/RK_SummedAreaTable.h"
#include "bench/Worlds.h"

namespace {

using bench::Alphas;
using bench::kHeight;
using bench::kWidth;

// ---- Copies: pixels are the destination's ----------------------------------------------------------------

enum class Copy { Draft, Straight, Premul };

template <class P>
void copy(benchmark::State& state, Copy way, double scale, Alphas kind, const bench::Record& record) {
    const bench::WithRecord with(record);
    const auto width = static_cast<int32_t>(kWidth * scale), height = static_cast<int32_t>(kHeight * scale);
    RK_WorldX<P> src(kWidth, kHeight, 0), dst(width, height, 0);
    bench::paint(src, kind);
    const RK_Long count = RK_Long{width} * height;
    RK_Long result = 0;
    bench::measure(state, count, static_cast<size_t>(count) * sizeof(P), [&] {
        auto* const run = way == Copy::Draft      ? &RK_CopyBits_Draft
                          : way == Copy::Straight ? &RK_CopyBits_HQ_Straight
                                                  : &RK_CopyBits_HQ_Premul;
        result |= run(nullptr, &src.record, &dst.record, nullptr, nullptr);
    });
    if (result != RK_kOK) state.SkipWithError("the copy failed");
}

template <class P>
void addCopies() {
    static const struct {
        const char* name;
        double scale;
    } sizes[] = {{"half", 0.5}, {"37_percent", 0.37}, {"same", 1.0}, {"x1.5", 1.5}};
    static const struct {
        const char* name;
        Copy way;
    } ways[] = {{"draft", Copy::Draft}, {"straight", Copy::Straight}, {"premul", Copy::Premul}};
    for (const auto& way : ways)
        for (const auto& size : sizes)
            for (const Alphas kind : {Alphas::Random, Alphas::Opaque})
                for (const bench::Record& record : bench::recordsOf<P>()) {
                    const std::string name = std::string("resize/") + way.name + "/" + size.name + "/" +
                                             bench::depthName<P>() + "/" + bench::name(kind) + "/" +
                                             record.name;
                    benchmark::RegisterBenchmark(name.c_str(), copy<P>, way.way, size.scale, kind, record);
                }
}

// ---- Decimation: pixels are the source's -----------------------------------------------------------------

template <class P>
void decimate(benchmark::State& state, void (*filter)(const RK_World*, bool, RK_World*), bool tall,
              Alphas kind) {
    // The pass along columns runs first where that leaves the larger saving.
    const int32_t width = tall ? kHeight : kWidth, height = tall ? kWidth : kHeight;
    RK_WorldX<P> src(width, height, 0), dst(width / 2, tall ? height / 3 : height / 2, 0);
    bench::paint(src, kind);
    bench::measure(state, bench::kFrame.pixels, sizeof(P) * static_cast<size_t>(bench::kFrame.pixels),
                   [&] { filter(&src, false, &dst); });
}

template <class P>
void addDecimations() {
    for (const Alphas kind : {Alphas::Random, Alphas::Opaque}) {
        const std::string tail = bench::depthName<P>() + "/" + bench::name(kind);
        benchmark::RegisterBenchmark(("decimate/box/" + tail).c_str(), decimate<P>,
                                     RK_BoxFilteredDecimateByTwo, false, kind);
        benchmark::RegisterBenchmark(("decimate/gauss/" + tail).c_str(), decimate<P>,
                                     RK_GaussFilteredDecimateByTwo, false, kind);
        benchmark::RegisterBenchmark(("decimate/gauss_columns_first/" + tail).c_str(), decimate<P>,
                                     RK_GaussFilteredDecimateByTwo, true, kind);
    }
}

// ---- Summed-area tables -----------------------------------------------------------------------------------

template <class P>
void buildTable(benchmark::State& state, Alphas kind) {
    RK_WorldX<P> src(kWidth, kHeight, 0);
    bench::paint(src, kind);
    RK_SummedAreaTable table(&src);
    bench::measure(state, bench::kFrame.pixels, sizeof(P) * static_cast<size_t>(bench::kFrame.pixels),
                   [&] { table.Build(&src); });
}

template <class P, class Entry>
void sampleTable(benchmark::State& state, Entry* RK_SummedAreaTable::*cells, bool smooth, int radius) {
    RK_WorldX<P> src(kWidth, kHeight, 0);
    bench::paint(src, Alphas::Random);
    const RK_SummedAreaTable table(&src);
    std::vector<P> row(kWidth);
    constexpr int32_t rows = 64;
    bench::measure(state, kWidth * rows, sizeof(P) * kWidth * rows, [&] {
        for (int32_t y = 0; y < rows; ++y)
            for (int32_t x = 0; x < kWidth; ++x) {
                P* const out = row.data() + x;
                if (smooth) {
                    const float r = static_cast<float>(radius) + 0.3f;
                    const auto fx = static_cast<float>(x), fy = static_cast<float>(y);
                    RK_SummedAreaTable_SampleAA(table.width, table.height, table.*cells, fx - r, fy - r,
                                                fx + r, fy + r, out);
                } else {
                    RK_SummedAreaTable_SampleDraft(table.width, table.height, table.*cells, x - radius,
                                                   y - radius, x + radius + 1, y + radius + 1, out);
                }
            }
    });
}

template <class P, class Entry>
void addTables(Entry* RK_SummedAreaTable::*cells) {
    const std::string depth = bench::depthName<P>();
    for (const Alphas kind : {Alphas::Random, Alphas::Opaque})
        benchmark::RegisterBenchmark(("area_table/build/" + depth + "/" + bench::name(kind)).c_str(),
                                     buildTable<P>, kind);
    for (const int radius : {2, 50}) {
        const std::string tail = depth + "/radius_" + std::to_string(radius);
        benchmark::RegisterBenchmark(("area_table/draft/" + tail).c_str(), [=](benchmark::State& state) {
            sampleTable<P, Entry>(state, cells, false, radius);
        });
        benchmark::RegisterBenchmark(("area_table/smooth/" + tail).c_str(), [=](benchmark::State& state) {
            sampleTable<P, Entry>(state, cells, true, radius);
        });
    }
}

const bool registered = [] {
    addCopies<RK_Pixel8>();
    addCopies<RK_Pixel16>();
    addCopies<RK_PixelFloat>();
    addDecimations<RK_Pixel8>();
    addDecimations<RK_Pixel16>();
    addTables<RK_Pixel8>(&RK_SummedAreaTable::float_table);
    addTables<RK_Pixel16>(&RK_SummedAreaTable::float_table);
    addTables<RK_PixelFloat>(&RK_SummedAreaTable::double_table);
    return true;
}();

}  // namespace
