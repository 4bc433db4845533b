#include "station/system_classes.h"

namespace vantrel::station {

void installSystemClasses(platform::ClassRegistry& /*classes*/, platform::EventLoop& /*loop*/,
                          platform::OutsideCalls& /*calls*/, const std::function<bool()>& /*stopping*/) {}

}  // namespace vantrel::station
