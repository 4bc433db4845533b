// The windows in German, as long as it lives.
#pragma once

#include <QCoreApplication>
#include <QTranslator>
#include <stdexcept>

#include "platform/user_machine.h"

namespace vantrel::qt {

class InGerman {
  public:
    InGerman() {
        const auto folder = platform::sharedDataFolder() / "translations";
        if (!german_.load("vantrel_de", QString::fromStdString(folder.string())))
            throw std::runtime_error("no translation in " + folder.string());
        QCoreApplication::installTranslator(&german_);
    }
    ~InGerman() { QCoreApplication::removeTranslator(&german_); }
    InGerman(const InGerman&) = delete;
    InGerman& operator=(const InGerman&) = delete;

  private:
    QTranslator german_;
};

}  // namespace vantrel::qt
