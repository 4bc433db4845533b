// What the solver makes of stars that are nowhere in the sky: whether it ever solves them, and how long it
// takes to say no.
//
//   solver-chance [COUNT] [SEED]
//
// COUNT lists of stars strewn at random (10000 unless told otherwise) are shared among searches around a
// position, over the whole sky, and over the whole sky without a scale; of 5 to 2000 stars in fields 0.3 to
// 30 degrees wide. Some are strewn evenly, some in clusters, some come in pairs, as a jolted mount doubles
// them. Prints a table of CPU times, and every list that was solved. All cores work on it, so the times are
// those of a busy machine.

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/user_machine.h"
#include "sky/compact_catalog.h"
#include "solver/image_solving.h"
#include "solver/pattern_store.h"
#include "solver/wide_search.h"
#include "support/star_field.h"

namespace {

using namespace vantrel;
using namespace vantrel::sky;
using namespace vantrel::solver;

constexpr double kWidth = 1024;
constexpr double kHeight = 768;

class Dice {
  public:
    explicit Dice(unsigned seed) : random(seed) {}
    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    }
    double anySize(double low, double high) { return std::exp(between(std::log(low), std::log(high))); }
    double normal() { return std::normal_distribution<double>()(random); }
    std::mt19937 random;
};

enum class Strewn { kEvenly, kInClusters, kInPairs };

std::vector<ImageStar> starsByChance(Dice& dice, std::size_t count, Strewn how) {
    std::vector<ImageStar> stars;
    PlanePoint cluster;
    while (stars.size() < count) {
        ImageStar star{dice.between(0, kWidth - 1), dice.between(0, kHeight - 1),
                       1e6 / (static_cast<double>(stars.size()) + 1.0), 0.2};
        if (how == Strewn::kInClusters && stars.size() % 12 != 0) {
            star.x = std::clamp(cluster.x + 50 * dice.normal(), 0.0, kWidth - 1);
            star.y = std::clamp(cluster.y + 50 * dice.normal(), 0.0, kHeight - 1);
        }
        cluster = {star.x, star.y};
        stars.push_back(star);
        if (how == Strewn::kInPairs && star.x + 9 < kWidth) {
            star.x += 8 + 0.3 * dice.normal();
            star.y += 0.3 * dice.normal();
            stars.push_back(star);
        }
    }
    return stars;
}

enum class Search { kNearby, kWide, kWideAnyScale };

constexpr const char* kSearches[] = {"around a position", "whole sky", "whole sky, any scale"};

struct Sky {
    std::shared_ptr<const CompactCatalog> catalog;
    std::shared_ptr<const StarPatterns> patterns;
};

bool isSolved(const Sky& sky, const std::vector<ImageStar>& stars, double widthDeg, SkyPosition start,
              Search search) {
    const double scale = widthDeg * 3600 / kWidth;
    const PlateGeometry geometry{kWidth, kHeight, scale, scale, 1};
    switch (search) {
        case Search::kNearby: {
            const SearchArea area = searchArea(geometry, start, customaryOffset(geometry), stars.size());
            return solvePlate(geometry, stars, area, sky.catalog->cone(area.query(2020, 99)), {}).has_value();
        }
        case Search::kWide:
            return searchWide(geometry, stars, *sky.patterns, *sky.catalog, {}).has_value();
        case Search::kWideAnyScale:
            return searchWideAnyScale(geometry, stars, *sky.patterns, *sky.catalog, {}).has_value();
    }
    return false;
}

double cpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

struct Outcome {
    Search search{};
    std::size_t stars = 0;
    double widthDeg = 0;
    bool solved = false;
    double seconds = 0;
};

/// Searches that know less take longer, so they get fewer lists.
Search searchFor(unsigned number) {
    return number % 25 == 0 ? Search::kWideAnyScale : number % 25 < 9 ? Search::kWide : Search::kNearby;
}

Outcome outcomeOf(const Sky& sky, unsigned number, unsigned seed) {
    Dice dice(seed * 1'000'003 + number);
    Outcome outcome;
    outcome.search = searchFor(number);
    outcome.widthDeg = dice.anySize(0.3, 30);
    const auto stars = starsByChance(dice, static_cast<std::size_t>(dice.anySize(5, 2000)),
                                     static_cast<Strewn>(dice.random() % 3));
    outcome.stars = stars.size();
    const SkyPosition start = test::anywhere(dice.random);
    const double begin = cpuSeconds();
    outcome.solved = isSolved(sky, stars, outcome.widthDeg, start, outcome.search);
    outcome.seconds = cpuSeconds() - begin;
    return outcome;
}

std::vector<Outcome> outcomesOf(const Sky& sky, unsigned count, unsigned seed) {
    std::vector<Outcome> outcomes(count);
    std::atomic<unsigned> next = 0;
    std::vector<std::jthread> workers;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
        workers.emplace_back([&] {
            for (unsigned number = next++; number < count; number = next++)
                outcomes[number] = outcomeOf(sky, number, seed);
        });
    workers.clear();
    return outcomes;
}

void print(const std::vector<Outcome>& outcomes, Search search, double narrowest, double widest) {
    std::vector<double> seconds;
    int solved = 0;
    for (const Outcome& outcome : outcomes) {
        if (outcome.search != search || outcome.widthDeg < narrowest || outcome.widthDeg >= widest) continue;
        seconds.push_back(outcome.seconds);
        solved += outcome.solved;
    }
    if (seconds.empty()) return;
    std::sort(seconds.begin(), seconds.end());
    const auto at = [&](double share) {
        return seconds[static_cast<std::size_t>(share * static_cast<double>(seconds.size() - 1))];
    };
    std::printf("| %s | %g° to %g° | %zu | %d | %.3f | %.3f | %.3f |\n",
                kSearches[static_cast<std::size_t>(search)], narrowest, widest, seconds.size(), solved,
                at(0.5), at(0.95), seconds.back());
}

}  // namespace

int main(int argc, char** argv) {
    const auto number = [&](int at, unsigned otherwise) {
        return argc > at ? static_cast<unsigned>(std::atoi(argv[at])) : otherwise;
    };
    Sky sky{CompactCatalog::openBuiltIn(), nullptr};
    sky.patterns = patternsOf(*sky.catalog, platform::cacheFolder(platform::processEnvironment),
                              [](const std::string& line) { std::puts(line.c_str()); });
    const auto outcomes = outcomesOf(sky, number(1, 10'000), number(2, 1));
    std::puts("| search | field | lists | solved | median, s | 95 % | worst |");
    std::puts("|---|---|---|---|---|---|---|");
    for (const Search search : {Search::kNearby, Search::kWide}) {
        print(outcomes, search, 0.3, 1);
        print(outcomes, search, 1, 3);
        print(outcomes, search, 3, 10);
        print(outcomes, search, 10, 30);
    }
    print(outcomes, Search::kWideAnyScale, 0.3, 30);
    for (std::size_t i = 0; i < outcomes.size(); ++i)
        if (outcomes[i].solved)
            std::printf("list %zu was solved: %zu stars, %.2f degrees, %s\n", i, outcomes[i].stars,
                        outcomes[i].widthDeg, kSearches[static_cast<std::size_t>(outcomes[i].search)]);
    return 0;
}
