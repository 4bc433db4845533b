// Late-bound automation: objects of outside programs, reached by ProgID and driven by member name.
//
// An AutomationHost creates objects; an AutomationObject has get, put and call; a Value is what travels.
// Names of members and ProgIDs are compared without regard to case. Every failure is an AutomationError.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/errors.h"
#include "platform/words.h"

namespace vantrel::platform {

class AutomationObject;
class ImageArray;
using ObjectRef = std::shared_ptr<AutomationObject>;
using ImageRef = std::shared_ptr<const ImageArray>;

/// One value on its way to or from an outside program.
///
/// The to...() conversions are those of automation programs: numbers, booleans (True is -1) and numeric texts
/// turn into each other; anything else is the run-time failure 13 (type mismatch), an empty object 91.
class Value {
  public:
    Value() = default;
    Value(bool value) : held_(value) {}                      // NOLINT(google-explicit-constructor)
    Value(int value) : held_(std::int64_t{value}) {}         // NOLINT(google-explicit-constructor)
    Value(std::int64_t value) : held_(value) {}              // NOLINT(google-explicit-constructor)
    Value(double value) : held_(value) {}                    // NOLINT(google-explicit-constructor)
    Value(const char* value) : held_(std::string(value)) {}  // NOLINT(google-explicit-constructor)
    Value(std::string value) : held_(std::move(value)) {}    // NOLINT(google-explicit-constructor)
    /// The English text; in this process its words come along.
    Value(const Words& value);                           // NOLINT(google-explicit-constructor)
    Value(ObjectRef value) : held_(std::move(value)) {}  // NOLINT(google-explicit-constructor)
    Value(ImageRef value) : held_(std::move(value)) {}   // NOLINT(google-explicit-constructor)

    bool isEmpty() const { return std::holds_alternative<std::monostate>(held_); }
    bool toBool() const;
    double toDouble() const;
    std::int32_t toInt() const;
    std::string toText() const;
    Words toWords() const { return words_ ? *words_ : Words(toText()); }
    ObjectRef toObject() const;
    ImageRef toImage() const;

    using Held = std::variant<std::monostate, bool, std::int64_t, double, std::string, ObjectRef, ImageRef>;
    const Held& held() const { return held_; }
    bool operator==(const Value& other) const { return held_ == other.held_; }

  private:
    Held held_;
    std::shared_ptr<const Words> words_;
};

using Arguments = std::vector<Value>;

class AutomationObject {
  public:
    virtual ~AutomationObject() = default;

    /// The class that the object belongs to: its ProgID, or a name of its own for objects that others hand
    /// out.
    virtual std::string className() const = 0;

    virtual Value get(const std::string& member, const Arguments& arguments = {}) = 0;
    virtual void put(const std::string& member, const Value& value, const Arguments& arguments = {}) = 0;
    virtual Value call(const std::string& member, const Arguments& arguments = {}) = 0;
};

class AutomationHost {
  public:
    virtual ~AutomationHost() = default;

    /// A new object of the class; failure 429 when the class is not installed or can't be created.
    virtual ObjectRef create(const std::string& progId) = 0;

    /// Path of the program that serves the class, with backslashes; empty when the class is not installed.
    virtual std::string serverPath(const std::string& progId) const = 0;

    /// The description registered for a driver of this device type; empty when there is none.
    virtual std::string profileDescription(const std::string& deviceType,
                                           const std::string& progId) const = 0;
};

/// "maxim" of "MaxIm.CCDCamera": the classes of one program are installed together.
std::string programOf(const std::string& progId);

/// The object, or failure 91 when there is none: for members used on an object that may be missing.
AutomationObject& required(const ObjectRef& object);

}  // namespace vantrel::platform
