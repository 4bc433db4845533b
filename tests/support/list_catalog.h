// A star catalogue that is a list.
#pragma once

#include <algorithm>
#include <vector>

#include "sky/star_catalog.h"
#include "sky/tangent_wcs.h"

namespace vantrel::test {

class ListCatalog : public sky::StarCatalog {
  public:
    explicit ListCatalog(std::vector<sky::CatalogStar> stars) : stars_(std::move(stars)) {}

    std::vector<sky::CatalogStar> cone(const sky::ConeQuery& query) const override {
        std::vector<sky::CatalogStar> found;
        for (const auto& star : stars_) {
            if (star.magnitude <= query.faintestMagnitude &&
                sky::separationDeg({star.raDeg, star.decDeg}, {query.raDeg, query.decDeg}) <= query.radiusDeg)
                found.push_back(star);
        }
        std::stable_sort(found.begin(), found.end(),
                         [](const auto& a, const auto& b) { return a.magnitude < b.magnitude; });
        if (query.maxStars > 0 && found.size() > query.maxStars) found.resize(query.maxStars);
        return found;
    }
    std::filesystem::path folder() const override { return {}; }

  private:
    std::vector<sky::CatalogStar> stars_;
};

}  // namespace vantrel::test
