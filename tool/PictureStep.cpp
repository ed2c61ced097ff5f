#include "PictureStep.h"

#include "Failure.h"

Size SameSize(const PictureFile& in, int) {
    if (in.Info().width > kLargestSide || in.Info().height > kLargestSide)
        Fail(in.Shown(), "the picture is too large");
    return {static_cast<int32_t>(in.Info().width), static_cast<int32_t>(in.Info().height)};
}

int RunPictureStep(const std::string& path, const ResultArguments& arguments, const PictureStep& step) {
    int depth = 8;
    const std::unique_ptr<PictureFile> file = OpenPicture(path, arguments, depth);
    const Size size = step.size(*file, depth);
    OutputFile out(arguments.out);
    const Library library;
    Progress progress(arguments.quiet, 1 + step.parts + DeliverStages(arguments));
    progress.Stage("reading " + file->Shown());
    const WorldPtr in = file->Decode(depth, progress);
    progress.Stage(step.name + " " + file->Shown());
    WorldPtr result = NewWorld(size.width, size.height, depth, "the result");
    result->Clear(nullptr);
    try {
        step.draw(*in, *result, depth, progress);
    } catch (RK_Long code) {
        CheckResult(code, file->Shown());
    }
    progress.Report(1, 1);
    Deliver(result, depth, arguments, out, progress);
    return kExitGood;
}

StepWords::StepWords(const char* does, const char* name) : app(does, name) {
    app.add_option("IN", in, "The picture; - is standard input")->required();
}

bool StepWords::Read(const std::vector<std::string>& words, ResultArguments& out) {
    AddResultOptions(app, text_, kJpegQuality);
    if (!Parse(app, words)) return false;
    ReadResult(text_, kJpegQuality, out);
    return true;
}
