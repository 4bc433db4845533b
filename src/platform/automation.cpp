#include "platform/automation.h"

#include <cmath>

#include "platform/overloaded.h"
#include "platform/text.h"

namespace vantrel::platform {
namespace {

[[noreturn]] void mismatch() { throw runTimeError(error_number::kTypeMismatch); }

}  // namespace

Value::Value(const Words& value) : held_(value.english()), words_(std::make_shared<const Words>(value)) {}

bool Value::toBool() const {
    if (const auto* text = std::get_if<std::string>(&held_)) {
        if (equalIgnoringCase(*text, "True")) return true;
        if (equalIgnoringCase(*text, "False")) return false;
    }
    return toDouble() != 0;
}

double Value::toDouble() const {
    return std::visit(Overloaded{
                          [](std::monostate) { return 0.0; },
                          [](bool value) { return value ? -1.0 : 0.0; },
                          [](std::int64_t value) { return static_cast<double>(value); },
                          [](double value) { return value; },
                          [](const std::string& value) { return toNumber(value); },
                          [](const auto&) -> double { mismatch(); },
                      },
                      held_);
}

std::int32_t Value::toInt() const { return toInt32(toDouble()); }

std::string Value::toText() const {
    return std::visit(Overloaded{
                          [](std::monostate) { return std::string(); },
                          [](bool value) { return std::string(value ? "True" : "False"); },
                          [](std::int64_t value) { return std::to_string(value); },
                          [](double value) { return platform::toText(value); },
                          [](const std::string& value) { return value; },
                          [](const auto&) -> std::string { mismatch(); },
                      },
                      held_);
}

ObjectRef Value::toObject() const {
    if (const auto* object = std::get_if<ObjectRef>(&held_)) return *object;
    if (isEmpty()) return nullptr;
    mismatch();
}

ImageRef Value::toImage() const {
    if (const auto* image = std::get_if<ImageRef>(&held_)) return *image;
    mismatch();
}

std::string programOf(const std::string& progId) { return toLower(progId.substr(0, progId.find('.'))); }

AutomationObject& required(const ObjectRef& object) {
    if (!object) throw runTimeError(error_number::kNoObject);
    return *object;
}

}  // namespace vantrel::platform
