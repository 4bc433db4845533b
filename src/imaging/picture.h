// What was taken: pixels and header.
#pragma once

#include <vector>

#include "fits/fits_header.h"
#include "platform/automation.h"

namespace vantrel::imaging {

struct Picture {
    platform::ImageRef pixels;           // row 0 is the top
    std::vector<fits::FitsCard> header;  // without the cards that describe the array itself
};

}  // namespace vantrel::imaging
