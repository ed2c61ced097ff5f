// A picture file as bytes in memory.
#ifndef TOOL_INPUT_FILE_H
#define TOOL_INPUT_FILE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class InputFile {
  public:
    // Reads all of the file, "-" being standard input; `wanted` judges its first bytes, and a file that it
    // refuses is read no further. Throws a Failure that names the file and the cause.
    using Judge = std::function<bool(const uint8_t* bytes, size_t count)>;
    InputFile(const std::string& path, const Judge& wanted, const char* refusal);

    const uint8_t* Bytes() const { return bytes_.data(); }
    size_t Size() const { return bytes_.size(); }
    // The name as messages show it.
    const std::string& Shown() const { return shown_; }
    const std::string& Path() const { return path_; }

  private:
    std::string path_, shown_;
    std::vector<uint8_t> bytes_;
};

#endif
