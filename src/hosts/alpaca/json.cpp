#include "hosts/alpaca/json.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "hosts/server_text.h"

namespace vantrel::hosts::alpaca {

namespace {

constexpr int kDeepest = 20;

const Json* memberOf(const Json& object, const char* name) {
    if (!object.is_object()) return nullptr;
    const auto found = object.find(name);
    return found == object.end() ? nullptr : &*found;
}

}  // namespace

Json parseJson(std::string_view text) {
    const auto limited = [](int depth, Json::parse_event_t /*event*/, const Json& /*parsed*/) {
        if (depth > kDeepest) throw std::runtime_error("it is nested without end");
        return true;
    };
    try {
        return Json::parse(text, limited);
    } catch (const Json::exception&) {
        throw std::runtime_error("it is no JSON");
    }
}

std::string textMember(const Json& object, const char* name, const std::string& otherwise) {
    const Json* const member = memberOf(object, name);
    return member != nullptr && member->is_string() ? oneLine(member->get_ref<const std::string&>())
                                                    : otherwise;
}

int intMember(const Json& object, const char* name, int otherwise) {
    const Json* const member = memberOf(object, name);
    const auto number = member == nullptr ? std::nullopt : numberIn(*member);
    if (!number) return otherwise;
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp(*number, double{Limits::min()}, double{Limits::max()}));
}

std::optional<double> numberIn(const Json& value) {
    if (!value.is_number()) return std::nullopt;
    return value.get<double>();
}

std::optional<bool> flagIn(const Json& value) {
    if (!value.is_boolean()) return std::nullopt;
    return value.get<bool>();
}

std::map<std::string, Json> namedValuesIn(const Json& list) {
    std::map<std::string, Json> values;
    if (!list.is_array()) return values;
    for (const Json& entry : list)
        if (const Json* const value = memberOf(entry, "Value"); value != nullptr)
            values.insert_or_assign(textMember(entry, "Name"), *value);
    return values;
}

}  // namespace vantrel::hosts::alpaca
