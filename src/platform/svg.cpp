#include "platform/svg.h"

#include <array>
#include <cmath>

#include "platform/text.h"

namespace vantrel::platform {
namespace {

std::string number(double value) { return formatNumber(value, "0.00"); }

std::string attribute(const char* name, const std::string& value) {
    return " " + std::string(name) + "=\"" + value + "\"";
}

std::string attribute(const char* name, double value) { return attribute(name, number(value)); }

/// Colours hold blue, green and red from their highest byte down.
std::string hex(Color color) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "#";
    for (const int shift : {4, 0, 12, 8, 20, 16}) text += kDigits[color >> shift & 0xF];
    return text;
}

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else
            result += c;
    }
    return result;
}

class SvgWriter {
  public:
    SvgWriter(const DrawingScale& scale, double width)
        : scale_(scale),
          perUnit_(width / std::abs(scale.right - scale.left)),
          width_(width),
          height_(perUnit_ * std::abs(scale.bottom - scale.top)) {}

    void operator()(const Circle& circle) {
        add("circle", attribute("cx", x(circle.x)) + attribute("cy", y(circle.y)) +
                          attribute("r", circle.radius * perUnit_) +
                          (circle.filled ? filled(circle.color) + attribute("fill-opacity", circle.strength)
                                         : outlined(circle.color)));
    }

    void operator()(const Line& line) { addLine(x(line.x1), y(line.y1), x(line.x2), y(line.y2), line.color); }

    void operator()(const DrawnText& text) {
        body_ += "<text" + attribute("x", x(text.x)) + attribute("y", y(text.y) + kTextHeight) +
                 filled(text.color) + ">" + escaped(text.text) + "</text>\n";
    }

    void operator()(const Ellipse& ellipse) {
        add("ellipse",
            attribute("rx", ellipse.minor * perUnit_) + attribute("ry", ellipse.major * perUnit_) +
                outlined(ellipse.color) +
                attribute("transform", "translate(" + number(x(ellipse.x)) + " " + number(y(ellipse.y)) +
                                           ") rotate(" + number(ellipse.direction) + ")"));
    }

    void operator()(const Cross& cross) {
        const double reach = cross.reach * perUnit_;
        addLine(x(cross.x) - reach, y(cross.y), x(cross.x) + reach, y(cross.y), cross.color);
        addLine(x(cross.x), y(cross.y) - reach, x(cross.x), y(cross.y) + reach, cross.color);
    }

    std::string document() const {
        return "<svg xmlns=\"http://www.w3.org/2000/svg\"" + attribute("width", width_) +
               attribute("height", height_) + attribute("font-family", "sans-serif") +
               attribute("font-size", kTextHeight) +
               ">\n<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n" + body_ + "</svg>\n";
    }

  private:
    static constexpr double kTextHeight = 14;

    double x(double value) const { return std::abs(value - scale_.left) * perUnit_; }
    double y(double value) const { return std::abs(value - scale_.top) * perUnit_; }

    static std::string filled(Color color) { return attribute("fill", hex(color)); }
    static std::string outlined(Color color) {
        return attribute("fill", "none") + attribute("stroke", hex(color));
    }

    void add(const std::string& element, const std::string& attributes) {
        body_ += "<" + element + attributes + "/>\n";
    }

    void addLine(double x1, double y1, double x2, double y2, Color color) {
        add("line", attribute("x1", x1) + attribute("y1", y1) + attribute("x2", x2) + attribute("y2", y2) +
                        attribute("stroke", hex(color)));
    }

    DrawingScale scale_;
    double perUnit_, width_, height_;
    std::string body_;
};

}  // namespace

std::string svgOf(const Drawing& drawing, double width) {
    if (drawing.scale.left == drawing.scale.right || drawing.scale.top == drawing.scale.bottom) return {};
    SvgWriter writer(drawing.scale, width);
    for (const Shape& shape : drawing.shapes) std::visit(writer, shape);
    return writer.document();
}

}  // namespace vantrel::platform
