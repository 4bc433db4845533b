// Tables of stars as text: what the VizieR service gives to save, and comma- or tab-separated files of any
// other origin.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "sky/moving_star.h"

namespace vantrel::catalogs {

/// The names of the columns, compared without regard to case. Where one is empty the customary names are
/// tried: those of VizieR, Gaia's archive and plain ones.
struct TableColumns {
    std::string ra = {};   ///< degrees, ICRS or J2000
    std::string dec = {};  ///< degrees
    std::string magnitude = {};
    std::string motionRa = {};   ///< mas a year, with cos Dec
    std::string motionDec = {};  ///< mas a year
};

struct StarTable {
    std::vector<sky::MovingStar> stars;
    std::uint64_t incomplete = 0;  ///< rows without a position or a magnitude, which are left out
    std::string magnitude;         ///< the column that was read
    bool moves = false;            ///< has motions
};

/// Reads the table and carries its stars from the one epoch to the other (Julian years). Lines that begin
/// with "#" are comments, the first other line names the columns, and lines of units and dashes may follow.
/// Fields are parted by tabs, or else by semicolons or commas. Throws CatalogError that names file and line
/// when there is no such table, a column is missing, a row has more or fewer fields than there are names, or
/// something else than a number stands where one should.
StarTable readStarTable(const std::filesystem::path& file, const TableColumns& columns, double tableEpoch,
                        double epochYear);

}  // namespace vantrel::catalogs
