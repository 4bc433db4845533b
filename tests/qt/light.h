// Measures what light a picture gives off.
#pragma once

#include <QImage>
#include <algorithm>

namespace vantrel::qt {

/// The most that the other two colours exceed what the night's reds (or greens) hold, over all pixels.
inline int foreignLight(const QImage& image, bool green = false) {
    int most = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            const int own = green ? qGreen(pixel) : qRed(pixel);
            const int other = green ? qRed(pixel) : qGreen(pixel);
            most = std::max(most, std::max(other, qBlue(pixel)) - own / 3 - 2);
        }
    return most;
}

}  // namespace vantrel::qt
