// rk info: what a picture file holds.
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Command.h"
#include "CommandLine.h"
#include "Failure.h"
#include "PictureFile.h"

namespace {

const char* AlphaName(AlphaKind kind) {
    switch (kind) {
        case AlphaKind::Straight: return "straight";
        case AlphaKind::Premultiplied: return "premultiplied";
        case AlphaKind::None: break;
    }
    return "none";
}

std::string Line(const PictureFile& file) {
    const PictureInfo& info = file.Info();
    std::string line = fmt::format(
        "{}: {}, {} x {}, {} bits{} per channel, {}, {}", file.Shown(), file.Format().name, info.width,
        info.height, info.bits, info.floating ? " float" : "", info.colour,
        info.alpha == AlphaKind::None ? "no alpha" : AlphaName(info.alpha) + std::string(" alpha"));
    if (info.orientation != 1) line += fmt::format(", EXIF orientation {} (not applied)", info.orientation);
    return line + "\n";
}

std::string Record(const PictureFile& file) {
    const PictureInfo& info = file.Info();
    const nlohmann::ordered_json record = {
        {"file", file.Path()},
        {"format", file.Format().name},
        {"width", info.width},
        {"height", info.height},
        {"bits", info.bits},
        {"float", info.floating},
        {"colour", info.colour},
        {"alpha", AlphaName(info.alpha)},
        {"depth", info.Depth() == 32 ? "float" : std::to_string(info.Depth())},
        {"orientation", info.orientation},
    };
    return record.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace

int RunInfo(const std::vector<std::string>& arguments) {
    CLI::App app("Tells what picture files hold.", "rk info");
    std::vector<std::string> files;
    bool json = false;
    app.add_option("FILE", files, "Picture files; - is standard input")->required();
    app.add_flag("--json", json, "One JSON record a line");
    app.footer(
        "The alpha is straight or premultiplied. An orientation is told and not applied.\n\n"
        "Examples:\n"
        "  rk info samples/paint.png\n"
        "  rk info --json samples/*.png\n");
    if (!Parse(app, arguments)) return kExitGood;
    for (const std::string& path : files) {
        const PictureFile file(path);
        Print(json ? Record(file) : Line(file));
    }
    return kExitGood;
}
