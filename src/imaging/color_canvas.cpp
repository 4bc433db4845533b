#include "imaging/color_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace vantrel::imaging {

namespace {

constexpr double kGlyphWidth = 4;
constexpr double kGlyphHeight = 6;
constexpr double kGlyphAdvance = 5.6;

struct Glyph {
    char letter;
    const char* strokes;  ///< points, column and row from the upper left; a space begins another stroke
};

constexpr Glyph kGlyphs[] = {
    {'A', "062046 1434"},
    {'B', "00063645443303 0030414233"},
    {'C', "4130100105163645"},
    {'D', "00062644422000"},
    {'E', "40000646 0333"},
    {'F', "400006 0333"},
    {'G', "41301001051636454323"},
    {'H', "0006 4046 0343"},
    {'I', "1030 2026 1636"},
    {'J', "4045361605"},
    {'K', "0006 4003 0346"},
    {'L', "000646"},
    {'M', "0600234046"},
    {'N', "06004640"},
    {'O', "103041453616050110"},
    {'P', "06003041423303"},
    {'Q', "103041453616050110 2446"},
    {'R', "06003041423303 2346"},
    {'S', "413010010213334445361605"},
    {'T', "0040 2026"},
    {'U', "000516364540"},
    {'V', "002640"},
    {'W', "0016233640"},
    {'X', "0046 4006"},
    {'Y', "002340 2326"},
    {'Z', "00400646"},
    {'0', "103041453616050110"},
    {'1', "112026 1636"},
    {'2', "01103041420646"},
    {'3', "01103041423313 334445361605"},
    {'4', "36300444"},
    {'5', "400003334445361605"},
    {'6', "30100105163645443303"},
    {'7', "004016"},
    {'8', "130201103041423313 13040516364544 4433"},
    {'9', "43130201103041453616"},
    {'h', "0006 0413334446"},
    {'m', "0306 04132426 24334446"},
    {'s', "431304453606"},
    {'*', "10203122120110"},
    {'\'', "2022"},
    {'+', "2125 0343"},
    {'-', "0343"},
    {'.', "2526"},
};

std::string_view strokesOf(char letter) {
    const auto* const glyph =
        std::find_if(std::begin(kGlyphs), std::end(kGlyphs), [&](auto& g) { return g.letter == letter; });
    return glyph != std::end(kGlyphs) ? glyph->strokes : "";
}

/// Red, green and blue.
std::array<std::uint8_t, 3> partsOf(platform::Color color) {
    return {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color >> 16)};
}

}  // namespace

platform::Color ColorCanvas::at(int x, int y) const {
    const std::uint8_t* const pixel = &rgb_[indexOf(x, y)];
    return pixel[0] | static_cast<platform::Color>(pixel[1]) << 8 |
           static_cast<platform::Color>(pixel[2]) << 16;
}

void ColorCanvas::set(int x, int y, platform::Color color) {
    std::ranges::copy(partsOf(color), &rgb_[indexOf(x, y)]);
}

void ColorCanvas::setPen(platform::Color color, double width, double strength) {
    pen_ = color;
    penWidth_ = width;
    strength_ = strength;
}

template <typename Distance>
void ColorCanvas::stroke(double left, double top, double right, double bottom, Distance&& distance) {
    const double reach = penWidth_ / 2 + 1;
    const auto parts = partsOf(pen_);
    const auto first = [](double from) { return static_cast<int>(std::max(0.0, std::floor(from))); };
    const auto last = [](double to, int size) {
        return static_cast<int>(std::min(size - 1.0, std::ceil(to)));
    };
    for (int y = first(top - reach); y <= last(bottom + reach, height_); ++y)
        for (int x = first(left - reach); x <= last(right + reach, width_); ++x) {
            const double cover = std::clamp(penWidth_ / 2 + 0.5 - distance(x, y), 0.0, 1.0) * strength_;
            if (cover == 0) continue;
            std::uint8_t* const pixel = &rgb_[indexOf(x, y)];
            for (std::size_t i = 0; i < parts.size(); ++i)
                pixel[i] = static_cast<std::uint8_t>(std::lround(pixel[i] + cover * (parts[i] - pixel[i])));
        }
}

void ColorCanvas::line(double x1, double y1, double x2, double y2) {
    const double dx = x2 - x1;
    const double dy = y2 - y1;
    const double square = dx * dx + dy * dy;
    stroke(std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2), [&](double x, double y) {
        const double along = square > 0 ? std::clamp(((x - x1) * dx + (y - y1) * dy) / square, 0.0, 1.0) : 0;
        return std::hypot(x - x1 - along * dx, y - y1 - along * dy);
    });
}

void ColorCanvas::circle(double x, double y, double radius) {
    stroke(x - radius, y - radius, x + radius, y + radius,
           [&](double px, double py) { return std::abs(std::hypot(px - x, py - y) - radius); });
}

void ColorCanvas::text(double left, double top, double height, std::string_view text) {
    const double unit = height / kGlyphHeight;
    for (const char letter : text) {
        const std::string_view strokes = strokesOf(letter);
        const auto place = [&](std::size_t i) {
            return std::pair{left + (strokes[i] - '0') * unit, top + (strokes[i + 1] - '0') * unit};
        };
        for (std::size_t i = 0; i + 3 < strokes.size(); i += 2) {
            if (strokes[i + 2] == ' ') {
                ++i;
                continue;
            }
            const auto [x1, y1] = place(i);
            const auto [x2, y2] = place(i + 2);
            line(x1, y1, x2, y2);
        }
        left += kGlyphAdvance * unit;
    }
}

double ColorCanvas::textWidth(double height, std::string_view text) {
    if (text.empty()) return 0;
    return (static_cast<double>(text.size() - 1) * kGlyphAdvance + kGlyphWidth) * height / kGlyphHeight;
}

}  // namespace vantrel::imaging
