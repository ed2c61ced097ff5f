// What people type after options, as values. All throw a Failure of status 2 that names the option.
#ifndef TOOL_ARGUMENT_WORDS_H
#define TOOL_ARGUMENT_WORDS_H

#include <cstdint>
#include <string>
#include <vector>

#include "RK/indep/composite/RK_TransferRect.h"

struct Place {
    int32_t x = 0, y = 0;
};
struct Size {
    int32_t width = 0, height = 0;
};

double Number(const std::string& option, const std::string& text, double low, double high);
int32_t Whole(const std::string& option, const std::string& text, int32_t low, int32_t high);
// "X,Y".
Place PlaceOf(const std::string& option, const std::string& text, int32_t low, int32_t high);
// "X,Y", each from -limit to limit.
GEO_Vector2T<double> PairOf(const std::string& option, const std::string& text, double limit);
// "WxH", each 1 to 30000.
Size SizeOf(const std::string& option, const std::string& text);
RK_MaskKind MatteKindOf(const std::string& text);
// upper or even, lower or odd, both or empty.
RK_Long FieldOf(const std::string& option, const std::string& text);
// black, white, grey or #rrggbb; opaque.
RK_Pixel8 ColourOf(const std::string& option, const std::string& text);

// The parts of a text between separators; one more than there are separators.
std::vector<std::string> Parts(const std::string& text, char separator);

#endif
