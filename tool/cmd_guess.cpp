// rk guess-alpha: how a picture's alpha is to be read.
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Command.h"
#include "CommandLine.h"
#include "Failure.h"
#include "OutputFile.h"
#include "PictureFile.h"
#include "RK/indep/filter/RK_GuessAlpha.h"

namespace {

struct Guess {
    int32_t kind = RK_kAlphaUndetermined;
    RK_Pixel8 matte = {};
    std::string message;
};

Guess GuessOf(const PictureFile& file) {
    Progress progress(true, 1);
    const WorldPtr world = file.Decode(8, progress, true);
    Guess guess;
    char message[RK_kGuessAlphaMessageBytes];
    CheckResult(RK_GuessAlphaMessage(nullptr, &world->record, nullptr, &guess.kind, &guess.matte, message),
                file.Shown());
    guess.message = message;
    return guess;
}

const char* NameOf(int32_t kind) {
    switch (kind) {
        case RK_kAlphaStraight: return "straight";
        case RK_kAlphaPremultiplied: return "premultiplied";
        default: return "undetermined";
    }
}

std::string NameOf(const RK_Pixel8& matte) {
    return fmt::format("#{:02x}{:02x}{:02x}", matte.red, matte.green, matte.blue);
}

std::string Line(const PictureFile& file, const Guess& guess) {
    std::string line = file.Shown() + ": " + NameOf(guess.kind);
    if (guess.kind == RK_kAlphaPremultiplied) line += ", matte " + NameOf(guess.matte);
    if (file.Info().alpha == AlphaKind::None) line += " (the file has no alpha)";
    if (!guess.message.empty()) line += " (" + OneLine(guess.message) + ")";
    return line + "\n";
}

std::string Record(const PictureFile& file, const Guess& guess) {
    nlohmann::ordered_json record = {
        {"file", file.Path()},
        {"alpha", NameOf(guess.kind)},
        {"matte", nullptr},
        {"message", guess.message},
        {"file_has_alpha", file.Info().alpha != AlphaKind::None},
    };
    if (guess.kind == RK_kAlphaPremultiplied) record["matte"] = NameOf(guess.matte);
    return record.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace

int RunGuessAlpha(const std::vector<std::string>& arguments) {
    CLI::App app("Tells how the alpha of pictures is to be read.", "rk guess-alpha");
    std::vector<std::string> files;
    bool json = false;
    app.add_option("FILE", files, "Picture files; - is standard input")->required();
    app.add_flag("--json", json, "One JSON record a line");
    app.footer(
        "The guess is made from the pixels alone, as the file stores them, at 8 bits:\n"
        "straight, premultiplied with the matte colour that shines through where alpha is\n"
        "low, or undetermined where nothing is visible. rk info tells what a file says of\n"
        "itself.\n\n"
        "Examples:\n"
        "  rk guess-alpha samples/paint.png\n"
        "  rk guess-alpha --json samples/*.png\n\n"
        "Exit status: 0 good, 1 failed, 2 misuse.");
    if (!Parse(app, arguments)) return kExitGood;
    const Library library;
    for (const std::string& path : files) {
        const PictureFile file(path);
        const Guess guess = GuessOf(file);
        Print(json ? Record(file, guess) : Line(file, guess));
    }
    return kExitGood;
}
