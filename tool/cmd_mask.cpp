// rk mask: masks made of pictures, changed, combined, and merged into a picture's alpha.
#include <fmt/format.h>

#include "Command.h"
#include "Failure.h"
#include "MaskArguments.h"
#include "Masks.h"

namespace {

// A mask's picture, open.
struct OpenSource {
    std::unique_ptr<PictureFile> file;
    RK_MaskKind kind = RK_kMaskAlpha;
};

class MaskCommand {
  public:
    explicit MaskCommand(const MaskArguments& arguments) : arguments_(arguments) {
        first_ = Open(arguments.first);
        for (const MaskStep& step : arguments.steps)
            if (const auto* with = std::get_if<CombineMask>(&step)) others_.push_back(Open(with->source));
        if (!arguments.into.empty()) into_ = OpenPicture(arguments.into, arguments, depth_);
        const PictureInfo& info = first_.file->Info();
        width_ = static_cast<int32_t>(std::min<int64_t>(info.width, kLargestSide + 1)) + 2 * arguments.pad;
        height_ = static_cast<int32_t>(std::min<int64_t>(info.height, kLargestSide + 1)) + 2 * arguments.pad;
        if (width_ > kLargestSide || height_ > kLargestSide)
            Fail(first_.file->Shown(), fmt::format("a mask of {} x {} pixels is too large", width_, height_));
        if (into_) CheckPlace();
    }

    int Run() {
        OutputFile out(arguments_.out);
        const Library library;
        const int stages = static_cast<int>(1 + arguments_.steps.size() + others_.size());
        Progress progress(arguments_.quiet, stages + 1 + DeliverStages(arguments_));
        mask_ = Made(first_, arguments_.pad, progress);
        size_t other = 0;
        for (const MaskStep& step : arguments_.steps) {
            if (const auto* with = std::get_if<CombineMask>(&step))
                Combine(*with, others_[other++], progress);
            else
                Change(step, progress);
            progress.Report(1, 1);
        }
        WorldPtr result = Result(progress);
        Deliver(result, depth_, arguments_, out, progress);
        return kExitGood;
    }

  private:
    OpenSource Open(const MaskSource& source) {
        OpenSource open;
        open.file = OpenPicture(source.path, arguments_, depth_);
        const bool has_alpha = open.file->Info().alpha != AlphaKind::None;
        open.kind = source.kind ? *source.kind : has_alpha ? RK_kMaskAlpha : RK_kMaskLuma;
        return open;
    }

    void CheckPlace() const {
        const Place at = PlaceOnPicture();
        if (at.x >= into_->Info().width || at.y >= into_->Info().height || at.x + width_ <= 0 ||
            at.y + height_ <= 0)
            Fail(first_.file->Shown(),
                 fmt::format("the mask, at {},{}, does not overlap {}: nothing would show",
                             arguments_.into_at.x, arguments_.into_at.y, into_->Shown()));
    }
    Place PlaceOnPicture() const {
        return {arguments_.into_at.x - arguments_.pad, arguments_.into_at.y - arguments_.pad};
    }

    // Reads the picture, lets go of its file, and makes its mask.
    MaskPtr Made(OpenSource& source, int32_t pad, Progress& progress) {
        const std::string shown = source.file->Shown();
        progress.Stage("reading " + shown);
        const WorldPtr world = source.file->Decode(depth_ == 8 ? 8 : 16, progress);
        source.file.reset();
        return MaskOf(*world, source.kind, pad, progress, shown);
    }

    void Change(const MaskStep& step, Progress& progress) {
        const std::string shown = "the mask";
        if (std::holds_alternative<InvertMask>(step)) {
            progress.Stage("inverting");
            CheckResult(RK_InvertUnoBuffer(progress.Info(), mask_.get()), shown);
        } else if (const auto* fade = std::get_if<FadeMask>(&step)) {
            progress.Stage("fading");
            CheckResult(RK_FadeUnoBuffer(progress.Info(), fade->amount, mask_.get()), shown);
        } else if (const auto* blur = std::get_if<BlurMask>(&step)) {
            progress.Stage("blurring");
            BlurMaskBothWays(*mask_, arguments_.blur, blur->radius, progress, shown);
        }
    }

    void Combine(const CombineMask& step, OpenSource& source, Progress& progress) {
        const std::string shown = source.file->Shown();
        const MaskPtr other = Made(source, 0, progress);
        progress.Stage("combining with " + shown);
        const int32_t x = step.at.x + arguments_.pad, y = step.at.y + arguments_.pad;
        if (x >= width_ || y >= height_ || x + other->width <= 0 || y + other->height <= 0) {
            Note(arguments_,
                 fmt::format("{}: at {},{} nothing of it lies on the mask", shown, step.at.x, step.at.y));
            const bool clears = step.mode == RK_kUnoIntersect || step.mode == RK_kUnoDarken;
            if (clears) CheckResult(RK_FadeUnoBuffer(nullptr, 0.0f, mask_.get()), shown);
            return;
        }
        const GEO_Rect rect = {0, 0, static_cast<int16_t>(other->height), static_cast<int16_t>(other->width)};
        const Point point = {static_cast<int16_t>(y), static_cast<int16_t>(x)};
        if (step.mode == RK_kUnoDither) {
            CheckResult(RK_AccumulateUnoBuffers(progress.Info(), other.get(), step.mode, step.limit,
                                                step.opacity, rect, point, mask_.get()),
                        shown);
            return;
        }
        CheckResult(RK_FadeUnoBuffer(nullptr, step.opacity, other.get()), shown);
        CheckResult(
            RK_AccumulateUnoBuffers(progress.Info(), other.get(), step.mode, rect, point, mask_.get()),
            shown);
    }

    WorldPtr Result(Progress& progress) {
        if (into_) {
            const std::string shown = into_->Shown();
            progress.Stage("reading " + shown);
            WorldPtr world = into_->Decode(depth_, progress);
            into_.reset();
            MergeMask(*mask_, PlaceOnPicture(), *world, progress, shown);
            return world;
        }
        progress.Stage("drawing the mask");
        if (!arguments_.colour) return GreyOf(*mask_, depth_);
        WorldPtr world = NewWorld(width_, height_, depth_, "the result");
        const RK_Pixel8 c = *arguments_.colour;
        const float unit = 1.0f / 255.0f;
        world->Fill(RK_PixelFloat{1.0f, c.red * unit, c.green * unit, c.blue * unit}, nullptr);
        MergeMask(*mask_, {}, *world, progress, "the result");
        return world;
    }

    const MaskArguments& arguments_;
    int depth_ = 8;
    OpenSource first_;
    std::vector<OpenSource> others_;  // in the order of their steps
    std::unique_ptr<PictureFile> into_;
    int32_t width_ = 0, height_ = 0;  // of the mask
    MaskPtr mask_;
};

}  // namespace

int RunMask(const std::vector<std::string>& words) {
    const std::optional<MaskArguments> parsed = ParseMask(words);
    if (!parsed) return kExitGood;
    return MaskCommand(*parsed).Run();
}
