#include "CompositeArguments.h"

#include <limits>

#include "CommandLine.h"
#include "Failure.h"

namespace {

constexpr const char* kJpegQuality = "--quality";

// clang-format off
constexpr const char kFooterText[] = R"(
The command line is read from left to right. Options after BACK FRONT belong to
FRONT. An --over FRONT2 begins a further layer, laid onto the result so far, and
the options after it belong to FRONT2; and so on, any number of times. What
concerns the result may stand anywhere, once.

Places count in pixels of BACK, right and down from its top left corner, and may
be negative. The result has the size of BACK. The modes are listed by: rk modes
A matte that lies quite outside its layer is an error, unless it is inverted.

Alpha: the library works on straight alpha.
  PNG      straight.
  JPEG     none: a transparent result is an error unless --flatten lays it on a
           colour.
  TIFF     straight or premultiplied, as its ExtraSamples tag says; written
           straight.
  OpenEXR  premultiplied: divided by alpha on reading, multiplied on writing.
           Colour where alpha is 0 does not survive that.
A file without alpha is opaque.

Depth of what is written: 8-bit worlds make 8-bit PNG and TIFF and half-float
OpenEXR; 16-bit worlds 16-bit PNG and TIFF and float OpenEXR; float worlds float
TIFF and OpenEXR, and 16-bit PNG. JPEG is always 8 bits.
Numbers are taken as stored: no colour conversion, and no turning by EXIF
orientation, which is told on standard error.

Examples:
  rk composite samples/coffee.png samples/galaxies.jpg -o out.png --mode screen
  rk composite samples/coffee.png samples/paint.png -o out.tif --at 190,10 \
      --depth 16 --opacity 0.8
  rk composite samples/coffee.png samples/cat.png -o out.png --at 75,50 \
      --matte samples/heart.png --matte-at 108,8 \
      --over samples/paint.png --at -40,30 --mode multiply
  rk composite - samples/paint.png -o - --format png <samples/coffee.png >out.png

Exit status: 0 good, 1 failed, 2 misuse. The result appears whole or not at all.)";
constexpr const char* kFooter = &kFooterText[1];  // after the first line's end
// clang-format on

// The options as they were typed.
struct LayerText {
    std::string mode = "over", opacity = "1", at = "0,0", matte, matte_kind, matte_at, field, seed;
    bool rgb_only = false;
};
// Every option of one group of the command line. Layers have their own; the result's are shared by all
// groups.
class Group {
  public:
    Group(LayerText& layer, ResultText& result, bool& json)
        : app("Lays one picture on another.", "rk composite") {
        app.option_defaults()->group("Layer (again after each --over)");
        app.add_option("--mode", layer.mode, "Transfer mode (over); dashes and case do not matter")
            ->type_name("NAME");
        app.add_option("--opacity", layer.opacity, "From 0 to 1 (1)")->type_name("N");
        app.add_option("--at", layer.at, "Where the layer's top left corner lies (0,0)")->type_name("X,Y");
        app.add_option("--matte", layer.matte, "Picture that decides where the layer shows")
            ->type_name("FILE");
        app.add_option("--matte-kind", layer.matte_kind,
                       "alpha, inverted-alpha, luma or inverted-luma (alpha)")
            ->type_name("KIND");
        app.add_option("--matte-at", layer.matte_at, "Where the matte's top left corner lies (0,0)")
            ->type_name("X,Y");
        app.add_option("--field", layer.field, "Only the even rows of BACK (upper), or the odd ones (both)")
            ->type_name("upper|lower|both");
        app.add_flag("--rgb-only", layer.rgb_only,
                     "Keep the alpha of what lies below, in the modes that allow it");
        app.add_option("--seed", layer.seed, "Seed of dissolve (0)")->type_name("N");

        shared = AddResultOptions(app, result, kJpegQuality);
        shared.push_back(
            app.add_flag("--json", json, "Print sizes, depth, layers and times as JSON")->group("Result"));
    }

