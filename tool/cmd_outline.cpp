// rk outline: the outline of a picture's alpha as dots, where the picture would lie.
#include <fmt/format.h>

#include <cmath>
#include <memory>
#include <optional>

#include "ArgumentWords.h"
#include "Command.h"
#include "Failure.h"
#include "Poses.h"
#include "RK/indep/filter/RK_Lines.h"
#include "RK/indep/filter/RK_Wireframe.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "ResultArguments.h"
#include "refhost/RefHost.h"

namespace {

constexpr const char* kJpegQuality = "--jpeg-quality";

// clang-format off
constexpr const char kFooterText[] = R"(
A dot stands wherever the alpha of IN crosses one half about a point of a grid of
--step pixels. Where that gives more than --points dots, the grid is widened until
they are few enough. The dots are drawn on IN itself, on BACK with --onto, or with
--bare on a transparent ground as large as IN.

--rotate, --scale, --translate and --anchor move the outline as they move a picture
in rk transform. --tilt turns it in space before that: back at the top by X degrees,
back at the left by Y, seen from twice the longer side of IN away.

Examples:
  rk outline samples/paint.png -o out.png
  rk outline samples/paint.png -o out.png --onto samples/coffee.png --rotate 20 \
      --translate 120,10 --step 3 --pen 2 --colour "#00ff80"
  rk outline samples/heart.png -o out.png --bare --tilt 40,25 --scale 0.7 \
      --corners --pen 2

Exit status: 0 good, 1 failed, 2 misuse. The result appears whole or not at all.)";
constexpr const char* kFooter = &kFooterText[1];  // after the first line's end
// clang-format on

// The options as they were typed.
struct OutlineText {
    std::string in, onto, step, points, colour, pen, rotate, scale, translate, anchor, tilt;
    bool corners = false, bare = false;
};

void AddOptions(CLI::App& app, OutlineText& text) {
    app.add_option("IN", text.in, "The picture; - is standard input")->required();
    app.option_defaults()->group("Dots");
    app.add_option("--step", text.step, "The grid's, in pixels (2)")->type_name("N");
    app.add_option("--points", text.points, "How many dots at most (20000)")->type_name("N");
    app.add_flag("--corners", text.corners, "The corners of IN are dots too");
    app.add_option("--colour,--color", text.colour, "black, white, grey or #rrggbb (#ff2020)")
        ->type_name("COLOUR");
    app.add_option("--pen", text.pen, "Side of a dot, 1 to 64 (1)")->type_name("N");
    app.option_defaults()->group("Ground");
    app.add_option("--onto", text.onto, "Draw on this picture")->type_name("BACK");
    app.add_flag("--bare", text.bare, "Draw on a transparent ground");
    app.option_defaults()->group("Geometry");
    app.add_option("--rotate", text.rotate, "Clockwise, in degrees (0)")->type_name("DEG");
    app.add_option("--scale", text.scale, "Factors across and down (1)")->type_name("SX[,SY]");
    app.add_option("--translate", text.translate, "Shift right and down (0,0)")->type_name("X,Y");
    app.add_option("--anchor", text.anchor, "What the others turn about (the middle of IN)")
        ->type_name("X,Y");
    app.add_option("--tilt", text.tilt, "Degrees out of the plane (0,0)")->type_name("X,Y");
    app.footer(kFooter);
}

struct OutlineArguments : ResultArguments {
    std::string in, onto;
    int32_t step = 2, points = 20000, pen = 1;
    bool corners = false, bare = false;
    RK_PixelFloat colour = {};
    Pose pose;
    std::optional<GEO_Vector2T<double>> anchor, tilt;
};

