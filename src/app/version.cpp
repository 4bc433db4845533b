#include "app/version.h"

namespace vantrel::app {

std::string versionText() { return VANTREL_VERSION; }

}  // namespace vantrel::app
