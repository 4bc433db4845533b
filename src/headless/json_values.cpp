#include "headless/json_values.h"

#include <limits>

#include "platform/image_array.h"
#include "platform/overloaded.h"
#include "platform/text.h"

namespace vantrel::headless {

using namespace platform;

namespace {

std::size_t imageSide(const Json& json, const char* name) {
    constexpr std::size_t kLargestSide = 20'000;
    const auto side = json.find(name);
    if (side == json.end() || !side->is_number_unsigned() || side->get<std::size_t>() > kLargestSide)
        throw CommandError(std::string("An image needs a sensible \"") + name + "\"");
    return side->get<std::size_t>();
}

ImageRef toImage(const Json& json) {
    const std::size_t width = imageSide(json, "width");
    const std::size_t height = imageSide(json, "height");
    std::vector<float> pixels(width * height, 0.0F);
    if (const auto given = json.find("pixels"); given != json.end()) {
        if (!given->is_array() || given->size() != pixels.size())
            throw CommandError("\"pixels\" must hold width x height numbers");
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            if (!(*given)[i].is_number()) throw CommandError("\"pixels\" must hold numbers");
            pixels[i] = (*given)[i].get<float>();
        }
    }
    return std::make_shared<const ImageArray>(width, height, std::move(pixels));
}

Json shapeToJson(const Shape& shape) {
    return std::visit(
        Overloaded{
            [](const Circle& c) {
                Json circle = {{"kind", "circle"}, {"x", c.x},           {"y", c.y},
                               {"r", c.radius},    {"filled", c.filled}, {"color", c.color}};
                if (c.strength < 1) circle["strength"] = c.strength;
                return circle;
            },
            [](const Line& l) {
                return Json{{"kind", "line"}, {"x1", l.x1}, {"y1", l.y1},
                            {"x2", l.x2},     {"y2", l.y2}, {"color", l.color}};
            },
            [](const DrawnText& t) {
                return Json{{"kind", "text"}, {"x", t.x}, {"y", t.y}, {"text", t.text}, {"color", t.color}};
            },
            [](const Ellipse& e) {
                return Json{{"kind", "ellipse"}, {"x", e.x},         {"y", e.y},
                            {"major", e.major},  {"minor", e.minor}, {"direction", e.direction},
                            {"color", e.color}};
            },
            [](const Cross& c) {
                return Json{{"kind", "cross"}, {"x", c.x}, {"y", c.y}, {"r", c.reach}, {"color", c.color}};
            },
        },
        shape);
}

std::string timeText(const CivilTime& time) {
    std::string milliseconds = std::to_string(1000 + time.millisecond).substr(1);
    return formatTime(time, "yyyy-MM-dd") + "T" + formatTime(time, "HH:mm:ss") + "." + milliseconds;
}

}  // namespace

Value toValue(const Json& json, const ObjectFinder& findObject) {
    if (json.is_null()) return {};
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number_float()) return json.get<double>();
    if (json.is_number_unsigned() &&
        json.get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()})
        return json.get<double>();
    if (json.is_number()) return json.get<std::int64_t>();
    if (json.is_string()) return json.get<std::string>();
    if (json.is_object() && json.size() == 1 && json.contains("object") && json["object"].is_string())
        return findObject(json["object"].get<std::string>());
    if (json.is_object() && json.contains("width")) return toImage(json);
    throw CommandError("Not a value that can be handed over: " + json.dump().substr(0, 60));
}

Json toJson(const Value& value) {
    return std::visit(Overloaded{
                          [](std::monostate) { return Json(); },
                          [](const ObjectRef& object) {
                              return object ? Json{{"object", object->className()}} : Json();
                          },
                          [](const ImageRef& image) {
                              if (!image) return Json();
                              return Json{{"width", image->width()}, {"height", image->height()}};
                          },
                          [](const auto& plain) { return Json(plain); },
                      },
                      value.held());
}

Json toJson(const Control::PropertyValue& value) {
    return std::visit([](const auto& plain) { return Json(plain); }, value);
}

std::string toSettingText(const Json& json) {
    if (!json.is_string() && !json.is_number() && !json.is_boolean())
        throw CommandError("A setting's value must be a text");
    return toValue(json, {}).toText();
}

Json toJson(const Drawing& drawing) {
    Json shapes = Json::array();
    for (const Shape& shape : drawing.shapes) shapes.push_back(shapeToJson(shape));
    const DrawingScale& scale = drawing.scale;
    return {{"drawing", std::move(shapes)},
            {"scale",
             {{"left", scale.left}, {"top", scale.top}, {"right", scale.right}, {"bottom", scale.bottom}}}};
}

Json toJson(const Form& form) {
    const Rectangle& place = form.place();
    return {{"form", form.name()},  {"title", form.title()},  {"left", place.left},   {"top", place.top},
            {"width", place.width}, {"height", place.height}, {"onTop", form.onTop()}};
}

std::string utcText(Instant instant) { return timeText(civilUtc(instant)) + "Z"; }
std::string localText(Instant instant) { return timeText(civilLocal(instant)); }

bool sameValue(const Json& is, const Json& wanted) {
    const auto isFlagAndNumber = [](const Json& a, const Json& b) { return a.is_boolean() && b.is_number(); };
    if (isFlagAndNumber(is, wanted)) return is.get<bool>() == (wanted.get<double>() != 0);
    if (isFlagAndNumber(wanted, is)) return wanted.get<bool>() == (is.get<double>() != 0);
    return is == wanted;
}

}  // namespace vantrel::headless
