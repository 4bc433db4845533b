#include "platform/words.h"

#include <cstddef>

namespace vantrel::platform {
namespace {

/// The pattern with the parts at their places.
std::string filled(const std::string& pattern, const std::vector<std::string>& parts) {
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char digit = pattern[i] == '%' && i + 1 < pattern.size() ? pattern[i + 1] : '0';
        const auto part = static_cast<std::size_t>(digit - '1');
        if (digit >= '1' && digit <= '9' && part < parts.size()) {
            text += parts[part];
            ++i;
        } else {
            text += pattern[i];
        }
    }
    return text;
}

}  // namespace

Words Words::tr(const std::string& pattern, std::vector<Words> parts) {
    Words words;
    words.pattern_ = pattern;
    words.parts_ = std::move(parts);
    words.english_ = words.in([](const std::string& english) { return english; });
    return words;
}

std::string Words::in(const std::function<std::string(const std::string& pattern)>& translated) const {
    if (pattern_.empty()) return english_;
    std::vector<std::string> parts;
    parts.reserve(parts_.size());
    for (const Words& part : parts_) parts.push_back(part.in(translated));
    return filled(translated(pattern_), parts);
}

}  // namespace vantrel::platform
