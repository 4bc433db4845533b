// A device's automation object: one that lives until its members have returned.
#pragma once

#include <memory>
#include <string>

#include "platform/dispatch_object.h"

namespace vantrel::hosts {

/// Its members wait, and other handlers run meanwhile: whoever holds the object may let go of it then. Always
/// held by a shared pointer.
class HostObject : public platform::DispatchObject, public std::enable_shared_from_this<HostObject> {
  public:
    using DispatchObject::DispatchObject;

    platform::Value get(const std::string& member, const platform::Arguments& arguments = {}) override {
        const auto self = shared_from_this();
        return DispatchObject::get(member, arguments);
    }
    void put(const std::string& member, const platform::Value& value,
             const platform::Arguments& arguments = {}) override {
        const auto self = shared_from_this();
        DispatchObject::put(member, value, arguments);
    }
    platform::Value call(const std::string& member, const platform::Arguments& arguments = {}) override {
        const auto self = shared_from_this();
        return DispatchObject::call(member, arguments);
    }
};

}  // namespace vantrel::hosts
