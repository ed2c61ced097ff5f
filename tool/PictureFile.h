// Picture files: PNG, JPEG, TIFF and OpenEXR, into worlds and out of them.
//
// Numbers are taken as they are stored: no colour conversion takes place, and colour profiles are neither
// read nor written. Worlds hold straight alpha; see PictureRows.h for how premultiplied files come and go.
#ifndef TOOL_PICTURE_FILE_H
#define TOOL_PICTURE_FILE_H

#include <cstdint>
#include <string>
#include <vector>

#include "InputFile.h"
#include "Library.h"
#include "OutputFile.h"
#include "PictureRows.h"
#include "Progress.h"

struct PictureInfo {
    int64_t width = 0, height = 0;
    int bits = 0;           // per channel, in the file
    bool floating = false;  // its samples are floating point
    std::string colour;     // such as "grey" or "RGB"
    AlphaKind alpha = AlphaKind::None;
    int orientation = 1;  // as EXIF counts; 1 is upright

    // Of the world that holds it without loss: 8, 16 or 32.
    int Depth() const { return floating ? 32 : bits > 8 ? 16 : 8; }
};

struct WriteOptions {
    int jpeg_quality = 95;
};

// One file format. The functions throw a Failure that names the file and the cause.
struct PictureFormat {
    const char* key;   // as --format takes it
    const char* name;  // for people
    std::vector<const char*> extensions;
    bool (*recognises)(const uint8_t* bytes, size_t count);  // from the first bytes
    PictureInfo (*probe)(const InputFile& file);
    void (*read)(const InputFile& file, const PictureInfo& info, PictureRows& rows, Progress& progress);
    void (*write)(PictureRows& rows, int depth, const WriteOptions& options, OutputFile& file,
                  Progress& progress);
    bool holds_alpha;
};

extern const PictureFormat kFormatPNG, kFormatJPEG, kFormatTIFF, kFormatEXR;

// A format by its key, in any case; null when unknown.
const PictureFormat* FormatOfKey(const std::string& key);
// A format by a file's extension; null when unknown.
const PictureFormat* FormatOfPath(const std::string& path);

// A picture file, read into memory and looked at, but not yet decoded.
class PictureFile {
  public:
    explicit PictureFile(const std::string& path);

    const std::string& Shown() const { return file_.Shown(); }
    const std::string& Path() const { return file_.Path(); }
    const PictureFormat& Format() const { return *format_; }
    const PictureInfo& Info() const { return info_; }

    // The picture as a world of the depth, 8, 16 or 32; its alpha straight, or with `as_stored` as the file has it.
    // Throws when it is larger than a world may be.
    WorldPtr Decode(int depth, Progress& progress, bool as_stored = false) const;

  private:
    InputFile file_;
    const PictureFormat* format_;
    PictureInfo info_;
};

// Encodes the world; the caller commits the file.
void WritePicture(RK_World& world, const PictureFormat& format, const WriteOptions& options, OutputFile& file,
                  Progress& progress);

#endif