    CLI::App app;
    std::vector<CLI::Option*> shared;
};

LayerArguments LayerOf(const std::string& front, const LayerText& text) {
    LayerArguments layer;
    layer.front = front;
    layer.mode = &ModeOfName(text.mode);
    layer.opacity = static_cast<float>(Number("--opacity", text.opacity, 0.0, 1.0));
    constexpr int32_t kFarthest = std::numeric_limits<int32_t>::max();
    layer.at = PlaceOf("--at", text.at, -kFarthest, kFarthest);
    layer.matte = text.matte;
    if (text.matte.empty() && !(text.matte_kind.empty() && text.matte_at.empty())) {
        Misuse("--matte-kind and --matte-at go with --matte FILE");
    }
    if (text.matte.empty() && layer.mode->number == RK_Xfer_MatteMix) {
        Misuse("the mode " + layer.mode->name + " needs --matte FILE");
    }
    layer.matte_kind = MatteKindOf(text.matte_kind);
    if (!text.matte_at.empty()) layer.matte_at = PlaceOf("--matte-at", text.matte_at, -32768, 32767);
    layer.field = FieldOf("--field", text.field);
    layer.rgb_only = text.rgb_only;
    if (!text.seed.empty()) {
        layer.seed = Whole("--seed", text.seed, std::numeric_limits<int32_t>::min(), kFarthest);
    }
    return layer;
}

void OneStandardInput(const CompositeArguments& arguments) {
    int count = arguments.back == "-" ? 1 : 0;
    for (const LayerArguments& layer : arguments.layers) {
        count += (layer.front == "-" ? 1 : 0) + (layer.matte == "-" ? 1 : 0);
    }
    if (count > 1) Misuse("standard input (-) can be read once only");
}

// The words of one group, and the FRONT that an --over named.
struct GroupWords {
    std::string front;
    std::vector<std::string> words;
};

std::vector<GroupWords> SplitGroups(const std::vector<std::string>& arguments) {
    std::vector<GroupWords> groups(1);
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--over") {
            if (i + 1 == arguments.size()) Misuse("--over needs a FRONT");
            groups.push_back({arguments[++i], {}});
        } else if (word.rfind("--over=", 0) == 0) {
            groups.push_back({word.substr(7), {}});
        } else {
            groups.back().words.push_back(word);
        }
    }
    return groups;
}

}  // namespace

std::optional<CompositeArguments> ParseComposite(const std::vector<std::string>& arguments) {
    CompositeArguments out;
    ResultText result;
    std::vector<std::string> given;  // names of result options met so far
    const std::vector<GroupWords> groups = SplitGroups(arguments);
    for (size_t i = 0; i < groups.size(); ++i) {
        LayerText layer;
        Group group(layer, result, out.json);
        std::string front = groups[i].front;
        if (i == 0) {
            group.app.add_option("BACK", out.back, "The picture below; - is standard input")->required();
            group.app.add_option("FRONT", front, "The picture laid onto it")->required();
            group.app.get_option("BACK")->group("Pictures");
            group.app.get_option("FRONT")->group("Pictures");
            group.app.add_option("--over", "One more picture, laid onto the result so far")
                ->type_name("FRONT2")
                ->group("Pictures");
            group.app.footer(kFooter);
        }
        if (!Parse(group.app, groups[i].words)) return std::nullopt;
        for (const CLI::Option* option : group.shared) {
            if (option->count() == 0) continue;
            const std::string name = option->get_name();
            for (const std::string& before : given) {
                if (before == name) Misuse(name + " is given twice");
            }
            given.push_back(name);
        }
        out.layers.push_back(LayerOf(front, layer));
    }
    ReadResult(result, kJpegQuality, out);
    if (out.out == "-" && out.json) Misuse("-o - and --json both want standard output");
    OneStandardInput(out);
    return out;
}
