// TIFF through libtiff. Grey and RGB of 8 or 16 bits or of half or full float are read sample by sample, in
// strips or tiles, interleaved or in planes; other kinds (palette, 1 to 4 bits, YCbCr, Lab) through libtiff's
// own 8-bit RGB view. Associated alpha is premultiplied, unassociated is straight, and an extra channel of
// unknown meaning is no alpha. Written is straight RGBA, deflated.
#include <half.h>
#include <tiffio.h>

#include <cstring>
#include <memory>

#include "Failure.h"
#include "PictureFile.h"

namespace {

bool Recognises(const uint8_t* bytes, size_t count) {
    if (count < 4) return false;
    for (const char* head : {"II*\0", "MM\0*", "II+\0", "MM\0+"}) {
        if (std::memcmp(bytes, head, 4) == 0) return true;
    }
    return false;
}

// ---- libtiff over memory and over an OutputFile -----------------------------------------------------------

struct Session {
    const InputFile* input = nullptr;
    uint64_t at = 0;  // in the input
    OutputFile* output = nullptr;
    std::string message;  // the first error
    TIFF* tiff = nullptr;

    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() {
        if (tiff) TIFFClose(tiff);
    }

    [[noreturn]] void FailHere(const char* fallback) const {
        if (output && !output->Cause().empty()) Fail(output->Shown(), output->Cause());
        Fail(output ? output->Shown() : input->Shown(),
             "TIFF: " + (message.empty() ? fallback : OneLine(message)));
    }
    void Check(bool good, const char* fallback) const {
        if (!good) FailHere(fallback);
    }
    template <class T>
    T Tag(uint32_t tag, T fallback) const {
        T value = fallback;
        TIFFGetFieldDefaulted(tiff, tag, &value);
        return value;
    }
};

int OnError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
    auto* session = static_cast<Session*>(user);
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    if (session->message.empty()) session->message = text;
    return 1;
}

int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

tmsize_t ReadBytes(thandle_t handle, void* out, tmsize_t count) {
    auto* session = static_cast<Session*>(handle);
    if (session->output) return static_cast<tmsize_t>(session->output->Read(out, static_cast<size_t>(count)));
    const uint64_t left = session->at < session->input->Size() ? session->input->Size() - session->at : 0;
    const uint64_t got = std::min<uint64_t>(static_cast<uint64_t>(count), left);
    std::memcpy(out, session->input->Bytes() + session->at, got);
    session->at += got;
    return static_cast<tmsize_t>(got);
}

tmsize_t WriteBytes(thandle_t handle, void* bytes, tmsize_t count) {
    auto* session = static_cast<Session*>(handle);
    return session->output && session->output->Write(bytes, static_cast<size_t>(count)) ? count : 0;
}

toff_t SizeOf(thandle_t handle) {
    auto* session = static_cast<Session*>(handle);
    return session->output ? session->output->Size() : session->input->Size();
}

toff_t SeekTo(thandle_t handle, toff_t offset, int whence) {
    auto* session = static_cast<Session*>(handle);
    const uint64_t here = session->output ? session->output->Position() : session->at;
    const uint64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? here : SizeOf(handle);
    session->at = base + offset;
    if (session->output && !session->output->Seek(session->at)) return static_cast<toff_t>(-1);
    return session->at;
}

void Open(Session& session, const char* mode) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, &session);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnWarning, &session);
    session.tiff = TIFFClientOpenExt(
        "picture", mode, &session, ReadBytes, WriteBytes, SeekTo, [](thandle_t) { return 0; }, SizeOf,
        nullptr, nullptr, options.get());
    session.Check(session.tiff != nullptr, "cannot open");
}

// ---- What is in a file ------------------------------------------------------------------------------------

struct Layout {
    uint32_t width = 0, height = 0;
    uint16_t bits = 1, samples = 1, format = SAMPLEFORMAT_UINT, photometric = 0, planar = PLANARCONFIG_CONTIG;
    AlphaKind alpha = AlphaKind::None;
    int colours = 1;      // samples of colour: 1 or 3
    bool direct = false;  // read sample by sample
};

Layout LayoutOf(const Session& session) {
    Layout layout;
    session.Check(TIFFGetField(session.tiff, TIFFTAG_IMAGEWIDTH, &layout.width) &&
                      TIFFGetField(session.tiff, TIFFTAG_IMAGELENGTH, &layout.height),
                  "the size is missing");
    session.Check(TIFFGetField(session.tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric),
                  "the colour type is missing");
    layout.bits = session.Tag<uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    layout.samples = session.Tag<uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    layout.format = session.Tag<uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    layout.planar = session.Tag<uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);

    const bool grey =
        layout.photometric == PHOTOMETRIC_MINISBLACK || layout.photometric == PHOTOMETRIC_MINISWHITE;
    const bool rgb = layout.photometric == PHOTOMETRIC_RGB;
    layout.colours = rgb ? 3 : 1;
    const bool whole = layout.format == SAMPLEFORMAT_UINT && (layout.bits == 8 || layout.bits == 16);
    const bool real = layout.format == SAMPLEFORMAT_IEEEFP && (layout.bits == 16 || layout.bits == 32);
    layout.direct = (grey || rgb) && (whole || real) && layout.samples >= layout.colours;

    uint16_t extras = 0;
    uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(session.tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds);
    if (layout.direct && extras > 0 && layout.samples > layout.colours) {
        if (kinds[0] == EXTRASAMPLE_ASSOCALPHA) layout.alpha = AlphaKind::Premultiplied;
        if (kinds[0] == EXTRASAMPLE_UNASSALPHA) layout.alpha = AlphaKind::Straight;
    }
    return layout;
}

