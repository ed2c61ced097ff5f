// What the commands share that make one picture from one.
#ifndef TOOL_PICTURE_STEP_H
#define TOOL_PICTURE_STEP_H

#include <functional>
#include <string>
#include <vector>

#include "ArgumentWords.h"
#include "ResultArguments.h"

constexpr const char* kJpegQuality = "--jpeg-quality";
constexpr const char* kExitLine =
    "\n\nExit status: 0 good, 1 failed, 2 misuse. The result appears whole or not at all.";

// `size` is asked before anything is decoded, and SameSize serves where it stays; `draw` gets a cleared world
// of that size.
struct PictureStep {
    std::string name;  // "resizing", for the progress bar
    int parts = 1;     // stages of drawing, of which `draw` begins those after the first
    std::function<Size(const PictureFile& in, int depth)> size;
    std::function<void(RK_World& in, RK_World& out, int depth, Progress& progress)> draw;
};
Size SameSize(const PictureFile& in, int depth);

// Reads, draws, writes; an exit status.
int RunPictureStep(const std::string& path, const ResultArguments& arguments, const PictureStep& step);

// The words that such commands have in common; a command adds its own to `app`.
class StepWords {
  public:
    StepWords(const char* does, const char* name);
    // False when help was printed.
    bool Read(const std::vector<std::string>& words, ResultArguments& out);
    CLI::App app;
    std::string in;

  private:
    ResultText text_;
};

#endif