void ReadOutline(const OutlineText& text, OutlineArguments& out) {
    out.in = text.in;
    out.onto = text.onto;
    out.corners = text.corners;
    out.bare = text.bare;
    if (text.bare && !text.onto.empty()) Misuse("--bare and --onto: the ground is one or the other");
    if (text.in == "-" && text.onto == "-") Misuse("standard input (-) can be read once only");
    if (!text.step.empty()) out.step = Whole("--step", text.step, 1, kLargestSide);
    if (!text.points.empty()) out.points = Whole("--points", text.points, 4, 1000000000);
    if (!text.pen.empty()) out.pen = Whole("--pen", text.pen, 1, 64);
    const RK_Pixel8 c = ColourOf("--colour", text.colour.empty() ? "#ff2020" : text.colour);
    const float unit = 1.0f / 255.0f;
    out.colour = {1.0f, c.red * unit, c.green * unit, c.blue * unit};
    out.pose = PoseOf(text.rotate, text.scale, text.translate);
    if (!text.anchor.empty()) out.anchor = PairOf("--anchor", text.anchor, 1e5);
    if (!text.tilt.empty()) out.tilt = PairOf("--tilt", text.tilt, 89);
}

// ---- Matrices -------------------------------------------------------------------------------------------

GEO_Matrix4 Product(const GEO_Matrix4& a, const GEO_Matrix4& b) {
    GEO_Matrix4 out = {};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            for (int k = 0; k < 4; ++k) out.m[r][c] += a.m[r][k] * b.m[k][c];
    return out;
}

// Turned about the anchor in space and seen from `distance` away, and then moved in the plane.
GEO_Matrix4 InSpace(GEO_Vector2T<double> tilt, GEO_Vector2T<double> anchor, double distance,
                    const GEO_Matrix3& flat) {
    const double radian = 0.017453292519943295;
    const double cx = std::cos(tilt.x * radian), sx = std::sin(tilt.x * radian);
    const double cy = std::cos(tilt.y * radian), sy = std::sin(tilt.y * radian);
    // z grows away from the eye; above and left of the anchor is negative.
    const GEO_Matrix4 steps[] = {
        {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {-anchor.x, -anchor.y, 0, 1}}},
        {{{1, 0, 0, 0}, {0, cx, -sx, 0}, {0, sx, cx, 0}, {0, 0, 0, 1}}},
        {{{cy, 0, -sy, 0}, {0, 1, 0, 0}, {sy, 0, cy, 0}, {0, 0, 0, 1}}},
        {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 1 / distance}, {0, 0, 0, 1}}},
        {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {anchor.x, anchor.y, 0, 1}}},
        {{{flat.m[0][0], flat.m[0][1], 0, flat.m[0][2]},
          {flat.m[1][0], flat.m[1][1], 0, flat.m[1][2]},
          {0, 0, 1, 0},
          {flat.m[2][0], flat.m[2][1], 0, flat.m[2][2]}}},
    };
    GEO_Matrix4 all = steps[0];
    for (size_t i = 1; i < sizeof steps / sizeof steps[0]; ++i) all = Product(all, steps[i]);
    return all;
}

// ---- Drawing --------------------------------------------------------------------------------------------

// A wireframe that is disposed of.
struct Frame : RK_Wireframe {
    Frame() : RK_Wireframe{} {}
    ~Frame() { RK_DisposeWireframe(this); }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
};

// The host's lines go onto a world while this lives.
class Pen {
  public:
    Pen(int32_t side, const RK_PixelFloat& colour, RK_World& world)
        : side_(side), colour_(colour), world_(world) {
        RefHost::SetLineFunc(Draw, this);
    }
    ~Pen() { RefHost::SetLineFunc(nullptr, nullptr); }
    Pen(const Pen&) = delete;
    Pen& operator=(const Pen&) = delete;
    RK_Long Error() const { return error_; }

  private:
    // A square about each place.
    static void Draw(void* refcon, Point from, Point to) {
        Pen& pen = *static_cast<Pen*>(refcon);
        for (int32_t k = 0; k < pen.side_; ++k) {
            const int32_t first = -(pen.side_ / 2), last = first + pen.side_ - 1;
            const double start[2] = {double(from.h + first), double(from.v + first + k)};
            const double end[2] = {double(to.h + last), double(to.v + first + k)};
            const RK_Long error = RK_DrawLine(start, end, &pen.colour_, &pen.world_);
            if (pen.error_ == RK_kOK) pen.error_ = error;
        }
    }

