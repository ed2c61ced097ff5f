// The kernels of rk convolve, as they are named.
#ifndef TOOL_KERNEL_WORDS_H
#define TOOL_KERNEL_WORDS_H

#include <cstdint>
#include <string>
#include <vector>

struct Kernel {
    int32_t size = 0;
    std::vector<int32_t> entries;  // size * size, row by row
    bool normalised = false;       // it is made to be divided by its sum
};

// "sharpen", "edges", "gauss:R", or a file: the whole numbers of a square with odd sides, parted by white
// space or commas; # begins a comment. Throws a Failure: of status 2 for a bad R, of status 1 for a file.
Kernel KernelOf(const std::string& option, const std::string& word);

#endif
