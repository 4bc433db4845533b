#include "station/system_classes.h"

namespace vantrel::station {

SystemPrograms installSystemClasses(platform::ClassRegistry& /*classes*/, platform::EventLoop& /*loop*/,
                                    platform::OutsideCalls& /*calls*/,
                                    const std::function<bool()>& /*stopping*/) {
    return {};
}

}  // namespace vantrel::station
