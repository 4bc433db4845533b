// Star databases of cells of sky, NAME_RRCC.1476 and NAME_RRCC.290: rings of declination, counted from the
// south pole, each cut into cells of right ascension. A file holds one cell, brightest stars first, and tells
// nowhere how many: one that is cut between two records just lacks its faintest.
#include <array>
#include <cmath>
#include <map>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalogs/catalog_file.h"
#include "catalogs/distributions.h"
#include "catalogs/sky_box.h"
#include "sky/cone.h"
#include "sky/vector3.h"

namespace vantrel::catalogs {

namespace {

using sky::ConeCollector;
using sky::ConeQuery;

constexpr std::size_t kHeaderBytes = 110;

/// How the sky is cut.
class Rings {
  public:
    /// Cells in the rings of the southern half, and the northern edges of all rings but the last of them.
    Rings(std::vector<int> southernCells, std::vector<double> southernEdges)
        : cells_(std::move(southernCells)) {
        cells_.insert(cells_.end(), cells_.rbegin(), cells_.rend());
        edges_.push_back(-90);
        edges_.insert(edges_.end(), southernEdges.begin(), southernEdges.end());
        edges_.push_back(0);
        for (auto edge = southernEdges.rbegin(); edge != southernEdges.rend(); ++edge)
            edges_.push_back(-*edge);
        edges_.push_back(90);
    }

    /// Calls visit(ring, cell), both from 1, for the cells that the circle may touch.
    template <typename Visit>
    void eachCell(const ConeQuery& query, Visit&& visit) const {
        constexpr double kEdge = 1e-4;  // degrees; positions are rounded
        for (std::size_t ring = 0; ring < cells_.size(); ++ring) {
            const double width = 360.0 / cells_[ring];
            for (int cell = 0; cell < cells_[ring]; ++cell) {
                const SkyBox box{cell * width, (cell + 1) * width, edges_[ring], edges_[ring + 1]};
                if (box.mayTouch(query.raDeg, query.decDeg, query.radiusDeg + kEdge))
                    visit(static_cast<int>(ring) + 1, cell + 1);
            }
        }
    }

  private:
    std::vector<int> cells_;
    std::vector<double> edges_;  ///< degrees, one more than rings
};

/// 290 cells of equal area: ring edges at sin Dec = 1 - (2k - 1)^2 / 289.
Rings ringsOf290() {
    std::vector<double> edges;
    for (int k = 1; k < 9; ++k)
        edges.push_back(-std::asin(1 - (2 * k - 1) * (2 * k - 1) / 289.0) / sky::kDegree);
    return {{1, 4, 8, 12, 16, 20, 24, 28, 32}, edges};
}

/// 1476 cells about as high as wide: rings of 90 / 17.5 degrees, but for the half as high caps.
Rings ringsOf1476() {
    std::vector<double> edges;
    edges.reserve(17);
    for (int k = 0; k < 17; ++k) edges.push_back(-90 + (k + 0.5) * 90 / 17.5);
    return {{1, 3, 9, 15, 21, 27, 33, 38, 43, 48, 52, 56, 60, 63, 65, 67, 68, 69}, edges};
}

class CellDatabase : public sky::StarCatalog {
  public:
    CellDatabase(const CatalogFolder& folder, std::string name, std::string ending)
        : folder_(folder),
          name_(std::move(name)),
          ending_(std::move(ending)),
          rings_(ending_ == ".290" ? ringsOf290() : ringsOf1476()) {}

    std::vector<sky::CatalogStar> cone(const ConeQuery& query) const override {
        if (!sky::isSearchable(query)) return {};
        ConeCollector stars(query);
        rings_.eachCell(query, [&](int ring, int cell) { search(ring, cell, query, stars); });
        return stars.take();
    }

    std::filesystem::path folder() const override { return folder_.path(); }

