// A picture in colours that lines, circles and short texts are drawn into, without a toolkit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/color.h"

namespace vantrel::imaging {

/// Places are pixels from the upper left, centres of pixels at whole numbers. What lies outside is left out.
class ColorCanvas {
  public:
    ColorCanvas(int width, int height)
        : width_(width), height_(height), rgb_(indexOf(0, height), std::uint8_t{0}) {}

    int width() const { return width_; }
    int height() const { return height_; }
    /// Red, green, blue; row after row.
    const std::vector<std::uint8_t>& rgb() const { return rgb_; }
    platform::Color at(int x, int y) const;

    void set(int x, int y, platform::Color color);
    /// For what is drawn from now on. A strength of 1 is opaque.
    void setPen(platform::Color color, double width, double strength = 1);
    void line(double x1, double y1, double x2, double y2);
    void circle(double x, double y, double radius);
    /// Capitals, digits, + - . ' and spaces in letters of our own, `height` pixels high; "h", "m" and "s" are
    /// units, "*" is the sign for degrees. Other characters are left out.
    void text(double left, double top, double height, std::string_view text);
    static double textWidth(double height, std::string_view text);

  private:
    std::size_t indexOf(int x, int y) const {
        return 3 *
               (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x));
    }
    /// Blends the pen in where `distance` from the middle of its stroke falls short of half its width.
    template <typename Distance>
    void stroke(double left, double top, double right, double bottom, Distance&& distance);

    int width_, height_;
    std::vector<std::uint8_t> rgb_;
    platform::Color pen_ = platform::color::kBlack;
    double penWidth_ = 1;
    double strength_ = 1;
};

}  // namespace vantrel::imaging
