// Answers as the program of this name does that INDI's camera simulators ask for stars:
//
//   gsc -c RA DEC -r ARCMIN -m BRIGHTEST FAINTEST -n COUNT     (degrees of J2000, arc-minutes, magnitudes)
//
// prints a line of twelve fields a star: id, right ascension, declination, error, magnitude, error, band,
// class, plate, multiple, distance, direction. Position and magnitude are read by the simulators; the stars
// are the built-in catalogue's.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <string>
#include <vector>

#include "observatory/sky/tycho_catalog.h"

namespace {

using namespace vantrel::observatory;

/// The numbers that follow each option; a negative one is a number, too.
std::map<std::string, std::vector<double>> readArguments(int argc, char** argv) {
    std::map<std::string, std::vector<double>> given;
    std::string option;
    for (int i = 1; i < argc; ++i) {
        char* end = nullptr;
        const double value = std::strtod(argv[i], &end);
        if (end != argv[i] && *end == '\0')
            given[option].push_back(value);
        else
            option = argv[i];
    }
    return given;
}

}  // namespace

int main(int argc, char** argv) {
    auto given = readArguments(argc, argv);
    if (given["-c"].size() != 2 || given["-r"].size() != 1 || given["-m"].size() != 2) {
        std::fputs("usage: gsc -c RA DEC -r ARCMIN -m BRIGHTEST FAINTEST -n COUNT\n", stderr);
        return 2;
    }
    try {
        const auto stars = TychoCatalog::openBuiltIn()->cone(
            {.raDeg = given["-c"][0],
             .decDeg = given["-c"][1],
             .radiusDeg = given["-r"][0] / 60,
             .epochYear = 2026.9,
             .brightestMagnitude = given["-m"][0],
             .faintestMagnitude = given["-m"][1],
             .maxStars = given["-n"].empty() ? 0 : static_cast<std::size_t>(given["-n"][0]),
             .brightestFirst = true});
        for (std::size_t i = 0; i < stars.size(); ++i)
            std::printf("%05zu %10.6f %+10.6f 0.2 %5.2f 0.20 0 0 +001 F 0.0 0\n", i % 100000, stars[i].raDeg,
                        stars[i].decDeg, stars[i].magnitude);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "gsc: %s\n", error.what());
        return 1;
    }
    return 0;
}
