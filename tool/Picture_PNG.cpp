// PNG through libpng. Alpha is straight. Grey, palette and 1, 2 or 4-bit samples are widened on reading;
// written are RGBA of 8 bits, or of 16 for deeper worlds.
#include <png.h>

#include <csetjmp>
#include <cstring>

#include "Exif.h"
#include "Failure.h"
#include "PictureFile.h"

namespace {

bool Recognises(const uint8_t* bytes, size_t count) { return count >= 8 && png_sig_cmp(bytes, 0, 8) == 0; }

// libpng leaves by longjmp, so every call to it goes through Guard, whose work holds nothing that needs
// destroying.
struct Session {
    png_structp png = nullptr;
    png_infop info = nullptr;
    char message[256] = "";
    const InputFile* input = nullptr;
    size_t at = 0;  // in the input
    OutputFile* output = nullptr;
    bool writes = false;

    ~Session() {
        if (writes) {
            png_destroy_write_struct(&png, &info);
        } else {
            png_destroy_read_struct(&png, &info, nullptr);
        }
    }
    const std::string& Shown() const { return writes ? output->Shown() : input->Shown(); }
};

void OnError(png_structp png, png_const_charp message) {
    auto* session = static_cast<Session*>(png_get_error_ptr(png));
    std::strncpy(session->message, message, sizeof session->message - 1);
    png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

template <class Work>
void Guard(Session& session, Work work) {
    if (setjmp(png_jmpbuf(session.png)) == 0) {
        work();
        return;
    }
    const std::string cause = session.writes ? session.output->Cause() : "";
    Fail(session.Shown(), cause.empty() ? "PNG: " + OneLine(session.message) : cause);
}

void ReadBytes(png_structp png, png_bytep out, png_size_t count) {
    auto* session = static_cast<Session*>(png_get_io_ptr(png));
    if (count > session->input->Size() - session->at) png_error(png, "the file ends too early");
    std::memcpy(out, session->input->Bytes() + session->at, count);
    session->at += count;
}

void WriteBytes(png_structp png, png_bytep bytes, png_size_t count) {
    auto* session = static_cast<Session*>(png_get_io_ptr(png));
    if (!session->output->Write(bytes, count)) png_error(png, "cannot write");
}

void Start(Session& session, const InputFile& file) {
    session.input = &file;
    session.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &session, OnError, OnWarning);
    session.info = session.png ? png_create_info_struct(session.png) : nullptr;
    if (!session.info) Fail(file.Shown(), "not enough memory");
    png_set_read_fn(session.png, &session, ReadBytes);
    // Sizes are judged by the caller, who names the limit.
    png_set_user_limits(session.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    Guard(session, [&] { png_read_info(session.png, session.info); });
}

const char* ColourName(int type) {
    switch (type) {
        case PNG_COLOR_TYPE_GRAY: return "grey";
        case PNG_COLOR_TYPE_GRAY_ALPHA: return "grey and alpha";
        case PNG_COLOR_TYPE_PALETTE: return "palette";
        case PNG_COLOR_TYPE_RGB: return "RGB";
        default: return "RGBA";
    }
}

PictureInfo Probe(const InputFile& file) {
    Session session;
    Start(session, file);
    PictureInfo info;
    info.width = png_get_image_width(session.png, session.info);
    info.height = png_get_image_height(session.png, session.info);
    info.bits = png_get_bit_depth(session.png, session.info);
    const int type = png_get_color_type(session.png, session.info);
    info.colour = ColourName(type);
    const bool keyed = png_get_valid(session.png, session.info, PNG_INFO_tRNS) != 0;
    if ((type & PNG_COLOR_MASK_ALPHA) || keyed) info.alpha = AlphaKind::Straight;
    png_bytep exif = nullptr;
    png_uint_32 exif_size = 0;
    if (png_get_eXIf_1(session.png, session.info, &exif_size, &exif) != 0) {
        info.orientation = ExifOrientation(exif, exif_size);
    }
    return info;
}

// Rows of an interlaced file come in several passes, so all of it is held then.
template <class S>
void ReadRows(Session& session, int passes, PictureRows& rows, Progress& progress) {
    const int channels = png_get_channels(session.png, session.info);
    const size_t row_samples = static_cast<size_t>(rows.Width()) * static_cast<size_t>(channels);
    const int32_t height = rows.Height();
    std::vector<S> held(row_samples * (passes > 1 ? static_cast<size_t>(height) : 1));
    for (int pass = 0; pass < passes; ++pass) {
        for (int32_t y = 0; y < height; ++y) {
            S* row = held.data() + (passes > 1 ? row_samples * static_cast<size_t>(y) : 0);
            Guard(session, [&] { png_read_row(session.png, reinterpret_cast<png_bytep>(row), nullptr); });
            if (pass == passes - 1) rows.Put(y, row, channels, AlphaKind::Straight);
            progress.Report(int64_t{pass} * height + y, int64_t{passes} * height);
        }
    }
    Guard(session, [&] { png_read_end(session.png, nullptr); });
}

void Read(const InputFile& file, const PictureInfo& info, PictureRows& rows, Progress& progress) {
    Session session;
    Start(session, file);
    volatile int passes = 1;
    Guard(session, [&] {
        png_set_expand(session.png);
        png_set_swap(session.png);  // 16-bit samples arrive with the high byte first
        passes = png_set_interlace_handling(session.png);
        png_read_update_info(session.png, session.info);
    });
    if (info.bits == 16) {
        ReadRows<uint16_t>(session, passes, rows, progress);
    } else {
        ReadRows<uint8_t>(session, passes, rows, progress);
    }
}

template <class S>
void WriteRows(Session& session, PictureRows& rows, Progress& progress) {
    std::vector<S> row(static_cast<size_t>(rows.Width()) * 4);
    for (int32_t y = 0; y < rows.Height(); ++y) {
        rows.Get(y, row.data(), 4, AlphaKind::Straight);
        Guard(session, [&] { png_write_row(session.png, reinterpret_cast<png_bytep>(row.data())); });
        progress.Report(y, rows.Height());
    }
}

void Write(PictureRows& rows, int depth, const WriteOptions&, OutputFile& file, Progress& progress) {
    Session session;
    session.writes = true;
    session.output = &file;
    session.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &session, OnError, OnWarning);
    session.info = session.png ? png_create_info_struct(session.png) : nullptr;
    if (!session.info) Fail(file.Shown(), "not enough memory");
    const int bits = depth == 8 ? 8 : 16;
    Guard(session, [&] {
        png_set_write_fn(session.png, &session, WriteBytes, nullptr);
        png_set_IHDR(session.png, session.info, static_cast<png_uint_32>(rows.Width()),
                     static_cast<png_uint_32>(rows.Height()), bits, PNG_COLOR_TYPE_RGB_ALPHA,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(session.png, session.info);
        png_set_swap(session.png);
    });
    if (bits == 8) {
        WriteRows<uint8_t>(session, rows, progress);
    } else {
        WriteRows<uint16_t>(session, rows, progress);
    }
    Guard(session, [&] { png_write_end(session.png, nullptr); });
}

}  // namespace

const PictureFormat kFormatPNG = {"png", "PNG", {"png"}, Recognises, Probe, Read, Write, true};
