#include "qt/display_watch.h"

#include <QString>
#include <QtGlobal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace vantrel::qt {
namespace {

// A message handler can reach nothing else.
std::vector<std::string> heldBack;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

std::string whyThereIsNone() {
    const auto isSet = [](const char* variable) { return !qEnvironmentVariableIsEmpty(variable); };
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM"))
        return "there is no display, neither DISPLAY nor WAYLAND_DISPLAY is set";
    return "no display can be used" + (heldBack.empty() ? "" : ": " + heldBack.front());
}

void hold(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    if (type != QtFatalMsg) {
        heldBack.push_back(text.simplified().toStdString());
        return;
    }
    std::cerr << "vantrel: " << whyThereIsNone()
              << ". Without one, run \"vantrel --measure\" for a measurement with the built-in simulator, or "
                 "vantrel-headless with a script."
              << std::endl;
    std::_Exit(EXIT_FAILURE);  // half constructed, nothing can be taken down
}

}  // namespace

DisplayWatch::DisplayWatch() {
    heldBack.clear();
    qInstallMessageHandler(hold);
}

DisplayWatch::~DisplayWatch() {
    qInstallMessageHandler(nullptr);
    for (const std::string& text : heldBack) std::cerr << text << std::endl;
}

}  // namespace vantrel::qt
