// vantrel-catalog: a compact star catalogue, deeper than the built-in one, of one that the user owns.
//
// Exit status: 0 made, or sound; 1 not sound; 2 unusable input, or it couldn't be made (with one line on
// standard error).

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "catalogs/catalog_file.h"
#include "catalogs/deep_catalog.h"
#include "catalogs/distributions.h"
#include "catalogs/star_table.h"
#include "exit_status.h"
#include "platform/command_line.h"
#include "platform/own_program.h"
#include "platform/own_runs.h"
#include "platform/paths.h"
#include "platform/termination.h"
#include "platform/text.h"
#include "platform/user_machine.h"
#include "sky/compact_catalog.h"
#include "solver/exposure_facts.h"

namespace {

using namespace vantrel;
using namespace vantrel::catalogs;
using namespace vantrel::tools;

namespace fs = std::filesystem;

double thisYear() {
    return solver::julianYear(std::chrono::floor<platform::Milliseconds>(std::chrono::system_clock::now()));
}

struct Options {
    std::string source, out, check;
    DeepSelection selection{.epochYear = thisYear()};
    TableColumns columns;
    std::optional<double> tableEpoch;
    bool hasColumns = false;
};

double wholeIn(const std::string& option, const std::string& text, double least, double most) {
    const double value = platform::numberIn(option, text, least, most);
    if (value != std::floor(value)) throw BadInput(option + " must be a whole number");
    return value;
}

TableColumns columnsIn(const std::string& text) {
    TableColumns columns;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        const std::string pair = text.substr(start, end - start);
        const std::size_t mark = pair.find('=');
        const std::string name = pair.substr(0, mark);
        std::string* column = name == "ra"      ? &columns.ra
                              : name == "dec"   ? &columns.dec
                              : name == "mag"   ? &columns.magnitude
                              : name == "pmra"  ? &columns.motionRa
                              : name == "pmdec" ? &columns.motionDec
                                                : nullptr;
        if (column == nullptr || mark == std::string::npos || mark + 1 == pair.size())
            throw BadInput("--columns must be like ra=RA_ICRS,dec=DE_ICRS,mag=Gmag,pmra=pmRA,pmdec=pmDE");
        *column = pair.substr(mark + 1);
        start = end + 1;
    }
    return columns;
}

/// Nothing when help was asked for. Line ends in the texts are where the help breaks them.
std::optional<Options> optionsOf(const std::vector<std::string>& arguments) {
    constexpr double kFirstYear = 1901, kLastYear = 2199;
    Options options;
    DeepSelection& selection = options.selection;
    std::vector<std::string> sources, declinations;
    std::optional<double> epoch;
    platform::CommandLine line(
        "vantrel-catalog",
        "Makes one compact file of a star catalogue that you own. The program and vantrel-solve use it by\n"
        "themselves for fields in which the built-in Tycho-2 has too few stars.");
    line.addOperands("SOURCE",
                     "the folder of UCAC4, UCAC2, USNO-B, USNO-A or SA2.0, Tycho-2,\n"
                     "GSC or GSC-ACT, or of .290 or .1476 files; or a table as text,\n"
                     "as the VizieR service saves it, or parted by commas,\n"
                     "semicolons or tabs; or another compact file",
                     sources);
    line.addText("--out", "FILE",
                 "where the file goes (default: deep_stars.bin in your data\n"
                 "folder, where it is looked for); a file there goes, if it is\n"
                 "such a catalogue",
                 [&](const std::string& text) { options.out = text; });
    line.addText("--faintest", "MAGNITUDE", "of the faintest stars", [&](const std::string& text) {
        selection.faintestMagnitude = platform::numberIn("--faintest", text, -2, 30);
    });
    line.addTexts("--dec", "DEG", "southern and northern, in whole degrees, -90 to 90", 2, declinations);
    line.addText("--most", "STARS",
                 "in a cell of a tenth of a degree, 1 to 255 (default); of more\n"
                 "the brightest are kept",
                 [&](const std::string& text) {
                     selection.mostInCell = static_cast<std::uint32_t>(wholeIn("--most", text, 1, 255));
                 });
    line.addNumber("--epoch", "YEAR", "that the stars' own motions are applied to (default: today)",
                   kFirstYear, kLastYear, epoch);
    line.addText("--columns", "NAME=COLUMN,...",
                 "names of a table's columns: ra, dec, mag, pmra, pmdec; left\n"
                 "out, those of VizieR, Gaia's archive and others are known",
                 [&](const std::string& text) {
                     options.columns = columnsIn(text);
                     options.hasColumns = true;
                 });
    line.addNumber("--table-epoch", "YEAR", "that a table's positions stand for (default 2000)", kFirstYear,
                   kLastYear, options.tableEpoch);
    line.addText("--check", "FILE", "tells what a compact file holds, and whether it is as it was\nwritten",
                 [&](const std::string& text) { options.check = text; });
    if (!line.parse(arguments)) return std::nullopt;

    if (sources.size() > 1)
        throw BadInput("one catalogue at a time, not " + sources[0] + " and " + sources[1]);
    if (sources.empty() == options.check.empty())
        throw BadInput("a catalogue must be named (--help tells how)");
    if (!sources.empty()) options.source = sources.front();
    if (epoch) selection.epochYear = *epoch;
    if (!declinations.empty()) {
        selection.southDeg = wholeIn("--dec", declinations[0], -90, 90);
        selection.northDeg = wholeIn("--dec", declinations[1], -90, 90);
    }
    if (selection.southDeg >= selection.northDeg)
        throw BadInput("--dec must name a southern and a more northern declination");
    return options;
}

