// JPEG through libjpeg-turbo: 8 bits, grey or colour, no alpha.
#include <csetjmp>
#include <cstdio>
#include <cstring>

// clang-format off
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include "Exif.h"
#include "Failure.h"
#include "PictureFile.h"

namespace {

bool Recognises(const uint8_t* bytes, size_t count) {
    return count >= 3 && std::memcmp(bytes, "\xFF\xD8\xFF", 3) == 0;
}

// The library's error record, with the way out behind it. As with PNG, every call goes through Guard.
struct Errors {
    jpeg_error_mgr manager;  // first: the library hands out its address
    jmp_buf way_out;
    char message[JMSG_LENGTH_MAX];
};

void Leave(j_common_ptr info) {
    auto* errors = reinterpret_cast<Errors*>(info->err);
    info->err->format_message(info, errors->message);
    longjmp(errors->way_out, 1);
}

// A warning that means lost pixels is an error; the others are let pass.
void OnMessage(j_common_ptr info, int level) {
    if (level >= 0) return;
    switch (info->err->msg_code) {
        case JWRN_JPEG_EOF:
        case JWRN_HIT_MARKER:
        case JWRN_HUFF_BAD_CODE:
        case JWRN_ARITH_BAD_CODE:
        case JWRN_MUST_RESYNC: Leave(info);
        default: return;
    }
}

void Prepare(Errors& errors) {
    jpeg_std_error(&errors.manager);
    errors.manager.error_exit = Leave;
    errors.manager.emit_message = OnMessage;
}

// `cause`, when it tells something, is what went wrong with the file itself.
template <class Work, class Cause>
void Guard(Errors& errors, const std::string& shown, Cause cause, Work work) {
    if (setjmp(errors.way_out) == 0) {
        work();
        return;
    }
    const std::string known = cause();
    Fail(shown, known.empty() ? std::string("JPEG: ") + OneLine(errors.message) : known);
}

struct Reader {
    jpeg_decompress_struct info = {};
    Errors errors = {};
    const InputFile& file;

    explicit Reader(const InputFile& input) : file(input) {
        Prepare(errors);
        info.err = &errors.manager;
    }
    ~Reader() { jpeg_destroy_decompress(&info); }

    template <class Work>
    void Run(Work work) {
        Guard(
            errors, file.Shown(), [] { return std::string(); }, work);
    }
    void Start() {
        Run([&] {
            jpeg_create_decompress(&info);
            jpeg_mem_src(&info, file.Bytes(), file.Size());
            jpeg_save_markers(&info, JPEG_APP0 + 1, 0xFFFF);
            jpeg_read_header(&info, TRUE);
        });
    }
};

int Orientation(const jpeg_decompress_struct& info) {
    for (const jpeg_marker_struct* marker = info.marker_list; marker; marker = marker->next) {
        if (marker->data_length > 6 && std::memcmp(marker->data, "Exif\0\0", 6) == 0) {
            return ExifOrientation(marker->data + 6, marker->data_length - 6);
        }
    }
    return 1;
}

PictureInfo Probe(const InputFile& file) {
    Reader reader(file);
    reader.Start();
    PictureInfo info;
    info.width = reader.info.image_width;
    info.height = reader.info.image_height;
    info.bits = reader.info.data_precision;
    info.orientation = Orientation(reader.info);
    switch (reader.info.jpeg_color_space) {
        case JCS_GRAYSCALE: info.colour = "grey"; break;
        case JCS_CMYK:
        case JCS_YCCK: info.colour = "CMYK"; break;
        default: info.colour = "RGB"; break;
    }
    return info;
}

void Read(const InputFile& file, const PictureInfo& info, PictureRows& rows, Progress& progress) {
    if (info.colour == "CMYK") Fail(file.Shown(), "CMYK pictures are not read: convert it to RGB first");
    Reader reader(file);
    reader.Start();
    reader.Run([&] {
        reader.info.out_color_space = reader.info.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_start_decompress(&reader.info);
    });
    const int channels = reader.info.output_components;
    std::vector<uint8_t> row(static_cast<size_t>(rows.Width()) * static_cast<size_t>(channels));
    for (int32_t y = 0; y < rows.Height(); ++y) {
        reader.Run([&] {
            JSAMPROW line = row.data();
            jpeg_read_scanlines(&reader.info, &line, 1);
        });
        rows.Put(y, row.data(), channels, AlphaKind::None);
        progress.Report(y, rows.Height());
    }
    reader.Run([&] { jpeg_finish_decompress(&reader.info); });
}

// Where encoded bytes go.
struct Destination {
    jpeg_destination_mgr manager;  // first: the library hands out its address
    OutputFile* file;
    JOCTET block[1 << 16];
};

void Rewind(Destination& destination) {
    destination.manager.next_output_byte = destination.block;
    destination.manager.free_in_buffer = sizeof destination.block;
}

boolean Flush(j_compress_ptr info) {
    auto& destination = *reinterpret_cast<Destination*>(info->dest);
    if (!destination.file->Write(destination.block, sizeof destination.block)) ERREXIT(info, JERR_FILE_WRITE);
    Rewind(destination);
    return TRUE;
}

void Finish(j_compress_ptr info) {
    auto& destination = *reinterpret_cast<Destination*>(info->dest);
    const size_t left = sizeof destination.block - destination.manager.free_in_buffer;
    if (!destination.file->Write(destination.block, left)) ERREXIT(info, JERR_FILE_WRITE);
}

struct Writer {
    jpeg_compress_struct info = {};
    Errors errors = {};
    Destination destination = {};

