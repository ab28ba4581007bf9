// A whole sheet with a pen, for the forms of files.
#pragma once

#include "kit/draw/picture.h"

namespace velquor {

constexpr double UNITS = 800;  // width of a sheet, where nobody says otherwise

double height_of(const Picture& picture, double width);
void draw_sheet(const Picture& picture, const Pen& pen, double width);

}  // namespace velquor
