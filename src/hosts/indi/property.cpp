#include "hosts/indi/property.h"

#include <algorithm>

#include "hosts/indi/numbers.h"

namespace vantrel::hosts::indi {
namespace {

constexpr std::size_t kMostElements = 500;

std::optional<PropertyState> readState(const std::string& text) {
    if (text == "Idle") return PropertyState::kIdle;
    if (text == "Ok") return PropertyState::kOk;
    if (text == "Busy") return PropertyState::kBusy;
    if (text == "Alert") return PropertyState::kAlert;
    return std::nullopt;
}

std::optional<Property::Kind> readKind(std::string_view name) {
    using Kind = Property::Kind;
    constexpr std::pair<std::string_view, Kind> kKinds[] = {{"defTextVector", Kind::kText},
                                                            {"defNumberVector", Kind::kNumber},
                                                            {"defSwitchVector", Kind::kSwitch},
                                                            {"defLightVector", Kind::kLight},
                                                            {"defBLOBVector", Kind::kBlob}};
    for (const auto& [known, kind] : kKinds)
        if (name == known) return kind;
    return std::nullopt;
}

void takeValue(Property::Kind kind, PropertyElement& element, const std::string& text) {
    if (kind == Property::Kind::kNumber) {
        const auto number = readNumber(text);
        if (!number) return;
        element.number = *number;
    }
    if (kind == Property::Kind::kSwitch) element.on = text == "On";
    element.text = text;
}

void takeState(Property& property, const XmlElement& element) {
    if (const auto state = readState(element.attribute("state"))) property.state = *state;
    property.timestamp = element.attribute("timestamp");
}

}  // namespace

const PropertyElement* Property::element(std::string_view wanted) const {
    const auto found =
        std::find_if(elements.begin(), elements.end(), [&](const auto& one) { return one.name == wanted; });
    return found == elements.end() ? nullptr : &*found;
}

std::optional<double> Property::number(std::string_view wanted) const {
    const PropertyElement* found = element(wanted);
    if (found == nullptr || kind != Kind::kNumber) return std::nullopt;
    return found->number;
}

std::string Property::text(std::string_view wanted) const {
    const PropertyElement* found = element(wanted);
    return found == nullptr ? std::string() : found->text;
}

bool Property::on(std::string_view wanted) const {
    const PropertyElement* found = element(wanted);
    return found != nullptr && found->on;
}

std::size_t Property::size() const {
    std::size_t bytes = sizeof *this + name.size();
    for (const PropertyElement& one : elements)
        bytes += sizeof one + one.name.size() + one.label.size() + one.text.size();
    return bytes;
}

std::optional<Property> definedProperty(const XmlElement& element) {
    const auto kind = readKind(element.name);
    Property property;
    property.name = element.attribute("name");
    if (!kind || property.name.empty() || element.children.size() > kMostElements) return std::nullopt;
    property.kind = *kind;
    property.writable = element.attribute("perm") != "ro";
    takeState(property, element);
    for (const XmlElement& child : element.children) {
        PropertyElement one;
        one.name = child.attribute("name");
        one.label = child.attribute("label");
        one.minimum = readNumber(child.attribute("min")).value_or(0);
        one.maximum = readNumber(child.attribute("max")).value_or(0);
        takeValue(*kind, one, child.text);
        property.elements.push_back(std::move(one));
    }
    return property;
}

void update(Property& property, const XmlElement& element, long serial) {
    takeState(property, element);
    property.updated = serial;
    if (property.state == PropertyState::kBusy) property.wasBusy = serial;
    if (property.state == PropertyState::kAlert) property.wasRefused = serial;
    for (const XmlElement& child : element.children) {
        const auto found = std::find_if(property.elements.begin(), property.elements.end(),
                                        [&](const auto& one) { return one.name == child.attribute("name"); });
        if (found != property.elements.end()) takeValue(property.kind, *found, child.text);
    }
}

}  // namespace vantrel::hosts::indi
