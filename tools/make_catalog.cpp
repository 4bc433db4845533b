// make-catalog: the compact star catalogue from a Tycho-2 distribution, and a check of one.
//
//   make-catalog FOLDER OUT.bin      reads the distribution in FOLDER
//   make-catalog --verify FILE.bin   compares the check sum

#include <cstdio>
#include <exception>
#include <string>

#include "sky/compact_catalog.h"
#include "sky/tycho_distribution.h"

namespace {

using namespace vantrel::sky;

constexpr double kEpoch = 2026.0;  // near the years of use, so that stars without a table entry hardly drift

int verify(const char* file) {
    const CompactCatalog catalog(file);
    const bool sound = catalog.verify();
    std::printf("%s: %u stars, check sum %s\n", file, catalog.starCount(), sound ? "right" : "WRONG");
    return sound ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: make-catalog FOLDER OUT.bin\n       make-catalog --verify FILE.bin\n", stderr);
        return 2;
    }
    try {
        if (std::string(argv[1]) == "--verify") return verify(argv[2]);
        const auto stars = readTychoDistribution(argv[1], kEpoch);
        writeCompactCatalog(argv[2], stars, kEpoch);
        return verify(argv[2]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make-catalog: %s\n", e.what());
        return 2;
    }
}
