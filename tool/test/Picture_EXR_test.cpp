// Kinds of OpenEXR files that the tool does not write: luminance and chroma, tiles, several parts, rows from
// below.
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfRgbaFile.h>
#include <ImfTiledRgbaFile.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "PictureFile.h"

namespace {

constexpr int kWidth = 21, kHeight = 10;

// A name that is gone after the test.
struct TemporaryFile {
    const std::string path = testing::TempDir() + "rk-exr-" + std::to_string(getpid()) + ".exr";
    ~TemporaryFile() { unlink(path.c_str()); }
};

WorldPtr Decoded(const std::string& path) {
    Progress progress(true, 1);
    return PictureFile(path).Decode(32, progress);
}

const RK_PixelFloat& PixelAt(const WorldPtr& world, int x, int y) {
    const auto* row = static_cast<const uint8_t*>(world->record.data) + y * world->record.rowbytes;
    return reinterpret_cast<const RK_PixelFloat*>(row)[x];
}

// Opaque pixels that differ everywhere.
std::vector<Imf::Rgba> Ramp() {
    std::vector<Imf::Rgba> pixels;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) pixels.emplace_back(x / 32.0f, y / 16.0f, 0.25f, 1.0f);
    }
    return pixels;
}

void ExpectRamp(const WorldPtr& world) {
    ASSERT_EQ(world->record.width, kWidth);
    ASSERT_EQ(world->record.height, kHeight);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const RK_PixelFloat& p = PixelAt(world, x, y);
            ASSERT_EQ(p.red, x / 32.0f) << x << ", " << y;
            ASSERT_EQ(p.green, y / 16.0f) << x << ", " << y;
            ASSERT_EQ(p.blue, 0.25f);
            ASSERT_EQ(p.alpha, 1.0f);
        }
    }
}

TEST(PictureEXR, LuminanceAndChromaComeBackAsColour) {
    const TemporaryFile file;
    constexpr int kEven = 22;  // chroma is held for every other column
    const std::vector<Imf::Rgba> pixels(kEven * kHeight, Imf::Rgba(0.75f, 0.5f, 0.25f, 1.0f));
    {
        Imf::RgbaOutputFile out(file.path.c_str(), kEven, kHeight, Imf::WRITE_YC);
        out.setFrameBuffer(pixels.data(), 1, kEven);
        out.writePixels(kHeight);
    }
    EXPECT_EQ(PictureFile(file.path).Info().colour, "RGB");
    const WorldPtr world = Decoded(file.path);
    for (int y = 0; y < kHeight; ++y) {
        EXPECT_NEAR(PixelAt(world, y, y).red, 0.75f, 0.01f);
        EXPECT_NEAR(PixelAt(world, y, y).green, 0.5f, 0.01f);
        EXPECT_NEAR(PixelAt(world, y, y).blue, 0.25f, 0.01f);
        EXPECT_EQ(PixelAt(world, y, y).alpha, 1.0f);
    }
}

TEST(PictureEXR, TilesAreRead) {
    const TemporaryFile file;
    const std::vector<Imf::Rgba> pixels = Ramp();
    {
        Imf::TiledRgbaOutputFile out(file.path.c_str(), kWidth, kHeight, 8, 4, Imf::ONE_LEVEL);
        out.setFrameBuffer(pixels.data(), 1, kWidth);
        out.writeTiles(0, out.numXTiles() - 1, 0, out.numYTiles() - 1);
    }
    ExpectRamp(Decoded(file.path));
}

TEST(PictureEXR, RowsMayBeStoredFromBelow) {
    const TemporaryFile file;
    const std::vector<Imf::Rgba> pixels = Ramp();
    {
        Imf::Header header(kWidth, kHeight);
        header.lineOrder() = Imf::DECREASING_Y;
        header.compression() = Imf::PIZ_COMPRESSION;
        Imf::RgbaOutputFile out(file.path.c_str(), header, Imf::WRITE_RGBA);
        out.setFrameBuffer(pixels.data(), 1, kWidth);
        out.writePixels(kHeight);
    }
    ExpectRamp(Decoded(file.path));
}

TEST(PictureEXR, OfSeveralPartsTheFirstIsRead) {
    const TemporaryFile file;
    const std::vector<Imf::Rgba> pixels = Ramp(), others(kWidth * kHeight);
    {
        std::vector<Imf::Header> headers;
        for (const char* name : {"first", "second"}) {
            Imf::Header header(kWidth, kHeight);
            header.setName(name);
            header.setType(Imf::SCANLINEIMAGE);
            for (const char* channel : {"R", "G", "B"})
                header.channels().insert(channel, Imf::Channel(Imf::HALF));
            headers.push_back(header);
        }
        Imf::MultiPartOutputFile out(file.path.c_str(), headers.data(), 2);
        for (int part = 0; part < 2; ++part) {
            char* base =
                reinterpret_cast<char*>(const_cast<Imf::Rgba*>(part == 0 ? pixels.data() : others.data()));
            constexpr size_t kStep = sizeof(Imf::Rgba);
            Imf::FrameBuffer buffer;
            buffer.insert("R", Imf::Slice(Imf::HALF, base, kStep, kStep * kWidth));
            buffer.insert("G", Imf::Slice(Imf::HALF, base + sizeof(half), kStep, kStep * kWidth));
            buffer.insert("B", Imf::Slice(Imf::HALF, base + 2 * sizeof(half), kStep, kStep * kWidth));
            Imf::OutputPart output(out, part);
            output.setFrameBuffer(buffer);
            output.writePixels(kHeight);
        }
    }
    ExpectRamp(Decoded(file.path));
}

}  // namespace
