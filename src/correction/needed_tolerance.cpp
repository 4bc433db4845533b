#include "correction/needed_tolerance.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "engine/angles.h"
#include "platform/text.h"

namespace vantrel::correction {

using engine::shortAngle;
using platform::formatNumber;
using platform::Words;

namespace {

/// Arc-minutes from the pole that let a star drift by an arc-second in a second, where it drifts most.
constexpr double kDrift = 229;
/// Micrometres of trail for each arc-minute, minute of time, degree and millimetre: one over this.
constexpr double kRotation = 45'000;
/// Degrees. At the pole itself no axis would be near enough; pictures of it reach farther out than that.
constexpr double kNearestThePole = 89;

NeededTolerance unguided(const PlannedPictures& pictures) {
    const bool pixelKnown = pictures.pixel && pictures.focalLength;
    const double drift = pixelKnown ? 206.265 * *pictures.pixel / *pictures.focalLength : 1;
    const double needed = kDrift * drift / pictures.exposure;
    const std::vector<Words> figures{shortAngle(needed), platform::toText(pictures.exposure),
                                     formatNumber(drift, "0.0") + "″"};
    return {needed, pixelKnown ? Words::tr("%1: %2 s unguided, a pixel (%3) of drift", figures)
                               : Words::tr("%1: %2 s unguided, %3 of drift", figures)};
}

NeededTolerance guided(const PlannedPictures& pictures) {
    if (!pictures.pixel || !pictures.focalLength)
        return {{}, Words::tr("Guided: the pixel scale calculator wants focal length and pixel size")};
    if (!(pictures.fromGuideStar > 0))
        return {{}, Words::tr("Guided: how far is the guide star from the farthest corner?")};
    const double declination = std::min(std::abs(pictures.declination), kNearestThePole);
    const double cosine = std::cos(engine::degreesToRadians(declination));
    const double needed = *pictures.pixel * kRotation * cosine /
                          (pictures.exposure / 60 * pictures.fromGuideStar * *pictures.focalLength);
    return {needed, Words::tr("%1: %2 s guided, a pixel of trail %3° from the guide star",
                              {shortAngle(needed), platform::toText(pictures.exposure),
                               platform::toText(pictures.fromGuideStar)})};
}

}  // namespace

NeededTolerance neededTolerance(const PlannedPictures& pictures) {
    if (!(pictures.exposure > 0)) return {{}, Words::tr("%1 as long as no exposure is given", {"2.0'"})};
    return pictures.guided ? guided(pictures) : unguided(pictures);
}

PlannedPictures plannedPictures(engine::SettingsPort& settings) {
    const auto option = [&](const char* key) {
        return platform::leadingNumber(settings.GetSetting("PolarAlign", key, ""));
    };
    const auto length = [&](const char* key) -> std::optional<double> {
        const auto number = platform::parseNumber(settings.GetSetting("Solve", key, ""));
        return number && *number > 0 ? number : std::nullopt;
    };
    constexpr double kMillimetresPerInch = 25.4;
    PlannedPictures pictures{.exposure = option("PictureExposure"),
                             .guided = option("PictureGuided") != 0,
                             .declination = option("PictureDeclination"),
                             .fromGuideStar = option("FromGuideStar"),
                             .focalLength = length("TelescopeFL"),
                             .pixel = length("CameraPixelXSize")};
    if (pictures.focalLength && settings.GetSetting("Solve", "FocalLengthUnits", "mm") == "in")
        *pictures.focalLength *= kMillimetresPerInch;
    return pictures;
}

}  // namespace vantrel::correction
