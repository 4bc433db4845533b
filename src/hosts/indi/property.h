// What a device says of itself: properties with named elements, as the server defines and updates them.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/indi/xml_stream.h"
#include "platform/clock.h"

namespace vantrel::hosts::indi {

enum class PropertyState { kIdle, kOk, kBusy, kAlert };

struct PropertyElement {
    std::string name;
    std::string label;
    std::string text;                 // as it came
    double number = 0;                // of a number
    bool on = false;                  // of a switch
    double minimum = 0, maximum = 0;  // of a number; equal where there are no limits
};

struct Property {
    enum class Kind { kText, kNumber, kSwitch, kLight, kBlob };

    Kind kind = Kind::kText;
    std::string name;
    PropertyState state = PropertyState::kIdle;
    bool writable = true;
    std::string timestamp;  // of the last update, by the driver's clock
    std::vector<PropertyElement> elements;

    platform::Milliseconds defined{0};  // when, by the loop's clock

    // When something came, counted in everything that comes from the server; 0: never.
    long updated = 0;     // an update, which the definition is none of
    long wasBusy = 0;     // an update that said so
    long wasRefused = 0;  // an update to Alert

    const PropertyElement* element(std::string_view wanted) const;
    /// Of a number that exists.
    std::optional<double> number(std::string_view wanted) const;
    /// Of a text that exists.
    std::string text(std::string_view wanted) const;
    /// Of a switch: exists and is on.
    bool on(std::string_view wanted) const;

    /// The memory that it takes, about.
    std::size_t size() const;
};

/// A property out of its defTextVector (or Number, Switch, Light, BLOB); nothing when it is none that can be
/// used.
std::optional<Property> definedProperty(const XmlElement& element);

/// Takes a setTextVector (or the like) over, which is the server's `serial`th word. Values that make no sense
/// leave the old ones.
void update(Property& property, const XmlElement& element, long serial);

}  // namespace vantrel::hosts::indi
