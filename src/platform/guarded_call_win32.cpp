#include "platform/guarded_call.h"

namespace vantrel::platform {

/// There are no processes here that begin as copies of this one: the call is made in place, and its limits
/// are nobody's.
std::string callGuarded(const GuardLimits& /*limits*/, const std::function<std::string()>& call) {
    try {
        return call();
    } catch (const std::exception& error) {
        throw GuardedCallFailed(error.what());
    }
}

}  // namespace vantrel::platform