const char* ColourName(const Layout& layout) {
    switch (layout.photometric) {
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MINISWHITE: return layout.alpha == AlphaKind::None ? "grey" : "grey and alpha";
        case PHOTOMETRIC_RGB: return layout.alpha == AlphaKind::None ? "RGB" : "RGBA";
        case PHOTOMETRIC_PALETTE: return "palette";
        case PHOTOMETRIC_SEPARATED: return "CMYK";
        case PHOTOMETRIC_YCBCR: return "YCbCr";
        case PHOTOMETRIC_CIELAB: return "Lab";
        default: return "other";
    }
}

PictureInfo Probe(const InputFile& file) {
    Session session;
    session.input = &file;
    Open(session, "rm");
    const Layout layout = LayoutOf(session);
    PictureInfo info;
    info.width = layout.width;
    info.height = layout.height;
    info.bits = layout.bits;
    info.floating = layout.direct && layout.format == SAMPLEFORMAT_IEEEFP;
    info.colour = ColourName(layout);
    info.alpha = layout.alpha;
    info.orientation = session.Tag<uint16_t>(TIFFTAG_ORIENTATION, 1);
    if (info.orientation < 1 || info.orientation > 8) info.orientation = 1;
    return info;
}

// ---- Reading
// ------------------------------------------------------------------------------------------------

uint8_t Sample(uint8_t s) { return s; }
uint16_t Sample(uint16_t s) { return s; }
float Sample(float s) { return s; }
float Sample(half s) { return s; }
uint8_t Inverted(uint8_t s) { return static_cast<uint8_t>(255 - s); }
uint16_t Inverted(uint16_t s) { return static_cast<uint16_t>(65535 - s); }
float Inverted(float s) { return 1.0f - s; }

// Memory whose pages are not touched before they are needed, so that a header may lie about sizes.
template <class T>
std::unique_ptr<T[]> Untouched(int64_t count) {
    return std::unique_ptr<T[]>(new T[static_cast<size_t>(count)]);
}

// Strips, or rows of tiles, one after another: each is decoded into a band, whose rows then go to the world.
// Stored is the sample as it lies in the file.
template <class Stored>
void ReadBands(Session& session, const Layout& layout, PictureRows& rows, Progress& progress) {
    using S = decltype(Sample(Stored()));
    TIFF* tiff = session.tiff;
    const bool tiled = TIFFIsTiled(tiff) != 0;
    const int64_t width = layout.width, height = layout.height;
    int64_t block_width = width, block_height = 0;
    if (tiled) {
        block_width = session.Tag<uint32_t>(TIFFTAG_TILEWIDTH, 0);
        block_height = session.Tag<uint32_t>(TIFFTAG_TILELENGTH, 0);
    } else {
        block_height = std::min<int64_t>(session.Tag<uint32_t>(TIFFTAG_ROWSPERSTRIP, layout.height), height);
    }
    session.Check(block_width > 0 && block_height > 0, "the blocks have no size");
    const bool planes = layout.planar == PLANARCONFIG_SEPARATE;
    const int64_t per_pixel = planes ? 1 : layout.samples;  // samples of one pixel in one block
    const int64_t block_bytes =
        tiled ? TIFFTileSize64(tiff) : TIFFVStripSize64(tiff, static_cast<uint32_t>(block_height));
    session.Check(block_bytes == block_width * block_height * per_pixel * int64_t{sizeof(Stored)},
                  "the blocks have an unusual form");

    const int channels = layout.colours + (layout.alpha != AlphaKind::None ? 1 : 0);
    const auto block = Untouched<Stored>(block_bytes / int64_t{sizeof(Stored)});
    const auto band = Untouched<S>(width * block_height * channels);
    for (int64_t top = 0; top < height; top += block_height) {
        const int64_t band_height = std::min(block_height, height - top);
        for (int64_t left = 0; left < width; left += block_width) {
            for (int plane = 0; plane < (planes ? channels : 1); ++plane) {
                const auto x = static_cast<uint32_t>(left), y = static_cast<uint32_t>(top);
                const auto which = static_cast<uint16_t>(plane);
                const int64_t wanted =
                    (tiled ? block_height : band_height) * block_width * per_pixel * int64_t{sizeof(Stored)};
                const tmsize_t got =
                    tiled ? TIFFReadTile(tiff, block.get(), x, y, 0, which)
                          : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, y, which), block.get(), wanted);
                session.Check(got == wanted, "the file ends too early");
                const int64_t columns = std::min(block_width, width - left);
                for (int64_t row = 0; row < band_height; ++row) {
                    const Stored* from = block.get() + row * block_width * per_pixel;
                    S* to = band.get() + (row * width + left) * channels + plane;
                    for (int64_t column = 0; column < columns; ++column, from += per_pixel, to += channels) {
                        to[0] = Sample(from[0]);
                        for (int channel = 1; !planes && channel < channels; ++channel)
                            to[channel] = Sample(from[channel]);
                    }
                }
            }
        }
        for (int64_t row = 0; row < band_height; ++row) {
            S* samples = band.get() + row * width * channels;
            if (layout.photometric == PHOTOMETRIC_MINISWHITE) {
                for (int64_t x = 0; x < width; ++x) samples[x * channels] = Inverted(samples[x * channels]);
            }
            rows.Put(static_cast<int32_t>(top + row), samples, channels, layout.alpha);
            progress.Report(top + row, height);
        }
    }
}

