// OpenEXR: half or full float, premultiplied by custom, in and out. The world is the display window; pixels
// outside the data window are transparent. Read are R, G, B and A of the first part, Y alone as grey, and
// luminance with chroma. Written are half floats for worlds of 8 bits, full floats for deeper ones, which
// keeps every step of them.
#include <ImfArray.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfIO.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfRgbaFile.h>
#include <ImfVersion.h>

#include <cstring>
#include <memory>

#include "Failure.h"
#include "PictureFile.h"

namespace {

bool Recognises(const uint8_t* bytes, size_t count) {
    return count >= 4 && Imf::isImfMagic(reinterpret_cast<const char*>(bytes));
}

class Source : public Imf::IStream {
  public:
    explicit Source(const InputFile& file) : Imf::IStream(file.Shown().c_str()), file_(file) {}
    bool read(char out[], int count) override {
        const auto wanted = static_cast<uint64_t>(count);
        if (count < 0 || at_ > file_.Size() || wanted > file_.Size() - at_)
            throw Iex::InputExc("the file ends too early");
        std::memcpy(out, file_.Bytes() + at_, wanted);
        at_ += wanted;
        return at_ < file_.Size();
    }
    uint64_t tellg() override { return at_; }
    void seekg(uint64_t position) override { at_ = position; }

  private:
    const InputFile& file_;
    uint64_t at_ = 0;
};

class Sink : public Imf::OStream {
  public:
    explicit Sink(OutputFile& file) : Imf::OStream(file.Shown().c_str()), file_(file) {}
    // What fails is kept by the file and told by its Commit.
    void write(const char bytes[], int count) override { file_.Write(bytes, static_cast<size_t>(count)); }
    uint64_t tellp() override { return file_.Position(); }
    void seekp(uint64_t position) override { file_.Seek(position); }

  private:
    OutputFile& file_;
};

// Runs work whose exceptions are the format library's.
template <class Work>
auto Guard(const std::string& shown, Work work) {
    try {
        return work();
    } catch (const Failure&) {
        throw;
    } catch (const Stopped&) {
        throw;
    } catch (const std::bad_alloc&) {
        Fail(shown, "not enough memory");
    } catch (const std::exception& error) {
        Fail(shown, std::string("OpenEXR: ") + OneLine(error.what()));
    }
}

struct Contents {
    bool rgb = false, luma = false, chroma = false, alpha = false;
    Imf::PixelType type = Imf::HALF;
    int Colours() const { return rgb || chroma ? 3 : 1; }
};

Contents ContentsOf(const Imf::Header& header, const std::string& shown) {
    const Imf::ChannelList& channels = header.channels();
    const auto has = [&](const char* name) { return channels.findChannel(name) != nullptr; };
    Contents contents;
    contents.rgb = has("R") || has("G") || has("B");
    contents.luma = !contents.rgb && has("Y");
    contents.chroma = contents.luma && has("RY") && has("BY");
    contents.alpha = has("A");
    if (!contents.rgb && !contents.luma) Fail(shown, "OpenEXR: there is none of the channels R, G, B and Y");
    for (const char* name : {"R", "G", "B", "Y", "A"}) {
        const Imf::Channel* channel = channels.findChannel(name);
        if (!channel) continue;
        if (channel->type == Imf::UINT)
            Fail(shown, std::string("OpenEXR: the channel ") + name + " holds whole numbers");
        if (channel->type == Imf::FLOAT) contents.type = Imf::FLOAT;
        if (channel->xSampling != 1 || channel->ySampling != 1) {
            Fail(shown, std::string("OpenEXR: the channel ") + name + " is subsampled");
        }
    }
    return contents;
}

PictureInfo Probe(const InputFile& file) {
    return Guard(file.Shown(), [&] {
        Source source(file);
        Imf::InputFile input(source, 0);
        const Contents contents = ContentsOf(input.header(), file.Shown());
        const Imath::Box2i& window = input.header().displayWindow();
        PictureInfo info;
        info.width = int64_t{window.max.x} - window.min.x + 1;
        info.height = int64_t{window.max.y} - window.min.y + 1;
        info.bits = contents.type == Imf::FLOAT ? 32 : 16;
        info.floating = true;
        info.colour = contents.Colours() == 3 ? (contents.alpha ? "RGBA" : "RGB")
                                              : (contents.alpha ? "grey and alpha" : "grey");
        if (contents.alpha) info.alpha = AlphaKind::Premultiplied;
        return info;
    });
}

// Gives rows of the data window as RGBA, one at a time, each at most once and top first.
class RowReader {
  public:
    RowReader(Source& source, const Contents& contents, const std::string& shown) : contents_(contents) {
        if (contents.chroma) {
            rgba_ = std::make_unique<Imf::RgbaInputFile>(source, 0);
            window_ = rgba_->dataWindow();
        } else {
            plain_ = std::make_unique<Imf::InputFile>(source, 0);
            window_ = plain_->header().dataWindow();
        }
        // A row may overshoot the picture, but not without end.
        if (Width() < 1 || Width() > 4 * int64_t{kLargestSide})
            Fail(shown, "OpenEXR: the data window is too wide");
        row_.resize(static_cast<size_t>(Width()) * 4);
        half_row_.resize(contents.chroma ? static_cast<size_t>(Width()) : 0);
    }

    const Imath::Box2i& Window() const { return window_; }
    int64_t Width() const { return int64_t{window_.max.x} - window_.min.x + 1; }

