#include "hosts/alpaca/device_error.h"

#include "hosts/server_text.h"

namespace vantrel::hosts::alpaca {

namespace {

using namespace device_error;

std::string meaningOf(int number) {
    switch (number) {
        case kNotImplemented:
        case kActionNotImplemented:
            return "The device can't do this.";
        case kInvalidValue:
            return "The device doesn't take this value.";
        case kValueNotSet:
            return "The device needs a value that hasn't been set yet.";
        case kNotConnected:
            return "The device isn't connected.";
        case kParked:
            return "The mount is parked: please unpark it.";
        case kSlaved:
            return "The device follows another one and takes no commands itself.";
        case kInvalidOperation:
            return "The device can't do this now.";
        case kCancelled:
            return "The device was told to stop.";
        default:
            break;
    }
    std::string text = "The device reports error ";
    text += std::to_string(number);
    return text += '.';
}

}  // namespace

DeviceError::DeviceError(int number, const std::string& words)
    : std::runtime_error(oneLine(words).empty() ? meaningOf(number) : oneLine(words)), number_(number) {}

}  // namespace vantrel::hosts::alpaca
