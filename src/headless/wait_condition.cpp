#include "headless/wait_condition.h"

#include <algorithm>
#include <optional>

#include "headless/lookup.h"

namespace vantrel::headless {

using namespace platform;

namespace {

std::string text(const Json& json, const char* field) {
    if (!json.contains(field) || !json[field].is_string())
        throw CommandError(std::string("\"") + field + "\" must be a text");
    return json[field].get<std::string>();
}

std::optional<Json> propertyOf(const Control& control, const std::string& name) {
    for (const auto& [property, value] : control.properties())
        if (property == name) return toJson(value);
    return std::nullopt;
}

WaitCondition controlCondition(const Json& json, const Screen& screen) {
    const Control& control = requiredControl(screen, text(json, "control"));
    const std::string property = text(json, "property");
    if (!propertyOf(control, property))
        throw CommandError(control.name() + " has no property \"" + property + "\"");
    if (!json.contains("is")) throw CommandError("\"is\" is missing");
    return [&control, property, wanted = json["is"]] {
        return sameValue(propertyOf(control, property).value_or(Json()), wanted);
    };
}

/// The fields that this kind of condition has, and no others.
bool consistsOf(const Json& json, std::initializer_list<const char*> fields) {
    return json.size() == fields.size() &&
           std::all_of(fields.begin(), fields.end(), [&](const char* field) { return json.contains(field); });
}

}  // namespace

bool LogCursor::find(const std::string& text) {
    const auto& lines = program_.logLines();
    for (std::size_t i = next_; i < lines.size(); ++i) {
        if (lines[i].find(text) == std::string::npos) continue;
        next_ = i + 1;
        return true;
    }
    return false;
}

WaitCondition waitCondition(const Json& json, const Screen& screen, LogCursor& log,
                            std::function<bool()> idle) {
    if (consistsOf(json, {"control", "property", "is"})) return controlCondition(json, screen);
    if (consistsOf(json, {"log"})) return [&log, wanted = text(json, "log")] { return log.find(wanted); };
    if (consistsOf(json, {"idle"}) && json["idle"] == true) return idle;
    if (consistsOf(json, {"window"})) {
        const Form& form = requiredForm(screen, text(json, "window"));
        return [&form] { return form.shown(); };
    }
    throw CommandError(
        "\"for\" must be {\"control\", \"property\", \"is\"}, {\"log\"}, {\"idle\": true} or {\"window\"}");
}

}  // namespace vantrel::headless
