// An object of an outside program that takes everything: members tell what was put into them, calls succeed.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "platform/automation.h"
#include "platform/text.h"

namespace vantrel::test {

class WillingObject : public platform::AutomationObject {
  public:
    using Values = std::map<std::string, platform::Value>;

    /// The values that it begins with, and what all other members tell.
    WillingObject(std::string className, const Values& values, platform::Value otherwise = {})
        : className_(std::move(className)), otherwise_(std::move(otherwise)) {
        for (const auto& [member, value] : values) tell(member, value);
    }

    std::string className() const override { return className_; }
    platform::Value get(const std::string& member, const platform::Arguments& arguments = {}) override {
        const auto found = told_.find(nameOf(member, arguments));
        return found == told_.end() ? otherwise_ : found->second;
    }
    void put(const std::string& member, const platform::Value& value,
             const platform::Arguments& arguments = {}) override {
        told_[nameOf(member, arguments)] = value;
    }
    platform::Value call(const std::string& /*member*/, const platform::Arguments& /*arguments*/) override {
        return true;
    }

  protected:
    void tell(const std::string& member, const platform::Value& value) { told_[nameOf(member, {})] = value; }

  private:
    /// A member with an index is known by the index alone.
    static std::string nameOf(const std::string& member, const platform::Arguments& arguments) {
        return platform::toLower(arguments.empty() ? member : arguments.front().toText());
    }

    std::string className_;
    platform::Value otherwise_;
    Values told_;
};

}  // namespace vantrel::test
