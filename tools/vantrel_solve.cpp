// vantrel-solve: where does this image point?
//
// Exit status: 0 solved, 1 not solved, 2 unusable input (with one line on standard error).

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <malloc.h>
#include <nlohmann/json.hpp>
#include <sys/mman.h>

#include "catalogs/http_downloads.h"
#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "pictures/picture_file.h"
#include "platform/text.h"
#include "platform/user_machine.h"
#include "sky/tycho_catalog.h"
#include "solver/catalog_choice.h"
#include "solver/exposure_facts.h"
#include "solver/image_solving.h"
#include "solver/pattern_store.h"

namespace {

using namespace vantrel;
using namespace vantrel::sky;
using namespace vantrel::fits;
using namespace vantrel::catalogs;
using namespace vantrel::solver;

constexpr const char* kUsage =
    "usage: vantrel-solve FILE [--ra HOURS --dec DEG] [--scale ARCSEC_PER_PX] [--radius DEG]\n"
    "                     [--date YYYY-MM-DD]\n"
    "                     [--catalog FOLDER|Internet --catalog-number N] [--json] [--wcs OUT.fits]\n"
    "\n"
    "  --ra, --dec   about where the image points, J2000; left out, the header must tell\n"
    "                unless the radius is 180\n"
    "  --scale       arcseconds per pixel, within 15 %; left out, the header must tell, or the\n"
    "                radius is wide: then fields 0.3 to 30 degrees wide are tried\n"
    "  --radius      how far off the position may be (default: the image's diagonal, at least 1.5);\n"
    "                a wider one, 180 being all the sky, uses star patterns that the first such\n"
    "                search makes and keeps in the user's cache folder\n"
    "  --date        of the exposure, for the stars' own motions; left out, the header must tell, or\n"
    "                today's is taken, which the program then says\n"
    "  --catalog     folder of another star catalogue, with its number (--catalog-number):\n"
    "                0 GSC-1.1, 1 USNO-SA2.0, 3 GSC-ACT, 4 Tycho-2, 5 USNO-A2.0, 6 UCAC2, 7 USNO-B;\n"
    "                UCAC4 and .290 and .1476 files are found under any number. \"Internet\" in\n"
    "                place of a folder asks the VizieR service for 8 USNO-B or 9 NOMAD; answers are\n"
    "                kept in the user's cache folder\n"
    "  --json        print the solution as one JSON object\n"
    "  --wcs         write a copy of the image, a FITS file, with the solution in its header\n";

struct BadInput : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Options {
    std::string file;
    std::optional<double> raHours;
    std::optional<double> dec;
    std::optional<double> scale;
    std::optional<double> radius;
    std::optional<platform::Instant> date;
    std::string catalog;
    int catalogNumber = 4;
    bool json = false;
    std::string wcs;
};

double numberIn(const std::string& option, const std::string& text, double least, double most) {
    const auto value = platform::parseNumber(text);
    if (!value || !(*value >= least) || !(*value <= most)) {
        throw BadInput(option + " must be a number from " + platform::toText(least) + " to " +
                       platform::toText(most));
    }
    return *value;
}

platform::Instant dateIn(const std::string& option, const std::string& text) {
    const auto instant = platform::parseInstant(text.size() == 10 ? text + "T00:00:00" : text);
    if (!instant) throw BadInput(option + " must be a date like 2026-03-21");
    return *instant;
}

Options parsed(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& name = arguments[i];
        const auto value = [&]() -> const std::string& {
            if (i + 1 >= arguments.size()) throw BadInput(name + " needs a value");
            return arguments[++i];
        };
        if (name == "--ra")
            options.raHours = numberIn(name, value(), 0, 24);
        else if (name == "--dec")
            options.dec = numberIn(name, value(), -90, 90);
        else if (name == "--scale")
            options.scale = numberIn(name, value(), 0.01, 1000);
        else if (name == "--radius")
            options.radius = numberIn(name, value(), 0, 180);
        else if (name == "--date")
            options.date = dateIn(name, value());
        else if (name == "--catalog")
            options.catalog = value();
        else if (name == "--catalog-number")
            options.catalogNumber = static_cast<int>(numberIn(name, value(), 0, 99));
        else if (name == "--json")
            options.json = true;
        else if (name == "--wcs")
            options.wcs = value();
        else if (name.starts_with("--"))
            throw BadInput("unknown option " + name);
        else if (options.file.empty())
            options.file = name;
        else
            throw BadInput("more than one file");
    }
    if (options.file.empty()) throw BadInput("no file given (--help tells how)");
    if (options.raHours.has_value() != options.dec.has_value()) throw BadInput("--ra and --dec go together");
    return options;
}

bool isDated(const Options& options, const FitsHeader& header) {
    return options.date || exposureStart(header);
}

/// What the operator tells comes before what the header does.
ImageClues cluesFor(const Options& options, const FitsHeader& header) {
    ImageClues clues = cluesOf(header);
    if (options.dec) clues.start = SkyPosition{*options.raHours * 15, *options.dec};
    clues.radiusDeg = options.radius;
    if (options.date)
        clues.epochYear = julianYear(*options.date);
    else if (!isDated(options, header))
        clues.epochYear =
            julianYear(std::chrono::floor<platform::Milliseconds>(std::chrono::system_clock::now()));
    if (options.scale) {
        std::erase_if(clues.scales, [&](double scale) { return std::abs(scale / *options.scale - 1) < 0.1; });
        clues.scales.insert(clues.scales.begin(), *options.scale);
    }
    return clues;
}

struct Outcome {
    SolvedImage solved;
    std::size_t starsFound = 0;
    double epochYear = 0;  ///< for which the stars' own motions are allowed
    bool dated = false;    ///< it is told, not today's
};

