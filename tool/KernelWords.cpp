#include "KernelWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "ArgumentWords.h"
#include "Failure.h"
#include "InputFile.h"
#include "Library.h"
#include "RK/indep/filter/RK_GaussianKernel.h"

namespace {

constexpr int32_t kLargestKernel = 255;
constexpr double kLargestRadius = (kLargestKernel - 1) / 2;

Kernel Gaussian(const std::string& option, const std::string& radius) {
    const double r = Number(option + " gauss:", radius, 0, kLargestRadius);
    Kernel kernel;
    kernel.size = 2 * static_cast<int32_t>(std::ceil(r)) + 1;
    kernel.entries.resize(static_cast<size_t>(kernel.size) * static_cast<size_t>(kernel.size));
    kernel.normalised = true;
    CheckResult(RK_GaussianKernel(nullptr, r, 0, 1.0, &kernel.size, kernel.entries.data()), "the kernel");
    return kernel;
}

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == ','; }

// Only bytes that a kernel's text may hold, comments apart.
bool IsText(const uint8_t* bytes, size_t count) {
    return std::all_of(bytes, bytes + count,
                       [](uint8_t c) { return c >= 32 || c == '\t' || c == '\n' || c == '\r'; });
}

std::vector<int32_t> NumbersOf(const InputFile& file) {
    const std::string text(reinterpret_cast<const char*>(file.Bytes()), file.Size());
    std::vector<int32_t> numbers;
    int line = 1;
    for (size_t i = 0; i < text.size();) {
        if (text[i] == '#') {
            i = std::min(text.find('\n', i), text.size());
        } else if (IsSpace(text[i])) {
            line += text[i++] == '\n';
        } else {
            size_t end = i;
            while (end < text.size() && !IsSpace(text[end]) && text[end] != '#') ++end;
            const std::string word = text.substr(i, end - i);
            char* rest = nullptr;
            const long long value = std::strtoll(word.c_str(), &rest, 10);
            if (*rest != '\0' || value < INT32_MIN || value > INT32_MAX)
                Fail(file.Shown(),
                     fmt::format("line {}: {} is no whole number of 32 bits", line, OneLine(word)));
            numbers.push_back(static_cast<int32_t>(value));
            i = end;
        }
    }
    return numbers;
}

Kernel FromFile(const std::string& path) {
    const InputFile file(path, IsText, "this is no text: the numbers of a kernel are wanted");
    Kernel kernel;
    kernel.entries = NumbersOf(file);
    const auto size =
        static_cast<int32_t>(std::lround(std::sqrt(static_cast<double>(kernel.entries.size()))));
    if (size % 2 == 0 || static_cast<size_t>(size) * static_cast<size_t>(size) != kernel.entries.size() ||
        size > kLargestKernel)
        Fail(file.Shown(),
             fmt::format("{} numbers: a square with odd sides up to {} is wanted, such as 9 or 25",
                         kernel.entries.size(), kLargestKernel));
    kernel.size = size;
    return kernel;
}

}  // namespace

Kernel KernelOf(const std::string& option, const std::string& word) {
    if (word == "sharpen") return {3, {0, -1, 0, -1, 5, -1, 0, -1, 0}, true};
    if (word == "edges") return {3, {-1, -1, -1, -1, 8, -1, -1, -1, -1}, true};
    const std::string gauss = "gauss:";
    if (word.compare(0, gauss.size(), gauss) == 0) return Gaussian(option, word.substr(gauss.size()));
    return FromFile(word);
}
