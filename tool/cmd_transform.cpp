// rk transform: a picture turned, scaled and moved, still or blurred by its motion.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>

#include "Command.h"
#include "Failure.h"
#include "TransformArguments.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::duration time) { return std::chrono::duration<double>(time).count(); }

class Transform {
  public:
    explicit Transform(const TransformArguments& arguments) : arguments_(arguments) {
        in_ = OpenPicture(arguments.in, arguments, depth_);
        if (!arguments.onto.empty()) onto_ = OpenPicture(arguments.onto, arguments, depth_);
        if (!arguments.matte.empty()) matte_ = OpenPicture(arguments.matte, arguments, depth_);
        MakeMatrices();
        CheckPlaces();
    }

    int Run() {
        OutputFile out(arguments_.out);
        const Library library;
        Progress progress(arguments_.quiet,
                          2 + (onto_ ? 1 : 0) + (matte_ ? 1 : 0) + DeliverStages(arguments_));
        const Clock::time_point start = Clock::now();
        const WorldPtr in = Decode(*in_, progress);
        WorldPtr result = onto_ ? Decode(*onto_, progress) : Ground(in->record);
        const WorldPtr matte = matte_ ? Decode(*matte_, progress) : nullptr;
        const Clock::time_point drawing = Clock::now();
        progress.Stage("drawing " + in_->Shown());
        Draw(*in, matte.get(), *result, progress);
        progress.Report(1, 1);
        const Clock::time_point writing = Clock::now();
        Deliver(result, depth_, arguments_, out, progress);
        const Clock::time_point end = Clock::now();
        if (arguments_.json) {
            PrintFigures(*result, {{"read", Seconds(drawing - start)},
                                   {"draw", Seconds(writing - drawing)},
                                   {"write", Seconds(end - writing)},
                                   {"total", Seconds(end - start)}});
        }
        return kExitGood;
    }

  private:
    void MakeMatrices() {
        const PictureInfo& info = in_->Info();
        const GEO_Vector2T<double> middle = {static_cast<double>(info.width) / 2,
                                             static_cast<double>(info.height) / 2};
        const GEO_Vector2T<double> anchor = arguments_.anchor.value_or(middle);
        if (arguments_.matrix) {
            matrices_ = {*arguments_.matrix};
        } else if (arguments_.motion.empty()) {
            matrices_ = {MatrixOf(arguments_.pose, anchor)};
        } else {
            matrices_ = MotionOf(arguments_.motion, arguments_.open, arguments_.samples, anchor);
        }
        const auto unseen = [](const GEO_Matrix3& matrix) {
            // The library takes sides of less than half a 65536th for none.
            const auto side = [](const double* row) {
                return std::round(std::hypot(row[0], row[1]) * 65536);
            };
            GEO_Matrix3 inverse;
            return GEO_InverseMatrixQuiet(&matrix, &inverse) != 0 || side(matrix.m[0]) == 0 ||
                   side(matrix.m[1]) == 0;
        };
        if (std::none_of(matrices_.begin(), matrices_.end(), unseen)) return;
        if (arguments_.matrix) Misuse("--matrix has no inverse: nothing would show");
        if (!arguments_.motion.empty())
            Misuse(
                "--motion: a pose has a scale of 0, which cannot be drawn: take a small one, or another "
                "number of --samples");
        Misuse("--scale 0: nothing would show");
    }

    // What IN may reach, over the whole series: half-open, cut to the result.
    GEO_LRect Drawn() const {
        const PictureInfo& info = in_->Info();
        const Canvas canvas = ResultSize();
        const auto edge = [](double v, int64_t most) {
            return static_cast<int32_t>(std::clamp(std::isnan(v) ? 0.0 : v, 0.0, static_cast<double>(most)));
        };
        GEO_LRect drawn = {0, 0, 0, 0};
        for (const GEO_Matrix3& matrix : matrices_) {
            GEO_FloatRect box = {0, 0, static_cast<double>(info.width), static_cast<double>(info.height)};
            GEO_TransformFloatRect(&matrix, &box, &box);
            // What is turned or grows fades by up to a pixel more.
            const double fade = KeepsEdges(matrix) ? 0 : 1;
            const GEO_LRect part = {edge(std::floor(box.left) - fade, canvas.width),
                                    edge(std::floor(box.top) - fade, canvas.height),
                                    edge(std::ceil(box.right) + fade, canvas.width),
                                    edge(std::ceil(box.bottom) + fade, canvas.height)};
            if (part.left >= part.right || part.top >= part.bottom) continue;
            const bool first = drawn.left >= drawn.right;
            drawn = first ? part
                          : GEO_LRect{std::min(drawn.left, part.left), std::min(drawn.top, part.top),
                                      std::max(drawn.right, part.right), std::max(drawn.bottom, part.bottom)};
        }
        return drawn;
    }
    static bool KeepsEdges(const GEO_Matrix3& matrix) {
        const auto& m = matrix.m;
        return m[0][1] == 0 && m[1][0] == 0 && m[0][2] == 0 && m[1][2] == 0 && std::fabs(m[0][0]) <= 1 &&
               std::fabs(m[1][1]) <= 1;
    }

