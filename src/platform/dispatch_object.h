// An automation object whose members are functions in a table: what the built-in instruments are made of.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "platform/automation.h"

namespace vantrel::platform {

/// Derived classes name their members in the constructor. A member that isn't in the table raises failure
/// 438, exceptions of other kinds arrive at the caller as a driver's exception with the class as source. An
/// object lives until its member has returned, even if its last holder lets go of it meanwhile.
class DispatchObject : public AutomationObject, public std::enable_shared_from_this<DispatchObject> {
  public:
    explicit DispatchObject(std::string className) : className_(std::move(className)) {}

    std::string className() const override { return className_; }
    Value get(const std::string& member, const Arguments& arguments = {}) override;
    void put(const std::string& member, const Value& value, const Arguments& arguments = {}) override;
    Value call(const std::string& member, const Arguments& arguments = {}) override;

  protected:
    using Getter = std::function<Value()>;
    using Setter = std::function<void(const Value&)>;
    using IndexedGetter = std::function<Value(const Arguments&)>;
    using IndexedSetter = std::function<void(const Value&, const Arguments&)>;
    using Method = std::function<Value(const Arguments&)>;

    /// A property; leave out the setter to make it read-only.
    void property(const std::string& name, Getter getter, Setter setter = nullptr);
    void indexedProperty(const std::string& name, IndexedGetter getter, IndexedSetter setter);
    void method(const std::string& name, Method body);

    /// The argument at this place; failure 450 (wrong number of arguments) when there are fewer.
    static const Value& argument(const Arguments& arguments, std::size_t index);

  private:
    struct Member {
        IndexedGetter getter;
        IndexedSetter setter;
        Method method;
    };
    const Member& find(const std::string& member) const;

    std::string className_;
    std::unordered_map<std::string, Member> members_;  // by lower-case name
};

}  // namespace vantrel::platform
