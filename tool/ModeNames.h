// Transfer modes by the names that people type.
#ifndef TOOL_MODE_NAMES_H
#define TOOL_MODE_NAMES_H

#include <cstdint>
#include <string>
#include <vector>

#include "RK/indep/composite/RK_Xfer.h"

struct Mode {
    int32_t number;
    std::string name;  // as shown, such as "soft-light"
    RK_ModeInfo info;
};

// The modes that draw, in number order.
const std::vector<Mode>& Modes();

// "soft-light" out of "SoftLight".
std::string Dashed(const std::string& name);

// The mode of a name in any case, with or without dashes, underscores and spaces. Throws a Failure of status
// 2, with the nearest names, when there is none.
const Mode& ModeOfName(const std::string& name);

// The word for a class, such as "wrap black".
const char* ClassName(RK_ModeClass mode_class);

// The entries of `known` nearest to `word`, best first, at most three; none when all are far.
std::vector<std::string> Nearest(const std::string& word, const std::vector<std::string>& known);
// "; did you mean a, b or c?", or nothing.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& known);

#endif
