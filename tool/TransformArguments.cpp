#include "TransformArguments.h"

#include "Failure.h"
#include "Library.h"

namespace {

constexpr const char* kJpegQuality = "--jpeg-quality";

// clang-format off
constexpr const char kFooterText[] = R"(
IN is scaled and turned about its anchor, then moved. Places count in pixels of
IN, right and down from its top left corner. Without --anchor the anchor is the
middle of IN, so that without --translate the middle stays where it is.
Positive degrees turn clockwise; a negative scale mirrors.

--matrix gives all of that as nine numbers, row after row. A place is a row: it
goes to (x y 1) times the matrix, divided by the third number, so that the shift
stands in the third row. A perspective is approximated by its linear part.

Without --onto the result is as large as IN, or as --size says, and transparent
where IN does not reach. With --onto it is as large as BACK.

KEYS of --motion are poses in time, with a semicolon between them:
  TIME:NAME=VALUE,NAME=VALUE; TIME:NAME=VALUE; ...
TIME counts in frames and rises. NAME is rotate, scale, sx, sy, x or y: degrees,
factors (both, across, down) and a shift. What a key does not name stays as it
was in the key before; the first starts from --rotate, --scale and --translate.
Between keys the pose moves on straight lines; outside them it rests. The
shutter opens at time 0, for 180 of 360 degrees of a frame unless --shutter says
otherwise, and N poses of that time (16) are laid out evenly. The motion of a
picture that only slides or grows is drawn from the first pose to the last.

A picture that misses the result altogether draws nothing, and a note tells so.

Examples:
  rk transform samples/cat.png -o out.png --rotate 30 --scale 0.8
  rk transform samples/paint.png -o out.png --onto samples/coffee.png \
      --rotate -20 --scale 1.5,1.2 --translate 150,30 --mode multiply
  rk transform samples/cat.png -o out.tif --matrix 1,0.2,0,0,1,0,0,0,1 \
      --size 500x400 --depth 16
  rk transform samples/paint.png -o out.png --onto samples/coffee.png \
      --motion "0:rotate=0,x=0,y=20; 1:rotate=40,x=160" --shutter 360 --samples 32

Exit status: 0 good, 1 failed, 2 misuse. The result appears whole or not at all.)";
constexpr const char* kFooter = &kFooterText[1];  // after the first line's end
// clang-format on

// The options as they were typed.
struct TransformText {
    std::string in, rotate, scale, translate, anchor, matrix, size, motion, shutter, samples;
    std::string onto, mode = "over", opacity = "1", matte, matte_kind, matte_at, field, quality = "best";
};

void AddOptions(CLI::App& app, TransformText& text) {
    app.add_option("IN", text.in, "The picture; - is standard input")->required();
    app.option_defaults()->group("Geometry");
    app.add_option("--rotate", text.rotate, "Clockwise (0)")->type_name("DEG");
    app.add_option("--scale", text.scale, "Factors across and down (1)")->type_name("SX[,SY]");
    app.add_option("--translate", text.translate, "Shift right and down (0,0)")->type_name("X,Y");
    app.add_option("--anchor", text.anchor, "What the others turn about (the middle of IN)")
        ->type_name("X,Y");
    app.add_option("--matrix", text.matrix, "Nine numbers instead of the above")->type_name("a,b,..i");
    app.add_option("--quality", text.quality, "draft takes nearest pixels; best filters (best)")
        ->type_name("draft|best");
    app.add_option("--size", text.size, "Size of the result without --onto (that of IN)")->type_name("WxH");
    app.option_defaults()->group("Motion");
    app.add_option("--motion", text.motion, "Poses in time, see below")->type_name("KEYS");
    app.add_option("--shutter", text.shutter, "How long it is open; 360 is a frame (180)")->type_name("DEG");
    app.add_option("--samples", text.samples, "Poses drawn, 2 to 256 (16)")->type_name("N");
    app.option_defaults()->group("Laying on");
    app.add_option("--onto", text.onto, "The picture below")->type_name("BACK");
    app.add_option("--mode", text.mode, "Transfer mode (over); rk modes lists them")->type_name("NAME");
    app.add_option("--opacity", text.opacity, "From 0 to 1 (1)")->type_name("N");
    app.add_option("--matte", text.matte, "Picture that decides where IN shows")->type_name("FILE");
    app.add_option("--matte-kind", text.matte_kind, "alpha, inverted-alpha, luma or inverted-luma (alpha)")
        ->type_name("KIND");
    app.add_option("--matte-at", text.matte_at, "Where the matte's top left corner lies in the result (0,0)")
        ->type_name("X,Y");
    app.add_option("--field", text.field, "Only the even rows of the result (upper), or the odd ones (both)")
        ->type_name("upper|lower|both");
    app.footer(kFooter);
}

