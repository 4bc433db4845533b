// Writes the compact catalogue files that CompactCatalog reads.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "sky/moving_star.h"

namespace vantrel::sky {

/// How a file cuts the sky and counts magnitudes. The built-in catalogue's unless told otherwise.
struct CatalogLayout {
    std::uint32_t bands = 360;       ///< of declination, equally high; cells are about as wide as high
    double magnitudeZero = -2;       ///< of the brightest step
    double magnitudeStep = 0.0625;   ///< 255 of them: what is fainter counts as the last
    std::uint32_t mostInCell = 255;  ///< stars, at most 255; of more the brightest are kept

    double bandHeightDeg() const { return 180.0 / bands; }
};

class CatalogWriter {
  public:
    /// The file takes its place when it is finished; until then it is written beside it, with ".part" at
    /// its name's end. Stars stand at the epoch (Julian year).
    CatalogWriter(std::filesystem::path file, const CatalogLayout& layout, double epochYear);
    /// Removes what isn't finished.
    ~CatalogWriter();
    CatalogWriter(const CatalogWriter&) = delete;
    CatalogWriter& operator=(const CatalogWriter&) = delete;

    /// All stars of the next so many bands, from the south pole on. Throws CatalogError, as finish does, when
    /// they can't be written.
    void add(std::span<const MovingStar> stars, std::uint32_t bands);

    /// Writes what follows the last band's stars, and the header. Bands that weren't added are empty.
    void finish();

    std::uint64_t starCount() const { return starCount_; }
    /// Stars that their cells had no room for.
    std::uint64_t leftOut() const { return leftOut_; }

  private:
    struct Placed;
    Placed placed(const MovingStar& star, std::uint32_t firstBand, std::uint32_t endBand) const;
    void write(const Placed& star);
    void check() const;

    std::filesystem::path file_;
    std::filesystem::path part_;
    CatalogLayout layout_;
    double epochYear_;
    std::ofstream out_;
    std::vector<std::uint32_t> firstCells_;  ///< of each band
    std::vector<std::uint8_t> cellSizes_;
    std::string gaps_;     ///< from each moving star to the next; 255 stands for "255 more and go on"
    std::string motions_;  ///< mas a year
    std::uint32_t nextBand_ = 0;
    std::uint64_t starCount_ = 0;
    std::uint64_t leftOut_ = 0;
    std::int64_t lastMoving_ = -1;
    std::uint32_t moving_ = 0;
    bool finished_ = false;
};

}  // namespace vantrel::sky
