// rk resize, halve and boxmean: a picture in another size, or smoothed.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "ArgumentWords.h"
#include "Command.h"
#include "Failure.h"
#include "PictureStep.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/sample/RK_Decimate.h"
#include "RK/indep/sample/RK_SummedAreaTable.h"

namespace {

int32_t Scaled(int64_t side, double percent, const std::string& option) {
    const double scaled = std::max(1.0, std::floor(static_cast<double>(side) * percent / 100 + 0.5));
    if (scaled > kLargestSide)
        Misuse(fmt::format("{}: a side of {:.0f} pixels is above {}", option, scaled, kLargestSide));
    return static_cast<int32_t>(scaled);
}

template <class P, class E>
void BoxMean(const RK_World& in, const E* table, int32_t width, int32_t height, double radius, RK_World& out,
             Progress& progress) {
    const bool whole = radius == std::floor(radius);
    const auto r = static_cast<int32_t>(radius);
    const auto reach = static_cast<float>(radius + 0.5);
    for (int32_t y = 0; y < in.record.height; ++y) {
        P* pixel = reinterpret_cast<P*>(static_cast<uint8_t*>(out.record.data) +
                                        static_cast<ptrdiff_t>(y) * out.record.rowbytes);
        for (int32_t x = 0; x < in.record.width; ++x, ++pixel) {
            if (whole) {
                RK_SummedAreaTable_SampleDraft(width, height, table, x - r, y - r, x + r + 1, y + r + 1,
                                               pixel);
            } else {
                const auto fx = static_cast<float>(x), fy = static_cast<float>(y);
                RK_SummedAreaTable_SampleAA(width, height, table, fx - reach, fy - reach, fx + reach,
                                            fy + reach, pixel);
            }
        }
        progress.Report(y + 1, in.record.height);
    }
}

}  // namespace

int RunResize(const std::vector<std::string>& words) {
    StepWords parser("Makes a picture larger or smaller.", "rk resize");
    std::string size_text, quality = "best";
    parser.app.add_option("--size", size_text, "Such as 640x480 or 37.5%")
        ->type_name("WxH|PERCENT")
        ->required();
    parser.app.add_option("--quality", quality, "draft takes nearest pixels; best filters (best)")
        ->type_name("draft|best");
    parser.app.footer(
        std::string("A side that shrinks is averaged, one that grows is interpolated. The outermost\n"
                    "pixels of a picture that grows fade a little towards transparent.\n"
                    "\n"
                    "Examples:\n"
                    "  rk resize samples/coffee.png -o out.png --size 37.5%\n"
                    "  rk resize samples/cat.png -o out.png --size 900x600 --quality draft") +
        kExitLine);
    ResultArguments result;
    if (!parser.Read(words, result)) return kExitGood;
    if (quality != "draft" && quality != "best")
        Misuse("--quality " + OneLine(quality) + ": draft or best is wanted");
    const bool percent = !size_text.empty() && size_text.back() == '%';
    if (!percent && size_text.find('x') == std::string::npos)
        Misuse("--size " + OneLine(size_text) + ": WxH or a percentage such as 50% is wanted");
    const double factor =
        percent ? Number("--size", size_text.substr(0, size_text.size() - 1), 0.001, 1e6) : 0.0;
    const Size given = percent ? Size{} : SizeOf("--size", size_text);
    PictureStep step;
    step.name = "resizing";
    step.size = [&](const PictureFile& in, int) {
        if (!percent) return given;
        const std::string option = "--size " + size_text;
        return Size{Scaled(in.Info().width, factor, option), Scaled(in.Info().height, factor, option)};
    };
    step.draw = [&](RK_World& in, RK_World& out, int, Progress& progress) {
        const auto copy = quality == "draft" ? RK_CopyBits_Draft : RK_CopyBits_HQ_Straight;
        CheckResult(copy(progress.Info(), &in.record, &out.record, nullptr, nullptr), ShownInput(parser.in));
    };
    return RunPictureStep(parser.in, result, step);
}

