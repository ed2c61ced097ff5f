// rk text: text on a picture, in the library's own small letters.
#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "ArgumentWords.h"
#include "Command.h"
#include "Failure.h"
#include "RK/indep/composite/RK_TransferRect.h"
#include "RK/indep/filter/RK_DebugPrint.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "ResultArguments.h"

namespace {

constexpr const char* kJpegQuality = "--jpeg-quality";
constexpr size_t kLongest = 1023;

// clang-format off
constexpr const char kFooterText[] = R"(
A letter is 5 by 7 pixels in a cell of 6 by 10, all of that N times as large with
--scale N. The first cell's top left corner lies at X,Y, which may be outside the
picture.

In TEXT, \n begins a new line, \t goes to about the fifth cell of the line, and \\ is
a backslash. Characters outside ASCII are left out. A TEXT that begins with a dash
follows --.

Examples:
  rk text samples/coffee.png -o out.png --at 20,20 --scale 3 "take 12\nscene 4"
  rk text samples/cat.png -o out.png --colour "#ffe000" "cat.png: 451 x 300"

Exit status: 0 good, 1 failed, 2 misuse. The result appears whole or not at all.)";
constexpr const char* kFooter = &kFooterText[1];  // after the first line's end
// clang-format on

struct TextArguments : ResultArguments {
    std::string in, text;
    Place at;
    int32_t scale = 1;
    RK_PixelFloat colour = {1.0f, 1.0f, 1.0f, 1.0f};
};

// Escapes are taken for what they mean.
std::string Unescaped(const std::string& typed) {
    std::string text;
    for (size_t i = 0; i < typed.size(); ++i) {
        const char next = typed[i] == '\\' && i + 1 < typed.size() ? typed[i + 1] : '\0';
        if (next == 'n' || next == 't' || next == '\\') {
            text += next == 'n' ? '\n' : next == 't' ? '\t' : '\\';
            ++i;
        } else {
            text += typed[i];
        }
    }
    return text;
}

RK_PixelFloat Opaque(const RK_Pixel8& c) {
    const float unit = 1.0f / 255.0f;
    return {1.0f, c.red * unit, c.green * unit, c.blue * unit};
}

// What the text takes, as the library lays it out.
Size CellsOf(const std::string& text) {
    Size size = {0, RK_kGlyphHeight};
    int32_t x = 0;
    for (const char c : text) {
        if (c == '\n') {
            x = 0;
            size.height += RK_kGlyphHeight;
        } else if (c == '\t') {
            x = x % 4 + 24;
        } else if (c != '\r' && static_cast<unsigned char>(c) < 128) {
            x += RK_kGlyphWidth;
        }
        size.width = std::max(size.width, x);
    }
    return size;
}

// The text on a transparent world of its own, as large as it is to be. The library asks for a column more at
// the right, and lays the first row of cells one row down.
WorldPtr Lettered(const TextArguments& arguments, int depth, const RK_LayerDef& picture) {
    const Size cells = CellsOf(arguments.text);
    const int32_t n = arguments.scale;
    // One letter more than shows.
    const int32_t width =
        std::min(cells.width + 1, (picture.width - arguments.at.x) / n + 2 * RK_kGlyphWidth);
    const int32_t height =
        std::min(cells.height + 1, (picture.height - arguments.at.y) / n + 2 * RK_kGlyphHeight);
    if (width < 1 || height < 1) return nullptr;
    if (width > kLargestSide / n || height > kLargestSide / n)
        Misuse(fmt::format("--scale {}: the text would be {} x {} pixels large; {} at most", n,
                           int64_t{width} * n, int64_t{height} * n, kLargestSide));
    WorldPtr letters = NewWorld(width, height, depth, "the text");
    letters->Clear(nullptr);
    CheckResult(RK_DebugPrint(letters.get(), 0, 0, arguments.colour, "%s", arguments.text.c_str()),
                "the text");
    if (n == 1) return letters;
    WorldPtr large = NewWorld(width * n, height * n, depth, "the text");
    CheckResult(RK_CopyBits_Draft(nullptr, &letters->record, &large->record, nullptr, nullptr), "the text");
    return large;
}

int Run(const TextArguments& arguments) {
    int depth = 8;
    const std::unique_ptr<PictureFile> file = OpenPicture(arguments.in, arguments, depth);
    OutputFile out(arguments.out);
    const Library library;
    Progress progress(arguments.quiet, 2 + DeliverStages(arguments));
    progress.Stage("reading " + file->Shown());
    WorldPtr world = file->Decode(depth, progress);
    progress.Stage("writing on " + file->Shown());
    if (const WorldPtr letters = Lettered(arguments, depth, world->record)) {
        const RK_CompositeModePlus over(RK_Xfer_Over, 1.0f, nullptr, false, 0);
        CheckResult(RK_TransferRect(progress.Info(), nullptr, nullptr, RK_kBothFields, nullptr,
                                    &letters->record, &over, nullptr, nullptr, arguments.at.x,
                                    arguments.at.y - arguments.scale, &world->record),
                    file->Shown());
    }
    progress.Report(1, 1);
    Deliver(world, depth, arguments, out, progress);
    return kExitGood;
}

}  // namespace

int RunText(const std::vector<std::string>& arguments) {
    CLI::App app("Writes on a picture.", "rk text");
    std::string typed, at, scale, colour;
    TextArguments parsed;
    ResultText result;
    app.add_option("IN", parsed.in, "The picture; - is standard input")->required();
    app.add_option("TEXT", typed, "What is written, 1023 characters at most")->required();
    app.add_option("--at", at, "Where the first letter's cell begins (0,0)")->type_name("X,Y");
    app.add_option("--scale", scale, "How large, 1 to 64 (1)")->type_name("N");
    app.add_option("--colour,--color", colour, "black, white, grey or #rrggbb (white)")->type_name("COLOUR");
    app.footer(kFooter);
    AddResultOptions(app, result, kJpegQuality);
    if (!Parse(app, arguments)) return kExitGood;
    parsed.text = Unescaped(typed);
    if (parsed.text.size() > kLongest)
        Misuse(fmt::format("the text has {} characters; {} at most", parsed.text.size(), kLongest));
    if (!at.empty()) parsed.at = PlaceOf("--at", at, -kLargestSide, kLargestSide);
    if (!scale.empty()) parsed.scale = Whole("--scale", scale, 1, 64);
    if (!colour.empty()) parsed.colour = Opaque(ColourOf("--colour", colour));
    ReadResult(result, kJpegQuality, parsed);
    const auto foreign = [](char c) { return static_cast<unsigned char>(c) > 127; };
    if (std::any_of(parsed.text.begin(), parsed.text.end(), foreign))
        Note(parsed, "characters outside ASCII are left out of the text");
    return Run(parsed);
}
