// rk blur.
#include <fmt/format.h>

#include "Command.h"
#include "Failure.h"
#include "PictureStep.h"
#include "RK/indep/filter/RK_BoxBlur.h"
#include "RK/indep/filter/RK_GaussianBlur.h"

namespace {

constexpr int32_t kMostPasses = 100;

uint32_t ChannelsOf(const std::string& text) {
    static const std::string letters = "argb";  // in the order of their flags
    uint32_t flags = 0;
    for (const char letter : text) {
        const size_t at = letters.find(letter);
        const uint32_t flag = at == std::string::npos ? 0 : 1u << at;
        if (flag == 0 || (flags & flag) != 0)
            Misuse(fmt::format("--channels {}: some of the letters a, r, g, b are wanted, each once",
                               OneLine(text)));
        flags |= flag;
    }
    if (flags == 0) Misuse("--channels: some of the letters a, r, g, b are wanted");
    return flags;
}

// The place of a word among those that are wanted.
int ChoiceOf(const std::string& option, const std::string& text, const std::vector<std::string>& wanted) {
    for (size_t i = 0; i < wanted.size(); ++i)
        if (text == wanted[i]) return static_cast<int>(i);
    std::string all;
    for (size_t i = 0; i < wanted.size(); ++i)
        all += (i == 0 ? "" : i + 1 == wanted.size() ? " or " : ", ") + wanted[i];
    Misuse(fmt::format("{} {}: {} is wanted", option, OneLine(text), all));
}

// One call of the library: a blur along an axis.
struct Blur {
    float radius;
    bool gaussian;
    int32_t passes;  // of the box
    uint32_t flags;

    void operator()(const RK_World& in, bool columns, bool in_premultiplied, bool out_premultiplied,
                    RK_World& out, const std::string& shown, Progress& progress) const {
        RK_ProgressInfo* const info = progress.Info();
        CheckResult(gaussian ? RK_GaussianBlur1D(info, &in, radius, flags, columns, in_premultiplied, columns,
                                                 out_premultiplied, 0, &out)
                             : RK_BoxBlur1D(info, &in, radius, passes, flags, columns, in_premultiplied,
                                            columns, out_premultiplied, 0, &out),
                    shown);
    }
};

}  // namespace

int RunBlur(const std::vector<std::string>& words) {
    StepWords parser("Blurs a picture, along its rows, its columns or both.", "rk blur");
    std::string radius, filter = "box", passes = "1", channels = "argb", edges = "keep", axis = "both";
    parser.app.add_option("--radius", radius, "Pixels to each side; may be fractional")
        ->type_name("R")
        ->required();
    parser.app.add_option("--filter", filter, "A box, at the same cost for every R, or a Gaussian (box)")
        ->type_name("box|gauss");
    parser.app.add_option("--passes", passes, "How often it is blurred; a box looks soft from 3 on (1)")
        ->type_name("N");
    parser.app.add_option("--channels", channels, "Those that are blurred (argb)")->type_name("LETTERS");
    parser.app.add_option("--edges", edges, "What lies outside counts for nothing, or as transparent (keep)")
        ->type_name("keep|fade");
    parser.app.add_option("--axis", axis, "Both, along rows alone, or along columns alone (both)")
        ->type_name("both|x|y");
    parser.app.footer(
        std::string("Colour is weighted by alpha where alpha is among the channels; otherwise each colour\n"
                    "is blurred as it stands. At float depth a box holds what it blurs to 0..1.\n"
                    "\n"
                    "Examples:\n"
                    "  rk blur samples/coffee.png -o out.png --radius 8 --passes 3\n"
                    "  rk blur samples/paint.png -o out.png --radius 12.5 --filter gauss --edges fade\n"
                    "  rk blur samples/cat.png -o out.png --radius 30 --axis x --channels rg") +
        kExitLine);
    ResultArguments result;
    if (!parser.Read(words, result)) return kExitGood;

    Blur blur = {};
    blur.radius = static_cast<float>(Number("--radius", radius, 0, kLargestSide));
    blur.gaussian = ChoiceOf("--filter", filter, {"box", "gauss"}) == 1;
    blur.passes = Whole("--passes", passes, 1, kMostPasses);
    blur.flags = ChannelsOf(channels);
    const bool weighted = (blur.flags & RK_kBlurAlpha) != 0 && blur.flags != RK_kBlurAlpha;
    if (ChoiceOf("--edges", edges, {"keep", "fade"}) == 0) blur.flags |= RK_kBlurRenormalise;
    const int axes = ChoiceOf("--axis", axis, {"both", "x", "y"});

    // A Gaussian takes a call for each of its passes. They write to and fro, to the result at last.
    const int each = blur.gaussian ? blur.passes : 1;
    const int calls = axes == 0 ? 2 * each : each;
    PictureStep step;
    step.name = "blurring";
    step.parts = calls;
    step.size = SameSize;
    step.draw = [&](RK_World& in, RK_World& out, int depth, Progress& progress) {
        const std::string shown = ShownInput(parser.in);
        const WorldPtr between =
            calls > 1 ? NewWorld(in.record.width, in.record.height, depth, shown) : nullptr;
        const RK_World* from = &in;
        for (int k = 0; k < calls; ++k) {
            if (k > 0) progress.Stage(step.name + " " + shown);
            const bool last = k == calls - 1, columns = axes == 2 || (axes == 0 && k >= each);
            RK_World& to = (calls - 1 - k) % 2 == 0 ? out : *between;
            blur(*from, columns, k > 0 || !weighted, !last || !weighted, to, shown, progress);
            from = &to;
        }
    };
    return RunPictureStep(parser.in, result, step);
}
