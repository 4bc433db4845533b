// Which binning a camera takes, where it refuses one that its own limits allow: many bin by 1, 2 and 4, and
// don't say that they leave 3 out.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/camera_hardware.h"

namespace vantrel::hosts {

class GrantedBinning {
  public:
    /// Sets the order's binning or, where the camera answers with a `Refusal`, the next smaller one that it
    /// takes, and tells so. Returns the order as it can be carried out; throws the first refusal when none is
    /// taken. An order for a part of the sensor, or for different binnings of its sides, stays as it is.
    template <typename Refusal>
    platform::CameraOrder ask(platform::CameraOrder order,
                              const std::function<void(const platform::CameraOrder&)>& set,
                              const std::string& camera,
                              const std::function<void(const std::string& line)>& tell) {
        const int asked = order.binX;
        const bool mayBeLess = order.binX == order.binY && !order.part;
        if (const auto known = granted_.find(asked); mayBeLess && known != granted_.end())
            order.binX = order.binY = known->second;
        std::optional<Refusal> refusal;
        for (;; order.binX = --order.binY) {
            try {
                set(order);
                break;
            } catch (const Refusal& error) {
                if (!refusal) refusal = error;
                if (!mayBeLess || order.binX == 1) throw *refusal;
            }
        }
        if (refusal) {
            granted_[asked] = order.binX;
            tell(camera + " doesn't take binning " + std::to_string(asked) + ", but " +
                 std::to_string(order.binX) + ": the image scale has to be that of it (" + refusal->what() +
                 ")");
        }
        return order;
    }

    /// It may be another camera from now on.
    void forget() { granted_.clear(); }

  private:
    std::map<int, int> granted_;  // instead of what was asked for
};

}  // namespace vantrel::hosts
