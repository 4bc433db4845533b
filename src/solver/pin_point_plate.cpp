#include "solver/pin_point_plate.h"

#include <algorithm>
#include <cmath>

#include "fits/fits_writing.h"
#include "platform/image_array.h"
#include "platform/text.h"
#include "solver/catalog_choice.h"
#include "solver/exposure_facts.h"
#include "solver/unsolved_reason.h"
#include "solver/wide_search.h"

namespace vantrel::solver {

namespace {

using fits::FitsImage;
using platform::Arguments;
using platform::AutomationError;
using platform::Value;
using sky::SkyPosition;

constexpr const char* kClass = "PinPoint.Plate";

[[noreturn]] void refuse(const std::string& why) {
    throw AutomationError(platform::error_number::kDriverException, kClass, why);
}

/// A list of stars of which callers only ask the number.
class StarCollection : public platform::DispatchObject {
  public:
    explicit StarCollection(std::size_t count) : DispatchObject("PinPoint.Stars") {
        property("Count", [count] { return Value(static_cast<int>(count)); });
    }
};

Value collection(std::size_t count) { return platform::ObjectRef(std::make_shared<StarCollection>(count)); }

/// The folders that stand in the path box until the operator chooses one.
bool isUntouched(const std::string& folder) {
    return folder.empty() || platform::equalIgnoringCase(folder, "C:\\");
}

// Automation counts dates in days since 30 December 1899.
constexpr double kAutomationEpoch = 25569;  // the beginning of system time
constexpr double kMillisecondsPerDay = 86'400'000;

double automationDate(platform::Instant instant) {
    return static_cast<double>(instant.time_since_epoch().count()) / kMillisecondsPerDay + kAutomationEpoch;
}

platform::Instant fromAutomationDate(double days) {
    return platform::Instant{
        platform::Milliseconds{std::llround((days - kAutomationEpoch) * kMillisecondsPerDay)}};
}

}  // namespace

PinPointPlate::PinPointPlate(const platform::Clock& clock, platform::Background& background,
                             const platform::FolderMap& folders, sky::CatalogSource builtIn,
                             catalogs::NetworkAccess network, PatternSource patterns)
    : DispatchObject(kClass),
      clock_(clock),
      background_(background),
      folders_(folders),
      builtIn_(std::move(builtIn)),
      network_(std::move(network)),
      patterns_(std::move(patterns)) {
    addCatalogMembers();
    addDetectionMembers();
    addImageMembers();
    addPlateMembers();
    addSolutionMembers();
}

void PinPointPlate::addCatalogMembers() {
    property(
        "Catalog", [this] { return Value(catalogNumber_); },
        [this](const Value& v) { catalogNumber_ = v.toInt(); });
    property(
        "CatalogPath", [this] { return Value(folders_.text(catalogue()->folder())); },
        [this](const Value& v) { setCatalogPath(v.toText()); });
    property(
        "CatalogExpansion", [this] { return Value(catalogExpansion_); },
        [this](const Value& v) {
            const double expansion = v.toDouble();
            if (!(expansion >= 0 && expansion <= 10)) refuse("CatalogExpansion must be between 0 and 10");
            catalogExpansion_ = expansion;
        });
    property(
        "CatalogMaximumMagnitude", [this] { return Value(faintest_); },
        [this](const Value& v) { faintest_ = v.toDouble(); });
    property(
        "CatalogMinimumMagnitude", [this] { return Value(brightest_); },
        [this](const Value& v) { brightest_ = v.toDouble(); });
    method("FindCatalogStars", [this](const Arguments&) { return Value(findCatalogStars()); });
    property("CatalogStars", [this] { return collection(catalogStars_.size()); });
}

void PinPointPlate::addDetectionMembers() {
    const auto number = [this](const char* name, double& field, double least) {
        property(
            name, [&field] { return Value(field); },
            [&field, name, least](const Value& v) {
                const double value = v.toDouble();
                if (!(value >= least))
                    refuse(std::string(name) + " must not be less than " + platform::toText(least));
                field = value;
            });
    };
    number("MinimumBrightness", detection_.minimumBrightness, 0);
    number("MinimumStarSize", detection_.minimumSize, 0);
    number("SigmaAboveMean", detection_.sigmaAboveMean, 0);
    number("ExclusionBorder", detection_.exclusionBorder, 0);
    property(
        "MaxSolveStars", [this] { return Value(maxSolveStars_); },
        [this](const Value& v) { maxSolveStars_ = v.toInt(); });
    method("ConvolveGaussian", [this](const Arguments& a) {
        filterFwhmArcsec_ = std::max(0.0, argument(a, 0).toDouble());
        return Value(true);
    });
    method("FindImageStars", [this](const Arguments&) { return Value(findImageStars()); });
    property("ImageStars", [this] { return collection(stars_.stars.size()); });
}

void PinPointPlate::addImageMembers() {
    method("AttachFITS", [this](const Arguments& a) { return Value(attach(argument(a, 0).toText())); });
    method("DetachFITS", [this](const Arguments&) {
        detach();
        return Value(true);
    });
    method("UpdateFITS", [this](const Arguments&) {
        updateFits();
        return Value(true);
    });
    property(
        "ImageArray",
        [this] {
            std::vector<float> pixels(image()->width() * image()->height());
            image()->readRows(0, pixels);
            return Value(platform::ImageRef(std::make_shared<platform::ImageArray>(
                image()->width(), image()->height(), std::move(pixels))));
        },
        [this](const Value& v) {
            const auto array = v.toImage();
            if (array == nullptr || array->width() * array->height() == 0) refuse("ImageArray is empty");
            detach();
            use(FitsImage::of(*array));
        });
    property("WCSValid", [this] { return Value(imageWcs_.has_value()); });
    property("Columns", [this] { return Value(static_cast<int>(image()->width())); });
    property("Rows", [this] { return Value(static_cast<int>(image()->height())); });
    property("TargetRightAscension", [this] {
        const auto target = headerTarget(image()->header());
        if (!target) refuse("the image's header has no target position");
        return Value(target->ra / 15);
    });
    property("TargetDeclination", [this] {
        const auto target = headerTarget(image()->header());
        if (!target) refuse("the image's header has no target position");
        return Value(target->dec);
    });
    property(
        "ExposureStartTime", [this] { return Value(automationDate(exposureTime())); },
        [this](const Value& v) {
            const double days = v.toDouble();
            if (!(days >= 0 && days <= 100'000)) refuse("ExposureStartTime must be a date");
            exposureStart_ = fromAutomationDate(days);
        });
}

void PinPointPlate::addPlateMembers() {
    const auto number = [this](const char* name, double& field) {
        property(
            name, [&field] { return Value(field); },
            [&field, name](const Value& v) {
                const double value = v.toDouble();
                if (!std::isfinite(value)) refuse(std::string(name) + " must be a number");
                field = value;
            });
    };
    number("RightAscension", rightAscension_);
    number("Declination", declination_);
    number("ArcsecPerPixelHoriz", scaleX_);
    number("ArcsecPerPixelVert", scaleY_);
    number("RollAngle", roll_);
    property(
        "Equinox", [this] { return Value(frame().year()); },
        [this](const Value& v) {
            const double year = v.toDouble();
            if (!(year >= 1800 && year <= 2200)) refuse("Equinox must be a year from 1800 to 2200");
            equinox_ = year;
        });
    property(
        "ProjectionType", [this] { return Value(projection_); },
        [this](const Value& v) {
            if (v.toInt() != 1) refuse("ProjectionType must be 1 (tangent plane)");
        });
    property(
        "MinMatchStars", [this] { return Value(minMatchStars_); },
        [this](const Value& v) { minMatchStars_ = v.toInt(); });
    number("MaxMatchResidual", maxMatchResidual_);
    number("SearchRadius", searchRadius_);
}

void PinPointPlate::addSolutionMembers() {
    method("Solve", [this](const Arguments&) { return Value(solve()); });
    property("MatchedStars", [this] { return collection(solution_ ? solution_->matched : 0); });
    property("MatchAvgResidual", [this] { return Value(solution_ ? solution_->residualArcsec : 0.0); });
    property("MatchCentreError", [this] { return Value(solution_ ? solution_->centreErrorArcsec : 0.0); });
    property("MatchRollError", [this] { return Value(solution_ ? solution_->rollErrorDeg * 3600 : 0.0); });
    property("FailureReason", [this] { return Value(failureReason()); });
    property("MatchFitOrder", [this] { return Value(solution_ ? solution_->order : 0); });
}

bool PinPointPlate::attach(const std::string& path) {
    detach();
    const auto file = platform::existingImage(folders_, path);
    if (!file) refuse("there is no file " + path);
    use(FitsImage::open(*file));
    path_ = *file;
    return true;
}

/// The image's own header gives the starting values, as far as it has them.
void PinPointPlate::use(FitsImage image) {
    image_ = std::make_shared<const FitsImage>(std::move(image));
    exposureStart_.reset();
    imageWcs_ = image_->wcs();
    if (imageWcs_) {
        const SkyPosition centre = imageWcs_->toSky(geometry(1, 1).centre());
        setStart(centre);
        const auto& cd = imageWcs_->cd;
        const Orientation orientation = orientationOf(frame().turned({cd[0], cd[1], cd[2], cd[3]}, centre));
        scaleX_ = orientation.scaleX;
        scaleY_ = orientation.scaleY;
        roll_ = orientation.rollDeg;
    } else if (const auto target = headerTarget(image_->header())) {
        setStart(*target);
    }
}

void PinPointPlate::detach() {
    path_.clear();
    image_.reset();
    imageWcs_.reset();
    filterFwhmArcsec_ = 0;
    stars_ = {};
    catalogStars_.clear();
}

bool PinPointPlate::findImageStars() {
    StarSettings settings = detection_;
    const double scale = std::abs(scaleX_) > 0 ? std::abs(scaleX_) : 1;
    settings.filterFwhmPixels = filterFwhmArcsec_ / scale;
    StarList found;
    background_.await([&, image = image()] { found = findStars(*image, settings); });
    stars_ = std::move(found);
    return !stars_.stars.empty();
}

bool PinPointPlate::findCatalogStars() {
    double scaleX = std::abs(scaleX_);
    double scaleY = std::abs(scaleY_);
    if (!(scaleX > 0) || !(scaleY > 0)) {
        const auto scales = headerScales(image()->header());
        if (scales.empty()) refuse("ArcsecPerPixelHoriz and ArcsecPerPixelVert must be greater than 0");
        scaleX = scaleY = scales.front();
    }
    catalogStars_ = starsIn(area(geometry(scaleX, scaleY)));
    return true;
}

bool PinPointPlate::solve() {
    if (stars_.stars.empty()) return false;
    return (!catalogStars_.empty() && solveNearby()) || solveFarAway();
}

bool PinPointPlate::solveNearby() {
    const double scaleX = std::abs(scaleX_);
    const double scaleY = std::abs(scaleY_);
    if (scaleX > 0 && scaleY > 0 && solveWith(scaleX, scaleY)) return true;
    for (const double scale : headerScales(image()->header())) {
        const bool tried = scaleX > 0 && std::abs(scale / scaleX - 1) < 0.1;
        if (!tried && solveWith(scale, scale)) return true;
    }
    return false;
}

bool PinPointPlate::solveWith(double scaleX, double scaleY) {
    const PlateGeometry plate = geometry(scaleX, scaleY);
    MatchSettings settings;
    settings.maximumResidualArcsec = std::max(0.0, maxMatchResidual_);
    settings.minimumMatches = static_cast<std::size_t>(std::max(0, minMatchStars_));
    const SearchArea around = area(plate);
    const std::vector<sky::CatalogStar> catalogStars = starsIn(around);
    const std::vector<ImageStar> stars = starsToMatch();
    std::optional<SolvedPlate> solution;
    background_.await([&] { solution = solvePlate(plate, stars, around, catalogStars, settings); });
    if (solution) adopt(*solution);
    return solution.has_value();
}

/// Within the search radius, by star patterns. The scale must be known to a seventh.
bool PinPointPlate::solveFarAway() {
    if (!(searchRadius_ > 0) || !patterns_) return false;
    std::vector<double> scales = headerScales(image()->header());
    if (std::abs(scaleX_) > 0) scales.insert(scales.begin(), std::abs(scaleX_));
    const WideSettings settings{
        .start = startInCatalogue(), .radiusDeg = searchRadius_, .epochYear = julianYear(exposureTime())};
    const auto catalog = catalogue();
    const std::vector<ImageStar> stars = starsToMatch();
    std::optional<WideSolution> found;
    auto search = [&, plate = geometry(1, 1), patterns = patterns_()]() mutable {
        for (std::size_t i = 0; i < scales.size() && !found; ++i) {
            plate.scaleX = plate.scaleY = scales[i];
            found = searchWide(plate, stars, *patterns, *catalog, settings);
        }
    };
    if (catalogIsFar_)
        search();  // its downloads belong to the loop
    else
        background_.await(search);
    if (found) adopt(found->plate);
    return found.has_value();
}

std::vector<ImageStar> PinPointPlate::starsToMatch() const {
    std::vector<ImageStar> stars = stars_.stars;
    const auto most = static_cast<std::size_t>(std::max(0, maxSolveStars_));
    if (most > 0 && stars.size() > most) stars.resize(most);
    return stars;
}

void PinPointPlate::adopt(const SolvedPlate& solution) {
    solution_ = solution;
    const Orientation orientation = orientationOf(frame().turned(solution.cd, solution.centre));
    setStart(solution.centre);
    scaleX_ = orientation.scaleX;
    scaleY_ = orientation.scaleY;
    roll_ = orientation.rollDeg;
}

void PinPointPlate::updateFits() {
    if (path_.empty() || !image_) refuse("no FITS file is attached");
    if (!solution_) refuse("the plate is not solved");
    const auto wcs = wcsOf(*solution_, geometry(1, 1));
    background_.await([path = path_, wcs] { fits::writeWcs(path, path, wcs); });
}

/// Of the last search. What the sky shows there is looked up in the built-in catalogue, whichever is in use:
/// one in the network may not answer.
platform::Words PinPointPlate::failureReason() {
    const PlateGeometry plate = geometry(std::abs(scaleX_), std::abs(scaleY_));
    SoughtField field{.geometry = plate, .start = startInCatalogue()};
    field.radiusDeg = searchRadius_ > 0 ? searchRadius_ : plate.diagonalDeg() * (0.5 + catalogExpansion_);
    field.starsExpected = starsExpected(field, *builtIn_());
    return whyUnsolved(stars_, field);
}

const std::shared_ptr<const FitsImage>& PinPointPlate::image() const {
    if (!image_) refuse("no image is attached");
    return image_;
}

/// A folder without a usable catalogue is refused, and the former one stays in use.
void PinPointPlate::setCatalogPath(const std::string& folder) {
    std::shared_ptr<const sky::StarCatalog> far;
    if (platform::equalIgnoringCase(folder, catalogs::kInternetPath))
        far = openNetworkCatalog(catalogNumber_, network_);
    if (far != nullptr)
        catalog_ = far;
    else
        catalog_ = isUntouched(folder) ? builtIn_() : openCatalog(folders_.real(folder), catalogNumber_);
    catalogIsFar_ = far != nullptr;
}

/// Searches over the network let events through, which may choose another catalogue: callers keep this one.
std::shared_ptr<const sky::StarCatalog> PinPointPlate::catalogue() {
    if (catalog_ == nullptr) catalog_ = builtIn_();
    return catalog_;
}

PlateGeometry PinPointPlate::geometry(double scaleX, double scaleY) const {
    return {static_cast<double>(image_ ? image_->width() : 1),
            static_cast<double>(image_ ? image_->height() : 1), scaleX, scaleY, stars_.grain};
}

/// The start may be off by half the field, and by the expansion's share of it.
SearchArea PinPointPlate::area(const PlateGeometry& plate) const {
    const double offset = plate.diagonalDeg() * (0.5 + catalogExpansion_);
    return searchArea(plate, startInCatalogue(), offset, stars_.stars.size());
}

std::vector<sky::CatalogStar> PinPointPlate::starsIn(const SearchArea& around) {
    sky::ConeQuery query = around.query(julianYear(exposureTime()), faintest_);
    query.brightestMagnitude = brightest_;
    const auto catalog = catalogue();
    return catalog->cone(query);
}

platform::Instant PinPointPlate::exposureTime() const {
    if (exposureStart_) return *exposureStart_;
    if (image_) {
        if (const auto start = solver::exposureStart(image_->header())) return *start;
    }
    return clock_.utc();
}

PlateFrame PinPointPlate::frame() const {
    return equinox_ ? PlateFrame::ofYear(*equinox_) : PlateFrame::ofDate(exposureTime());
}

/// The start position may lie beyond a pole, as searches in declination put it: it then counts over the pole.
SkyPosition PinPointPlate::startInCatalogue() const {
    const double dec = std::remainder(declination_, 360.0);
    const double ra = rightAscension_ * 15;
    if (dec > 90) return frame().toCatalogue({ra + 180, 180 - dec});
    if (dec < -90) return frame().toCatalogue({ra + 180, -180 - dec});
    return frame().toCatalogue({ra, dec});
}

void PinPointPlate::setStart(SkyPosition icrs) {
    const SkyPosition place = frame().fromCatalogue(icrs);
    rightAscension_ = place.ra / 15;
    declination_ = place.dec;
}

}  // namespace vantrel::solver
