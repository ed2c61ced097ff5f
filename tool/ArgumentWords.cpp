#include "ArgumentWords.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdlib>

#include "Failure.h"
#include "Library.h"

namespace {

// What was typed, which may be nothing between two commas.
std::string Typed(const std::string& option, const std::string& text) {
    return text.empty() ? option : option + " " + OneLine(text);
}

}  // namespace

double Number(const std::string& option, const std::string& text, double low, double high) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(value >= low && value <= high)) {
        Misuse(fmt::format("{}: a number from {} to {} is wanted", Typed(option, text), low, high));
    }
    return value;
}

int32_t Whole(const std::string& option, const std::string& text, int32_t low, int32_t high) {
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno != 0 || value < low || value > high) {
        Misuse(fmt::format("{}: a whole number from {} to {} is wanted", Typed(option, text), low, high));
    }
    return static_cast<int32_t>(value);
}

Place PlaceOf(const std::string& option, const std::string& text, int32_t low, int32_t high) {
    const size_t comma = text.find(',');
    if (comma == std::string::npos) Misuse(option + " " + OneLine(text) + ": two numbers X,Y are wanted");
    return {Whole(option, text.substr(0, comma), low, high),
            Whole(option, text.substr(comma + 1), low, high)};
}

GEO_Vector2T<double> PairOf(const std::string& option, const std::string& text, double limit) {
    const std::vector<std::string> parts = Parts(text, ',');
    if (parts.size() != 2) Misuse(option + " " + OneLine(text) + ": two numbers X,Y are wanted");
    return {Number(option, parts[0], -limit, limit), Number(option, parts[1], -limit, limit)};
}

Size SizeOf(const std::string& option, const std::string& text) {
    const size_t cross = text.find('x');
    if (cross == std::string::npos) Misuse(option + " " + OneLine(text) + ": a size WxH is wanted");
    return {Whole(option, text.substr(0, cross), 1, kLargestSide),
            Whole(option, text.substr(cross + 1), 1, kLargestSide)};
}

RK_MaskKind MatteKindOf(const std::string& text) {
    if (text.empty() || text == "alpha") return RK_kMaskAlpha;
    if (text == "inverted-alpha") return RK_kMaskInvertedAlpha;
    if (text == "luma") return RK_kMaskLuma;
    if (text == "inverted-luma") return RK_kMaskInvertedLuma;
    Misuse("--matte-kind " + OneLine(text) + ": alpha, inverted-alpha, luma or inverted-luma is wanted");
}

RK_Long FieldOf(const std::string& option, const std::string& text) {
    if (text.empty() || text == "both") return RK_kBothFields;
    if (text == "upper" || text == "even") return RK_kEvenField;
    if (text == "lower" || text == "odd") return RK_kOddField;
    Misuse(option + " " + OneLine(text) + ": upper, lower or both is wanted (even or odd are the same rows)");
}

RK_Pixel8 ColourOf(const std::string& option, const std::string& text) {
    if (text == "black") return {255, 0, 0, 0};
    if (text == "white") return {255, 255, 255, 255};
    if (text == "grey" || text == "gray") return {255, 128, 128, 128};
    const bool hex = text.size() == 7 && text[0] == '#' &&
                     text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
    if (!hex) Misuse(option + " " + OneLine(text) + ": black, white, grey or #rrggbb is wanted");
    const unsigned long value = std::strtoul(text.c_str() + 1, nullptr, 16);
    return {255, static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
            static_cast<uint8_t>(value)};
}

std::vector<std::string> Parts(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}
