// The fields of one command, with what is wrong with them said in words.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

#include "headless/json_values.h"

namespace vantrel::headless {

/// Every function throws CommandError when a field is missing or of the wrong kind.
class CommandFields {
  public:
    explicit CommandFields(const Json& command) : command_(command) {}

    /// No other fields than these, "do" and "id".
    void allowOnly(const std::vector<std::string>& names) const;

    bool has(const char* name) const { return command_.contains(name); }
    const Json& any(const char* name) const;
    std::string text(const char* name) const;
    std::string text(const char* name, const std::string& ifMissing) const;
    std::int64_t integer(const char* name) const;
    std::int64_t integer(const char* name, std::int64_t ifMissing) const;
    bool flag(const char* name, bool ifMissing) const;
    /// A span of the program's time, not negative and no more than a year.
    platform::Milliseconds seconds(const char* name,
                                   std::optional<platform::Milliseconds> ifMissing = {}) const;
    /// Empty when the field is missing.
    platform::Arguments arguments(const char* name, const ObjectFinder& findObject) const;

  private:
    const Json& command_;
};

}  // namespace vantrel::headless
