// All transfer modes on two pictures, side by side.
#ifndef TOOL_CONTACT_SHEET_H
#define TOOL_CONTACT_SHEET_H

#include "PictureFile.h"

// An 8-bit picture: the two pictures, then every mode with FRONT centred on BACK, under its number and name.
// Both are made smaller by the same factor, so that BACK fits its cell. Where a result is transparent a
// chequered ground shows. The matte of MatteMix is FRONT's own luma.
WorldPtr ContactSheet(const PictureFile& back, const PictureFile& front, Progress& progress);

// Stages of `progress` that it takes.
constexpr int kContactSheetStages = 3;

#endif
