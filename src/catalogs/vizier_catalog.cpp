#include "catalogs/vizier_catalog.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>

#include "catalogs/visual_magnitude.h"
#include "catalogs/vizier_table.h"
#include "sky/cone.h"
#include "sky/vector3.h"

namespace vantrel::catalogs {

namespace {

using sky::CatalogError;
using sky::MovingStar;

/// The service, and a mirror that is asked when it can't be reached.
constexpr std::array kServers = {"https://vizier.cds.unistra.fr", "https://vizier.cfa.harvard.edu"};

constexpr double kFaintestAsked = 25;
constexpr std::size_t kMostRowsAsked = 200'000;
/// Rows asked for each star wanted: the rounded circle holds up to three times the circle's, and survey and V
/// magnitudes order stars differently.
constexpr std::size_t kRowsPerStar = 6;
constexpr std::size_t kFewestRows = 2'000;

/// A circle on a grid of centres and radii that holds the given one.
struct RoundedCircle {
    double raDeg = 0;
    double decDeg = 0;
    double radiusDeg = 0;
};

RoundedCircle roundedCircle(double raDeg, double decDeg, double radiusDeg) {
    const double radius = std::max(0.25, std::ceil(radiusDeg * 4) / 4);
    const double grid = radius / 4;
    const double dec = std::clamp(std::round(decDeg / grid) * grid, -90.0, 90.0);
    const double raGrid = std::min(90.0, grid / std::max(1e-3, std::cos(dec * sky::kDegree)));
    const double ra = sky::wrappedDeg(std::round(sky::wrappedDeg(raDeg) / raGrid) * raGrid);
    // Half a step in both directions is less than a step away, near the pole as well.
    return {ra, dec, std::min(180.0, radius + grid)};
}

/// %-escapes what has a meaning of its own in an address.
std::string escaped(const std::string& text) {
    std::ostringstream out;
    for (const char c : text) {
        if (c == ' ' || c == '+' || c == '<' || c == '>' || c == '&' || c == '%')
            out << '%' << std::uppercase << std::hex << static_cast<int>(c);
        else
            out << c;
    }
    return out.str();
}

std::string fixed(double value, int decimals, bool sign = false) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    if (sign) out << std::showpos;
    out << std::fixed << std::setprecision(decimals) << value;
    return out.str();
}

/// Reads a table with positions and motions in columns of these names; `magnitude` gives V from a row.
template <typename Magnitude>
std::vector<MovingStar> starsOf(const VizierTable& table, Magnitude&& magnitude) {
    const auto ra = table.column("RAJ2000");
    const auto dec = table.column("DEJ2000");
    if (!ra || !dec) throw CatalogError("the answer of the catalogue service has no positions");
    const auto motionRa = table.column("pmRA");
    const auto motionDec = table.column("pmDE");
    std::vector<MovingStar> stars;
    table.eachRow([&](const VizierTable::Row& row) {
        const auto raDeg = row.number(ra);
        const auto decDeg = row.number(dec);
        const std::optional<double> v = magnitude(row);
        if (!raDeg || !decDeg || !v) return;
        if (!(std::abs(*decDeg) <= 90) || !(*raDeg >= 0 && *raDeg <= 360))
            throw CatalogError("the answer of the catalogue service has a position that is none");
        stars.push_back(
            {*raDeg, *decDeg, *v, row.number(motionRa).value_or(0), row.number(motionDec).value_or(0)});
    });
    return stars;
}

std::vector<MovingStar> usnoBStars(std::string_view answer) {
    const VizierTable table(answer);
    const auto r1 = table.column("R1mag");
    const auto r2 = table.column("R2mag");
    const auto b1 = table.column("B1mag");
    const auto b2 = table.column("B2mag");
    const auto infrared = table.column("Imag");
    return starsOf(table, [&](const VizierTable::Row& row) {
        const auto either = [&](const auto& second, const auto& first) {
            const auto value = row.number(second);
            return value ? value : row.number(first);
        };
        const auto v = visualMagnitude(either(r2, r1), either(b2, b1));
        return v ? v : row.number(infrared);
    });
}

std::vector<MovingStar> nomadStars(std::string_view answer) {
    const VizierTable table(answer);
    const std::array bands = {table.column("Vmag"), table.column("Rmag"), table.column("Bmag"),
                              table.column("Jmag")};
    return starsOf(table, [&](const VizierTable::Row& row) {
        for (const auto& band : bands) {
            if (const auto value = row.number(band)) return value;
        }
        return std::optional<double>();
    });
}

}  // namespace

