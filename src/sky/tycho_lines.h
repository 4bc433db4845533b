// The lines of Tycho-2 (CDS catalogue I/259): one star each, in fixed columns.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "sky/moving_star.h"

namespace vantrel::sky {

/// A line of one of the catalogue's files, without its end. Failures name file and number.
struct TychoLine {
    std::string_view text;
    const std::filesystem::path& file;
    std::size_t number = 0;  ///< from 1

    /// Columns count from 1 as in the catalogue's description; the last one belongs to the field. Nothing
    /// when the field is blank. Throws CatalogError when no number stands there.
    std::optional<double> optionalNumber(std::size_t first, std::size_t last) const;
    /// Throws CatalogError when the field is blank, too.
    double requiredNumber(std::size_t first, std::size_t last) const;
    char flag(std::size_t column) const { return column <= text.size() ? text[column - 1] : ' '; }
};

struct TychoEntry {
    MovingStar star;           ///< ICRS at the epoch asked for
    bool photocentre = false;  ///< shares its mean position with another component
};

/// A line of the main files (catalog.dat, tyc2.dat), carried to the epoch. A star without a mean position
/// stands where it was observed. Nothing when the line has no magnitude.
std::optional<TychoEntry> tychoMainEntry(const TychoLine& line, double epochYear);

/// A line of suppl_1.dat, carried to the epoch.
std::optional<TychoEntry> tychoSupplementEntry(const TychoLine& line, double epochYear);

/// Makes one star with the sum of their light of the components that share a mean position.
std::vector<MovingStar> mergedPhotocentres(const std::vector<TychoEntry>& entries);

}  // namespace vantrel::sky
