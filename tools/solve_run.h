// One image solved, as vantrel-solve and the command lines of other solvers ask for it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "exit_status.h"
#include "fits/fits_header.h"
#include "platform/clock.h"
#include "solver/image_solving.h"

namespace vantrel::tools {

struct SolveOptions {
    std::string file;
    std::optional<double> raHours;
    std::optional<double> dec;
    std::optional<double> scale;
    std::optional<double> heightDeg;  ///< of the field, where the scale isn't told
    std::optional<double> radius;
    std::optional<platform::Instant> date;
    std::string catalog;
    int catalogNumber = 4;
};

struct Outcome {
    solver::SolvedImage solved;
    std::size_t starsFound = 0;
    double epochYear = 0;   ///< for which the stars' own motions are allowed
    bool dated = false;     ///< it is told, not today's
    bool bottomUp = false;  ///< the file's first row is the image's lowest
};

/// Throws BadInput, or what the image and the catalogue throw. One line about whatever else is worth knowing
/// goes to standard error.
Outcome solve(const SolveOptions& options);

/// The solution as a FITS header, for the file as it is on the disk: the image's size, and world coordinates.
std::vector<fits::FitsCard> headerOf(const Outcome& outcome);

/// Writes a copy of the FITS file, which may be the file itself, with the solution in its header.
void writeSolved(const std::filesystem::path& source, const std::filesystem::path& target,
                 const Outcome& outcome);

/// Writes the picture as a PNG file, with what the solution tells drawn into it (see annotated_picture.h).
void writeAnnotated(const std::string& picture, const std::filesystem::path& target, const Outcome& outcome);

/// Writes a file that is a FITS header and no more. Throws BadInput.
void writeHeader(const std::filesystem::path& path, const std::vector<fits::FitsCard>& cards);

}  // namespace vantrel::tools