GEO_Matrix3 MatrixOfText(const std::string& text) {
    const std::vector<std::string> parts = Parts(text, ',');
    if (parts.size() != 9)
        Misuse("--matrix " + OneLine(text) + ": nine numbers a,b,c,d,e,f,g,h,i are wanted");
    GEO_Matrix3 matrix;
    for (size_t i = 0; i < parts.size(); ++i)
        matrix.m[i / 3][i % 3] = Number("--matrix", parts[i], -1e6, 1e6);
    return matrix;
}

void ReadGeometry(const TransformText& text, TransformArguments& out) {
    const bool posed =
        !(text.rotate.empty() && text.scale.empty() && text.translate.empty() && text.anchor.empty());
    if (!text.matrix.empty()) {
        if (posed || !text.motion.empty())
            Misuse(
                "--matrix stands for --rotate, --scale, --translate, --anchor and --motion: give it alone");
        out.matrix = MatrixOfText(text.matrix);
    }
    out.pose = PoseOf(text.rotate, text.scale, text.translate);
    if (!text.anchor.empty()) out.anchor = PairOf("--anchor", text.anchor, 1e5);
    if (!text.size.empty()) {
        if (!text.onto.empty()) Misuse("--size goes without --onto: the result is as large as BACK");
        out.size = SizeOf("--size", text.size);
    }
    if (text.motion.empty()) {
        if (!(text.shutter.empty() && text.samples.empty()))
            Misuse("--shutter and --samples go with --motion KEYS");
        return;
    }
    out.motion = KeysOf(text.motion, out.pose);
    if (!text.shutter.empty()) out.open = Number("--shutter", text.shutter, 0, 3600) / 360;
    if (!text.samples.empty()) out.samples = Whole("--samples", text.samples, 2, 256);
}

void ReadLaying(const TransformText& text, TransformArguments& out) {
    out.mode = &ModeOfName(text.mode);
    out.opacity = Number("--opacity", text.opacity, 0.0, 1.0);
    if (text.matte.empty() && !(text.matte_kind.empty() && text.matte_at.empty()))
        Misuse("--matte-kind and --matte-at go with --matte FILE");
    if (text.matte.empty() && out.mode->number == RK_Xfer_MatteMix)
        Misuse("the mode " + out.mode->name + " needs --matte FILE");
    out.matte_kind = MatteKindOf(text.matte_kind);
    if (!text.matte_at.empty()) out.matte_at = PlaceOf("--matte-at", text.matte_at, -32768, 32767);
    if (text.quality != "draft" && text.quality != "best")
        Misuse("--quality " + OneLine(text.quality) + ": draft or best is wanted");
    out.quality = text.quality == "draft" ? RK_kDraft : RK_kBest;
    out.field = FieldOf("--field", text.field);
    out.in = text.in;
    out.onto = text.onto;
    out.matte = text.matte;
    if ((text.in == "-") + (text.onto == "-") + (text.matte == "-") > 1)
        Misuse("standard input (-) can be read once only");
}

}  // namespace

std::optional<TransformArguments> ParseTransform(const std::vector<std::string>& arguments) {
    CLI::App app("Turns, scales and moves a picture.", "rk transform");
    TransformText text;
    ResultText result;
    TransformArguments parsed;
    AddOptions(app, text);
    AddResultOptions(app, result, kJpegQuality);
    app.add_flag("--json", parsed.json, "Print sizes, geometry and times as JSON")->group("Result");
    if (!Parse(app, arguments)) return std::nullopt;
    for (const CLI::Option* option : app.get_options()) {
        if (option->count() > 0 && option->get_items_expected_max() > 0 && option->as<std::string>().empty())
            Misuse(option->get_name() + ": a value is missing");
    }
    ReadGeometry(text, parsed);
    ReadLaying(text, parsed);
    ReadResult(result, kJpegQuality, parsed);
    if (parsed.out == "-" && parsed.json) Misuse("-o - and --json both want standard output");
    return parsed;
}
