#include "ResultArguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "ArgumentWords.h"
#include "Failure.h"
#include "RK/indep/composite/RK_TransferRect.h"

std::vector<CLI::Option*> AddResultOptions(CLI::App& app, ResultText& text, const char* quality) {
    app.option_defaults()->group("Result");
    return {app.add_option("-o,--output", text.out, "Where the result goes; - is standard output")
                ->type_name("OUT"),
            app.add_option("--depth", text.depth, "8, 16 or float (the deepest of the inputs)")
                ->type_name("DEPTH"),
            app.add_option("--format", text.format, "png, jpeg, tiff or exr (by the name of OUT)")
                ->type_name("F"),
            app.add_option(quality, text.quality, "Of JPEG, from 1 to 100 (95)")->type_name("N"),
            app.add_option("--flatten", text.flatten, "Lay the result on black, white, grey or #rrggbb")
                ->type_name("COLOUR"),
            app.add_flag("-q,--quiet", text.quiet, "No progress bar and no notes")};
}

void ReadResult(const ResultText& text, const char* quality, ResultArguments& out) {
    if (text.out.empty()) Misuse("-o OUT is missing (--help tells more)");
    out.out = text.out;
    out.quiet = text.quiet;
    if (!text.format.empty()) {
        out.format = FormatOfKey(text.format);
        if (!out.format) Misuse("--format " + OneLine(text.format) + ": png, jpeg, tiff or exr is wanted");
    } else if (text.out == "-") {
        Misuse("-o - needs --format png, jpeg, tiff or exr");
    } else {
        out.format = FormatOfPath(text.out);
        if (!out.format)
            Misuse(OneLine(text.out) + ": the name tells no format (.png, .jpg, .tif, .exr): give --format");
    }
    if (text.depth == "float" || text.depth == "32") {
        out.depth = 32;
    } else if (text.depth == "8" || text.depth == "16") {
        out.depth = text.depth == "8" ? 8 : 16;
    } else if (!text.depth.empty()) {
        Misuse("--depth " + OneLine(text.depth) + ": 8, 16 or float is wanted");
    }
    if (!text.quality.empty()) out.write.jpeg_quality = Whole(quality, text.quality, 1, 100);
    if (!text.flatten.empty()) out.flatten = ColourOf("--flatten", text.flatten);
}

void Note(const ResultArguments& arguments, const std::string& line) {
    if (!arguments.quiet) fmt::print(stderr, "rk: note: {}\n", line);
}

std::unique_ptr<PictureFile> OpenPicture(const std::string& path, const ResultArguments& arguments,
                                         int& depth) {
    auto file = std::make_unique<PictureFile>(path);
    depth = arguments.depth != 0 ? arguments.depth : std::max(depth, file->Info().Depth());
    if (file->Info().orientation != 1) {
        Note(arguments,
             fmt::format("{}: its EXIF orientation {} is not applied; the pixels are taken as stored",
                         file->Shown(), file->Info().orientation));
    }
    return file;
}

int DeliverStages(const ResultArguments& arguments) { return arguments.flatten ? 2 : 1; }

void Deliver(WorldPtr& result, int depth, const ResultArguments& arguments, OutputFile& out,
             Progress& progress) {
    if (arguments.flatten) result = Flattened(*result, *arguments.flatten, depth, progress);
    progress.Stage("writing " + out.Shown());
    WritePicture(*result, *arguments.format, arguments.write, out, progress);
    out.Commit();
    progress.Clear();
}

WorldPtr Flattened(RK_World& world, RK_Pixel8 c, int depth, Progress& progress) {
    progress.Stage("flattening");
    WorldPtr ground = NewWorld(world.record.width, world.record.height, depth, "the result");
    const float unit = 1.0f / 255.0f;
    ground->Fill(RK_PixelFloat{1.0f, c.red * unit, c.green * unit, c.blue * unit}, nullptr);
    const RK_CompositeModePlus over(RK_Xfer_Over, 1.0f, nullptr, false, 0);
    CheckResult(RK_TransferRect(progress.Info(), nullptr, nullptr, RK_kBothFields, nullptr, &world.record,
                                &over, nullptr, nullptr, 0, 0, &ground->record),
                "the result");
    return ground;
}