// libtiff's own view, asked for in the file's orientation so that nothing is turned.
void ReadView(Session& session, const Layout& layout, PictureRows& rows, Progress& progress) {
    const int64_t width = layout.width, height = layout.height;
    char why[1024] = "";
    if (!TIFFRGBAImageOK(session.tiff, why)) session.FailHere(why);
    const auto view = Untouched<uint32_t>(width * height);
    const int orientation = session.Tag<uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    session.Check(
        TIFFReadRGBAImageOriented(session.tiff, layout.width, layout.height, view.get(), orientation, 1) != 0,
        "the file ends too early");
    std::vector<uint8_t> row(static_cast<size_t>(width) * 3);
    for (int64_t y = 0; y < height; ++y) {
        for (int64_t x = 0; x < width; ++x) {
            const uint32_t pixel = view[static_cast<size_t>(y * width + x)];
            uint8_t* samples = row.data() + x * 3;
            samples[0] = static_cast<uint8_t>(TIFFGetR(pixel));
            samples[1] = static_cast<uint8_t>(TIFFGetG(pixel));
            samples[2] = static_cast<uint8_t>(TIFFGetB(pixel));
        }
        rows.Put(static_cast<int32_t>(y), row.data(), 3, AlphaKind::None);
        progress.Report(y, height);
    }
}

void Read(const InputFile& file, const PictureInfo& info, PictureRows& rows, Progress& progress) {
    if (info.colour == "CMYK") Fail(file.Shown(), "CMYK pictures are not read: convert it to RGB first");
    Session session;
    session.input = &file;
    Open(session, "rm");
    const Layout layout = LayoutOf(session);
    const bool real = layout.format == SAMPLEFORMAT_IEEEFP;
    if (layout.direct && layout.bits == 8) {
        ReadBands<uint8_t>(session, layout, rows, progress);
    } else if (layout.direct && layout.bits == 16 && !real) {
        ReadBands<uint16_t>(session, layout, rows, progress);
    } else if (layout.direct && layout.bits == 16) {
        ReadBands<half>(session, layout, rows, progress);
    } else if (layout.direct) {
        ReadBands<float>(session, layout, rows, progress);
    } else {
        ReadView(session, layout, rows, progress);
    }
}

// ---- Writing
// ------------------------------------------------------------------------------------------------

template <class S>
void WriteRows(Session& session, PictureRows& rows, Progress& progress) {
    std::vector<S> row(static_cast<size_t>(rows.Width()) * 4);
    for (int32_t y = 0; y < rows.Height(); ++y) {
        rows.Get(y, row.data(), 4, AlphaKind::Straight);
        session.Check(TIFFWriteScanline(session.tiff, row.data(), static_cast<uint32_t>(y), 0) == 1,
                      "cannot write");
        progress.Report(y, rows.Height());
    }
}

void Write(PictureRows& rows, int depth, const WriteOptions&, OutputFile& file, Progress& progress) {
    Session session;
    session.output = &file;
    // The classic form ends at 4 GB.
    const int64_t bytes = int64_t{rows.Width()} * rows.Height() * depth / 2;
    Open(session, bytes < int64_t{4'000'000'000} ? "w" : "w8");
    TIFF* tiff = session.tiff;
    const uint16_t straight[] = {EXTRASAMPLE_UNASSALPHA};
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(rows.Width()));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(rows.Height()));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, depth);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 4);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, depth == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, straight);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, depth == 32 ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    if (depth == 8) {
        WriteRows<uint8_t>(session, rows, progress);
    } else if (depth == 16) {
        WriteRows<uint16_t>(session, rows, progress);
    } else {
        WriteRows<float>(session, rows, progress);
    }
    session.Check(TIFFWriteDirectory(tiff) == 1, "cannot write");
}

}  // namespace

const PictureFormat kFormatTIFF = {"tiff", "TIFF", {"tif", "tiff"}, Recognises, Probe, Read, Write, true};
