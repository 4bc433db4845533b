#include "headless/headless_desktop.h"

#include <filesystem>
#include <system_error>

namespace vantrel::headless {

bool HeadlessDesktop::open(const std::string& file) {
    if (file.find("://") != std::string::npos) return true;
    std::error_code ignored;
    return std::filesystem::exists(folders().real(file), ignored);
}

}  // namespace vantrel::headless
