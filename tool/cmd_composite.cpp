// rk composite: pictures laid on one another.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>

#include "Command.h"
#include "CompositeArguments.h"
#include "Failure.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::duration time) { return std::chrono::duration<double>(time).count(); }

// Half-open, in pixels of the picture below; 64 bits, so that no place overflows.
struct Area {
    int64_t left, top, right, bottom;
    bool Empty() const { return left >= right || top >= bottom; }
    Area Within(const Area& other) const {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }
};

Area AreaOf(const PictureInfo& info, Place at) { return {at.x, at.y, at.x + info.width, at.y + info.height}; }

// One layer's files.
struct LayerFiles {
    std::unique_ptr<PictureFile> front, matte;
};

class Composite {
  public:
    explicit Composite(const CompositeArguments& arguments) : arguments_(arguments) {
        back_ = OpenPicture(arguments.back, arguments, depth_);
        for (const LayerArguments& layer : arguments.layers) {
            LayerFiles files;
            files.front = OpenPicture(layer.front, arguments, depth_);
            if (!layer.matte.empty()) files.matte = OpenPicture(layer.matte, arguments, depth_);
            layers_.push_back(std::move(files));
        }
        CheckPlaces();
    }

    int Run() {
        OutputFile out(arguments_.out);
        const Library library;
        Progress progress(arguments_.quiet, Stages());
        const Clock::time_point start = Clock::now();
        WorldPtr result = Decode(back_, progress);
        for (size_t i = 0; i < layers_.size(); ++i) Lay(i, *result, progress);
        const Clock::time_point writing = Clock::now();
        Deliver(result, depth_, arguments_, out, progress);
        if (arguments_.json)
            PrintFigures(*result, Seconds(Clock::now() - writing), Seconds(Clock::now() - start));
        return kExitGood;
    }

  private:
    void CheckPlaces() const {
        const Area back = AreaOf(back_->Info(), {});
        for (size_t i = 0; i < layers_.size(); ++i) {
            const LayerArguments& layer = arguments_.layers[i];
            const PictureFile& front = *layers_[i].front;
            const Area shown = AreaOf(front.Info(), layer.at).Within(back);
            if (shown.Empty()) {
                Note(arguments_, fmt::format("{}: at {},{} nothing of it lies on {}", front.Shown(),
                                             layer.at.x, layer.at.y, back_->Shown()));
            }
            if (!layers_[i].matte || (layer.matte_kind & 1u)) continue;
            const PictureFile& matte = *layers_[i].matte;
            const Area area = AreaOf(matte.Info(), layer.matte_at);
            if (area.Within(shown.Empty() ? back : shown).Empty()) {
                Fail(matte.Shown(),
                     fmt::format("the matte, at {},{}, does not overlap {}: nothing would show",
                                 layer.matte_at.x, layer.matte_at.y, front.Shown()));
            }
        }
    }

    int Stages() const {
        int stages = 1 + DeliverStages(arguments_);  // the picture below, and the result
        for (const LayerFiles& layer : layers_) stages += layer.matte ? 3 : 2;
        return stages;
    }

    // Decodes a file and lets go of its bytes.
    WorldPtr Decode(std::unique_ptr<PictureFile>& file, Progress& progress) {
        const Clock::time_point start = Clock::now();
        progress.Stage("reading " + file->Shown());
        WorldPtr world = file->Decode(depth_, progress);
        file.reset();
        reading_ += Clock::now() - start;
        return world;
    }

    void Lay(size_t index, RK_World& below, Progress& progress) {
        const LayerArguments& layer = arguments_.layers[index];
        const std::string shown = ShownInput(layer.front);
        const WorldPtr front = Decode(layers_[index].front, progress);
        WorldPtr matte;
        RK_Mask mask = {};
        if (layers_[index].matte) {
            matte = Decode(layers_[index].matte, progress);
            mask.world = matte->record;
            mask.mask_x = static_cast<int16_t>(layer.matte_at.x);
            mask.mask_y = static_cast<int16_t>(layer.matte_at.y);
            mask.mask_kind = layer.matte_kind;
        }
        const Clock::time_point start = Clock::now();
        progress.Stage("laying on " + shown);
        const RK_CompositeModePlus mode(layer.mode->number, layer.opacity, nullptr, layer.rgb_only,
                                        layer.seed);
        CheckResult(
            RK_TransferRect(progress.Info(), nullptr, nullptr, layer.field, nullptr, &front->record, &mode,
                            nullptr, matte ? &mask.world : nullptr, layer.at.x, layer.at.y, &below.record),
            shown);
        progress.Report(1, 1);
        compositing_ += Clock::now() - start;
    }

    void PrintFigures(const RK_World& result, double writing, double total) const {
        nlohmann::ordered_json figures = {
            {"output", arguments_.out},
            {"format", arguments_.format->name},
            {"width", result.record.width},
            {"height", result.record.height},
            {"depth", depth_ == 32 ? "float" : std::to_string(depth_)},
        };
        for (const LayerArguments& layer : arguments_.layers) {
            nlohmann::ordered_json entry = {{"file", layer.front},
                                            {"mode", layer.mode->name},
                                            {"opacity", layer.opacity},
                                            {"x", layer.at.x},
                                            {"y", layer.at.y}};
            if (!layer.matte.empty()) entry["matte"] = layer.matte;
            figures["layers"].push_back(entry);
        }
        figures["seconds"] = {{"read", Seconds(reading_)},
                              {"composite", Seconds(compositing_)},
                              {"write", writing},
                              {"total", total}};
        // A file name need not be text; what is not gets a replacement character.
        Print(figures.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
    }

    const CompositeArguments& arguments_;
    std::unique_ptr<PictureFile> back_;
    std::vector<LayerFiles> layers_;
    int depth_ = 8;
    Clock::duration reading_{}, compositing_{};
};

}  // namespace

int RunComposite(const std::vector<std::string>& arguments) {
    const std::optional<CompositeArguments> parsed = ParseComposite(arguments);
    if (!parsed) return kExitGood;
    return Composite(*parsed).Run();
}
