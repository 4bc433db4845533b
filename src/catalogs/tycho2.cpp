// Tycho-2 as distributed: text with one star a line, and an index of where each region of the sky begins.
#include <string>
#include <utility>
#include <vector>

#include "catalogs/catalog_file.h"
#include "catalogs/distributions.h"
#include "catalogs/sky_box.h"
#include "sky/cone.h"
#include "sky/tycho_lines.h"

namespace vantrel::catalogs {

namespace {

using sky::TychoLine;

constexpr std::size_t kMainLength = 206;  // without the line's end
constexpr std::size_t kSupplementLength = 122;
constexpr std::size_t kIndexLength = 42;
/// What the index' boxes leave out: they hold the positions of the years 1991 to 2000 to two decimals.
constexpr double kBoxEdgeDeg = 0.1;
constexpr std::uint64_t kMostRegions = 20'000;
constexpr std::uint64_t kMostLinesARegion = 100'000;

/// A file of lines of one length.
class LineFile {
  public:
    LineFile(const std::filesystem::path& path, std::size_t length) : file_(path), length_(length) {
        if (file_.size() > length) {
            const std::string end = file_.text(length, 1);
            stride_ = length + (end == "\r" ? 2 : 1);
        } else {
            stride_ = length + 1;
        }
        // The last line may lack its end.
        lines_ = (file_.size() + stride_ - length) / stride_;
        if (lines_ * stride_ < file_.size()) file_.damaged(wrongLength());
    }

    std::uint64_t lines() const { return lines_; }
    const CatalogFile& file() const { return file_; }

    /// Calls take(line) for `count` lines from the line of this number, counted from 0.
    template <typename Take>
    void each(std::uint64_t first, std::uint64_t count, Take&& take) const {
        if (first > lines_ || count > lines_ - first) file_.damaged("it is cut short");
        const std::uint64_t offset = first * stride_;
        const std::uint64_t bytes = std::min(count * stride_, file_.size() - offset);
        const std::string text = file_.text(offset, bytes);
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto line = std::string_view(text).substr(i * stride_, stride_);
            if (line.size() < length_ || (line.size() == stride_ && line.back() != '\n'))
                file_.damaged(wrongLength());
            take(TychoLine{line.substr(0, length_), file_.path(), first + i + 1});
        }
    }

  private:
    std::string wrongLength() const {
        return "its lines aren't all of " + std::to_string(length_) + " characters";
    }

    CatalogFile file_;
    std::size_t length_;
    std::uint64_t stride_ = 0;
    std::uint64_t lines_ = 0;
};

struct IndexEntry {
    std::uint64_t firstMain = 0;  ///< from 0, over all files
    std::uint64_t firstSupplement = 0;
    SkyBox box;
};

/// The index: one more entry than there are regions, which tells where the last one ends.
std::vector<IndexEntry> readIndex(const std::filesystem::path& path) {
    const LineFile index(path, kIndexLength);
    if (index.lines() < 2 || index.lines() > kMostRegions) index.file().damaged("it is no index of Tycho-2");
    std::vector<IndexEntry> regions;
    index.each(0, index.lines(), [&](const TychoLine& line) {
        const auto record = [&](std::size_t first, std::size_t last) {
            const double number = line.requiredNumber(first, last);
            if (!(number >= 1 && number <= 9'999'999)) index.file().damaged("a record number can't be right");
            return static_cast<std::uint64_t>(number) - 1;
        };
        IndexEntry region{record(1, 7), record(9, 14), {}};
        region.box = {line.optionalNumber(16, 21).value_or(0), line.optionalNumber(23, 28).value_or(0),
                      line.optionalNumber(30, 35).value_or(0), line.optionalNumber(37, 42).value_or(0)};
        const bool rises = regions.empty() || (region.firstMain >= regions.back().firstMain &&
                                               region.firstSupplement >= regions.back().firstSupplement);
        if (!rises) index.file().damaged("its record numbers don't rise");
        regions.push_back(region);
    });
    return regions;
}

class Tycho2 : public sky::StarCatalog {
  public:
    Tycho2(std::filesystem::path folder, const std::filesystem::path& index,
           const std::vector<std::filesystem::path>& mainFiles,
           const std::optional<std::filesystem::path>& supplement)
        : folder_(std::move(folder)), regions_(readIndex(index)) {
        for (const auto& file : mainFiles)
            mainFiles_.push_back(std::make_unique<LineFile>(file, kMainLength));
        if (supplement) supplement_ = std::make_unique<LineFile>(*supplement, kSupplementLength);
    }

