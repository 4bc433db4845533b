#include "solver/catalog_choice.h"

#include <map>
#include <string>

#include "catalogs/deep_catalog.h"
#include "catalogs/distributions.h"
#include "sky/compact_catalog.h"

namespace vantrel::solver {

namespace {

std::string catalogName(int number) {
    static const std::map<int, std::string> names = {{0, "GSC-1.1"}, {1, "USNO-SA2.0"}, {3, "GSC-ACT"},
                                                     {4, "Tycho-2"}, {5, "USNO-A2.0"},  {6, "UCAC2"},
                                                     {7, "USNO-B"},  {8, "USNO-B-Net"}, {9, "NOMAD-Net"}};
    const auto found = names.find(number);
    return found == names.end() ? "number " + std::to_string(number) : found->second;
}

catalogs::FoundCatalog openDistribution(const catalogs::CatalogFolder& folder, int catalogNumber) {
    switch (catalogNumber) {
        case 0:
        case 3:
            return catalogs::openGuideStars(folder);
        case 1:
        case 5:
            return catalogs::openUsnoA(folder);
        case 4:
            return catalogs::openTycho2(folder);
        case 6:
            return catalogs::openUcac2(folder);
        case 7:
            return catalogs::openUsnoB(folder);
        default:
            return nullptr;
    }
}

catalogs::FoundCatalog openCompact(const std::filesystem::path& file) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) return nullptr;
    return std::make_shared<const sky::CompactCatalog>(file);
}

}  // namespace

std::shared_ptr<const sky::StarCatalog> openCatalog(const std::filesystem::path& path, int catalogNumber) {
    if (path.empty()) return sky::CompactCatalog::openBuiltIn();
    if (auto file = openCompact(path)) return file;
    const catalogs::CatalogFolder folder(path);
    if (auto own = openDistribution(folder, catalogNumber)) return own;
    for (const char* name : {catalogs::kDeepFileName, sky::kTychoFileName})
        if (auto compact = openCompact(path / name)) return compact;
    if (auto ucac4 = catalogs::openUcac4(folder)) return ucac4;
    if (auto cells = catalogs::openCellDatabase(folder)) return cells;
    throw sky::CatalogError("no star catalogue " + catalogName(catalogNumber) + " that can be read is in " +
                            path.string());
}

std::shared_ptr<const sky::StarCatalog> openNetworkCatalog(int catalogNumber,
                                                           const catalogs::NetworkAccess& network) {
    if (catalogNumber == 8)
        return std::make_shared<const catalogs::VizierCatalog>(catalogs::usnoBSource(), network);
    if (catalogNumber == 9)
        return std::make_shared<const catalogs::VizierCatalog>(catalogs::nomadSource(), network);
    return nullptr;
}

}  // namespace vantrel::solver
