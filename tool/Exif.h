// The one fact that the tool wants of an EXIF block.
#ifndef TOOL_EXIF_H
#define TOOL_EXIF_H

#include <cstddef>
#include <cstdint>

// The orientation, 1 to 8, of an EXIF block that begins with its TIFF header; 1 when it tells none or is
// damaged.
int ExifOrientation(const uint8_t* block, size_t count);

#endif
