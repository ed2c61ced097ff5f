#include "PictureFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "Failure.h"

namespace {

const PictureFormat* const kFormats[] = {&kFormatPNG, &kFormatJPEG, &kFormatTIFF, &kFormatEXR};

constexpr const char* kRefusal = "not a picture that rk reads (PNG, JPEG, TIFF or OpenEXR)";

const PictureFormat* FormatOfBytes(const uint8_t* bytes, size_t count) {
    for (const PictureFormat* format : kFormats) {
        if (format->recognises(bytes, count)) return format;
    }
    return nullptr;
}

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

const PictureFormat* FormatOfKey(const std::string& key) {
    const std::string wanted = Lower(key);
    for (const PictureFormat* format : kFormats) {
        if (wanted == format->key) return format;
        for (const char* extension : format->extensions) {
            if (wanted == extension) return format;
        }
    }
    return nullptr;
}

const PictureFormat* FormatOfPath(const std::string& path) {
    const size_t dot = path.rfind('.'), slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return nullptr;
    return FormatOfKey(path.substr(dot + 1));
}

PictureFile::PictureFile(const std::string& path)
    : file_(
          path, [](const uint8_t* bytes, size_t count) { return FormatOfBytes(bytes, count) != nullptr; },
          kRefusal),
      format_(FormatOfBytes(file_.Bytes(), file_.Size())),
      info_(format_->probe(file_)) {}

WorldPtr PictureFile::Decode(int depth, Progress& progress, bool as_stored) const {
    const int64_t width = info_.width, height = info_.height;
    if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide) {
        Fail(Shown(), fmt::format("{} x {} pixels: each side may be 1 to {}", width, height, kLargestSide));
    }
    WorldPtr world = NewWorld(static_cast<int32_t>(width), static_cast<int32_t>(height), depth, Shown());
    PictureRows rows(*world, as_stored);
    format_->read(file_, info_, rows, progress);
    return world;
}

void WritePicture(RK_World& world, const PictureFormat& format, const WriteOptions& options, OutputFile& file,
                  Progress& progress) {
    PictureRows rows(world);
    format.write(rows, static_cast<int>(world.Depth()), options, file, progress);
}
