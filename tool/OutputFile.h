// A file that appears whole or not at all.
#ifndef TOOL_OUTPUT_FILE_H
#define TOOL_OUTPUT_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>

// Bytes go to a nameless file in the folder of `path` (a hidden one beside it where the file system has no
// nameless files) and take the name only in Commit. For "-", and for a path that is no regular file, such as
// a pipe or a device, they are held in memory and copied out in Commit. A link is followed; an existing file
// keeps its permissions, and one that may not be written is left alone.
class OutputFile {
  public:
    // Throws a Failure when the place cannot be written.
    explicit OutputFile(const std::string& path);
    // Without Commit nothing is left behind.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // For callbacks of the picture libraries, which no exception may cross. After a failure they do nothing
    // and return false or 0, and Commit throws the first cause.
    bool Write(const void* bytes, size_t count) noexcept;
    size_t Read(void* bytes, size_t count) noexcept;
    bool Seek(uint64_t position) noexcept;
    uint64_t Position() const noexcept { return position_; }
    uint64_t Size() const noexcept { return size_; }

    // What failed first, or an empty text.
    std::string Cause() const;
    void Commit();

    const std::string& Shown() const { return shown_; }

  private:
    bool OpenHeld();
    void OpenBeside();
    void CommitHeld();
    void CommitNamed();
    void Check(bool good) const;

    std::string path_, shown_;
    std::string target_;     // path_ with links followed
    std::string temporary_;  // a name beside the target, empty while there is none
    int fd_ = -1;
    bool held_ = false;      // in memory, for a pipe, a device or standard output
    bool nameless_ = false;  // no name yet: the system forgets it with the descriptor
    bool replaces_ = false;  // the target exists
    int cause_ = 0;
    uint64_t position_ = 0, size_ = 0;
};

// Writes a text to standard output, all of it or a Failure.
void Print(const std::string& text);

#endif
