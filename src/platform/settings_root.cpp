#include "platform/settings_root.h"

#include "platform/text.h"

namespace vantrel::platform {

bool MemorySettings::hasSection(const std::string& section) const {
    const auto first = values_.lower_bound({toLower(section), ""});
    return first != values_.end() && first->first.first == toLower(section);
}

std::optional<std::string> MemorySettings::read(const std::string& section, const std::string& key) const {
    const auto found = values_.find({toLower(section), toLower(key)});
    if (found == values_.end()) return std::nullopt;
    return found->second.value;
}

void MemorySettings::write(const std::string& section, const std::string& key, const std::string& value) {
    auto [place, isNew] = values_.try_emplace({toLower(section), toLower(key)}, Entry{section, key, value});
    if (!isNew) place->second.value = value;
}

void MemorySettings::remove(const std::string& section, const std::string& key) {
    values_.erase({toLower(section), toLower(key)});
}

}  // namespace vantrel::platform
