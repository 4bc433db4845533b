#include "imaging/annotated_picture.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "imaging/display_stretch.h"
#include "imaging/view_raster.h"
#include "sky/named_objects.h"
#include "sky/vector3.h"

namespace vantrel::imaging {

namespace {

using sky::kDegree;
using sky::PixelPosition;
using sky::SkyPosition;

constexpr double kMostSide = 2000;  // pixels
constexpr platform::Color kMatchedColor = 0x78D878;
constexpr platform::Color kStarNameColor = 0x60D8FF;
constexpr platform::Color kObjectColor = 0xFFC890;
constexpr platform::Color kGridColor = 0xE8A070;
constexpr platform::Color kBehindText = 0x000000;

struct TextBox {
    double left, top, right, bottom;

    bool overlaps(const TextBox& other) const {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

std::string capitals(std::string text) {
    for (char& letter : text) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return text;
}

ColorCanvas stretched(const fits::FitsImage& image, double scale) {
    std::vector<float> pixels(image.width() * image.height());
    image.readRows(0, pixels);
    const platform::ImageArray array(image.width(), image.height(), std::move(pixels));
    const PixelStatistics statistics = statisticsOf(array);
    const Stretch ends = automaticStretch(statistics);
    const ToneCurve curve(ends.min, ends.max, automaticMidtone(statistics, ends.min, ends.max));
    const auto side = [&](std::size_t pixels) {
        return std::max(1, static_cast<int>(std::floor(static_cast<double>(pixels) * scale)));
    };
    const ViewWindow whole{0, 0, scale, 0, 0, side(image.width()), side(image.height())};
    const ViewRaster raster = rasterOf(array, whole, statistics);
    ColorCanvas canvas(raster.width, raster.height);
    for (int y = 0; y < raster.height; ++y)
        for (int x = 0; x < raster.width; ++x) {
            const std::size_t at = static_cast<std::size_t>(y) * static_cast<std::size_t>(raster.width) +
                                   static_cast<std::size_t>(x);
            canvas.set(x, y, 0x010101U * curve.at(raster.values[at]));
        }
    return canvas;
}

class Annotation {
  public:
    Annotation(const fits::FitsImage& image, const solver::SolvedImage& solved)
        : solution_(*solved.solution),
          geometry_(solved.geometry),
          wcs_(solver::wcsOf(solution_, geometry_)),
          scale_(std::min(1.0, kMostSide / std::max(geometry_.width, geometry_.height))),
          canvas_(stretched(image, scale_)),
          unit_(std::clamp(std::min(canvas_.width(), canvas_.height()) / 900.0, 0.7, 2.0)),
          letterHeight_(11 * unit_),
          pixelDeg_(
              std::sqrt(std::abs(solution_.cd[0] * solution_.cd[3] - solution_.cd[1] * solution_.cd[2])) /
              scale_) {}

    ColorCanvas drawn() {
        drawGrid();
        canvas_.setPen(kMatchedColor, 1.4 * unit_);
        for (const solver::MatchedStar& star : solution_.stars) {
            const PixelPosition at = onCanvas({star.x, star.y});
            canvas_.circle(at.x, at.y, std::max(7.0, 8 * unit_));
        }
        for (const sky::NamedStar& star : sky::namedStars())
            if (const auto at = placeOf(star.place))
                name(*at, 9 * unit_, capitals(star.name), kStarNameColor);
        for (const sky::DeepSkyObject& object : sky::deepSkyObjects()) {
            const auto at = placeOf(object.place);
            if (!at) continue;
            const double radius = std::max(11 * unit_, object.sizeArcmin / 120 / pixelDeg_);
            canvas_.setPen(kObjectColor, 1.4 * unit_);
            canvas_.circle(at->x, at->y, radius);
            name(*at, radius, capitals(object.name), kObjectColor);
        }
        writeLabels();
        return std::move(canvas_);
    }

  private:
    struct Label {
        PixelPosition entry;  ///< of its line into the canvas
        std::string text;
    };

    PixelPosition onCanvas(PixelPosition pixel) const {
        return {(pixel.x + 0.5) * scale_ - 0.5, (pixel.y + 0.5) * scale_ - 0.5};
    }

    bool isInside(PixelPosition at) const {
        return at.x >= 0 && at.y >= 0 && at.x <= canvas_.width() - 1 && at.y <= canvas_.height() - 1;
    }

    /// On the canvas or a little beside it. Farther out a distortion's polynomials mean nothing.
    std::optional<PixelPosition> near(SkyPosition position) const {
        constexpr double kMargin = 0.15;
        const auto linear = wcs_.toPixel(position);
        if (!linear || std::abs(linear->x - geometry_.width / 2) > (0.5 + kMargin) * geometry_.width ||
            std::abs(linear->y - geometry_.height / 2) > (0.5 + kMargin) * geometry_.height)
            return std::nullopt;
        return onCanvas(solution_.distortion ? *solution_.distortion->toPixel(wcs_, position) : *linear);
    }

    std::optional<PixelPosition> placeOf(SkyPosition position) const {
        const auto at = near(position);
        return at && isInside(*at) ? at : std::nullopt;
    }

    /// Beside a circle, where there is room; else not at all.
    void name(PixelPosition at, double radius, const std::string& text, platform::Color color) {
        const double width = ColorCanvas::textWidth(letterHeight_, text);
        const double gap = radius + 0.5 * letterHeight_;
        const double middle = at.y - letterHeight_ / 2;
        const PixelPosition corners[] = {{at.x + gap, middle},
                                         {at.x - gap - width, middle},
                                         {at.x - width / 2, at.y - gap - letterHeight_},
                                         {at.x - width / 2, at.y + gap},
                                         {at.x - width / 2, middle}};
        for (const PixelPosition corner : corners)
            if (write(corner, text, color)) return;
    }

    bool write(PixelPosition corner, const std::string& text, platform::Color color) {
        const double edge = 3 * unit_;
        const TextBox box{corner.x - edge, corner.y - edge,
                          corner.x + ColorCanvas::textWidth(letterHeight_, text) + edge,
                          corner.y + letterHeight_ + edge};
        if (box.left < 0 || box.top < 0 || box.right > canvas_.width() || box.bottom > canvas_.height() ||
            std::ranges::any_of(written_, [&](const TextBox& other) { return box.overlaps(other); }))
            return false;
        canvas_.setPen(kBehindText, 4.5 * unit_, 0.6);
        canvas_.text(corner.x, corner.y, letterHeight_, text);
        canvas_.setPen(color, 1.5 * unit_);
        canvas_.text(corner.x, corner.y, letterHeight_, text);
        written_.push_back(box);
        return true;
    }

    void drawGrid() {
        const double degrees[] = {30, 20, 10, 5, 2, 1, 0.5, 1 / 3.0, 1 / 6.0, 1 / 12.0, 1 / 30.0, 1 / 60.0};
        const double hours[] = {1 / 720.0, 1 / 360.0, 1 / 120.0, 1 / 60.0, 1 / 30.0, 1 / 12.0,
                                1 / 6.0,   1 / 3.0,   0.5,       1,        2,        3};
        constexpr double kLinesAcross = 3;
        const SkyPosition centre = solution_.centre;
        const double narrow = std::min(canvas_.width(), canvas_.height()) * pixelDeg_;
        const double reach = std::hypot(canvas_.width(), canvas_.height()) * pixelDeg_ / 2 * 1.1;
        const auto* const degree =
            std::ranges::find_if(degrees, [&](double d) { return narrow / d >= kLinesAcross; });
        const double decStep = degree != std::end(degrees) ? *degree : degrees[std::size(degrees) - 1];
        const double least = std::max(-90.0, centre.dec - reach);
        const double most = std::min(90.0, centre.dec + reach);
        const double cosine = std::cos(std::max(std::abs(least), std::abs(most)) * kDegree);
        const bool hasPole = reach >= 170 * cosine;
        const double raReach = hasPole ? 180 : reach / cosine;
        const auto* const hour = std::ranges::find_if(hours, [&](double h) {
            return h * 15 * std::cos(centre.dec * kDegree) >= decStep && (!hasPole || h >= 1);
        });
        const double raStep = 15 * (hour != std::end(hours) ? *hour : hours[std::size(hours) - 1]);

        for (double i = std::ceil(least / decStep); i * decStep <= most; ++i) {
            if (std::abs(i * decStep) > 89.999) continue;
            drawGridLine({centre.ra - raReach, i * decStep}, {centre.ra + raReach, i * decStep},
                         declinationText(i * decStep, decStep), {1, 0});
        }
        for (double i = std::ceil((centre.ra - raReach) / raStep); i * raStep < centre.ra + raReach; ++i)
            drawGridLine({i * raStep, least}, {i * raStep, most}, ascensionText(i * raStep, raStep), {0, 1});
    }

    /// Labelled where it comes in from the side that `inwards` leads away from.
    void drawGridLine(SkyPosition from, SkyPosition to, const std::string& label, PixelPosition inwards) {
        constexpr int kPieces = 400;
        canvas_.setPen(kGridColor, 1 * unit_, 0.5);
        std::optional<PixelPosition> last;
        std::optional<PixelPosition> entry;
        for (int i = 0; i <= kPieces; ++i) {
            const double share = static_cast<double>(i) / kPieces;
            const double ra = from.ra + share * (to.ra - from.ra);
            const auto at = near({ra - 360 * std::floor(ra / 360), from.dec + share * (to.dec - from.dec)});
            if (at && last) canvas_.line(last->x, last->y, at->x, at->y);
            last = at;
            if (at && isInside(*at) &&
                (!entry ||
                 at->x * inwards.x + at->y * inwards.y < entry->x * inwards.x + entry->y * inwards.y))
                entry = at;
        }
        if (entry) labels_.push_back({*entry, label});
    }

    /// Inside of the canvas, where no name stands.
    void writeLabels() {
        const double edge = 4 * unit_;
        for (const Label& label : labels_) {
            const double room = ColorCanvas::textWidth(letterHeight_, label.text) + edge;
            write({std::clamp(label.entry.x + edge, edge, std::max(edge, canvas_.width() - room)),
                   std::clamp(label.entry.y + edge, edge,
                              std::max(edge, canvas_.height() - letterHeight_ - edge))},
                  label.text, kGridColor);
        }
    }

    static std::string declinationText(double dec, double step) {
        const long minutes = std::lround(std::abs(dec) * 60);
        char text[32] = {};
        if (step >= 1)
            std::snprintf(text, sizeof text, "%c%ld*", dec < 0 ? '-' : '+', minutes / 60);
        else
            std::snprintf(text, sizeof text, "%c%ld*%02ld'", dec < 0 ? '-' : '+', minutes / 60, minutes % 60);
        return text;
    }

    static std::string ascensionText(double ra, double step) {
        constexpr long kDay = 86'400;
        const long seconds = (std::lround(ra * 240) % kDay + kDay) % kDay;
        char text[32] = {};
        if (step >= 15)
            std::snprintf(text, sizeof text, "%ldh", seconds / 3600);
        else if (step >= 0.25)
            std::snprintf(text, sizeof text, "%ldh%02ldm", seconds / 3600, seconds / 60 % 60);
        else
            std::snprintf(text, sizeof text, "%ldh%02ldm%02lds", seconds / 3600, seconds / 60 % 60,
                          seconds % 60);
        return text;
    }

    const solver::SolvedPlate& solution_;
    const solver::PlateGeometry& geometry_;
    sky::TangentWcs wcs_;
    double scale_;
    ColorCanvas canvas_;
    double unit_;
    double letterHeight_;
    double pixelDeg_;  ///< of the canvas
    std::vector<TextBox> written_;
    std::vector<Label> labels_;
};

}  // namespace

ColorCanvas annotatedPicture(const fits::FitsImage& image, const solver::SolvedImage& solved) {
    return Annotation(image, solved).drawn();
}

}  // namespace vantrel::imaging
