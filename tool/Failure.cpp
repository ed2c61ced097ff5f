#include "Failure.h"

#include <fmt/format.h>

std::string OneLine(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            out += "\\n";
        } else if (byte < 0x20 || byte == 0x7F) {
            out += fmt::format("\\x{:02x}", byte);
        } else {
            out += c;
        }
    }
    return out;
}

std::string ShownInput(const std::string& path) { return path == "-" ? "standard input" : OneLine(path); }
std::string ShownOutput(const std::string& path) { return path == "-" ? "standard output" : OneLine(path); }