FoundCatalog openDistribution(const fs::path& path) {
    struct Kind {
        const char* name;
        FoundCatalog (*open)(const CatalogFolder& folder);
    };
    constexpr Kind kKinds[] = {{"UCAC4", openUcac4},
                               {"UCAC2", openUcac2},
                               {"USNO-B", openUsnoB},
                               {"USNO-A or SA2.0", openUsnoA},
                               {"Tycho-2", openTycho2},
                               {"GSC or GSC-ACT", openGuideStars},
                               {".290 or .1476 files", openCellDatabase}};
    const CatalogFolder folder(path);
    for (const Kind& kind : kKinds) {
        if (auto catalog = kind.open(folder)) {
            std::printf("Reading %s in %s\n", kind.name, path.string().c_str());
            return catalog;
        }
    }
    throw BadInput("no star catalogue that can be read is in " + path.string());
}

bool isCompact(const fs::path& path) {
    try {
        const sky::CompactCatalog catalog(path);
        return true;
    } catch (const sky::CatalogError&) {
        return false;
    }
}

/// A file that is damaged begins so, too, and is no table.
bool beginsAsCompact(const fs::path& path) {
    constexpr std::size_t kMagic = sky::kCompactMagic.size();
    return platform::InputFile(path).size() >= kMagic &&
           CatalogFile(path).text(0, kMagic) == sky::kCompactMagic;
}

std::vector<sky::MovingStar> tableStars(const fs::path& path, const Options& options) {
    StarTable table =
        readStarTable(path, options.columns, options.tableEpoch.value_or(2000), options.selection.epochYear);
    std::printf("Read %zu stars with magnitudes %s %s motions from %s\n", table.stars.size(),
                table.magnitude.c_str(), table.moves ? "and" : "but without", path.string().c_str());
    if (table.incomplete > 0)
        std::printf("%llu rows without a position or a magnitude are left out\n",
                    static_cast<unsigned long long>(table.incomplete));
    return std::move(table.stars);
}

/// Where the file goes. What is there already must be such a file.
fs::path targetOf(const Options& options) {
    fs::path target = platform::pathOf(options.out);
    std::error_code error;
    if (target.empty()) {
        const fs::path folder = platform::dataFolder(platform::processEnvironment);
        if (folder.empty()) throw BadInput("the environment names no data folder, give --out");
        fs::create_directories(folder, error);
        target = folder / kDeepFileName;
    }
    if (fs::exists(target, error) && !isCompact(target))
        throw BadInput(target.string() + " is there, and no compact star catalogue; it is left alone");
    return target;
}

DeepProgress progress(const platform::TerminationWatch& watch) {
    return [&watch, shown = platform::isWatched(), last = -1](double share) mutable {
        const int percent = static_cast<int>(100 * share);
        if (shown && percent != last) std::fprintf(stderr, "\r%d %%%s", percent, percent == 100 ? "\n" : "");
        last = percent;
        return !watch.requested();
    };
}

int check(const fs::path& file) {
    const sky::CompactCatalog catalog(file);
    const bool sound = catalog.verify();
    std::printf("%s: %u stars at %.1f, in cells of %.2g degrees, check sum %s\n", file.string().c_str(),
                catalog.starCount(), catalog.epochYear(), catalog.cellDeg(), sound ? "right" : "WRONG");
    return sound ? 0 : 1;
}

int make(const Options& options) {
    const platform::TerminationWatch watch;
    const fs::path target = targetOf(options);
    const fs::path path = platform::pathOf(options.source);
    std::error_code error;
    FoundCatalog catalog;
    StripSource source;
    if (fs::is_directory(path, error)) {
        catalog = openDistribution(path);
    } else if (!fs::exists(path, error)) {
        throw BadInput("there is no " + path.string());
    } else if (beginsAsCompact(path)) {
        const auto compact = std::make_shared<const sky::CompactCatalog>(path);
        if (!compact->verify()) throw BadInput(path.string() + " is damaged: its check sum is wrong");
        catalog = compact;
    }
    if (catalog != nullptr && (options.hasColumns || options.tableEpoch))
        throw BadInput("--columns and --table-epoch are for tables");
    source = catalog != nullptr ? stripsOf(*catalog, options.selection)
                                : stripsOf(tableStars(path, options), options.selection);
    const DeepResult made = writeDeepCatalog(target, source, options.selection, progress(watch));
    if (made.leftOut > 0)
        std::printf("%llu faint stars are left out where a cell has more than %u\n",
                    static_cast<unsigned long long>(made.leftOut), options.selection.mostInCell);
    return check(target);
}

int run(const std::vector<std::string>& arguments) {
    const auto options = optionsOf(arguments);
    if (!options) return 0;
    return options->check.empty() ? make(*options) : check(platform::pathOf(options->check));
}

}  // namespace

int main(int argc, char** argv) {
    return exitStatusOf("vantrel-catalog", [&] { return run(platform::programArguments(argc, argv)); });
}
