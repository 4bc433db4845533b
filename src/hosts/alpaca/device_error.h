// What Alpaca devices refuse.
#pragma once

#include <stdexcept>
#include <string>

namespace vantrel::hosts::alpaca {

/// Numbers of the protocol. Those from kFirstOfDrivers are the driver's own.
namespace device_error {
inline constexpr int kNotImplemented = 0x400;
inline constexpr int kInvalidValue = 0x401;
inline constexpr int kValueNotSet = 0x402;
inline constexpr int kNotConnected = 0x407;
inline constexpr int kParked = 0x408;
inline constexpr int kSlaved = 0x409;
inline constexpr int kInvalidOperation = 0x40B;
inline constexpr int kActionNotImplemented = 0x40C;
inline constexpr int kCancelled = 0x40E;
inline constexpr int kFirstOfDrivers = 0x500;
}  // namespace device_error

/// The device answered with an error. Its text says so in a sentence: the device's own words, or ours where
/// it has none.
class DeviceError : public std::runtime_error {
  public:
    DeviceError(int number, const std::string& words);
    int number() const { return number_; }

    /// There is no such member, or the device can't do that.
    bool isNotImplemented() const {
        return number_ == device_error::kNotImplemented || number_ == device_error::kActionNotImplemented;
    }

  private:
    int number_;
};

}  // namespace vantrel::hosts::alpaca
