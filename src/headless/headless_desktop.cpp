#include "headless/headless_desktop.h"

#include <filesystem>
#include <system_error>

namespace vantrel::headless {

using namespace platform;

std::optional<SystemVersion> HeadlessDesktop::systemVersion() const {
    constexpr int kUnknownPlatform = 3;
    SystemVersion version;
    version.platformId = kUnknownPlatform;
    return version;
}

bool HeadlessDesktop::open(const std::string& file) {
    if (file.find("://") != std::string::npos) return true;
    std::error_code ignored;
    return std::filesystem::exists(folders_.real(file), ignored);
}

}  // namespace vantrel::headless
