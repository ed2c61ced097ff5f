// rk convolve and crossfade.
#include <fmt/format.h>

#include <cmath>

#include "Command.h"
#include "Failure.h"
#include "KernelWords.h"
#include "PictureStep.h"
#include "RK/indep/composite/RK_Blend.h"
#include "RK/indep/filter/RK_Convolve.h"
#include "RK/indep/passes/RK_Premul.h"

int RunConvolve(const std::vector<std::string>& words) {
    StepWords parser("Filters a picture with a kernel of whole numbers.", "rk convolve");
    std::string word;
    bool normalise = false, no_clamp = false, with_alpha = false;
    parser.app.add_option("--kernel", word, "A text file of numbers, or a built-in kernel")
        ->type_name("FILE|gauss:R|sharpen|edges")
        ->required();
    parser.app.add_flag("--normalise", normalise,
                        "Divide by the kernel's sum instead of 255 for each number");
    parser.app.add_flag("--no-clamp", no_clamp,
                        "Store what leaves 0..full as it comes; at 8 and 16 bits it wraps");
    parser.app.add_flag("--alpha", with_alpha, "Filter alpha too, and weight colour by it");
    parser.app.footer(
        std::string(
            "A file holds a square with odd sides, row by row: 9, 25, 49 ... whole numbers; # begins\n"
            "a comment. It is laid on the picture as it stands. The built-in kernels are normalised.\n"
            "What lies outside the picture counts as black, with --alpha as transparent.\n"
            "\n"
            "Examples:\n"
            "  rk convolve samples/cat.png -o out.png --kernel sharpen\n"
            "  rk convolve samples/paint.png -o out.png --kernel gauss:4.5 --alpha\n"
            "  printf -- '-2 -1 0 -1 1 1 0 1 2' > emboss.txt\n"
            "  rk convolve samples/coffee.png -o out.png --kernel emboss.txt --normalise") +
        kExitLine);
    ResultArguments result;
    if (!parser.Read(words, result)) return kExitGood;
    if (word == "-" && parser.in == "-")
        Misuse("- can stand once only: --kernel and IN both take standard input");
    const Kernel kernel = KernelOf("--kernel", word);
    const uint32_t flags =
        (normalise || kernel.normalised ? RK_KERNEL_NORMALISE : 0u) | (no_clamp ? RK_KERNEL_NO_CLAMP : 0u);
    // A kernel that keeps alpha, whatever the divisor.
    std::vector<int32_t> keep(kernel.entries.size());
    keep[keep.size() / 2] = flags & RK_KERNEL_NORMALISE ? 1 : 255 * static_cast<int32_t>(keep.size());

    PictureStep step;
    step.name = "filtering";
    step.size = SameSize;
    step.draw = [&](RK_World& in, RK_World& out, int, Progress& progress) {
        const std::string shown = ShownInput(parser.in);
        if (with_alpha) CheckResult(RK_Premul(nullptr, 1, &in.record), shown);
        const int32_t* const k = kernel.entries.data();
        CheckResult(RK_Convolve(progress.Info(), &in.record, nullptr, flags, kernel.size,
                                with_alpha ? k : keep.data(), k, k, k, &out.record),
                    shown);
        if (with_alpha) CheckResult(RK_Premul(nullptr, 0, &out.record), shown);
    };
    return RunPictureStep(parser.in, result, step);
}

int RunCrossfade(const std::vector<std::string>& words) {
    CLI::App app("Mixes two pictures of one size.", "rk crossfade");
    std::string a, b, at;
    bool premultiplied = false;
    app.add_option("A", a, "The picture at 0; - is standard input")->required();
    app.add_option("B", b, "The picture at 1")->required();
    app.add_option("--at", at, "From 0, all of A, to 1, all of B")->type_name("T")->required();
    app.add_flag("--premultiplied", premultiplied, "Mix channel by channel, without regard to alpha");
    app.footer(std::string(
                   "Colours are weighted by their alphas, so that what is transparent lends no colour.\n"
                   "--premultiplied is for pictures whose numbers are premultiplied already.\n"
                   "\n"
                   "Examples:\n"
                   "  rk crossfade samples/coffee.png samples/galaxies.jpg -o out.png --at 0.4\n"
                   "  rk crossfade samples/heart.png samples/paint.png -o out.png --at 0.5 --premultiplied") +
               kExitLine);
    ResultText text;
    AddResultOptions(app, text, kJpegQuality);
    if (!Parse(app, words)) return kExitGood;
    ResultArguments arguments;
    ReadResult(text, kJpegQuality, arguments);
    const double t = Number("--at", at, 0, 1);
    if (a == "-" && b == "-") Misuse("- can stand once only: A and B both take standard input");

    int depth = 8;
    const std::unique_ptr<PictureFile> file1 = OpenPicture(a, arguments, depth);
    const std::unique_ptr<PictureFile> file2 = OpenPicture(b, arguments, depth);
    const PictureInfo &one = file1->Info(), &two = file2->Info();
    if (one.width != two.width || one.height != two.height)
        Fail(file2->Shown(),
             fmt::format("it has {} x {} pixels and {} has {} x {}: two of one size are wanted", two.width,
                         two.height, file1->Shown(), one.width, one.height));
    OutputFile out(arguments.out);
    const Library library;
    Progress progress(arguments.quiet, 3 + DeliverStages(arguments));
    progress.Stage("reading " + file1->Shown());
    WorldPtr first = file1->Decode(depth, progress);
    progress.Stage("reading " + file2->Shown());
    const WorldPtr second = file2->Decode(depth, progress);
    progress.Stage("mixing");
    const auto ratio = static_cast<RK_Long>(std::lround(t * 65536));
    CheckResult((premultiplied ? RK_Blend_Premul : RK_Blend_Straight)(nullptr, &first->record,
                                                                      &second->record, ratio, &first->record),
                "the result");
    progress.Report(1, 1);
    Deliver(first, depth, arguments, out, progress);
    return kExitGood;
}
