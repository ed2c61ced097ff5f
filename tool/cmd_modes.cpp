// rk modes: the transfer modes as a table, as a page, or drawn on two pictures.
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Command.h"
#include "CommandLine.h"
#include "ContactSheet.h"
#include "Failure.h"
#include "ModeNames.h"

namespace {

std::string Table() {
    std::string text =
        fmt::format("{:>6}  {:<19} {:<11} {:<5} {}\n", "number", "name", "class", "flag", "what it does");
    for (const Mode& mode : Modes()) {
        text += fmt::format("{:>6}  {:<19} {:<11} {:<5} {}\n", mode.number, mode.name,
                            ClassName(mode.info.mode_class), mode.info.flag, mode.info.does);
    }
    return text;
}

std::string Json() {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Mode& mode : Modes()) {
        list.push_back({{"number", mode.number},
                        {"name", mode.name},
                        {"constant", std::string("RK_Xfer_") + mode.info.name},
                        {"class", ClassName(mode.info.mode_class)},
                        {"flag", mode.info.flag},
                        {"does", mode.info.does}});
    }
    return list.dump(2) + "\n";
}

std::string Markdown() {
    std::string text =
        "# The transfer modes\n\n"
        "Written by `rk modes --markdown`. `s` is the source, the picture laid on; `d` is the destination "
        "below it.\n\n"
        "- *plain*: writes what it writes.\n"
        "- *guard*: writes alpha, which `rgb_only` saves and restores.\n"
        "- *over first*: the source goes behind the destination first; then colours change.\n"
        "- *wrap*: blends against a neutral black, white or grey where the destination is transparent.\n\n"
        "The flag is what `RK_GetTransferFlags` tells.\n\n"
        "| number | constant | name for `rk` | class | flag | what it does |\n|---:|---|---|---|---:|---|\n";
    for (const Mode& mode : Modes()) {
        text += fmt::format("| {} | `RK_Xfer_{}` | {} | {} | {} | {} |\n", mode.number, mode.info.name,
                            mode.name, ClassName(mode.info.mode_class), mode.info.flag, mode.info.does);
    }
    return text;
}

void DrawSheet(const std::string& path, const std::string& back_path, const std::string& front_path,
               bool quiet) {
    const PictureFormat* format = FormatOfPath(path);
    if (!format) Misuse(OneLine(path) + ": the name tells no format (.png, .jpg, .tif, .exr)");
    const PictureFile back(back_path), front(front_path);
    OutputFile out(path);
    const Library library;
    Progress progress(quiet, kContactSheetStages + 1);
    const WorldPtr sheet = ContactSheet(back, front, progress);
    progress.Stage("writing " + out.Shown());
    WritePicture(*sheet, *format, {}, out, progress);
    out.Commit();
}

}  // namespace

int RunModes(const std::vector<std::string>& arguments) {
    CLI::App app("Lists the transfer modes, or draws all of them on two pictures.", "rk modes");
    bool json = false, markdown = false, quiet = false;
    std::string sheet, back, front;
    CLI::Option* as_json = app.add_flag("--json", json, "As JSON");
    CLI::Option* as_page =
        app.add_flag("--markdown", markdown, "As the page docs/modes.md")->excludes(as_json);
    CLI::Option* as_sheet = app.add_option("--sheet", sheet, "Draw a labelled contact sheet of all modes")
                                ->type_name("OUT")
                                ->excludes(as_json)
                                ->excludes(as_page);
    app.add_flag("-q,--quiet", quiet, "No progress bar");
    CLI::Option* on_back = app.add_option("BACK", back, "The picture below, for --sheet")->needs(as_sheet);
    app.add_option("FRONT", front, "The picture laid onto it, for --sheet")->needs(as_sheet)->needs(on_back);
    app.footer(
        "On the sheet FRONT lies centred on BACK; the matte of matte-mix is FRONT's own\nluma.\n\n"
        "Examples:\n"
        "  rk modes\n"
        "  rk modes --sheet sheet.png samples/coffee.png samples/cat.png\n"
        "  rk modes --markdown > docs/modes.md\n");
    if (!Parse(app, arguments)) return kExitGood;
    if (!sheet.empty()) {
        if (front.empty()) Misuse("--sheet OUT needs BACK and FRONT");
        if (back == "-" && front == "-") Misuse("standard input (-) can be read once only");
        DrawSheet(sheet, back, front, quiet);
        return kExitGood;
    }
    Print(json ? Json() : markdown ? Markdown() : Table());
    return kExitGood;
}
