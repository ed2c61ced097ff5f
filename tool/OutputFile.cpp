#include "OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "Failure.h"
#include "Progress.h"

namespace {

std::string FolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The path behind links; itself when it does not exist.
std::string Followed(const std::string& path) {
    char* real = realpath(path.c_str(), nullptr);
    const std::string target = real ? real : path;
    std::free(real);
    return target;
}

// All of it, or false with errno.
bool WriteAll(int fd, const void* bytes, size_t count) {
    const char* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t done = write(fd, at, count);
        if (done < 0 && (errno != EINTR || SignalCaught() != 0)) return false;
        if (done < 0) continue;
        at += done;
        count -= static_cast<size_t>(done);
    }
    return true;
}

}  // namespace

OutputFile::OutputFile(const std::string& path)
    : path_(path), shown_(ShownOutput(path)), target_(path == "-" ? path : Followed(path)) {
    if (OpenHeld()) return;
    OpenBeside();
}

void OutputFile::Check(bool good) const {
    if (!good) Fail(shown_, std::strerror(errno));
}

// Standard output and what is no regular file: true when the bytes are to be held.
bool OutputFile::OpenHeld() {
    struct stat facts = {};
    if (path_ == "-") {
        if (isatty(STDOUT_FILENO)) Misuse("standard output is a terminal: a picture is not written there");
    } else {
        if (stat(target_.c_str(), &facts) != 0) return false;
        if (S_ISDIR(facts.st_mode)) Fail(shown_, std::strerror(EISDIR));
        Check(access(target_.c_str(), W_OK) == 0);
        replaces_ = true;
        if (S_ISREG(facts.st_mode)) return false;
    }
    fd_ = memfd_create("rk", MFD_CLOEXEC);
    Check(fd_ >= 0);
    held_ = true;
    return true;
}

void OutputFile::OpenBeside() {
    const std::string folder = FolderOf(target_);
    // A nameless file gets its name through /proc; without that it never could.
    if (access("/proc/self/fd", X_OK) == 0) {
        fd_ = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
        if (fd_ >= 0) {
            nameless_ = true;
            return;
        }
        if (errno == ENOENT) Fail(shown_, "the folder " + OneLine(folder) + " does not exist");
        if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL) Check(false);
    }
    for (unsigned attempt = 0; fd_ < 0; ++attempt) {
        temporary_ = fmt::format("{}/.rk-{}-{}", folder, getpid(), attempt);
        fd_ = open(temporary_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
        if (fd_ >= 0 || errno == EEXIST) continue;
        temporary_.clear();
        Check(false);
    }
    RemoveOnSecondSignal(temporary_.c_str());
}

OutputFile::~OutputFile() {
    if (fd_ >= 0) close(fd_);
    RemoveOnSecondSignal(nullptr);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

bool OutputFile::Write(const void* bytes, size_t count) noexcept {
    if (cause_ != 0) return false;
    if (!WriteAll(fd_, bytes, count)) {
        cause_ = errno;
        return false;
    }
    position_ += count;
    size_ = std::max(size_, position_);
    return true;
}

size_t OutputFile::Read(void* bytes, size_t count) noexcept {
    if (cause_ != 0) return 0;
    const ssize_t got = read(fd_, bytes, count);
    if (got < 0) {
        cause_ = errno;
        return 0;
    }
    position_ += static_cast<uint64_t>(got);
    return static_cast<size_t>(got);
}

bool OutputFile::Seek(uint64_t position) noexcept {
    if (cause_ != 0) return false;
    if (lseek(fd_, static_cast<off_t>(position), SEEK_SET) < 0) {
        cause_ = errno;
        return false;
    }
    position_ = position;
    return true;
}

std::string OutputFile::Cause() const { return cause_ != 0 ? std::strerror(cause_) : ""; }

void OutputFile::Commit() {
    if (SignalCaught() != 0) throw Stopped();
    if (cause_ != 0) Fail(shown_, Cause());
    if (held_) {
        CommitHeld();
    } else {
        CommitNamed();
    }
}

void OutputFile::CommitHeld() {
    const bool standard = path_ == "-";
    const int out = standard ? STDOUT_FILENO : open(target_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    Check(out >= 0);
    bool good = lseek(fd_, 0, SEEK_SET) == 0;
    char block[1 << 16];
    ssize_t got = 0;
    while (good && (got = read(fd_, block, sizeof block)) > 0)
        good = WriteAll(out, block, static_cast<size_t>(got));
    int cause = good && got == 0 ? 0 : errno;
    if (!standard && close(out) != 0 && cause == 0) cause = errno;
    if (SignalCaught() != 0) throw Stopped();
    if (cause != 0) Fail(shown_, std::strerror(cause));
}

void OutputFile::CommitNamed() {
    struct stat facts = {};
    if (replaces_ && stat(target_.c_str(), &facts) == 0) fchmod(fd_, facts.st_mode & 07777);
    Check(fsync(fd_) == 0);
    if (nameless_) {
        const std::string self = fmt::format("/proc/self/fd/{}", fd_);
        int linked = linkat(AT_FDCWD, self.c_str(), AT_FDCWD, target_.c_str(), AT_SYMLINK_FOLLOW);
        if (linked == 0) return;
        for (unsigned attempt = 0; linked != 0 && errno == EEXIST; ++attempt) {
            temporary_ = fmt::format("{}/.rk-{}-{}", FolderOf(target_), getpid(), attempt);
            linked = linkat(AT_FDCWD, self.c_str(), AT_FDCWD, temporary_.c_str(), AT_SYMLINK_FOLLOW);
        }
        if (linked != 0) {
            temporary_.clear();
            Fail(shown_, std::strerror(errno));
        }
    }
    Check(rename(temporary_.c_str(), target_.c_str()) == 0);
    temporary_.clear();
}

void Print(const std::string& text) {
    if (!WriteAll(STDOUT_FILENO, text.data(), text.size())) Fail("standard output", std::strerror(errno));
}
