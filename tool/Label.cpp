#include "Label.h"

#include <cstring>

namespace {

// Cells of 5 columns, one apart. The letters stand on the seventh row.
struct Strip {
    const char* characters;
    const char* rows[kLabelHeight];
};

// clang-format off
constexpr Strip kFont[] = {
    {"abcdefghijklm",
     {"      #               #         ##        #       #      #  #      ##        ",
      "      #               #        #  #       #                 #       #        ",
      " ###  ####   ###   ####  ###   #     #### # ##   ##     ##  #  #    #   ## # ",
      "    # #   # #   # #   # #   # ###   #   # ##  #   #      #  # #     #   # # #",
      " #### #   # #     #   # #####  #    #   # #   #   #      #  ##      #   # # #",
      "#   # #   # #   # #   # #      #    #   # #   #   #      #  # #     #   # # #",
      " #### ####   ###   ####  ###   #     #### #   #  ###     #  #  #   ###  # # #",
      "                                        #             #  #                   ",
      "                                     ###               ##                    "}},
    {"nopqrstuvwxyz",
     {"                                     #                                       ",
      "                                     #                                       ",
      "# ##   ###  ####   #### # ##   #### ###   #   # #   # #   # #   # #   # #####",
      "##  # #   # #   # #   # ##  # #      #    #   # #   # #   #  # #  #   #    # ",
      "#   # #   # #   # #   # #      ###   #    #   # #   # # # #   #   #   #   #  ",
      "#   # #   # #   # #   # #         #  #  # #  ##  # #  # # #  # #  #   #  #   ",
      "#   #  ###  ####   #### #     ####    ##   ## #   #    # #  #   #  #### #####",
      "            #         #                                               #      ",
      "            #         #                                            ###       "}},
    {"0123456789-",
     {" ###    #    ###   ###     #  #####   ##  #####  ###   ###       ",
      "#   #  ##   #   # #   #   ##  #      #        # #   # #   #      ",
      "#  ##   #       #     #  # #  ####  #        #  #   # #   #      ",
      "# # #   #      #    ##  #  #      # ####    #    ###   ####      ",
      "##  #   #     #       # #####     # #   #   #   #   #     # #### ",
      "#   #   #    #    #   #    #  #   # #   #   #   #   #    #       ",
      " ###   ###  #####  ###     #   ###   ###    #    ###   ##        ",
      "                                                                 ",
      "                                                                 "}},
};
// clang-format on

bool Inked(char c, int32_t column, int32_t row) {
    for (const Strip& strip : kFont) {
        const char* found = c != '\0' ? std::strchr(strip.characters, c) : nullptr;
        if (found) return strip.rows[row][(found - strip.characters) * kLabelAdvance + column] == '#';
    }
    return false;
}

}  // namespace

void DrawLabel(RK_World& world, int32_t x, int32_t y, int32_t scale, const std::string& text,
               RK_Pixel8 colour) {
    const RK_LayerDef& record = world.record;
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t row = 0; row < kLabelHeight * scale; ++row) {
        if (y + row < 0 || y + row >= record.height) continue;
        auto* first = static_cast<uint8_t*>(record.data) + static_cast<ptrdiff_t>(y + row) * record.rowbytes;
        auto* pixels = reinterpret_cast<RK_Pixel8*>(first);
        for (int32_t column = 0; column < length * kLabelAdvance * scale; ++column) {
            if (x + column < 0 || x + column >= record.width) continue;
            const int32_t cell = column / scale, in_cell = cell % kLabelAdvance;
            const char c = text[static_cast<size_t>(cell / kLabelAdvance)];
            if (in_cell < kLabelAdvance - 1 && Inked(c, in_cell, row / scale)) pixels[x + column] = colour;
        }
    }
}
