// vantrel-solve: where does this image point?
//
// Exit status: 0 solved, 1 not solved, 2 unusable input (with one line on standard error).

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "exit_status.h"
#include "many_files.h"
#include "pictures/picture_file.h"
#include "platform/command_line.h"
#include "platform/own_program.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "solve_run.h"
#include "solver_fronts.h"

namespace {

using namespace vantrel;
using namespace vantrel::solver;
using namespace vantrel::tools;

struct Options : SolveOptions {
    std::vector<std::string> files;
    std::vector<std::string> others;  ///< what was given beside the files
    bool json = false;
    std::string wcs;
    std::string annotated;
};

platform::Instant dateIn(const std::string& option, const std::string& text) {
    const auto instant = platform::parseInstant(text.size() == 10 ? text + "T00:00:00" : text);
    if (!instant) throw BadInput(option + " must be a date like 2026-03-21");
    return *instant;
}

/// Nothing when help was asked for. Line ends in the texts are where the help breaks them.
std::optional<Options> optionsOf(const std::vector<std::string>& arguments) {
    Options options;
    platform::CommandLine line("vantrel-solve", "Tells where an image points.");
    line.addOperands("FILE", "FITS, JPEG, PNG, TIFF or raw files", options.files);
    line.addNumber("--ra", "HOURS", "about where the image points, J2000; left out, the header must", 0, 24,
                   options.raHours);
    line.addNumber("--dec", "DEG", "tell, unless the radius is 180", -90, 90, options.dec);
    line.addNumber("--scale", "ARCSEC",
                   "per pixel, within 15 %; left out, the header must tell, or the\n"
                   "radius is wide: then fields 0.3 to 30 degrees wide are tried",
                   0.01, 1000, options.scale);
    line.addNumber("--radius", "DEG",
                   "how far off the position may be (default: the image's\n"
                   "diagonal, at least 1.5); a wider one, 180 being all the sky,\n"
                   "uses star patterns that the first such search makes and keeps\n"
                   "in the user's cache folder",
                   0, 180, options.radius);
    line.addText("--date", "YYYY-MM-DD",
                 "of the exposure, for the stars' own motions; left out, the\n"
                 "header must tell, or today's is taken, which the program then\n"
                 "says",
                 [&](const std::string& text) { options.date = dateIn("--date", text); });
    line.addText("--catalog", "FOLDER",
                 "of another star catalogue, with its number; UCAC4, .290 and\n"
                 ".1476 files and those of vantrel-catalog are found under any\n"
                 "number, the last also by the file's name. \"Internet\" in place\n"
                 "of a folder asks the VizieR service for 8 USNO-B or 9 NOMAD;\n"
                 "answers are kept in the user's cache folder. Left out, it is\n"
                 "the built-in Tycho-2 and, where that has too few stars, the\n"
                 "deeper one that vantrel-catalog has made",
                 [&](const std::string& text) { options.catalog = text; });
    line.addText("--catalog-number", "N",
                 "0 GSC-1.1, 1 USNO-SA2.0, 3 GSC-ACT, 4 Tycho-2, 5 USNO-A2.0,\n"
                 "6 UCAC2, 7 USNO-B",
                 [&](const std::string& text) {
                     options.catalogNumber =
                         static_cast<int>(platform::numberIn("--catalog-number", text, 0, 99));
                 });
    line.addFlag("--json", "print the solution as one JSON object; of many files, one a line", options.json);
    line.addText("--wcs", "OUT.fits",
                 "write a copy of the image, a FITS file, with the solution in\n"
                 "its header; where the stars prove a distortion, with its SIP\n"
                 "polynomials",
                 [&](const std::string& text) { options.wcs = text; });
    line.addText("--annotate", "OUT.png",
                 "write the image as a PNG file with the matched stars circled,\n"
                 "bright stars and deep-sky objects named, and lines of right\n"
                 "ascension and declination",
                 [&](const std::string& text) { options.annotated = text; });
    if (!line.parse(arguments)) return std::nullopt;
    if (options.files.empty()) throw BadInput("no file given (--help tells how)");
    if (options.raHours.has_value() != options.dec.has_value()) throw BadInput("--ra and --dec go together");
    options.file = options.files.front();
    options.others = line.given();
    return options;
}

/// So many decimals: what a picture can't tell would differ from one mathematical library to the next.
double rounded(double value, int decimals) {
    const double perUnit = std::pow(10, decimals);
    return std::round(value * perUnit) / perUnit;
}

nlohmann::ordered_json asJson(const std::string& file, const Outcome& outcome, double seconds) {
    nlohmann::ordered_json json;
    json["file"] = file;
    json["solved"] = outcome.solved.solution.has_value();
    if (outcome.solved.solution) {
        const SolvedPlate& s = *outcome.solved.solution;
        json["ra_deg"] = rounded(s.centre.ra, 9);
        json["dec_deg"] = rounded(s.centre.dec, 9);
        json["scale_x"] = rounded(s.orientation.scaleX, 9);
        json["scale_y"] = rounded(s.orientation.scaleY, 9);
        json["rotation"] = rounded(s.orientation.rollDeg, 9);
        json["mirrored"] = s.mirrored();
        for (const double element : s.cd) json["cd"].push_back(rounded(element, 15));
        json["matched"] = s.matched;
        json["residual_arcsec"] = rounded(s.residualArcsec, 6);
        json["order"] = s.order;
        json["distortion_order"] = s.distortion ? s.distortion->a.order() : 0;
        json["centre_error_arcsec"] = rounded(s.centreErrorArcsec, 6);
        json["roll_error_deg"] = rounded(s.rollErrorDeg, 9);
    }
    if (!outcome.solved.solution) json["reason"] = outcome.solved.whyNot.english();
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
        std::printf("Reason          %s\n", outcome.solved.whyNot.english().c_str());
        return;
    }
    const SolvedPlate& s = *outcome.solved.solution;
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

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code neither;
    return std::filesystem::equivalent(platform::pathOf(a), platform::pathOf(b), neither);
}

int run(const Options& options) {
    if (options.files.size() > 1) {
        if (!options.wcs.empty()) throw BadInput("--wcs is for one file");
        if (!options.annotated.empty()) throw BadInput("--annotate is for one file");
        return solveMany(options.others, options.files, options.json);
    }
    const auto begin = std::chrono::steady_clock::now();
    if (!options.wcs.empty() &&
        pictures::kindOf(platform::pathOf(options.file)) != pictures::PictureKind::kFits)
        throw BadInput("--wcs needs a FITS file, whose header it adds to");
    if (!options.annotated.empty() && isSameFile(options.annotated, options.file))
        throw BadInput("--annotate would write over the picture itself");
    const Outcome outcome = solve(options);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (outcome.solved.solution && !options.wcs.empty())
        writeSolved(platform::pathOf(options.file), platform::pathOf(options.wcs), outcome);
    if (outcome.solved.solution && !options.annotated.empty())
        writeAnnotated(options.file, platform::pathOf(options.annotated), outcome);
    if (options.json) {
        std::puts(asJson(options.file, outcome, seconds).dump().c_str());
    } else {
        print(outcome, seconds);
    }
    return outcome.solved.solution ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    return exitStatusOf("vantrel-solve", [&] {
        const std::string name = argc > 0 ? std::filesystem::path(argv[0]).stem().string() : "";
        const auto arguments = platform::programArguments(argc, argv);
        if (const auto front = frontNamed(name)) return front(arguments);
        const auto options = optionsOf(arguments);
        return options ? run(*options) : 0;
    });
}
