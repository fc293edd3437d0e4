// Small text in pictures: capitals of 5x7 samples, digits and a few signs.
#pragma once

#include <string>

#include "show/image.h"

namespace vekapp {

int textWidth(const std::string& text);
void drawText(Image& image, const std::string& text, int x, int y, Colour colour);

}  // namespace vekapp
