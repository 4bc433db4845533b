// The settings of a user in one file that is always whole.
#pragma once

#include <filesystem>

#include "platform/settings_root.h"

namespace vantrel::platform {

/// Reads the file once and writes it anew at every change: first a neighbour file, flushed to the disk, then
/// a rename over the old one, so that a crash at any moment leaves the old or the new file. Lines read
/// "section<TAB>key<TAB>value", with backslash escapes for tab, line feed, carriage return, NUL and
/// backslash; lines that can't be understood are left out, and the damaged file is kept beside the new one as
/// ".damaged".
class SettingsFile : public SettingsRoot {
  public:
    /// Touches nothing yet: the first use opens the store.
    explicit SettingsFile(std::filesystem::path file) : file_(std::move(file)) {}

    /// A file that does not exist yet is an empty store, but its folder is created. A folder that can't be
    /// created, and a file that can't be read, is no regular file or is far larger than settings are, throws
    /// std::system_error. What a run that was killed left half written goes: only the one instance that
    /// stores settings may open them.
    void open() override;

    bool hasSection(const std::string& section) const override { return settings().hasSection(section); }
    std::optional<std::string> read(const std::string& section, const std::string& key) const override {
        return settings().read(section, key);
    }
    void write(const std::string& section, const std::string& key, const std::string& value) override;
    void remove(const std::string& section, const std::string& key) override;
    bool isEmpty() const override { return settings().isEmpty(); }

  private:
    const MemorySettings& settings() const;
    MemorySettings loaded() const;
    void replaceBy(MemorySettings settings);
    std::filesystem::path freshFile() const;

    std::filesystem::path file_;
    mutable std::optional<MemorySettings> settings_;  // nothing until the store is opened
};

}  // namespace vantrel::platform
