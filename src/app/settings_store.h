// The program's settings: texts in the sections "PolarAlign", "Solve" and "Main" of the user's store.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "engine/ports.h"
#include "platform/dialogs.h"
#include "platform/settings_root.h"

namespace vantrel::app {

/// Where most of the program's own settings stand.
inline constexpr const char* kProgramSection = "PolarAlign";

/// The store can't be used any more; the operator has been told. Nothing can be made good: the program ends.
class SettingsFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class SettingsStore : public engine::SettingsPort {
  public:
    SettingsStore(platform::SettingsRoot& root, platform::Dialogs& dialogs)
        : root_(root), dialogs_(dialogs) {}

    /// At most 1023 characters; a NUL at the end is dropped.
    std::string GetSetting(const std::string& section, const std::string& key,
                           const std::string& defaultText) override;
    void SaveSetting(const std::string& section, const std::string& key, const std::string& value) override;
    std::string GetMainSetting(const std::string& key, const std::string& defaultText) override;
    void SaveMainSetting(const std::string& key, const std::string& value) override;

    /// Called at the first failure of the store, after its message box and before SettingsFailure is thrown.
    std::function<void()> onFailure;
    bool failed() const { return failed_; }

  private:
    void ensureRoot();
    [[noreturn]] void fail(const std::string& text, platform::Dialogs::Icon icon);

    platform::SettingsRoot& root_;
    platform::Dialogs& dialogs_;
    bool opened_ = false;
    bool failed_ = false;
};

}  // namespace vantrel::app
