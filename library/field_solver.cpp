#include <cmath>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

#include <dlfcn.h>

#include "fits/fits_image.h"
#include "platform/user_machine.h"
#include "sky/compact_catalog.h"
#include "solver/catalog_choice.h"
#include "solver/deep_stars.h"
#include "solver/image_solving.h"
#include "solver/pattern_store.h"
#include "vantrel/solver.h"

namespace vantrel {

namespace {

/// In the share/vantrel beside a folder above the library: the library may have been moved with all the rest.
std::shared_ptr<const sky::CompactCatalog> installedCatalog() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&installedCatalog), &info) != 0 && info.dli_fname != nullptr) {
        std::error_code error;
        const auto library = std::filesystem::canonical(info.dli_fname, error);
        for (auto folder = library.parent_path(); !error && folder.has_relative_path();
             folder = folder.parent_path()) {
            const auto file = folder / "share" / "vantrel" / sky::kTychoFileName;
            if (std::filesystem::exists(file, error))
                return std::make_shared<const sky::CompactCatalog>(file);
            error.clear();
        }
    }
    return sky::CompactCatalog::openBuiltIn();
}

std::shared_ptr<const sky::StarCatalog> ownCatalog() {
    return solver::withDeepStars(installedCatalog(), platform::dataFolder(platform::processEnvironment));
}

void check(bool good, const char* why) {
    if (!good) throw std::invalid_argument(why);
}

bool isWithin(const std::optional<double>& value, double least, double most) {
    return !value || (*value >= least && *value <= most);
}

void checkHint(const FieldHint& hint) {
    check(hint.raDeg.has_value() == hint.decDeg.has_value(), "raDeg and decDeg go together");
    check(isWithin(hint.raDeg, 0, 360), "raDeg must be from 0 to 360");
    check(isWithin(hint.decDeg, -90, 90), "decDeg must be from -90 to 90");
    check(isWithin(hint.scale, 0.01, 1000), "scale must be from 0.01 to 1000");
    check(isWithin(hint.radiusDeg, 0, 180), "radiusDeg must be from 0 to 180");
    check(hint.year >= 1800 && hint.year <= 2200, "year must be from 1800 to 2200");
}

solver::ImageClues cluesOf(const FieldHint& hint) {
    constexpr double kWholeSky = 180;
    solver::ImageClues clues;
    if (hint.raDeg) clues.start = sky::SkyPosition{*hint.raDeg, *hint.decDeg};
    if (hint.scale) clues.scales = {*hint.scale};
    clues.radiusDeg = hint.radiusDeg;
    if (!clues.start || (clues.scales.empty() && !clues.radiusDeg)) clues.radiusDeg = kWholeSky;
    clues.epochYear = hint.year;
    return clues;
}

}  // namespace

struct FieldSolver::Parts {
    std::shared_ptr<const sky::StarCatalog> catalog;
    std::mutex patternsMutex;
    std::filesystem::path patternFolder = platform::cacheFolder(platform::processEnvironment);
    std::shared_ptr<const solver::StarPatterns> patterns = {};  // once they have been asked for

    explicit Parts(std::shared_ptr<const sky::StarCatalog> stars) : catalog(std::move(stars)) {}

    std::shared_ptr<const solver::StarPatterns> wholeSky() {
        const std::lock_guard lock(patternsMutex);
        if (patterns == nullptr)
            patterns = solver::patternsOf(*installedCatalog(), patternFolder, [](const std::string&) {});
        return patterns;
    }
};

FieldSolver::FieldSolver() : FieldSolver({}, 0) {}

FieldSolver::FieldSolver(const std::filesystem::path& folder, int number)
    : parts_(std::make_shared<Parts>(folder.empty() ? ownCatalog() : solver::openCatalog(folder, number))) {}

void FieldSolver::keepPatternsIn(const std::filesystem::path& folder) {
    const std::lock_guard lock(parts_->patternsMutex);
    parts_->patternFolder = folder;
}

FieldSolution FieldSolver::solve(const FieldPicture& picture, const FieldHint& hint) const {
    check(picture.width > 0 && picture.height > 0 &&
              picture.pixels.size() / picture.width == picture.height &&
              picture.pixels.size() % picture.width == 0,
          "there must be width * height pixels");
    checkHint(hint);
    const fits::FitsImage image(picture.width, picture.height,
                                {picture.pixels.begin(), picture.pixels.end()});
    const solver::StarList stars = solver::findStars(image, {});
    const solver::SolvedImage solved = solver::solveImage(image, stars, cluesOf(hint), *parts_->catalog,
                                                          [parts = parts_] { return parts->wholeSky(); });
    FieldSolution field;
    field.starsFound = stars.stars.size();
    if (!solved.solution) {
        field.reason = solved.whyNot.english();
        return field;
    }
    const solver::SolvedPlate& plate = *solved.solution;
    field.solved = true;
    field.raDeg = plate.centre.ra;
    field.decDeg = plate.centre.dec;
    field.scaleX = plate.orientation.scaleX;
    field.scaleY = plate.orientation.scaleY;
    field.rotationDeg = plate.orientation.rollDeg;
    field.cd = plate.cd;
    field.centreErrorArcsec = plate.centreErrorArcsec;
    field.rotationErrorDeg = plate.rollErrorDeg;
    field.matched = plate.matched;
    field.residualArcsec = plate.residualArcsec;
    return field;
}

}  // namespace vantrel
