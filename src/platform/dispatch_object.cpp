#include "platform/dispatch_object.h"

#include "platform/text.h"

namespace vantrel::platform {
namespace {

constexpr int kWrongNumberOfArguments = 450;

/// Runs a member's function; what it throws leaves as an automation failure with the class as its source.
template <typename Function>
auto guarded(const std::string& className, Function&& function) {
    try {
        return function();
    } catch (const AutomationError&) {
        throw;
    } catch (const OperationError& error) {
        throw AutomationError(error.number(), className, error.description());
    } catch (const std::exception& error) {
        throw AutomationError(error_number::kDriverException, className, error.what());
    }
}

AutomationError noSuchMember(const std::string& className) {
    const OperationError error = runTimeError(error_number::kNoSuchMember);
    return {error.number(), className, error.description()};
}

}  // namespace

const DispatchObject::Member& DispatchObject::find(const std::string& member) const {
    const auto found = members_.find(toLower(member));
    if (found == members_.end()) throw noSuchMember(className_);
    return found->second;
}

Value DispatchObject::get(const std::string& member, const Arguments& arguments) {
    const auto alive = weak_from_this().lock();
    const Member& found = find(member);
    if (!found.getter) throw noSuchMember(className_);
    return guarded(className_, [&] { return found.getter(arguments); });
}

void DispatchObject::put(const std::string& member, const Value& value, const Arguments& arguments) {
    const auto alive = weak_from_this().lock();
    const Member& found = find(member);
    if (!found.setter) throw noSuchMember(className_);
    guarded(className_, [&] { found.setter(value, arguments); });
}

Value DispatchObject::call(const std::string& member, const Arguments& arguments) {
    const auto alive = weak_from_this().lock();
    const Member& found = find(member);
    if (!found.method) throw noSuchMember(className_);
    return guarded(className_, [&] { return found.method(arguments); });
}

void DispatchObject::property(const std::string& name, Getter getter, Setter setter) {
    Member& member = members_[toLower(name)];
    member.getter = [getter = std::move(getter)](const Arguments&) { return getter(); };
    if (setter)
        member.setter = [setter = std::move(setter)](const Value& value, const Arguments&) { setter(value); };
}

void DispatchObject::indexedProperty(const std::string& name, IndexedGetter getter, IndexedSetter setter) {
    Member& member = members_[toLower(name)];
    member.getter = std::move(getter);
    member.setter = std::move(setter);
}

void DispatchObject::method(const std::string& name, Method body) {
    members_[toLower(name)].method = std::move(body);
}

const Value& DispatchObject::argument(const Arguments& arguments, std::size_t index) {
    if (index >= arguments.size())
        throw OperationError(kWrongNumberOfArguments, "Vantrel",
                             "Wrong number of arguments or invalid property assignment");
    return arguments[index];
}

}  // namespace vantrel::platform
