// Star catalogues in one compact file: the built-in Tycho-2 (Høg et al. 2000, A&A 355, L27), and the deeper
// ones that CatalogWriter makes.
//
// The file holds stars in small cells of sky: bands of declination, each cut into cells about as wide as the
// band is high, stars of a cell brightest first. Positions stand at one epoch, to a 4096th of a cell; stars
// that move 50 mas a year or more have their proper motion in a table. The built-in file has 2.55 million
// stars in bands of half a degree, to 0.13". The file is mapped, not loaded.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/mapped_file.h"
#include "sky/star_catalog.h"

namespace vantrel::sky {

/// What a compact file begins with, and how long its header is.
inline constexpr std::string_view kCompactMagic = "TYC2CMP1";
inline constexpr std::size_t kCompactHeaderBytes = 64;

inline constexpr const char* kTychoFileName = "tycho2_compact.bin";

class CompactCatalog : public StarCatalog {
  public:
    /// Opens the compact file. Checks header, sizes and tables, but not the check sum (see verify). Throws
    /// CatalogError with one line that says what is wrong.
    explicit CompactCatalog(const std::filesystem::path& file);

    /// The catalogue that comes with the program: looked for in ../share/vantrel beside the program's folder,
    /// in /usr/share/vantrel, and in the source tree. Throws CatalogError when it is in none of them.
    static std::shared_ptr<const CompactCatalog> openBuiltIn();

    std::vector<CatalogStar> cone(const ConeQuery& query) const override;
    std::filesystem::path folder() const override { return path_.parent_path(); }

    std::uint32_t starCount() const { return starCount_; }
    /// Julian year that the file's positions stand for.
    double epochYear() const { return epochYear_; }
    /// The height of a cell.
    double cellDeg() const { return bandHeightDeg_; }
    /// Of the file's contents, as the file tells it: what is made of the catalogue is known by it.
    std::uint32_t checksum() const { return checksum_; }

    /// Reads the whole file and compares its check sum: true when the file is as it was written.
    bool verify() const;

  private:
    struct Band {
        std::uint32_t cells = 0;
        std::uint32_t firstCell = 0;
        std::uint32_t firstStar = 0;
    };

    /// What lies before some of the gaps, so that not all of them need to be gone through.
    struct GapBlock {
        std::uint32_t steps = 0;   ///< sum of the gaps
        std::uint32_t moving = 0;  ///< stars in the motion table
    };

    void readHeader();
    void readTables();
    template <typename Visit>
    void visitCells(const ConeQuery& query, Visit&& visit) const;
    int faintestStep(const ConeQuery& query) const;
    int faintestStepFor(const ConeQuery& query, std::size_t wanted, int limit) const;
    void collect(const ConeQuery& query, int faintest, std::vector<CatalogStar>& stars) const;
    std::span<const unsigned char> gapsOf(std::size_t block) const;
    /// The star's place in the motion table, if it is there.
    std::optional<std::uint32_t> motionOf(std::uint32_t star) const;
    CatalogStar star(std::uint32_t index, std::uint32_t band, std::uint32_t cell, double epoch) const;

    std::filesystem::path path_;
    platform::MappedFile file_;
    std::uint32_t starCount_ = 0;
    std::uint32_t cellCount_ = 0;
    std::uint32_t bandCount_ = 0;
    std::uint32_t motionCount_ = 0;
    std::uint32_t gapBytes_ = 0;
    std::uint32_t checksum_ = 0;
    double bandHeightDeg_ = 0;
    double epochYear_ = 0;
    double magnitudeZero_ = 0;
    double magnitudeStep_ = 0;
    const unsigned char* cellSizes_ = nullptr;
    const unsigned char* records_ = nullptr;
    /// From each star of the motion table to the next, the first from the place before all stars.
    const unsigned char* gaps_ = nullptr;
    const unsigned char* motions_ = nullptr;
    std::vector<Band> bands_;
    std::vector<GapBlock> gapBlocks_;
};

/// CRC-32 as in ISO 3309 (polynomial 0xEDB88320), which guards the compact file.
std::uint32_t crc32(std::span<const std::byte> bytes);

}  // namespace vantrel::sky
