#include "qt/theme.h"

#include <QApplication>
#include <QFont>
#include <QImage>
#include <QPixmap>
#include <QToolTip>

#include "qt/style.h"

namespace vantrel::qt {
namespace {

const Colors kDay{
    .window = {0xF2, 0xF3, 0xF5},
    .base = {0xFF, 0xFF, 0xFF},
    .button = {0xFC, 0xFC, 0xFD},
    .border = {0xC4, 0xCA, 0xD2},
    .text = {0x1D, 0x24, 0x30},
    .dim = {0x77, 0x80, 0x8E},
    .accent = {0x24, 0x5F, 0xA3},
    .onAccent = {0xFF, 0xFF, 0xFF},
    .lit = {0xE8, 0x50, 0x4F},
    .unlit = {0xE0, 0xE4, 0xE9},
    .onUnlit = {0x58, 0x61, 0x6E},
    .chart = {0xFD, 0xFD, 0xFE},
    .ring = {0x8D, 0x98, 0xA8},
    .marker = {0xD0, 0x2B, 0x2B},
    .mark = {0xFF, 0xB0, 0x20},
};

const Colors kNight{
    .window = {0x0A, 0x00, 0x00},
    .base = {0x14, 0x01, 0x00},
    .button = {0x20, 0x03, 0x01},
    .border = {0x5C, 0x0D, 0x06},
    .text = {0xF0, 0x30, 0x20},
    .dim = {0xB0, 0x26, 0x18},
    .accent = {0xE6, 0x2C, 0x1C},
    .onAccent = {0x10, 0x00, 0x00},
    .lit = {0xEE, 0x2E, 0x1C},
    .unlit = {0x1C, 0x03, 0x01},
    .onUnlit = {0xB8, 0x28, 0x1A},
    .chart = {0x10, 0x01, 0x00},
    .ring = {0x74, 0x12, 0x09},
    .marker = {0xFF, 0x44, 0x2E},
    .mark = {0xFF, 0x52, 0x52},
};

bool isSystem(platform::Color color) { return (color & 0x80000000) != 0; }

QColor literal(platform::Color color) {
    return {static_cast<int>(color & 0xFF), static_cast<int>(color >> 8 & 0xFF),
            static_cast<int>(color >> 16 & 0xFF)};
}

QColor shadeOf(const QColor& color, double share) {
    return QColor::fromRgbF(static_cast<float>(color.redF() * share),
                            static_cast<float>(color.greenF() * share),
                            static_cast<float>(color.blueF() * share));
}

}  // namespace

const Colors& colorsOf(bool night) { return night ? kNight : kDay; }

Colors dimmed(const Colors& colors, double share) {
    Colors result = colors;
    for (QColor* color : {&result.window, &result.base, &result.button, &result.border, &result.text,
                          &result.dim, &result.accent, &result.onAccent, &result.lit, &result.unlit,
                          &result.onUnlit, &result.chart, &result.ring, &result.marker, &result.mark})
        *color = shadeOf(*color, share);
    return result;
}

QPalette paletteOf(const Colors& c) {
    QPalette palette;
    palette.setColor(QPalette::Window, c.window);
    palette.setColor(QPalette::WindowText, c.text);
    palette.setColor(QPalette::Base, c.base);
    palette.setColor(QPalette::AlternateBase, c.button);
    palette.setColor(QPalette::Text, c.text);
    palette.setColor(QPalette::PlaceholderText, c.dim);
    palette.setColor(QPalette::Button, c.button);
    palette.setColor(QPalette::ButtonText, c.text);
    palette.setColor(QPalette::BrightText, c.marker);
    palette.setColor(QPalette::Light, c.button);
    palette.setColor(QPalette::Midlight, c.unlit);
    palette.setColor(QPalette::Mid, c.border);
    palette.setColor(QPalette::Dark, c.dim);
    palette.setColor(QPalette::Shadow, c.border);
    palette.setColor(QPalette::Highlight, c.accent);
    palette.setColor(QPalette::HighlightedText, c.onAccent);
    palette.setColor(QPalette::ToolTipBase, c.base);
    palette.setColor(QPalette::ToolTipText, c.text);
    palette.setColor(QPalette::Link, c.accent);
    palette.setColor(QPalette::LinkVisited, c.accent);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, c.dim);
    palette.setColor(QPalette::Disabled, QPalette::Base, c.window);
    palette.setColor(QPalette::Disabled, QPalette::Button, c.window);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, c.border);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, c.dim);
    return palette;
}

Look::Look(bool night, double brightness)
    : night_(night), colors_(night ? dimmed(kNight, brightness) : kDay) {}

Theme::Theme() {
    QApplication::setStyle(new Style);
    apply();  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the application owns the style
}

void Theme::setNight(bool night) { change(night, brightness_); }

void Theme::setNightBrightness(double share) { change(night(), share); }

void Theme::change(bool night, double brightness) {
    if (this->night() == night && brightness_ == brightness) return;
    brightness_ = brightness;
    static_cast<Look&>(*this) = Look(night, brightness);
    apply();
    changed.emit();
}

/// A red of the night's own hue; strength from 0 to 1.
QColor Look::red(double strength) const { return shadeOf(colors_.marker, strength); }

void Theme::apply() {
    const QPalette palette = paletteOf(colors());
    // Coloured fringes of sub-pixel smoothing would not be red.
    QFont font = QApplication::font();
    font.setStyleStrategy(night() ? QFont::NoSubpixelAntialias : QFont::PreferDefault);
    QApplication::setFont(font);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

QColor Look::surface(platform::Color color) const {
    const Colors& c = colors();
    switch (color) {
        case platform::color::kButtonFace:
            return c.button;
        case platform::color::kWindowBackground:
            return c.base;
        case platform::color::kIndicatorOffBack:
            return c.unlit;
        case platform::color::kRed:
            return c.lit;
        case platform::color::kDarkGreen:
            return night_ ? c.lit : QColor(0x39, 0x9E, 0x63);
        default:
            break;
    }
    if (isSystem(color)) return c.button;
    return night_ ? red(literal(color).lightnessF()) : literal(color);
}

QColor Look::ink(platform::Color color) const {
    const Colors& c = colors();
    switch (color) {
        case platform::color::kIndicatorOffFore:
            return c.onUnlit;
        case platform::color::kIndicatorOffBack:
            return night_ ? c.onAccent : c.unlit;
        case platform::color::kBlack:
            return night_ ? c.onAccent : literal(color);
        case platform::color::kRed:
            return c.marker;
        default:
            break;
    }
    if (isSystem(color)) return c.text;
    return night_ ? red(0.5 + literal(color).lightnessF()) : literal(color);
}

QColor Look::plotted(platform::Color color) const {
    const Colors& c = colors();
    if (color == platform::color::kBlack || isSystem(color)) return c.text;
    if (color == platform::color::kRed || (night_ && color == platform::color::kDarkGreen)) return c.marker;
    return night_ ? red(0.5 + literal(color).lightnessF() / 2) : literal(color);
}

QPixmap reddened(const QPixmap& picture, const QColor& brightest) {
    QImage image = picture.toImage().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QColor shade = shadeOf(brightest, qGray(line[x]) / 255.0);
            line[x] = qRgba(shade.red(), shade.green(), shade.blue(), qAlpha(line[x]));
        }
    }
    QPixmap result = QPixmap::fromImage(image);
    result.setDevicePixelRatio(picture.devicePixelRatio());
    return result;
}

}  // namespace vantrel::qt
