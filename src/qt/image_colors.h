// The colours of the image window: of the image itself and of what stands around it.
#pragma once

#include <QColor>

#include "imaging/view_raster.h"
#include "qt/theme.h"

namespace vantrel::qt {

struct ImageColors {
    imaging::ToneColors tones;
    QColor ground;  // beside the image
    QColor text;
    QColor line;  // of the cross hair that isn't part of the image
};

/// The look's colours in a green of like kind, for observers who prefer it to red by night.
Colors inGreen(const Colors& colors);

/// By day shades of grey, and marks in a colour that no grey has, darker on an inverted sky; by night darker
/// shades of the look's own hue, and marks brighter and paler than any of them.
ImageColors imageColors(const Colors& colors, bool night, bool inverted);

}  // namespace vantrel::qt
