// What the file package tells the plug-in package.
#ifndef REFHOST_EXTENSION_MAP_H
#define REFHOST_EXTENSION_MAP_H

#include <cstdint>
#include <string>

namespace RefHost {

// True when files with that extension (with its dot) have been declared to be of the type.
bool HasExtensionOf(const std::string& extension, uint32_t type);

}  // namespace RefHost

#endif
