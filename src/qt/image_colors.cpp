#include "qt/image_colors.h"

#include <algorithm>

namespace vantrel::qt {
namespace {

using imaging::ToneCurve;

// Of the brightest, so that white stands out, and marks, which are paler than any star, out of both.
constexpr double kNightWhite = 0.82, kNightGrey = 0.72;

QColor green(const QColor& red) {
    // The eye takes a green for brighter than a red of the same strength.
    constexpr double kAsDark = 0.75;
    const auto dimmed = [](int part) { return static_cast<int>(part * kAsDark); };
    return {dimmed(red.green()), dimmed(red.red()), dimmed(red.blue())};
}

QColor shade(const QColor& brightest, double strength) {
    const auto part = [strength](int of) { return static_cast<int>(of * strength); };
    return {part(brightest.red()), part(brightest.green()), part(brightest.blue())};
}

}  // namespace

Colors inGreen(const Colors& c) {
    return {.window = green(c.window),
            .base = green(c.base),
            .button = green(c.button),
            .border = green(c.border),
            .text = green(c.text),
            .dim = green(c.dim),
            .accent = green(c.accent),
            .onAccent = green(c.onAccent),
            .lit = green(c.lit),
            .unlit = green(c.unlit),
            .onUnlit = green(c.onUnlit),
            .chart = green(c.chart),
            .ring = green(c.ring),
            .marker = green(c.marker),
            .mark = green(c.mark)};
}

ImageColors imageColors(const Colors& colors, bool night, bool inverted) {
    const QColor brightest = night ? colors.marker : QColor(Qt::white);
    ImageColors result;
    for (int tone = 0; tone <= ToneCurve::kWhite; ++tone) {
        const double light =
            static_cast<double>(inverted ? ToneCurve::kWhite - tone : tone) / ToneCurve::kWhite;
        const double strength = !night ? light : light < 1 ? light * kNightGrey : kNightWhite;
        result.tones[static_cast<std::size_t>(tone)] = shade(brightest, strength).rgb();
    }
    const QColor onBrightSky(0xC8, 0x46, 0x00);
    result.tones[ToneCurve::kMark] = (inverted && !night ? onBrightSky : colors.mark).rgb();
    result.ground = night ? QColor(Qt::black) : QColor(0x2A, 0x2E, 0x35);
    result.text = night ? colors.text : QColor(0xB8, 0xBF, 0xC9);
    result.line = night ? colors.text : QColor(0x4F, 0xB4, 0xE8);
    return result;
}

}  // namespace vantrel::qt
