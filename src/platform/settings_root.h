// Named string values in named sections: where settings live.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace vantrel::platform {

/// Section and key names are compared without regard to case; the empty section is the root itself.
class SettingsRoot {
  public:
    virtual ~SettingsRoot() = default;

    /// Makes the store ready, creating it when it is missing; failures throw std::system_error. The other
    /// functions do this by themselves.
    virtual void open() {}

    virtual bool hasSection(const std::string& section) const = 0;
    virtual std::optional<std::string> read(const std::string& section, const std::string& key) const = 0;

    /// Stores the value; failures throw std::runtime_error and leave everything as it was.
    virtual void write(const std::string& section, const std::string& key, const std::string& value) = 0;
    virtual void remove(const std::string& section, const std::string& key) = 0;
    virtual bool isEmpty() const = 0;
};

/// Settings in memory only; also the working copy of the file below.
class MemorySettings : public SettingsRoot {
  public:
    bool hasSection(const std::string& section) const override;
    std::optional<std::string> read(const std::string& section, const std::string& key) const override;
    void write(const std::string& section, const std::string& key, const std::string& value) override;
    void remove(const std::string& section, const std::string& key) override;
    bool isEmpty() const override { return values_.empty(); }

    struct Entry {
        std::string section, key, value;
    };
    using Entries = std::map<std::pair<std::string, std::string>, Entry>;  // by lower-case section and key
    const Entries& entries() const { return values_; }

  private:
    Entries values_;
};

}  // namespace vantrel::platform
