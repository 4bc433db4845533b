// Settings in memory whose disk can fail, and that tell what is written.
#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

#include "platform/settings_root.h"
#include "platform/signal.h"

namespace vantrel::test {

struct FullDisk : platform::MemorySettings {
    bool full = false;
    bool missing = false;
    std::string unwritable;  // a section
    platform::Signal<const std::string&, const std::string&> written;

    void open() override {
        if (missing) throw std::system_error(std::make_error_code(std::errc::io_error));
    }
    void write(const std::string& section, const std::string& key, const std::string& value) override {
        if (full || section == unwritable) throw std::runtime_error("No space left");
        MemorySettings::write(section, key, value);
        written.emit(section + "." + key, value);
    }
};

}  // namespace vantrel::test
