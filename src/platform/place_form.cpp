#include "platform/place_form.h"

#include <algorithm>
#include <cmath>

namespace vantrel::platform {
namespace {

int keptInside(int start, int extent, int areaStart, int areaExtent) {
    const int middle = start + extent / 2;
    const int areaEnd = areaStart + areaExtent;
    if (middle > areaEnd) return std::max(areaEnd - extent, areaStart);
    return middle < areaStart ? areaStart : start;
}

int toPixel(double position) {
    constexpr double kFarOutside = 100'000;
    if (std::isnan(position)) return 0;
    return static_cast<int>(std::lround(std::clamp(position, -kFarOutside, kFarOutside)));
}

}  // namespace

Rectangle keptOnScreen(Rectangle window, const Rectangle& workArea) {
    window.left = keptInside(window.left, window.width, workArea.left, workArea.width);
    window.top = keptInside(window.top, window.height, workArea.top, workArea.height);
    return window;
}

void PlaceFormOnScreen(Form& form, double top, double left) {
    Rectangle place = form.place();
    place.top = toPixel(top);
    place.left = toPixel(left);
    form.setPlace(keptOnScreen(place, form.screen().workArea()));
}

}  // namespace vantrel::platform
