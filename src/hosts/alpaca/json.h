// JSON as servers send it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace vantrel::hosts::alpaca {

using Json = nlohmann::json;

/// The text as JSON. Throws std::runtime_error when it is none, or nested without end.
Json parseJson(std::string_view text);

/// A member of an object as what it should be; `otherwise` when it isn't there or is something else. Texts
/// come as one line.
std::string textMember(const Json& object, const char* name, const std::string& otherwise = {});
int intMember(const Json& object, const char* name, int otherwise);

/// The value as a number that is one, or as yes or no; nothing when it is something else.
std::optional<double> numberIn(const Json& value);
std::optional<bool> flagIn(const Json& value);

/// What a list of {"Name": ..., "Value": ...} (devicestate) holds, by name.
std::map<std::string, Json> namedValuesIn(const Json& list);

}  // namespace vantrel::hosts::alpaca