const VizierSource& usnoBSource() {
    static const VizierSource source{
        "USNO-B-Net",
        "I/284/out",
        {"RAJ2000", "DEJ2000", "pmRA", "pmDE", "B1mag", "R1mag", "B2mag", "R2mag", "Imag"},
        "R1mag",
        usnoBStars};
    return source;
}

const VizierSource& nomadSource() {
    static const VizierSource source{"NOMAD-Net",
                                     "I/297/out",
                                     {"RAJ2000", "DEJ2000", "pmRA", "pmDE", "Bmag", "Vmag", "Rmag", "Jmag"},
                                     "Rmag",
                                     nomadStars};
    return source;
}

VizierCatalog::VizierCatalog(const VizierSource& source, NetworkAccess network)
    : source_(source), network_(std::move(network)), cache_(network_.cache) {}

std::string VizierCatalog::question(const VizierSource& source, const sky::ConeQuery& query) {
    const double drift = sky::kFastestDegPerYear * std::abs(query.epochYear - 2000);
    const RoundedCircle circle = roundedCircle(query.raDeg, query.decDeg, query.radiusDeg + drift);
    const double faintest = std::min(kFaintestAsked, std::ceil(query.faintestMagnitude) + 1);
    const std::size_t rows = query.maxStars == 0
                                 ? kMostRowsAsked
                                 : std::clamp(std::min(query.maxStars, kMostRowsAsked) * kRowsPerStar,
                                              kFewestRows, kMostRowsAsked);
    std::string text = "/viz-bin/asu-tsv?-source=" + source.table +
                       "&-c=" + escaped(fixed(circle.raDeg, 6) + " " + fixed(circle.decDeg, 6, true)) +
                       "&-c.eq=J2000&-c.rd=" + fixed(circle.radiusDeg, 4) + "&-oc.form=dec";
    for (const std::string& column : source.columns) text += "&-out=" + column;
    return text + "&" + source.limited + "=" + escaped("<" + fixed(faintest, 0)) +
           "&-sort=" + source.limited + "&-out.max=" + std::to_string(rows);
}

std::vector<sky::CatalogStar> VizierCatalog::cone(const sky::ConeQuery& query) const {
    if (!sky::isSearchable(query)) return {};
    sky::ConeCollector stars(query);
    for (const MovingStar& star : ask(question(source_, query))) stars.offer(star, 2000);
    return stars.take();
}

std::vector<MovingStar> VizierCatalog::ask(const std::string& question) const {
    const std::string catalogue = "the star catalogue " + source_.name;
    if (const auto kept = cache_.find(question)) {
        try {
            return source_.stars(*kept);
        } catch (const CatalogError&) {
            // A damaged page is asked for again.
        }
    }
    if (network_.downloads == nullptr) throw CatalogError(catalogue + " needs the network");
    std::string problem;
    for (const char* server : kServers) {
        try {
            const std::string answer = network_.downloads->fetch(server + question, network_.keepGoing);
            auto stars = source_.stars(answer);
            cache_.keep(question, answer);
            return stars;
        } catch (const DownloadGivenUp&) {
            throw CatalogError(catalogue + " was not waited for");
        } catch (const DownloadError& error) {
            if (problem.empty()) problem = error.what();
        }
    }
    throw CatalogError(catalogue + " can't be reached over the network: " + problem);
}

}  // namespace vantrel::catalogs
