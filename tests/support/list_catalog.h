// A star catalogue that is a list.
#pragma once

#include <algorithm>
#include <vector>

#include "observatory/sky/star_catalog.h"
#include "observatory/sky/tangent_wcs.h"

namespace vantrel::test {

class ListCatalog : public observatory::StarCatalog {
  public:
    explicit ListCatalog(std::vector<observatory::CatalogStar> stars) : stars_(std::move(stars)) {}

    std::vector<observatory::CatalogStar> cone(const observatory::ConeQuery& query) const override {
        std::vector<observatory::CatalogStar> found;
        for (const auto& star : stars_) {
            if (star.magnitude <= query.faintestMagnitude &&
                observatory::separationDeg({star.raDeg, star.decDeg}, {query.raDeg, query.decDeg}) <=
                    query.radiusDeg)
                found.push_back(star);
        }
        std::stable_sort(found.begin(), found.end(),
                         [](const auto& a, const auto& b) { return a.magnitude < b.magnitude; });
        if (query.maxStars > 0 && found.size() > query.maxStars) found.resize(query.maxStars);
        return found;
    }
    std::filesystem::path folder() const override { return {}; }

  private:
    std::vector<observatory::CatalogStar> stars_;
};

}  // namespace vantrel::test
