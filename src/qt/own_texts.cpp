#include <QtGlobal>

#include "qt/translation.h"

namespace vantrel::qt {

const std::vector<std::pair<const char*, const char*>>& ownTexts() {
    static const std::vector<std::pair<const char*, const char*>> texts{
        {"frmAbout", QT_TRANSLATE_NOOP("frmAbout",
                                       "Measures where the polar axis of a telescope mount points and guides "
                                       "its correction.\nWritten by the Vantrel developers.")},
        {"frmAbout",
         QT_TRANSLATE_NOOP("frmAbout",
                           "This program moves your telescope. It comes without any warranty: watch the "
                           "mount while it slews, and keep its cables and the sky around the Sun clear.")},
        {"frmAbout", QT_TRANSLATE_NOOP("frmAbout", "System Info...")},
        {"dialog", QT_TRANSLATE_NOOP("dialog", "This computer has no system-information viewer.")},
        {"dialog", QT_TRANSLATE_NOOP("dialog", "Telescope Chooser")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Polar Axis Simulator")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Show the error")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Set It Askew")},
        {"frmSimulator",
         QT_TRANSLATE_NOOP("frmSimulator", "Somewhere within two degrees, without telling where")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Halt")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Tracking")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Go To")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Center")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Sync")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Mirrored")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Refraction")},
        {"frmSimulator",
         QT_TRANSLATE_NOOP("frmSimulator", "Counted from the last change of the jump; 1 is the next slew")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "How many, or below 1 the share of all pixels")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Not connected")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Slewing")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Parked")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Standing still")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 a press")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator",
                                           "Correct on a star near the meridian and near the equator: that "
                                           "is what the mark is made for. The list begins with the best.")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 a pixel, %2 by %3")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 is no number")},
        {"frmSimulator",
         QT_TRANSLATE_NOOP("frmSimulator",
                           "%1 is no latitude. Write it like 48d 30m 15.0s, south with S or a minus sign")},
        {"frmSimulator",
         QT_TRANSLATE_NOOP("frmSimulator",
                           "%1 is no longitude. Write it like 48d 30m 15.0s, west with W or a minus sign")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 is in the middle of the picture.")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 is %2 off the middle.")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Centering %1")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "Synced on %1")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1, on the meridian - best")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1, on the meridian - good")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1, on the meridian - to sync on")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 west - best")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 west - good")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 west - to sync on")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 east - best")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 east - good")},
        {"frmSimulator", QT_TRANSLATE_NOOP("frmSimulator", "%1 east - to sync on")},
    };
    return texts;
}

}  // namespace vantrel::qt