    // The result's sides, of which nothing is decoded yet.
    struct Canvas {
        int64_t width, height;
    };
    Canvas ResultSize() const {
        if (arguments_.size) return {arguments_.size->width, arguments_.size->height};
        const PictureInfo& info = onto_ ? onto_->Info() : in_->Info();
        return {info.width, info.height};
    }

    void CheckPlaces() const {
        const GEO_LRect drawn = Drawn();
        if (drawn.left >= drawn.right) {
            const Canvas canvas = ResultSize();
            Note(arguments_,
                 fmt::format("{}: nothing of it lies on {}", in_->Shown(),
                             onto_ ? onto_->Shown()
                                   : fmt::format("the result of {}x{}", canvas.width, canvas.height)));
            return;
        }
        if (!matte_ || (arguments_.matte_kind & 1u)) return;
        const Place at = arguments_.matte_at;
        const PictureInfo& matte = matte_->Info();
        if (at.x >= drawn.right || at.y >= drawn.bottom || at.x + int64_t{matte.width} <= drawn.left ||
            at.y + int64_t{matte.height} <= drawn.top) {
            Fail(matte_->Shown(), fmt::format("the matte, at {},{}, does not overlap {}: nothing would show",
                                              at.x, at.y, in_->Shown()));
        }
    }

    WorldPtr Decode(const PictureFile& file, Progress& progress) const {
        progress.Stage("reading " + file.Shown());
        return file.Decode(depth_, progress);
    }

    // Transparent.
    WorldPtr Ground(const RK_LayerDef& in) const {
        const Size size = arguments_.size.value_or(Size{in.width, in.height});
        WorldPtr ground = NewWorld(size.width, size.height, depth_, "the result");
        ground->Clear(nullptr);
        return ground;
    }

    void Draw(const RK_World& in, const RK_World* matte, RK_World& result, Progress& progress) const {
        RK_CompositeMode mode = {};
        mode.xfer = arguments_.mode->number;
        mode.opacity = static_cast<uint8_t>(std::lround(arguments_.opacity * 255));
        mode.opacity16 = static_cast<uint16_t>(std::lround(arguments_.opacity * 32768));
        RK_TransformMask mask = {};
        mask.mask_world = matte;
        mask.mask_x = static_cast<int16_t>(arguments_.matte_at.x);
        mask.mask_y = static_cast<int16_t>(arguments_.matte_at.y);
        mask.mask_kind = arguments_.matte_kind;
        CheckResult(RK_TransformWorld(progress.Info(), arguments_.quality, 0, arguments_.field, &in, &mode,
                                      nullptr, matte ? &mask : nullptr, matrices_.data(),
                                      static_cast<RK_Long>(matrices_.size()), 1, nullptr, &result),
                    in_->Shown());
    }

    void PrintFigures(const RK_World& result, const nlohmann::ordered_json& seconds) const {
        const GEO_LRect drawn = Drawn();
        const auto nine = [](const GEO_Matrix3& matrix) {
            nlohmann::ordered_json numbers;
            for (const auto& row : matrix.m)
                for (const double number : row) numbers.push_back(number + 0.0);  // no -0
            return numbers;
        };
        nlohmann::ordered_json figures = {
            {"output", arguments_.out},
            {"format", arguments_.format->name},
            {"width", result.record.width},
            {"height", result.record.height},
            {"depth", depth_ == 32 ? "float" : std::to_string(depth_)},
            {"input",
             {{"file", arguments_.in}, {"width", in_->Info().width}, {"height", in_->Info().height}}},
        };
        if (onto_) figures["onto"] = arguments_.onto;
        if (matte_) figures["matte"] = arguments_.matte;
        figures["mode"] = arguments_.mode->name;
        figures["opacity"] = arguments_.opacity;
        figures["quality"] = arguments_.quality == RK_kDraft ? "draft" : "best";
        figures["field"] = arguments_.field == RK_kEvenField  ? "upper"
                           : arguments_.field == RK_kOddField ? "lower"
                                                              : "both";
        figures["matrix"] = nine(matrices_.front());
        if (matrices_.size() > 1) {
            figures["last_matrix"] = nine(matrices_.back());
            figures["samples"] = matrices_.size();
        }
        figures["drawn"] = {
            {"left", drawn.left}, {"top", drawn.top}, {"right", drawn.right}, {"bottom", drawn.bottom}};
        figures["seconds"] = seconds;
        // A file name need not be text; what is not gets a replacement character.
        Print(figures.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
    }

    const TransformArguments& arguments_;
    std::unique_ptr<PictureFile> in_, onto_, matte_;
    std::vector<GEO_Matrix3> matrices_;
    int depth_ = 8;
};

}  // namespace

int RunTransform(const std::vector<std::string>& arguments) {
    const std::optional<TransformArguments> parsed = ParseTransform(arguments);
    if (!parsed) return kExitGood;
    return Transform(*parsed).Run();
}
