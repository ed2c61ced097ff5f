// A look at a file before it is loaded.
#ifndef REFHOST_ELF_CHECK_H
#define REFHOST_ELF_CHECK_H

#include <string>

namespace RefHost {

// True for a whole shared object of this program's own kind. The loader trusts the headers of what it maps: a
// file that was cut off would end the program.
bool IsWholeSharedObject(const std::string& path);

}  // namespace RefHost

#endif
