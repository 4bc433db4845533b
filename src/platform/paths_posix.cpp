#include "platform/paths.h"

namespace vantrel::platform {

std::string libraryName(const std::filesystem::path& path) { return path.string(); }

}  // namespace vantrel::platform
