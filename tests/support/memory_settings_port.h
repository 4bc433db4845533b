// The program's settings of tests, in memory only.
#pragma once

#include <string>

#include "engine/ports.h"
#include "platform/settings_root.h"

namespace vantrel::test {

struct MemorySettingsPort : engine::SettingsPort {
    std::string GetSetting(const std::string& section, const std::string& key,
                           const std::string& defaultText) override {
        return root.read(section, key).value_or(defaultText);
    }
    void SaveSetting(const std::string& section, const std::string& key, const std::string& value) override {
        root.write(section, key, value);
    }
    std::string GetMainSetting(const std::string& key, const std::string& defaultText) override {
        if (root.read("Main", key).value_or("").empty()) root.write("Main", key, defaultText);
        return *root.read("Main", key);
    }
    void SaveMainSetting(const std::string& key, const std::string& value) override {
        root.write("Main", key, value);
    }

    platform::MemorySettings root;
};

}  // namespace vantrel::test
