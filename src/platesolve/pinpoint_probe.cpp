#include "platesolve/pinpoint_probe.h"

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/image_array.h"

namespace vantrel::platesolve {

using namespace platform;

ImageRef ppVirtualCamera(int size) {
    const auto side = static_cast<std::size_t>(size);
    return std::make_shared<const ImageArray>(side, side, std::vector<std::int32_t>(side * side));
}

bool PinPointIsInstalled(AutomationHost& automation) {
    try {
        return automation.create("PinPoint.Plate") != nullptr;
    } catch (const OperationError&) {
        return false;
    }
}

bool PinPointFullIsInstalled(AutomationHost& automation) {
    try {
        required(automation.create("PinPoint.Plate")).put("ImageArray", ppVirtualCamera(2));
        return true;
    } catch (const OperationError&) {
        return false;
    }
}

}  // namespace vantrel::platesolve
