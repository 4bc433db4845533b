// What all cone searches share: the circle, and the choice among the stars in it.
#pragma once

#include <vector>

#include "sky/moving_star.h"
#include "sky/star_catalog.h"

namespace vantrel::sky {

/// The angle in [0, 360).
double wrappedDeg(double deg);

/// Half the range of right ascension that a circle covers; 180 when it holds a pole. Degrees.
double raReachDeg(double decDeg, double radiusDeg);

/// False for queries that can't hold a star: no centre on the sky, no radius.
bool isSearchable(const ConeQuery& query);

/// Whether the direction lies in the query's circle; exact for the smallest circles.
class SkyCircle {
  public:
    explicit SkyCircle(const ConeQuery& query);
    bool holds(double raDeg, double decDeg) const;

  private:
    double raDeg_;
    double decDeg_;
    double decReachDeg_;  ///< a little more than the radius: no star beyond needs the formula
    double cosDec_;
    double quarterChordSquared_;  ///< a quarter of the squared chord that the radius spans
};

/// Takes the stars that a catalogue comes across, in any order, and keeps those that a query asks for. Memory
/// stays bounded when the query limits their number.
class ConeCollector {
  public:
    explicit ConeCollector(const ConeQuery& query);

    /// A star that stands at its place at the epoch (Julian year).
    void offer(const MovingStar& star, double epochYear);

    /// Whether a star of this magnitude can still be among the query's.
    bool wants(double magnitude) const;

    /// The stars, ordered and limited as the query asks. The collector is empty afterwards.
    std::vector<CatalogStar> take();

  private:
    void keepBrightest();

    ConeQuery query_;
    SkyCircle circle_;
    double faintest_;
    std::vector<CatalogStar> stars_;
};

/// Orders and limits the stars as the query asks.
void arrange(std::vector<CatalogStar>& stars, const ConeQuery& query);

}  // namespace vantrel::sky
