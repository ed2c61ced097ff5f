#include "MaskArguments.h"

#include "Failure.h"
#include "ModeNames.h"
#include "PictureStep.h"
#include "RK/indep/filter/RK_UnoBuffer.h"

namespace {

// clang-format off
constexpr const char kFooterText[] = R"(
The command line is read from left to right: every --invert, --fade, --blur and
--with changes the mask as it is by then. --from, --mode, --at, --opacity and
--limit belong to the --with before them; before the first --with, --from belongs
to IN.

Of a source s and the mask d:
  union       s + d - s d      lighten     the larger      difference  |s - d|
  subtract    d less s d       darken      the smaller     add         s + d
  intersect   s d              dither      union, with noise for its rounding
After intersect and darken nothing is left where FILE does not reach. --opacity
fades s first; with dither it is how far the mask goes towards --limit.

The result is the mask in grey; with --colour a plane of a colour that shows
through the mask; with --into a picture whose alpha is multiplied by the mask, and
is 0 where the mask does not reach.

Examples:
  rk mask samples/cat.png -o out.png --from luma --invert
  rk mask samples/heart.png -o out.png --into samples/cat.png --into-at 30,10 \
      --blur 6
  rk mask samples/heart.png -o out.png --with samples/paint.png \
      --mode subtract --at 20,0
  rk mask samples/heart.png -o shadow.png --pad 24 --blur 8 --fade 0.6 \
      --colour black)";
constexpr const char* kFooter = &kFooterText[1];  // after the first line's end
// clang-format on

// ---- Words ----------------------------------------------------------------------------------------------

template <class Value>
struct Named {
    const char* name;
    Value value;
};
template <class Value, size_t count>
Value ValueOf(const std::string& option, const std::string& text, const Named<Value> (&all)[count]) {
    std::string list;
    std::vector<std::string> known;
    for (size_t i = 0; i < count; ++i) {
        if (text == all[i].name) return all[i].value;
        known.emplace_back(all[i].name);
        list += (i == 0 ? "" : i + 1 < count ? ", " : " or ") + known.back();
    }
    Misuse(option + " " + OneLine(text) + ": " + list + " is wanted");
}

constexpr Named<RK_MaskKind> kKinds[] = {{"alpha", RK_kMaskAlpha},
                                         {"inverted-alpha", RK_kMaskInvertedAlpha},
                                         {"luma", RK_kMaskLuma},
                                         {"inverted-luma", RK_kMaskInvertedLuma}};
constexpr Named<int32_t> kModes[] = {
    {"union", RK_kUnoUnion},     {"subtract", RK_kUnoSubtract}, {"intersect", RK_kUnoIntersect},
    {"lighten", RK_kUnoLighten}, {"darken", RK_kUnoDarken},     {"difference", RK_kUnoDifference},
    {"add", RK_kUnoAdd},         {"dither", RK_kUnoDither}};
constexpr Named<MaskBlur> kBlurs[] = {
    {"gauss", MaskBlur::Gaussian}, {"boxes", MaskBlur::Boxes}, {"box", MaskBlur::Box}};

MaskSource SourceOf(const std::string& path, const std::string& kind) {
    MaskSource source;
    source.path = path;
    if (!kind.empty()) source.kind = ValueOf("--from", kind, kKinds);
    return source;
}

// ---- Groups ---------------------------------------------------------------------------------------------

// The words after one --with, and those before the first.
struct GroupWords {
    std::string with;
    std::vector<std::string> words;
};
std::vector<GroupWords> SplitGroups(const std::vector<std::string>& arguments) {
    std::vector<GroupWords> groups(1);
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--with") {
            if (i + 1 == arguments.size()) Misuse("--with needs a FILE");
            groups.push_back({arguments[++i], {}});
        } else if (word.rfind("--with=", 0) == 0) {
            groups.push_back({word.substr(7), {}});
        } else {
            groups.back().words.push_back(word);
        }
    }
    return groups;
}

// What concerns the whole command, as it was typed.
struct WholeText {
    ResultText result;
    std::string filter, pad, into, into_at, colour;
};

// Every option of one group. Those in `whole` are shared by all groups.
struct Group {
    explicit Group(WholeText& text) : app("Makes masks, changes and combines them.", "rk mask") {
        app.option_defaults()->group("Steps");
        invert_ = app.add_flag("--invert", "Full where there was nothing, and the other way round");
        fade_ = Repeated(app.add_option("--fade", fades_, "Multiply by N, from 0 to 1")->type_name("N"));
        blur_ = Repeated(app.add_option("--blur", blurs_, "Soften over R pixels, both ways")->type_name("R"));
        app.add_option("--with", "Combine with the mask of one more picture")->type_name("FILE");
        app.option_defaults()->group("Of IN, and of each --with");
        app.add_option("--from", from,
                       "alpha, inverted-alpha, luma or inverted-luma (alpha; luma where there is no alpha)")
            ->type_name("KIND");
        app.option_defaults()->group("Of each --with");
        own_ = {
            app.add_option("--mode", mode,
                           "union, subtract, intersect, lighten, darken, difference, add or dither (union)")
                ->type_name("NAME"),
            app.add_option("--at", at, "Where its top left corner lies on IN (0,0)")->type_name("X,Y"),
            app.add_option("--opacity", opacity, "From 0 to 1 (1)")->type_name("N"),
            app.add_option("--limit", limit, "With dither: as far as this, from 0 to 1 (1)")->type_name("N")};
        app.option_defaults()->group("The whole");
        whole = {
            app.add_option("--pad", text.pad, "First widen the mask by N empty pixels at each side (0)")
                ->type_name("N"),
            app.add_option(
                   "--filter", text.filter,
                   "Of every --blur: gauss, or boxes or box, which are quicker and soften less (gauss)")
                ->type_name("NAME"),
            app.add_option("--into", text.into, "Multiply this picture's alpha by the mask")
                ->type_name("PICTURE"),
            app.add_option("--into-at", text.into_at, "Where IN's top left corner lies on PICTURE (0,0)")
                ->type_name("X,Y"),
            app.add_option("--colour", text.colour, "black, white, grey or #rrggbb, seen through the mask")
                ->type_name("COLOUR")};
        const std::vector<CLI::Option*> result = AddResultOptions(app, text.result, kJpegQuality);
        whole.insert(whole.end(), result.begin(), result.end());
    }

