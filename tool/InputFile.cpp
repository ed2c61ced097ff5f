#include "InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "Failure.h"
#include "Progress.h"

namespace {

// An open descriptor; standard input is left open.
class Descriptor {
  public:
    explicit Descriptor(const std::string& path)
        : fd(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {}
    ~Descriptor() {
        if (fd > STDIN_FILENO) close(fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    const int fd;
};

// Adds up to `count` bytes; false at the end of the file.
bool ReadSome(int fd, size_t count, std::vector<uint8_t>& bytes, const std::string& shown) {
    const size_t before = bytes.size();
    bytes.resize(before + count);
    ssize_t got;
    do {
        got = read(fd, bytes.data() + before, count);
        if (SignalCaught() != 0) throw Stopped();
    } while (got < 0 && errno == EINTR);
    if (got < 0) Fail(shown, std::strerror(errno));
    bytes.resize(before + static_cast<size_t>(got));
    return got > 0;
}

}  // namespace

InputFile::InputFile(const std::string& path, const Judge& wanted, const char* refusal)
    : path_(path), shown_(ShownInput(path)) {
    const Descriptor file(path);
    struct stat facts = {};
    if (file.fd < 0 || fstat(file.fd, &facts) != 0) Fail(shown_, std::strerror(errno));
    if (S_ISDIR(facts.st_mode)) Fail(shown_, std::strerror(EISDIR));

    constexpr size_t kHead = 4096, kStep = size_t{1} << 20;
    while (bytes_.size() < kHead && ReadSome(file.fd, kHead - bytes_.size(), bytes_, shown_)) {
    }
    if (bytes_.empty()) Fail(shown_, "the file is empty");
    if (!wanted(bytes_.data(), bytes_.size())) Fail(shown_, refusal);

    // One step past the known size, so that the end is met without growing.
    if (S_ISREG(facts.st_mode) && facts.st_size > 0)
        bytes_.reserve(static_cast<size_t>(facts.st_size) + kStep);
    while (ReadSome(file.fd, kStep, bytes_, shown_)) {
    }
}
