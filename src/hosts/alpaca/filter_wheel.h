// A filter wheel at an Alpaca server.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "hosts/alpaca/device_link.h"

namespace vantrel::hosts::alpaca {

class FilterWheel {
  public:
    FilterWheel(const Surroundings& surroundings, const DeviceRecord& device,
                std::function<void(const DeviceRecord&)> moved);

    /// Waits; throws as DeviceLink does.
    void connect();
    void disconnect() { link_.disconnect(); }

    /// In the order of their numbers, from 0.
    const std::vector<std::string>& filters() const { return filters_; }

    /// Turns the wheel to the filter and waits until it is there; throws std::runtime_error when it doesn't
    /// get there within a minute.
    void turnTo(int filter);

  private:
    int position();

    const Surroundings& surroundings_;
    DeviceLink link_;
    std::vector<std::string> filters_;
};

}  // namespace vantrel::hosts::alpaca
