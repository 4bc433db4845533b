// Reference stars by place in the sky.
//
// A StarCatalog answers cone searches. Angles are degrees; positions are ICRS (J2000 axes) at the epoch asked
// for; magnitudes are about Johnson V.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vantrel::sky {

struct CatalogStar {
    double raDeg = 0;   ///< 0 to 360
    double decDeg = 0;  ///< -90 to 90
    double magnitude = 0;
    float motionRaMas = 0;  ///< mas a year along the parallel (with cos Dec); 0 where it isn't known
    float motionDecMas = 0;
};

struct ConeQuery {
    double raDeg = 0;
    double decDeg = 0;
    double radiusDeg = 0;       ///< 180 is the whole sky
    double epochYear = 2000.0;  ///< Julian year that positions are wanted for
    double brightestMagnitude = -99;
    double faintestMagnitude = 99;
    std::size_t maxStars = 0;  ///< keep only this many of the brightest; 0 keeps all
    bool brightestFirst = false;
};

/// A catalogue that can't be found, read or understood.
class CatalogError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class StarCatalog {
  public:
    virtual ~StarCatalog() = default;

    /// All stars not farther than the radius from the centre and within the magnitude limits. Without
    /// brightestFirst their order has no meaning, but is the same every time.
    virtual std::vector<CatalogStar> cone(const ConeQuery& query) const = 0;

    /// The folder that the stars come from.
    virtual std::filesystem::path folder() const = 0;
};

/// Opens the star catalogue when it is first needed; throws CatalogError when there is none.
using CatalogSource = std::function<std::shared_ptr<const StarCatalog>()>;

}  // namespace vantrel::sky