    std::vector<sky::CatalogStar> cone(const sky::ConeQuery& query) const override {
        if (!sky::isSearchable(query)) return {};
        const double radius =
            query.radiusDeg + kBoxEdgeDeg + sky::kFastestDegPerYear * std::abs(query.epochYear - 2000);
        sky::ConeCollector stars(query);
        for (std::size_t i = 0; i + 1 < regions_.size(); ++i) {
            if (regions_[i].box.mayTouch(query.raDeg, query.decDeg, radius))
                search(regions_[i], regions_[i + 1], query.epochYear, stars);
        }
        return stars.take();
    }

    std::filesystem::path folder() const override { return folder_; }

  private:
    void search(const IndexEntry& region, const IndexEntry& next, double epoch,
                sky::ConeCollector& stars) const {
        std::vector<sky::TychoEntry> entries;
        const auto take = [&](const std::optional<sky::TychoEntry>& entry) {
            if (entry) entries.push_back(*entry);
        };
        eachMainLine(region.firstMain, next.firstMain,
                     [&](const TychoLine& line) { take(sky::tychoMainEntry(line, epoch)); });
        if (supplement_)
            supplement_->each(region.firstSupplement,
                              boundedCount(region.firstSupplement, next.firstSupplement, *supplement_),
                              [&](const TychoLine& line) { take(sky::tychoSupplementEntry(line, epoch)); });
        for (const sky::MovingStar& star : sky::mergedPhotocentres(entries)) stars.offer(star, epoch);
    }

    /// The files follow one another; a region may begin in one and end in the next.
    template <typename Take>
    void eachMainLine(std::uint64_t first, std::uint64_t end, Take&& take) const {
        for (const auto& file : mainFiles_) {
            if (first >= end) return;
            if (first < file->lines()) {
                const std::uint64_t last = std::min(end, file->lines());
                file->each(first, boundedCount(first, last, *file), take);
                first = last;
            }
            first -= std::min(first, file->lines());
            end -= std::min(end, file->lines());
        }
        if (first < end) mainFiles_.back()->file().damaged("the index speaks of stars beyond its end");
    }

    static std::uint64_t boundedCount(std::uint64_t first, std::uint64_t end, const LineFile& file) {
        if (end - first > kMostLinesARegion)
            file.file().damaged("the index puts too many of its stars into one region");
        return end - first;
    }

    std::filesystem::path folder_;
    std::vector<IndexEntry> regions_;
    std::vector<std::unique_ptr<LineFile>> mainFiles_;
    std::unique_ptr<LineFile> supplement_;
};

std::vector<std::filesystem::path> mainFilesIn(const CatalogFolder& place) {
    for (const char* name : {"catalog.dat", "tyc2.dat"}) {
        if (auto file = place.file(name)) return {std::move(*file)};
    }
    std::vector<std::filesystem::path> parts;
    for (int part = 0; part < 20; ++part) {
        const auto file = place.file("tyc2.dat." + std::string(part < 10 ? "0" : "") + std::to_string(part));
        if (!file) break;
        parts.push_back(*file);
    }
    return parts;
}

}  // namespace

FoundCatalog openTycho2(const CatalogFolder& folder) {
    const auto data = folder.folder("data");
    std::vector<const CatalogFolder*> places{&folder};
    if (data) places.insert(places.begin(), &*data);
    const auto find = [&](const char* name) {
        for (const CatalogFolder* place : places) {
            if (auto file = place->file(name)) return file;
        }
        return std::optional<std::filesystem::path>();
    };
    for (const CatalogFolder* place : places) {
        const auto files = mainFilesIn(*place);
        if (files.empty()) continue;
        const auto index = find("index.dat");
        if (!index)
            throw sky::CatalogError("the file index.dat of Tycho-2 is missing in " + place->path().string());
        return std::make_shared<const Tycho2>(folder.path(), *index, files, find("suppl_1.dat"));
    }
    return nullptr;
}

}  // namespace vantrel::catalogs
