#include "solve_run.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <variant>

#include "catalogs/http_downloads.h"
#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "fits/header_wcs.h"
#include "imaging/annotated_picture.h"
#include "pictures/picture_file.h"
#include "pictures/png_writing.h"
#include "platform/own_program.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/user_machine.h"
#include "sky/compact_catalog.h"
#include "solver/catalog_choice.h"
#include "solver/deep_stars.h"
#include "solver/exposure_facts.h"
#include "solver/pattern_store.h"

namespace vantrel::tools {

using namespace vantrel::sky;
using namespace vantrel::fits;
using namespace vantrel::catalogs;
using namespace vantrel::solver;

namespace {

bool isDated(const SolveOptions& options, const FitsHeader& header) {
    return options.date || exposureStart(header);
}

std::optional<double> toldScale(const SolveOptions& options, double height) {
    if (options.scale || !options.heightDeg) return options.scale;
    return 2 * std::tan(*options.heightDeg / 2 * kDegree) / kArcsecond / height;
}

/// What the operator tells comes before what the header does.
ImageClues cluesFor(const SolveOptions& options, const FitsImage& image) {
    const FitsHeader& header = image.header();
    const auto height = static_cast<double>(image.height());
    ImageClues clues = cluesOf(header);
    if (options.dec) clues.start = SkyPosition{*options.raHours * 15, *options.dec};
    clues.radiusDeg = options.radius;
    if (options.date)
        clues.epochYear = julianYear(*options.date);
    else if (!isDated(options, header))
        clues.epochYear =
            julianYear(std::chrono::floor<platform::Milliseconds>(std::chrono::system_clock::now()));
    if (const auto told = toldScale(options, height)) {
        std::erase_if(clues.scales, [&](double scale) { return std::abs(scale / *told - 1) < 0.1; });
        clues.scales.insert(clues.scales.begin(), *told);
    }
    return clues;
}

std::shared_ptr<const StarCatalog> catalogFor(const SolveOptions& options,
                                              const std::filesystem::path& cacheFolder) {
    if (options.catalog.empty())
        return withDeepStars(CompactCatalog::openBuiltIn(),
                             platform::dataFolder(platform::processEnvironment));
    if (!platform::equalIgnoringCase(options.catalog, kInternetPath))
        return openCatalog(platform::pathOf(options.catalog), options.catalogNumber);
    auto catalog =
        openNetworkCatalog(options.catalogNumber, {std::make_shared<HttpDownloads>(), cacheFolder, {}});
    if (catalog == nullptr) throw BadInput("--catalog Internet needs --catalog-number 8 or 9");
    return catalog;
}

}  // namespace

Outcome solve(const SolveOptions& options) {
    platform::takeMemoryAtOnce();
    const FitsImage image = pictures::openPicture(platform::pathOf(options.file));
    const ImageClues clues = cluesFor(options, image);
    if (!clues.start && options.radius.value_or(0) < 180)
        throw BadInput(options.file +
                       ": the header tells no position, give --ra and --dec (or --radius 180)");
    if (clues.scales.empty() && options.radius.value_or(0) <= customaryOffset({}))
        throw BadInput(options.file + ": the header tells no scale, give --scale");
    const auto cacheFolder = platform::cacheFolder(platform::processEnvironment);
    const auto catalog = catalogFor(options, cacheFolder);
    const StarList stars = findStars(image, {});
    const auto patterns = [&] {
        return patternsOf(*CompactCatalog::openBuiltIn(), cacheFolder, [](const auto& line) {
            std::fprintf(stderr, "vantrel-solve: %s\n", line.c_str());
        });
    };
    return {solveImage(image, stars, clues, *catalog, patterns), stars.stars.size(), clues.epochYear,
            isDated(options, image.header()), image.bottomUp()};
}

std::vector<FitsCard> headerOf(const Outcome& outcome) {
    const PlateGeometry& plate = outcome.solved.geometry;
    std::vector<FitsCard> cards = {{"SIMPLE", true, "a header without an image"},
                                   {"BITPIX", std::int64_t{8}},
                                   {"NAXIS", std::int64_t{0}},
                                   {"WCSAXES", std::int64_t{2}},
                                   {"IMAGEW", static_cast<std::int64_t>(plate.width), "pixels"},
                                   {"IMAGEH", static_cast<std::int64_t>(plate.height), "pixels"}};
    const SolvedPlate& solution = *outcome.solved.solution;
    const auto wcs = wcsCards(wcsOf(solution, plate), plate.height, outcome.bottomUp, solution.distortion);
    cards.insert(cards.end(), wcs.begin(), wcs.end());
    return cards;
}

void writeSolved(const std::filesystem::path& source, const std::filesystem::path& target,
                 const Outcome& outcome) {
    const SolvedPlate& solution = *outcome.solved.solution;
    writeWcs(source, target, wcsOf(solution, outcome.solved.geometry), solution.distortion);
}

void writeAnnotated(const std::string& picture, const std::filesystem::path& target, const Outcome& outcome) {
    const auto drawn =
        imaging::annotatedPicture(pictures::openPicture(platform::pathOf(picture)), outcome.solved);
    pictures::writePng(target, static_cast<std::size_t>(drawn.width()),
                       static_cast<std::size_t>(drawn.height()), drawn.rgb());
}

void writeHeader(const std::filesystem::path& path, const std::vector<FitsCard>& cards) {
    constexpr std::size_t kCard = 80, kBlock = 2880;
    std::string header;
    for (const FitsCard& card : cards) {
        char line[kCard + 1] = {};
        if (const auto* text = std::get_if<std::string>(&card.value))
            std::snprintf(line, sizeof line, "%-8s= '%-8s'", card.keyword.c_str(), text->c_str());
        else if (const auto* number = std::get_if<double>(&card.value))
            std::snprintf(line, sizeof line, "%-8s= %#20.13G", card.keyword.c_str(), *number);
        else if (const auto* whole = std::get_if<std::int64_t>(&card.value))
            std::snprintf(line, sizeof line, "%-8s= %20lld", card.keyword.c_str(),
                          static_cast<long long>(*whole));
        else
            std::snprintf(line, sizeof line, "%-8s= %20s", card.keyword.c_str(),
                          std::get<bool>(card.value) ? "T" : "F");
        std::string text = line;
        if (!card.comment.empty()) text += " / " + card.comment;
        text.resize(kCard, ' ');
        header += text;
    }
    header += "END";
    header.resize((header.size() + kBlock - 1) / kBlock * kBlock, ' ');
    std::ofstream file(path, std::ios::binary);
    file << header;
    file.close();
    if (!file) throw BadInput(path.string() + " can't be written");
}

}  // namespace vantrel::tools
