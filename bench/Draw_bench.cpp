// Lines, brushes, alpha guessing, text, lazy tiles.
#include "RK/indep/filter/RK_DebugPrint.h"
#include "RK/indep/filter/RK_GuessAlpha.h"
#include "RK/indep/filter/RK_LazyTiles.h"
#include "RK/indep/filter/RK_Lines.h"
#include "RK/indep/filter/RK_PaintSpot.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "bench/Bench.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

// A brush of so many pixels each way: of entries that all differ.
void paintSpot(benchmark::State& state, int size) {
    test::Picture<RK_Pixel8> picture(kWidth, kHeight);
    picture.fillRandom(1);
    RK_LayerDef world = picture.record();
    std::vector<uint32_t> kernel(static_cast<size_t>(size * size));
    for (size_t i = 0; i < kernel.size(); ++i) kernel[i] = static_cast<uint32_t>(i * 37 % 256);
    bench::measure(state, size * size, 4 * kernel.size(), [&] {
        RK_PaintSpot(nullptr, kWidth / 2, kHeight / 2, 0, size, kernel.data(), {255, 200, 100, 50}, &world);
    });
}

void guessAlpha(benchmark::State& state, bench::Alphas alphas) {
    std::vector<RK_Pixel8> pixels = bench::pixels<RK_Pixel8>(kWidth * kHeight, alphas);
    if (alphas == bench::Alphas::Halves)  // as pictures are: clear pixels have one colour
        for (RK_Pixel8& p : pixels)
            if (p.alpha == 0) p = {};
    RK_LayerDef layer = {};
    layer.data = pixels.data();
    layer.width = kWidth;
    layer.height = kHeight;
    layer.rowbytes = kWidth * 4;
    int32_t kind;
    bench::measure(state, kWidth * kHeight, pixels.size() * 4,
                   [&] { RK_GuessAlpha(nullptr, &layer, nullptr, &kind, nullptr); });
}

template <class P>
void line(benchmark::State& state, double x0, double y0, double x1, double y1, int drawn) {
    test::Picture<P> picture(kWidth, kHeight);
    const RK_LayerDef record = picture.record();
    RK_WorldX<P> world(&record, false);
    const double start[2] = {x0, y0}, end[2] = {x1, y1};
    const RK_PixelFloat colour = {1, 0.5f, 0.25f, 0.125f};
    bench::measure(state, drawn, static_cast<size_t>(drawn) * sizeof(P),
                   [&] { RK_DrawLine(start, end, &colour, &world); });
}

template <class P>
void text(benchmark::State& state) {
    test::Picture<P> picture(kWidth, kHeight);
    const RK_LayerDef record = picture.record();
    RK_WorldX<P> world(&record, false);
    bench::measure(state, 60 * 80, 60 * 80 * sizeof(P), [&] {
        RK_DebugPrint(&world, 20, 20, {1, 1, 1, 1}, "%s",
                      "The quick brown fox jumps over the lazy dog, and then home again, along the wall");
    });
}

// A frame copied tile by tile; a band of rows at a time, as a display asks for it.
void lazyCopy(benchmark::State& state, int16_t tile, int16_t band) {
    test::Picture<RK_Pixel8> from(kWidth, kHeight), to(kWidth, kHeight);
    from.fillRandom(1);
    RK_LayerDef src = from.record(), dst = to.record();
    bench::measure(state, kWidth * kHeight, kWidth * kHeight * 4, [&] {
        boost::scoped_ptr<RK_LazyOperator> op(new RK_LazyWorldCopyOperator(&src, &dst));
        RK_LazyTiles tiles(tile, &op);
        for (int top = 0; top < kHeight; top += band)
            tiles.MakeValid({static_cast<int16_t>(top), 0, static_cast<int16_t>(top + band), kWidth});
    });
}

// What asking costs once everything is done: a frame's tiles, row by row.
void lazyDone(benchmark::State& state, int16_t tile) {
    test::Picture<RK_Pixel8> from(kWidth, kHeight), to(kWidth, kHeight);
    RK_LayerDef src = from.record(), dst = to.record();
    boost::scoped_ptr<RK_LazyOperator> op(new RK_LazyWorldCopyOperator(&src, &dst));
    RK_LazyTiles tiles(tile, &op);
    const GEO_Rect all = {0, 0, kHeight, kWidth};
    tiles.MakeValid(all);
    const int count = ((kWidth + tile - 1) / tile) * ((kHeight + tile - 1) / tile);
    bench::measure(state, count, static_cast<size_t>(count), [&] { tiles.MakeValid(all); });
}

template <class P>
void add() {
    const std::string depth = std::to_string(sizeof(P) * 2);
    benchmark::RegisterBenchmark(("DrawLine/" + depth + "/across").c_str(), line<P>, 0.0, 100.0, 1919.0,
                                 700.0, 1920);
    benchmark::RegisterBenchmark(("DrawLine/" + depth + "/down").c_str(), line<P>, 900.0, 0.0, 1000.0, 1079.0,
                                 1080);
    benchmark::RegisterBenchmark(("DrawLine/" + depth + "/short").c_str(), line<P>, 900.0, 500.0, 907.0,
                                 503.0, 8);
    benchmark::RegisterBenchmark(("DebugPrint/" + depth).c_str(), text<P>);
}

const bool registered = [] {
    for (const int size : {9, 101, 501})
        benchmark::RegisterBenchmark(("PaintSpot/" + std::to_string(size)).c_str(), paintSpot, size);
    for (const bench::Alphas alphas : bench::kAlphas)
        benchmark::RegisterBenchmark((std::string("GuessAlpha/") + bench::name(alphas)).c_str(), guessAlpha,
                                     alphas);
    benchmark::RegisterBenchmark("DrawLine/8/outside", line<RK_Pixel8>, -30000.0, 9000.0, 1e6, 9000.0, 1);
    for (const int16_t tile : {16, 64, 256}) {
        const std::string name = std::to_string(tile);
        benchmark::RegisterBenchmark(("LazyTiles/copy/" + name).c_str(), lazyCopy, tile, int16_t{kHeight});
        benchmark::RegisterBenchmark(("LazyTiles/bands/" + name).c_str(), lazyCopy, tile, int16_t{8});
        benchmark::RegisterBenchmark(("LazyTiles/done/" + name).c_str(), lazyDone, tile);
    }
    add<RK_Pixel8>();
    add<RK_Pixel16>();
    add<RK_PixelFloat>();
    return true;
}();

}  // namespace
