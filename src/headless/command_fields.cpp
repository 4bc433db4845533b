#include "headless/command_fields.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantrel::headless {

using namespace platform;

namespace {

std::string quoted(const char* name) { return "\"" + std::string(name) + "\""; }

}  // namespace

void CommandFields::allowOnly(const std::vector<std::string>& names) const {
    for (const auto& [name, value] : command_.items())
        if (name != "do" && name != "id" && std::find(names.begin(), names.end(), name) == names.end())
            throw CommandError("Unknown field: " + name.substr(0, 60));
}

const Json& CommandFields::any(const char* name) const {
    const auto found = command_.find(name);
    if (found == command_.end()) throw CommandError(quoted(name) + " is missing");
    return *found;
}

std::string CommandFields::text(const char* name) const {
    const Json& value = any(name);
    if (!value.is_string()) throw CommandError(quoted(name) + " must be a text");
    return value.get<std::string>();
}

std::string CommandFields::text(const char* name, const std::string& ifMissing) const {
    return has(name) ? text(name) : ifMissing;
}

std::int64_t CommandFields::integer(const char* name) const {
    const Json& value = any(name);
    constexpr double kLargest = std::numeric_limits<std::uint32_t>::max();
    if (value.is_number()) {
        const double number = value.get<double>();
        if (std::abs(number) <= kLargest && number == std::trunc(number))
            return static_cast<std::int64_t>(number);
    }
    throw CommandError(quoted(name) + " must be a whole number");
}

std::int64_t CommandFields::integer(const char* name, std::int64_t ifMissing) const {
    return has(name) ? integer(name) : ifMissing;
}

bool CommandFields::flag(const char* name, bool ifMissing) const {
    if (!has(name)) return ifMissing;
    if (!any(name).is_boolean()) throw CommandError(quoted(name) + " must be true or false");
    return any(name).get<bool>();
}

Milliseconds CommandFields::seconds(const char* name, std::optional<Milliseconds> ifMissing) const {
    constexpr double kLongest = 366 * 86400.0;
    if (!has(name) && ifMissing) return *ifMissing;
    const Json& value = any(name);
    const double span = value.is_number() ? value.get<double>() : -1;
    if (!(span >= 0 && span <= kLongest))
        throw CommandError(quoted(name) + " must be a number of seconds from 0 to a year");
    return Milliseconds{std::llround(span * 1000)};
}

Arguments CommandFields::arguments(const char* name, const ObjectFinder& findObject) const {
    Arguments values;
    if (!has(name)) return values;
    if (!any(name).is_array()) throw CommandError(quoted(name) + " must be a list");
    for (const Json& value : any(name)) values.push_back(toValue(value, findObject));
    return values;
}

}  // namespace vantrel::headless
