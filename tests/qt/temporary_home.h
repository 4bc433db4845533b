// A folder of a test's own that goes when the test ends.
#pragma once

#include <QTemporaryDir>
#include <filesystem>

#include "platform/user_machine.h"

namespace vantrel::qt {

class TemporaryHome {
  public:
    std::filesystem::path folder() const { return directory_.path().toStdString(); }
    platform::UserPaths paths() const { return platform::pathsBelow(folder()); }

  private:
    QTemporaryDir directory_;
};

}  // namespace vantrel::qt