    // 4 samples a pixel, from the data window's left edge.
    const float* Read(int y) {
        if (contents_.chroma) {
            ReadChroma(y);
        } else {
            ReadPlain(y);
        }
        return row_.data();
    }

  private:
    void ReadPlain(int y) {
        // The base of a slice is where the pixel (0, 0) would lie; it is never read.
        const auto address = reinterpret_cast<uintptr_t>(row_.data());
        const auto base = address - static_cast<uintptr_t>(static_cast<intptr_t>(window_.min.x) * 16);
        const auto slice = [&](int channel, double missing) {
            return Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(base + static_cast<uintptr_t>(channel) * 4),
                              16, 0, 1, 1, missing);
        };
        Imf::FrameBuffer buffer;
        if (contents_.rgb) {
            buffer.insert("R", slice(0, 0.0));
            buffer.insert("G", slice(1, 0.0));
            buffer.insert("B", slice(2, 0.0));
        } else {
            buffer.insert("Y", slice(0, 0.0));
        }
        buffer.insert("A", slice(3, 1.0));
        plain_->setFrameBuffer(buffer);
        plain_->readPixels(y);
        if (contents_.rgb) return;
        for (size_t i = 0; i < row_.size(); i += 4) row_[i + 1] = row_[i + 2] = row_[i];
    }

    void ReadChroma(int y) {
        const auto address = reinterpret_cast<uintptr_t>(half_row_.data());
        const auto shift =
            static_cast<uintptr_t>(static_cast<intptr_t>(window_.min.x) * intptr_t{sizeof(Imf::Rgba)});
        rgba_->setFrameBuffer(reinterpret_cast<Imf::Rgba*>(address - shift), 1, 0);
        rgba_->readPixels(y);
        for (size_t i = 0; i < half_row_.size(); ++i) {
            row_[i * 4] = half_row_[i].r;
            row_[i * 4 + 1] = half_row_[i].g;
            row_[i * 4 + 2] = half_row_[i].b;
            row_[i * 4 + 3] = half_row_[i].a;
        }
    }

    const Contents contents_;
    std::unique_ptr<Imf::InputFile> plain_;
    std::unique_ptr<Imf::RgbaInputFile> rgba_;
    Imath::Box2i window_;
    std::vector<float> row_;
    std::vector<Imf::Rgba> half_row_;
};

void Read(const InputFile& file, const PictureInfo&, PictureRows& rows, Progress& progress) {
    Guard(file.Shown(), [&] {
        Source source(file);
        Imath::Box2i display;
        Contents contents;
        {
            Imf::InputFile input(source, 0);
            display = input.header().displayWindow();
            contents = ContentsOf(input.header(), file.Shown());
        }
        source.seekg(0);
        RowReader reader(source, contents, file.Shown());
        const Imath::Box2i& data = reader.Window();
        const int64_t first = std::max<int64_t>(data.min.x, display.min.x);
        const int64_t last = std::min<int64_t>(data.max.x, display.max.x);
        std::vector<float> row(static_cast<size_t>(rows.Width()) * 4);
        for (int32_t y = 0; y < rows.Height(); ++y) {
            const int64_t file_y = int64_t{display.min.y} + y;
            if (file_y >= data.min.y && file_y <= data.max.y && first <= last) {
                const float* samples = reader.Read(static_cast<int>(file_y)) + (first - data.min.x) * 4;
                std::copy_n(samples, (last - first + 1) * 4, row.data() + (first - display.min.x) * 4);
            } else {
                std::fill(row.begin(), row.end(), 0.0f);
            }
            rows.Put(y, row.data(), 4, AlphaKind::Premultiplied);
            progress.Report(y, rows.Height());
        }
    });
}

void Write(PictureRows& rows, int depth, const WriteOptions&, OutputFile& file, Progress& progress) {
    Guard(file.Shown(), [&] {
        const Imf::PixelType type = depth == 8 ? Imf::HALF : Imf::FLOAT;
        Imf::Header header(rows.Width(), rows.Height());
        header.compression() = Imf::ZIP_COMPRESSION;
        const char* const names[] = {"R", "G", "B", "A"};
        for (const char* name : names) header.channels().insert(name, Imf::Channel(type));
        Sink sink(file);
        Imf::OutputFile output(sink, header, 0);

        std::vector<float> row(static_cast<size_t>(rows.Width()) * 4);
        std::vector<half> half_row(type == Imf::HALF ? row.size() : 0);
        Imf::FrameBuffer buffer;
        const size_t size = type == Imf::HALF ? sizeof(half) : sizeof(float);
        char* base = type == Imf::HALF ? reinterpret_cast<char*>(half_row.data())
                                       : reinterpret_cast<char*>(row.data());
        for (size_t i = 0; i < 4; ++i)
            buffer.insert(names[i], Imf::Slice(type, base + i * size, size * 4, 0));
        output.setFrameBuffer(buffer);
        for (int32_t y = 0; y < rows.Height(); ++y) {
            rows.Get(y, row.data(), 4, AlphaKind::Premultiplied);
            for (size_t i = 0; i < half_row.size(); ++i) half_row[i] = half(row[i]);
            output.writePixels(1);
            progress.Report(y, rows.Height());
        }
    });
}

}  // namespace

const PictureFormat kFormatEXR = {"exr", "OpenEXR", {"exr"}, Recognises, Probe, Read, Write, true};
