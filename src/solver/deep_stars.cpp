#include "solver/deep_stars.h"

#include <system_error>
#include <utility>

#include "catalogs/deep_catalog.h"
#include "sky/compact_catalog.h"

namespace vantrel::solver {

namespace {

class DeepenedCatalog : public sky::StarCatalog {
  public:
    DeepenedCatalog(std::shared_ptr<const sky::StarCatalog> builtIn, const std::filesystem::path& deep)
        : builtIn_(std::move(builtIn)), deep_(deep) {}

    std::vector<sky::CatalogStar> cone(const sky::ConeQuery& query) const override {
        auto stars = builtIn_->cone(query);
        if (query.maxStars == 0 || stars.size() >= query.maxStars) return stars;
        auto deeper = deep_.cone(query);
        return deeper.size() > stars.size() ? deeper : stars;
    }

    std::filesystem::path folder() const override { return builtIn_->folder(); }

  private:
    std::shared_ptr<const sky::StarCatalog> builtIn_;
    sky::CompactCatalog deep_;
};

}  // namespace

std::shared_ptr<const sky::StarCatalog> withDeepStars(std::shared_ptr<const sky::StarCatalog> builtIn,
                                                      const std::filesystem::path& dataFolder) {
    std::error_code ignored;
    const auto file = dataFolder / catalogs::kDeepFileName;
    if (dataFolder.empty() || !std::filesystem::exists(file, ignored)) return builtIn;
    return std::make_shared<const DeepenedCatalog>(std::move(builtIn), file);
}

}  // namespace vantrel::solver
