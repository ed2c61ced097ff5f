// Planes of a frame, values between chunks, single channels of interleaved rows.
#include "RK/host/KIT.h"
#include "RK/indep/passes/RK_InterleaveT.h"
#include "RK/indep/passes/RK_Planes.h"
#include "RK/indep/world/RK_Chunk.h"
#include "bench/Bench.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;
constexpr size_t kPixels = size_t{kWidth} * kHeight;

void planes(benchmark::State& state, uint32_t mask, bool insert) {
    test::Picture<RK_Pixel8> picture(kWidth, kHeight);
    picture.fillRandom(1);
    RK_LayerDef world = picture.record();
    char** buffer = nullptr;
    int32_t rowbytes = 0;
    if (insert) RK_ExtractPlanes(nullptr, &world, mask, &buffer, &rowbytes);
    bench::measure(state, kPixels, kPixels * 4, [&] {
        if (insert) {
            RK_InsertPlanes(nullptr, buffer, rowbytes, mask, &world);
        } else {
            RK_ExtractPlanes(nullptr, &world, mask, &buffer, &rowbytes);
            KIT_FreeHandle(reinterpret_cast<KIT_Handle>(buffer));
        }
    });
    if (insert) KIT_FreeHandle(reinterpret_cast<KIT_Handle>(buffer));
}

void channelCopy(benchmark::State& state, int channels, bool scaled) {
    RK_Chunk src, dst;
    RK_NewChunk(scaled ? kWidth / 2 : kWidth, scaled ? kHeight / 2 : kHeight, channels, RK_kChunkFloat, &src);
    RK_NewChunk(kWidth, kHeight, channels, RK_kChunkFloat, &dst);
    bench::measure(state, kPixels, kPixels * 4 * static_cast<size_t>(channels),
                   [&] { RK_ChannelCopy(nullptr, &src, &dst, nullptr, nullptr); });
    RK_DisposeChunk(&src);
    RK_DisposeChunk(&dst);
}

template <class T>
void channel(benchmark::State& state, bool interleave) {
    std::vector<T> pixels(kPixels * 4, T{1}), plane(kPixels);
    constexpr RK_Long kSize = sizeof(T);
    bench::measure(state, kPixels, kPixels * 4 * sizeof(T), [&] {
        if (interleave)
            RK_Interleave1to4<T>(plane.data(), kWidth * kSize, 1, {0, 0}, {4 * kSize, kWidth * 4 * kSize},
                                 {kWidth, kHeight}, pixels.data());
        else
            RK_Deinterleave1<T>(pixels.data(), kWidth * 4 * kSize, 1, kWidth * kSize, {0, 0}, {0, 0},
                                {kWidth, kHeight}, plane.data());
    });
}

const bool registered = [] {
    for (const uint32_t mask : {1u, 14u, 15u}) {
        benchmark::RegisterBenchmark(("planes/extract/" + std::to_string(mask)).c_str(), planes, mask, false);
        benchmark::RegisterBenchmark(("planes/insert/" + std::to_string(mask)).c_str(), planes, mask, true);
    }
    for (const int channels : {1, 4}) {
        const std::string name = "planes/channel_copy/" + std::to_string(channels);
        benchmark::RegisterBenchmark((name + "/moved").c_str(), channelCopy, channels, false);
        benchmark::RegisterBenchmark((name + "/scaled").c_str(), channelCopy, channels, true);
    }
    for (const bool interleave : {false, true}) {
        const std::string name = interleave ? "planes/interleave/" : "planes/deinterleave/";
        benchmark::RegisterBenchmark((name + "8").c_str(), channel<uint8_t>, interleave);
        benchmark::RegisterBenchmark((name + "16").c_str(), channel<uint16_t>, interleave);
        benchmark::RegisterBenchmark((name + "float").c_str(), channel<float>, interleave);
    }
    return true;
}();

}  // namespace
