// The screen of tests and pictures that need no display.
#pragma once

#include <QTemporaryFile>
#include <memory>

namespace vantrel::qt {

/// The toolkit's own screen without a display is smaller than any that people use. Before the application;
/// what comes back has to live until the application is made. A platform that was chosen stays.
inline std::unique_ptr<QTemporaryFile> useOffscreenDisplay() {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) return nullptr;
    auto configuration = std::make_unique<QTemporaryFile>();
    configuration->open();
    configuration->write(
        R"({"screens": [{"name": "", "x": 0, "y": 0, "width": 1920, "height": 1200, "logicalDpi": 96,
            "logicalBaseDpi": 96, "dpr": 1}]})");
    configuration->close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + configuration->fileName().toUtf8());
    return configuration;
}

}  // namespace vantrel::qt
