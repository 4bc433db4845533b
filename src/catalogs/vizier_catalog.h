// Star catalogues that stay at the VizieR service of the CDS, Strasbourg, and are asked over the network.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "catalogs/downloads.h"
#include "catalogs/page_cache.h"
#include "sky/moving_star.h"
#include "sky/star_catalog.h"

namespace vantrel::catalogs {

/// What stands in for a path where a catalogue has none.
inline constexpr const char* kInternetPath = "Internet";

/// How a program reaches the network. Without downloads it doesn't.
struct NetworkAccess {
    std::shared_ptr<Downloads> downloads;
    std::filesystem::path cache;  ///< folder for answers; empty keeps none
    KeepGoing keepGoing;
};

/// A table of the service.
struct VizierSource {
    std::string name;   ///< for the operator
    std::string table;  ///< "I/284/out"
    std::vector<std::string> columns;
    std::string limited;  ///< the column whose magnitudes a question limits and orders by
    std::vector<sky::MovingStar> (*stars)(std::string_view answer);
};

/// USNO-B1.0 and NOMAD.
const VizierSource& usnoBSource();
const VizierSource& nomadSource();

class VizierCatalog : public sky::StarCatalog {
  public:
    VizierCatalog(const VizierSource& source, NetworkAccess network);

    /// Asks for a somewhat larger, rounded circle, so that searches near one another are answered from the
    /// cache. Throws CatalogError when there is no answer or none that can be understood.
    std::vector<sky::CatalogStar> cone(const sky::ConeQuery& query) const override;

    std::filesystem::path folder() const override { return kInternetPath; }

    /// What is asked of the service for a query, without the server's name.
    static std::string question(const VizierSource& source, const sky::ConeQuery& query);

  private:
    std::vector<sky::MovingStar> ask(const std::string& question) const;

    VizierSource source_;
    NetworkAccess network_;
    PageCache cache_;
};

}  // namespace vantrel::catalogs
