// What a picture shows: shapes in the picture's own coordinates.
#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "platform/color.h"
#include "platform/image_array.h"

namespace vantrel::platform {

/// The coordinates at the picture's edges; y may grow upwards or downwards.
struct DrawingScale {
    double left = 0, top = 1, right = 1, bottom = 0;
    bool operator==(const DrawingScale&) const = default;
};

struct Circle {
    double x = 0, y = 0, radius = 0;
    bool filled = false;
    Color color = color::kBlack;
    double strength = 1;  // of a filled one: 1 is opaque, 0 can't be seen
};

/// Half axes in units of the horizontal scale.
struct Ellipse {
    double x = 0, y = 0, major = 0, minor = 0;
    double direction = 0;  // of the major one: degrees from up, by way of the right
    Color color = color::kBlack;
};

/// A small mark; reaches so far to each side.
struct Cross {
    double x = 0, y = 0, reach = 0;
    Color color = color::kBlack;
};

/// Black lines are the drawing's rulings; others have their colour.
struct Line {
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    Color color = color::kBlack;
};

/// Text whose upper left corner is at (x, y).
struct DrawnText {
    double x = 0, y = 0;
    std::string text;
    Color color = color::kBlack;
};

using Shape = std::variant<Circle, Line, DrawnText, Ellipse, Cross>;

struct Drawing {
    DrawingScale scale;
    std::vector<Shape> shapes;
    std::shared_ptr<const ImageArray> photograph = {};  // below the shapes, whose coordinates are its pixels
};

}  // namespace vantrel::platform
