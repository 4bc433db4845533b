#include "solver/pattern_store.h"

#include <system_error>

namespace vantrel::solver {

std::shared_ptr<const StarPatterns> patternsOf(const sky::CompactCatalog& catalog,
                                               const std::filesystem::path& cacheFolder,
                                               const std::function<void(const std::string&)>& tell) {
    std::error_code failed;
    for (const auto& folder : {catalog.folder(), cacheFolder}) {
        const auto file = folder / kPatternFileName;
        if (folder.empty() || !std::filesystem::exists(file, failed)) continue;
        try {
            return StarPatterns::open(file, catalog.checksum());
        } catch (const PatternError& e) {
            tell(e.what());
        }
    }
    tell("making the star patterns for searches without a position");
    auto patterns = StarPatterns::build(catalog, catalog.checksum());
    if (cacheFolder.empty()) return patterns;
    std::filesystem::create_directories(cacheFolder, failed);
    try {
        patterns->save(cacheFolder / kPatternFileName);
    } catch (const PatternError& e) {
        tell(e.what());
    }
    return patterns;
}

}  // namespace vantrel::solver
