// The options that every command with a picture as its result has, and the last steps of such a command.
#ifndef TOOL_RESULT_ARGUMENTS_H
#define TOOL_RESULT_ARGUMENTS_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "PictureFile.h"

struct ResultArguments {
    std::string out;
    const PictureFormat* format = nullptr;
    WriteOptions write;
    int depth = 0;  // 0: the deepest of the inputs
    std::optional<RK_Pixel8> flatten;
    bool quiet = false;
};

// The same as they were typed.
struct ResultText {
    std::string out, depth, format, quality, flatten;
    bool quiet = false;
};

// Adds the options in a group "Result"; `quality` is the name that the quality of JPEG goes by.
std::vector<CLI::Option*> AddResultOptions(CLI::App& app, ResultText& text, const char* quality);
// Throws a Failure of status 2.
void ReadResult(const ResultText& text, const char* quality, ResultArguments& out);

// Opens a picture, and makes `depth` the result's as far as is known.
std::unique_ptr<PictureFile> OpenPicture(const std::string& path, const ResultArguments& arguments,
                                         int& depth);
// Prints "rk: note: ..." unless `quiet` is on.
void Note(const ResultArguments& arguments, const std::string& line);

// Stages that Deliver takes.
int DeliverStages(const ResultArguments& arguments);
// Flattens where that is asked for, writes the file, and gives it its name.
void Deliver(WorldPtr& result, int depth, const ResultArguments& arguments, OutputFile& out,
             Progress& progress);

// The world over one colour.
WorldPtr Flattened(RK_World& world, RK_Pixel8 colour, int depth, Progress& progress);

#endif