    explicit Writer(OutputFile& file) {
        Prepare(errors);
        info.err = &errors.manager;
        destination.file = &file;
        destination.manager.init_destination = [](j_compress_ptr) {};
        destination.manager.empty_output_buffer = Flush;
        destination.manager.term_destination = Finish;
        Rewind(destination);
    }
    ~Writer() { jpeg_destroy_compress(&info); }

    template <class Work>
    void Run(Work work) {
        Guard(
            errors, destination.file->Shown(), [&] { return destination.file->Cause(); }, work);
    }
};

void Write(PictureRows& rows, int, const WriteOptions& options, OutputFile& file, Progress& progress) {
    if (!rows.Opaque()) {
        Fail(file.Shown(),
             "the result has transparent parts, which JPEG cannot hold: give --flatten COLOUR, or "
             "write PNG, TIFF or OpenEXR");
    }
    Writer writer(file);
    writer.Run([&] {
        jpeg_create_compress(&writer.info);
        writer.info.dest = &writer.destination.manager;
        writer.info.image_width = static_cast<JDIMENSION>(rows.Width());
        writer.info.image_height = static_cast<JDIMENSION>(rows.Height());
        writer.info.input_components = 3;
        writer.info.in_color_space = JCS_RGB;
        jpeg_set_defaults(&writer.info);
        jpeg_set_quality(&writer.info, options.jpeg_quality, TRUE);
        // Full colour resolution where quality is asked for.
        if (options.jpeg_quality >= 90) {
            writer.info.comp_info[0].h_samp_factor = 1;
            writer.info.comp_info[0].v_samp_factor = 1;
        }
        jpeg_start_compress(&writer.info, TRUE);
    });
    std::vector<uint8_t> row(static_cast<size_t>(rows.Width()) * 3);
    for (int32_t y = 0; y < rows.Height(); ++y) {
        rows.Get(y, row.data(), 3, AlphaKind::None);
        writer.Run([&] {
            JSAMPROW line = row.data();
            jpeg_write_scanlines(&writer.info, &line, 1);
        });
        progress.Report(y, rows.Height());
    }
    writer.Run([&] { jpeg_finish_compress(&writer.info); });
}

}  // namespace

const PictureFormat kFormatJPEG = {"jpeg", "JPEG", {"jpg", "jpeg", "jpe"}, Recognises, Probe, Read,
                                   Write,  false};