int RunHalve(const std::vector<std::string>& words) {
    StepWords parser("Makes a picture half as large.", "rk halve");
    std::string filter = "box";
    bool keep_odd = false;
    parser.app.add_option("--filter", filter, "box takes the mean of 2 x 2; gauss five taps each way (box)")
        ->type_name("box|gauss");
    parser.app.add_flag("--keep-odd", keep_odd, "An odd last row or column counts as a whole one");
    parser.app.footer(
        std::string("For 8 and 16 bits: a float picture needs --depth 8 or 16. The taps of gauss that\n"
                    "fall outside the picture count as nothing, so that its edges fade.\n"
                    "\n"
                    "Examples:\n"
                    "  rk halve samples/coffee.png -o out.png\n"
                    "  rk halve samples/cat.png -o out.png --filter gauss --keep-odd --depth 16") +
        kExitLine);
    ResultArguments result;
    if (!parser.Read(words, result)) return kExitGood;
    if (filter != "box" && filter != "gauss")
        Misuse("--filter " + OneLine(filter) + ": box or gauss is wanted");
    if (result.depth == 32) Misuse("--depth float: float pictures are not halved; 8 or 16 is wanted");
    PictureStep step;
    step.name = "halving";
    step.size = [&](const PictureFile& in, int depth) {
        if (depth == 32) Fail(in.Shown(), "float pictures are not halved: give --depth 8 or 16");
        const int64_t odd = keep_odd ? 1 : 0;
        const int64_t width = (in.Info().width + odd) / 2, height = (in.Info().height + odd) / 2;
        if (width == 0 || height == 0) Fail(in.Shown(), "nothing is left of one pixel: give --keep-odd");
        if (width > kLargestSide || height > kLargestSide) Fail(in.Shown(), "the picture is too large");
        return Size{static_cast<int32_t>(width), static_cast<int32_t>(height)};
    };
    step.draw = [&](RK_World& in, RK_World& out, int, Progress&) {
        (filter == "box" ? RK_BoxFilteredDecimateByTwo : RK_GaussFilteredDecimateByTwo)(&in, keep_odd, &out);
    };
    return RunPictureStep(parser.in, result, step);
}

int RunBoxMean(const std::vector<std::string>& words) {
    StepWords parser("Gives each pixel the mean of the box around it.", "rk boxmean");
    std::string radius_text;
    parser.app.add_option("--radius", radius_text, "Pixels to each side; may be fractional")
        ->type_name("R")
        ->required();
    parser.app.footer(
        std::string("The box is 2R + 1 pixels wide and high, and costs the same for every R. Colour is\n"
                    "weighted by alpha; what lies outside the picture counts as transparent.\n"
                    "\n"
                    "Examples:\n"
                    "  rk boxmean samples/coffee.png -o out.png --radius 12\n"
                    "  rk boxmean samples/paint.png -o out.png --radius 2.5 --depth 16") +
        kExitLine);
    ResultArguments result;
    if (!parser.Read(words, result)) return kExitGood;
    const double radius = Number("--radius", radius_text, 0, kLargestSide);
    PictureStep step;
    step.name = "averaging";
    step.size = SameSize;
    step.draw = [&](RK_World& in, RK_World& out, int depth, Progress& progress) {
        const RK_SummedAreaTable table(&in);
        const int32_t w = table.width, h = table.height;
        if (depth == 8) {
            BoxMean<RK_Pixel8>(in, table.float_table, w, h, radius, out, progress);
        } else if (depth == 16) {
            BoxMean<RK_Pixel16>(in, table.float_table, w, h, radius, out, progress);
        } else {
            BoxMean<RK_PixelFloat>(in, table.double_table, w, h, radius, out, progress);
        }
    };
    return RunPictureStep(parser.in, result, step);
}