    const int32_t side_;
    const RK_PixelFloat colour_;
    RK_World& world_;
    RK_Long error_ = RK_kOK;
};

// The outline of the picture, through a bitmap of 8 bits.
void Generate(const OutlineArguments& arguments, const RK_World& in, const std::string& shown,
              RK_Wireframe& frame) {
    WorldPtr bitmap;
    try {
        bitmap.reset(RK_World::New(in.record.width, in.record.height, 8, RK_kWorldBitmap));
    } catch (RK_Long code) {
        CheckResult(code, shown);
    }
    if (!bitmap) CheckResult(RK_kOutOfMemory, shown);
    CheckResult(RK_CopyBits_Draft(nullptr, &in.record, &bitmap->record, nullptr, nullptr), shown);
    CheckResult(RK_GenerateWireframe(nullptr, bitmap->GetRASWorld(), arguments.step, arguments.points,
                                     arguments.corners ? RK_kWireframeCorners : 0, nullptr, &frame),
                shown);
}

void Move(const OutlineArguments& arguments, const RK_World& in, const RK_Wireframe& frame,
          RK_Wireframe& moved) {
    const double width = in.record.width, height = in.record.height;
    const GEO_Vector2T<double> anchor =
        arguments.anchor.value_or(GEO_Vector2T<double>{width / 2, height / 2});
    const GEO_Matrix3 flat = MatrixOf(arguments.pose, anchor);
    if (!arguments.tilt) {
        CheckResult(RK_TransformWireframe2D(&frame, &flat, &moved), "the outline");
    } else {
        const GEO_Matrix4 matrix = InSpace(*arguments.tilt, anchor, 2 * std::max(width, height), flat);
        CheckResult(RK_TransformWireframe3D(&frame, &matrix, &moved), "the outline");
    }
}

int Run(const OutlineArguments& arguments) {
    int depth = 8;
    const std::unique_ptr<PictureFile> file = OpenPicture(arguments.in, arguments, depth);
    std::unique_ptr<PictureFile> back;
    if (!arguments.onto.empty()) back = OpenPicture(arguments.onto, arguments, depth);
    OutputFile out(arguments.out);
    const Library library;
    Progress progress(arguments.quiet, 2 + (back ? 1 : 0) + DeliverStages(arguments));
    progress.Stage("reading " + file->Shown());
    WorldPtr result = file->Decode(depth, progress);
    Frame frame, moved;
    Generate(arguments, *result, file->Shown(), frame);
    if (frame.count == 0) Note(arguments, file->Shown() + ": its alpha crosses one half nowhere: no dots");
    Move(arguments, *result, frame, moved);
    if (back) {
        progress.Stage("reading " + back->Shown());
        result = back->Decode(depth, progress);
    } else if (arguments.bare) {
        result->Clear(nullptr);
    }
    progress.Stage("drawing the outline");
    const Pen pen(arguments.pen, arguments.colour, *result);
    CheckResult(RK_DrawWireframe(&moved), "the outline");
    CheckResult(pen.Error(), "the outline");
    progress.Report(1, 1);
    Deliver(result, depth, arguments, out, progress);
    return kExitGood;
}

}  // namespace

int RunOutline(const std::vector<std::string>& arguments) {
    CLI::App app("Draws the outline of a picture as dots.", "rk outline");
    OutlineText text;
    ResultText result;
    AddOptions(app, text);
    AddResultOptions(app, result, kJpegQuality);
    if (!Parse(app, arguments)) return kExitGood;
    OutlineArguments parsed;
    ReadOutline(text, parsed);
    ReadResult(result, kJpegQuality, parsed);
    return Run(parsed);
}