    // The steps in the order that they were typed in.
    void Steps(std::vector<MaskStep>& out) const {
        size_t fades = 0, blurs = 0;
        for (const CLI::Option* option : app.parse_order()) {
            if (option == invert_) out.emplace_back(InvertMask{});
            if (option == fade_)
                out.emplace_back(FadeMask{static_cast<float>(Number("--fade", fades_[fades++], 0, 1))});
            if (option == blur_) out.emplace_back(BlurMask{Number("--blur", blurs_[blurs++], 0, 1000)});
        }
    }
    CombineMask Combined(const std::string& path) const {
        CombineMask step = {SourceOf(path, from), RK_kUnoUnion, {}, 1.0f, 1.0f};
        if (!mode.empty()) step.mode = ValueOf("--mode", mode, kModes);
        if (!at.empty()) step.at = PlaceOf("--at", at, -30000, 30000);
        if (!opacity.empty()) step.opacity = static_cast<float>(Number("--opacity", opacity, 0, 1));
        if (!limit.empty()) step.limit = static_cast<float>(Number("--limit", limit, 0, 1));
        if (!limit.empty() && step.mode != RK_kUnoDither) Misuse("--limit goes with --mode dither");
        return step;
    }
    void RefuseOwn() const {
        for (const CLI::Option* option : own_)
            if (option->count() != 0) Misuse(option->get_name() + " goes after a --with FILE");
    }

    CLI::App app;
    std::string from, mode, at, opacity, limit;
    std::vector<CLI::Option*> whole;

  private:
    static CLI::Option* Repeated(CLI::Option* option) {
        return option->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->allow_extra_args(false);
    }
    std::vector<std::string> fades_, blurs_;
    CLI::Option *invert_, *fade_, *blur_;
    std::vector<CLI::Option*> own_;
};

void RefuseTwice(const Group& group, std::vector<std::string>& given) {
    for (const CLI::Option* option : group.whole) {
        if (option->count() == 0) continue;
        for (const std::string& before : given)
            if (before == option->get_name()) Misuse(before + " is given twice");
        given.push_back(option->get_name());
    }
}

void OneStandardInput(const MaskArguments& arguments) {
    int count = (arguments.first.path == "-" ? 1 : 0) + (arguments.into == "-" ? 1 : 0);
    for (const MaskStep& step : arguments.steps)
        if (const auto* with = std::get_if<CombineMask>(&step)) count += with->source.path == "-" ? 1 : 0;
    if (count > 1) Misuse("standard input (-) can be read once only");
}

void ReadWhole(const WholeText& text, MaskArguments& out) {
    ReadResult(text.result, kJpegQuality, out);
    if (!text.pad.empty()) out.pad = Whole("--pad", text.pad, 0, 2000);
    if (!text.filter.empty()) out.blur = ValueOf("--filter", text.filter, kBlurs);
    if (!text.into_at.empty()) {
        if (text.into.empty()) Misuse("--into-at goes with --into PICTURE");
        out.into_at = PlaceOf("--into-at", text.into_at, -30000, 30000);
    }
    out.into = text.into;
    if (!text.colour.empty()) {
        if (!text.into.empty()) Misuse("--into and --colour are two different results");
        out.colour = ColourOf("--colour", text.colour);
    }
}

}  // namespace

std::optional<MaskArguments> ParseMask(const std::vector<std::string>& arguments) {
    MaskArguments out;
    WholeText whole;
    std::vector<std::string> given;
    const std::vector<GroupWords> groups = SplitGroups(arguments);
    for (size_t i = 0; i < groups.size(); ++i) {
        Group group(whole);
        if (i == 0) {
            group.app.add_option("IN", out.first.path, "The picture; - is standard input")->required();
            group.app.get_option("IN")->group("Pictures");
            group.app.footer(std::string(kFooter) + kExitLine);
        }
        if (!Parse(group.app, groups[i].words)) return std::nullopt;
        RefuseTwice(group, given);
        if (i == 0) {
            group.RefuseOwn();
            out.first = SourceOf(out.first.path, group.from);
        } else {
            out.steps.emplace_back(group.Combined(groups[i].with));
        }
        group.Steps(out.steps);
    }
    ReadWhole(whole, out);
    OneStandardInput(out);
    return out;
}