  private:
    void search(int ring, int cell, const ConeQuery& query, ConeCollector& stars) const {
        const auto twoDigits = [](int n) { return (n < 10 ? "0" : "") + std::to_string(n); };
        const std::string name = name_ + "_" + twoDigits(ring) + twoDigits(cell) + ending_;
        const auto path = folder_.file(name);
        if (!path)
            throw sky::CatalogError("the file " + name + " of the star catalogue is missing in " +
                                    folder_.path().string());
        const CatalogFile file(*path);
        const std::size_t size = recordBytes(file);
        if ((file.size() - kHeaderBytes) % size != 0) file.damaged("it ends within a star");
        readStars(file, size, query, stars);
    }

    static std::size_t recordBytes(const CatalogFile& file) {
        const auto size = static_cast<unsigned char>(file.text(0, kHeaderBytes).back());
        if (size != 5 && size != 6) file.damaged("its stars have a form that can't be read");
        return size;
    }

    /// Stars come in groups of one magnitude and of one upper byte of their declinations.
    static void readStars(const CatalogFile& file, std::size_t size, const ConeQuery& query,
                          ConeCollector& stars) {
        constexpr std::uint32_t kGroup = 0xFFFFFF;  // where the right ascension would stand
        constexpr double kRaStep = 360.0 / 0xFFFFFF;
        constexpr double kDecStep = 90.0 / 0x7FFFFF;
        constexpr int kGroupSteps = 65'536;
        const std::size_t blockBytes = kBytesAtATime / size * size;
        int decHigh = 0;
        double magnitude = 0;
        std::optional<bool> wanted;  // of the group
        for (std::uint64_t at = kHeaderBytes; at < file.size(); at += blockBytes) {
            const std::string block = file.text(at, std::min<std::uint64_t>(blockBytes, file.size() - at));
            for (std::size_t i = 0; i + size <= block.size(); i += size) {
                const auto byte = [&](std::size_t n) { return static_cast<unsigned char>(block[i + n]); };
                const std::uint32_t ra =
                    byte(0) | std::uint32_t{byte(1)} << 8U | std::uint32_t{byte(2)} << 16U;
                if (ra == kGroup) {
                    decHigh = byte(3) - 128;
                    magnitude = (byte(4) - 16) / 10.0;
                    wanted = stars.wants(magnitude) &&
                             decHigh * kGroupSteps * kDecStep <= query.decDeg + query.radiusDeg &&
                             (decHigh + 1) * kGroupSteps * kDecStep >= query.decDeg - query.radiusDeg;
                    continue;
                }
                if (!wanted) file.damaged("its first star has no magnitude");
                if (!*wanted) continue;
                const double dec = (decHigh * kGroupSteps + byte(4) * 256 + byte(3)) * kDecStep;
                stars.offer({ra * kRaStep, dec, magnitude}, 2000);  // no motions: any epoch
            }
        }
    }

    CatalogFolder folder_;
    std::string name_;
    std::string ending_;
    Rings rings_;
};

}  // namespace

FoundCatalog openCellDatabase(const CatalogFolder& folder) {
    std::map<std::pair<std::string, std::string>, std::uintmax_t> sizes;  // by name and ending
    for (const auto& [name, path] : folder.entries()) {
        const std::string ending = std::filesystem::path(name).extension().string();
        const auto mark = name.rfind('_');
        if ((ending != ".290" && ending != ".1476") || mark == std::string::npos ||
            name.size() != mark + 5 + ending.size())
            continue;
        std::error_code error;
        const auto size = std::filesystem::file_size(path, error);
        if (!error) sizes[{name.substr(0, mark), ending}] += size;
    }
    const auto largest = std::max_element(sizes.begin(), sizes.end(),
                                          [](const auto& a, const auto& b) { return a.second < b.second; });
    if (largest == sizes.end()) return nullptr;
    return std::make_shared<const CellDatabase>(folder, largest->first.first, largest->first.second);
}

}  // namespace vantrel::catalogs
