// What ends a command before its time: one line for people, and an exit status.
#ifndef TOOL_FAILURE_H
#define TOOL_FAILURE_H

#include <stdexcept>
#include <string>

constexpr int kExitGood = 0;
constexpr int kExitFailed = 1;  // a file or the machine would not
constexpr int kExitMisuse = 2;  // the command line cannot be meant so

class Failure : public std::runtime_error {
  public:
    Failure(const std::string& line, int exit_status) : std::runtime_error(line), status(exit_status) {}
    const int status;
};

// A signal asked the tool to stop.
class Stopped : public std::exception {
  public:
    const char* what() const noexcept override { return "stopped"; }
};

// A text as it may stand in one line: control characters are written as escapes.
std::string OneLine(const std::string& text);

// A file as messages name it; "-" is standard input or output.
std::string ShownInput(const std::string& path);
std::string ShownOutput(const std::string& path);

// `file` is a name as shown.
[[noreturn]] inline void Fail(const std::string& file, const std::string& cause) {
    throw Failure(file + ": " + cause, kExitFailed);
}
[[noreturn]] inline void Misuse(const std::string& line) { throw Failure(line, kExitMisuse); }

#endif
