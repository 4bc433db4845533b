// The protocol's JSON and the program's values.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "platform/automation.h"
#include "platform/clock.h"
#include "platform/controls.h"
#include "platform/form.h"

namespace vantrel::headless {

using Json = nlohmann::ordered_json;

/// A command that can't be carried out, in words for the script's author.
class CommandError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Finds the object that a script names, for values that are objects.
using ObjectFinder = std::function<platform::ObjectRef(const std::string& progId)>;

/// null, booleans, numbers and texts as they are; {"object": PROGID} an object; {"width", "height", "pixels"}
/// an image, row after row (pixels left out: all 0). Anything else throws CommandError.
platform::Value toValue(const Json& json, const ObjectFinder& findObject);

/// The reverse; an object becomes {"object": class name}, an image {"width", "height"}.
Json toJson(const platform::Value& value);

Json toJson(const platform::Control::PropertyValue& value);

/// A stored setting: texts as they are, numbers and booleans as the program would store them.
std::string toSettingText(const Json& json);

/// {"drawing": [primitives], "scale": {left, top, right, bottom}}.
Json toJson(const platform::Drawing& drawing);

/// Name, title, position, size and on-top state.
Json toJson(const platform::Form& form);

/// "2026-11-24T20:00:00.000", followed by "Z" for universal time.
std::string utcText(platform::Instant instant);
std::string localText(platform::Instant instant);

/// Whether a property has the wanted value; numbers and booleans compare by what they mean.
bool sameValue(const Json& is, const Json& wanted);

}  // namespace vantrel::headless