std::shared_ptr<const StarCatalog> catalogFor(const Options& options,
                                              const std::filesystem::path& cacheFolder) {
    if (!platform::equalIgnoringCase(options.catalog, kInternetPath))
        return openCatalog(options.catalog, options.catalogNumber);
    auto catalog =
        openNetworkCatalog(options.catalogNumber, {std::make_shared<HttpDownloads>(), cacheFolder, {}});
    if (catalog == nullptr) throw BadInput("--catalog Internet needs --catalog-number 8 or 9");
    return catalog;
}

Outcome solve(const Options& options, const FitsImage& image) {
    const ImageClues clues = cluesFor(options, image.header());
    if (!clues.start && options.radius.value_or(0) < 180)
        throw BadInput(options.file +
                       ": the header tells no position, give --ra and --dec (or --radius 180)");
    if (clues.scales.empty() && options.radius.value_or(0) <= customaryOffset({}))
        throw BadInput(options.file + ": the header tells no scale, give --scale");
    const auto cacheFolder = platform::cacheFolder(platform::processEnvironment);
    const auto catalog = catalogFor(options, cacheFolder);
    const StarList stars = findStars(image, {});
    const auto patterns = [&] {
        return patternsOf(*TychoCatalog::openBuiltIn(), cacheFolder, [](const auto& line) {
            std::fprintf(stderr, "vantrel-solve: %s\n", line.c_str());
        });
    };
    return {solveImage(image, stars, clues, *catalog, patterns), stars.stars.size(), clues.epochYear,
            isDated(options, image.header())};
}

nlohmann::ordered_json asJson(const Outcome& outcome, double seconds) {
    nlohmann::ordered_json json;
    json["solved"] = outcome.solved.solution.has_value();
    if (outcome.solved.solution) {
        const PlateSolution& s = *outcome.solved.solution;
        json["ra_deg"] = s.centre.ra;
        json["dec_deg"] = s.centre.dec;
        json["scale_x"] = s.orientation.scaleX;
        json["scale_y"] = s.orientation.scaleY;
        json["rotation"] = s.orientation.rollDeg;
        json["mirrored"] = s.mirrored();
        json["cd"] = s.cd;
        json["matched"] = s.matched;
        json["residual_arcsec"] = s.residualArcsec;
        json["order"] = s.order;
        json["centre_error_arcsec"] = s.centreErrorArcsec;
        json["roll_error_deg"] = s.rollErrorDeg;
    }
    if (!outcome.solved.solution) json["reason"] = outcome.solved.whyNot;
    json["epoch"] = outcome.epochYear;
    json["dated"] = outcome.dated;
    json["stars_found"] = outcome.starsFound;
    json["seconds"] = seconds;
    return json;
}

void print(const Outcome& outcome, double seconds) {
    if (!outcome.solved.solution) {
        std::printf("Not solved: %zu stars found, none of the positions in reach fits them. %.3f s\n",
                    outcome.starsFound, seconds);
        std::printf("Reason          %s\n", outcome.solved.whyNot.c_str());
        return;
    }
    const PlateSolution& s = *outcome.solved.solution;
    std::printf("Centre (J2000)  RA %.6f h = %.5f deg   Dec %+.5f deg\n", s.centre.ra / 15, s.centre.ra,
                s.centre.dec);
    std::printf("Scale           %.4f x %.4f arcsec per pixel%s\n", s.orientation.scaleX,
                std::abs(s.orientation.scaleY), s.mirrored() ? ", mirrored" : "");
    std::printf("Roll            %.3f deg\n", s.orientation.rollDeg);
    std::printf("Stars           %zu of %zu matched, mean residual %.2f arcsec, order %d\n", s.matched,
                outcome.starsFound, s.residualArcsec, s.order);
    if (!outcome.dated)
        std::printf("Date            today's, since the header tells none (--date gives another)\n");
    std::printf("Time            %.3f s\n", seconds);
}

/// Asks for the memory that an image takes at once, in large pages where the system has them, and keeps it:
/// page by page it would take longer to get than to fill.
void takeMemoryAtOnce() {
#ifdef __GLIBC__
    constexpr int kNeverGivenBack = 1 << 30;
    constexpr std::size_t kLargePage = 2 << 20;
    constexpr std::size_t kSize = 4 * kLargePage;
    mallopt(M_MMAP_THRESHOLD, kNeverGivenBack);
    mallopt(M_TRIM_THRESHOLD, kNeverGivenBack);
    void* const memory = std::malloc(kSize);
    if (memory == nullptr) return;
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t aligned = (begin + kLargePage - 1) / kLargePage * kLargePage;
    madvise(reinterpret_cast<void*>(aligned), kSize - (aligned - begin), MADV_HUGEPAGE);
    std::free(memory);
#endif
}

int run(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (argument == "--help" || argument == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
    }
    const Options options = parsed(arguments);
    const auto begin = std::chrono::steady_clock::now();
    takeMemoryAtOnce();
    if (!options.wcs.empty() && pictures::kindOf(options.file) != pictures::PictureKind::kFits)
        throw BadInput("--wcs needs a FITS file, whose header it adds to");
    const FitsImage image = pictures::openPicture(options.file);
    const Outcome outcome = solve(options, image);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (outcome.solved.solution && !options.wcs.empty()) {
        writeWcs(options.file, options.wcs, wcsOf(*outcome.solved.solution, outcome.solved.geometry));
    }
    if (options.json) {
        std::puts(asJson(outcome, seconds).dump().c_str());
    } else {
        print(outcome, seconds);
    }
    return outcome.solved.solution ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vantrel-solve: %s\n", e.what());
        return 2;
    }
}
