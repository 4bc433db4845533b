#include "observatory/solver/catalog_choice.h"

#include <map>
#include <string>

#include "observatory/sky/tycho_catalog.h"

namespace vantrel::observatory {

namespace {

std::string catalogName(int number) {
    static const std::map<int, std::string> names = {{0, "GSC-1.1"}, {1, "USNO-SA2.0"}, {3, "GSC-ACT"},
                                                     {4, "Tycho-2"}, {5, "USNO-A2.0"},  {6, "UCAC2"},
                                                     {7, "USNO-B"},  {8, "USNO-B-Net"}, {9, "NOMAD-Net"}};
    const auto found = names.find(number);
    return found == names.end() ? "number " + std::to_string(number) : found->second;
}

}  // namespace

std::shared_ptr<const StarCatalog> openCatalog(const std::filesystem::path& folder, int catalogNumber) {
    if (folder.empty()) return TychoCatalog::openBuiltIn();
    std::error_code ignored;
    for (const auto& file : {folder / kTychoFileName, folder}) {
        if (std::filesystem::is_regular_file(file, ignored))
            return std::make_shared<const TychoCatalog>(file);
    }
    throw CatalogError("no star catalogue " + catalogName(catalogNumber) + " that can be read is in " +
                       folder.string());
}

}  // namespace vantrel::observatory
