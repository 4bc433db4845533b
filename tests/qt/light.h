// Measures what light a picture gives off.
#pragma once

#include <QImage>
#include <algorithm>

namespace vantrel::qt {

/// The most that green or blue exceed what the night's reds hold, over all pixels.
inline int foreignLight(const QImage& image) {
    int most = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            most = std::max(most, std::max(qGreen(pixel), qBlue(pixel)) - qRed(pixel) / 3 - 2);
        }
    return most;
}

}  // namespace vantrel::qt
