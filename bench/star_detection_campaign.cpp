// How well the star detection does against known stars, as two tables: ordinary frames of all sizes, and
// frames with a sensor's defects, tracks, trails and stars far out of focus.
//
// star_detection_campaign [frames] [seed] [--list | --only NUMBER | --strange [ROW]]
// --list also shows each frame that missed a bound, --only looks at one frame: each depends on the seed and
// its number alone. --strange leaves the first table out, and of the second one all rows whose names don't
// have these letters in them.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <utility>

#include "correction/stars/brightest_star.h"
#include "correction/stars/stripe_search.h"
#include "support/star_frames.h"

namespace {

using vantrel::correction::BrightestStar;
using vantrel::correction::BrightestStar3;
using vantrel::test::FrameDefect;
using vantrel::test::FrameDisc;
using vantrel::test::FramePainter;
using vantrel::test::FrameRecipe;
using vantrel::test::FrameStar;
using vantrel::test::FrameTrail;

/// The same image in floats, without a value ("not a number") in these rectangles.
vantrel::platform::ImageArray withBlanks(const vantrel::platform::ImageArray& image,
                                         const std::vector<FrameDefect>& blanks) {
    const auto& counts = std::get<std::vector<std::uint16_t>>(image.pixels());
    std::vector<float> floats(counts.begin(), counts.end());
    for (const FrameDefect& blank : blanks)
        for (int y = std::max(0, blank.top); y < std::min(blank.bottom, static_cast<int>(image.height()));
             ++y)
            for (int x = std::max(0, blank.left); x < std::min(blank.right, static_cast<int>(image.width()));
                 ++x)
                floats[static_cast<std::size_t>(y) * image.width() + static_cast<std::size_t>(x)] = NAN;
    return {image.width(), image.height(), std::move(floats)};
}

constexpr double kFaint = 80;  // signal to noise below which size errors follow from noise

double between(std::mt19937_64& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}

double evenly(std::mt19937_64& random, double low, double high) {
    return std::exp(between(random, std::log(low), std::log(high)));
}

struct Campaign {
    std::size_t frames = 1000;
    std::uint64_t seed = 1;
    bool list = false;
    long only = -1;
    bool ordinary = true;
    const char* strangeRow = "";  // a part of its name

    bool wants(std::size_t number) const { return only < 0 || number == static_cast<std::size_t>(only); }
};

/// The first frame is the smallest and the last one the largest; most are small, as all scales come alike.
FrameRecipe blankFrame(std::size_t number, const Campaign& campaign, std::mt19937_64& random) {
    constexpr int kSmallest = 90, kWidest = 9576, kHighest = 6388;
    FrameRecipe recipe;
    recipe.width = static_cast<int>(std::lround(evenly(random, kSmallest, kWidest)));
    recipe.height =
        std::clamp(static_cast<int>(recipe.width * between(random, 0.6, 1.0)), kSmallest, kHighest);
    if (number == 0) recipe.width = recipe.height = kSmallest;
    if (number + 1 == campaign.frames) {
        recipe.width = kWidest;
        recipe.height = kHighest;
    }
    recipe.sky = evenly(random, 50, 5000);
    recipe.readNoise = between(random, 3, 15);
    return recipe;
}

void addGradient(FrameRecipe& recipe, std::mt19937_64& random) {
    recipe.gradientX = between(random, -1, 1) * recipe.sky;
    recipe.gradientY = between(random, -0.9, 0.9) * recipe.sky;
}

void addWrongPixels(FrameRecipe& recipe, std::mt19937_64& random) {
    recipe.wrongPixels = evenly(random, 1e-5, 3e-4);
}

void addNebula(FrameRecipe& recipe, std::mt19937_64& random) {
    const double narrowest = std::max(60.0, 12 * recipe.stars.front().width);
    recipe.nebula = {between(random, 0, recipe.width), between(random, 0, recipe.height),
                     between(random, narrowest, std::max(narrowest, 0.5 * recipe.width)),
                     evenly(random, 20, 2000)};
}

void addSecondStar(FrameRecipe& recipe, std::mt19937_64& random) {
    const FrameStar& star = recipe.stars.front();
    for (int attempt = 0; attempt < 100; ++attempt) {
        FrameStar other = star;
        other.x = between(random, 0, recipe.width);
        other.y = between(random, 0, recipe.height);
        other.peak *= between(random, 0.3, 0.9);
        if (std::hypot(other.x - star.x, other.y - star.y) < 6 * star.width) continue;
        recipe.stars.push_back(other);
        return;
    }
}

struct Kind {
    const char* name;
    bool gradient, wrongPixels, nebula, secondStar;
};

constexpr Kind kKinds[] = {
    {"plain", false, false, false, false},     {"gradient", true, false, false, false},
    {"hot pixels", false, true, false, false}, {"nebula", false, false, true, false},
    {"two stars", false, false, false, true},  {"all of these", true, true, true, true},
};

FrameRecipe frameOf(const Kind& kind, std::size_t number, const Campaign& campaign, std::mt19937_64& random) {
    FrameRecipe recipe = blankFrame(number, campaign, random);
    FrameStar star;
    star.x = between(random, 0, recipe.width - 1);
    star.y = between(random, 0, recipe.height - 1);
    star.width = between(random, 1.5, 8);
    star.peak = evenly(random, 4 * recipe.noise(), 5 * 65535.0);
    recipe.stars = {star};
    if (kind.gradient) addGradient(recipe, random);
    if (kind.wrongPixels) addWrongPixels(recipe, random);
    if (kind.nebula) addNebula(recipe, random);
    if (kind.secondStar) addSecondStar(recipe, random);
    return recipe;
}

double skyAt(const FrameRecipe& recipe, const FrameStar& star) {
    const double away =
        std::hypot(star.x - recipe.nebula.x, star.y - recipe.nebula.y) / recipe.nebula.sigma();
    return recipe.sky + recipe.gradientX * (star.x / recipe.width - 0.5) +
           recipe.gradientY * (star.y / recipe.height - 0.5) +
           recipe.nebula.peak * std::exp(-away * away / 2);
}

double noiseAt(const FrameRecipe& recipe, const FrameStar& star) {
    return std::sqrt(skyAt(recipe, star) + recipe.readNoise * recipe.readNoise);
}

/// Within the outermost stripes, or nearer to the edge than its light reaches.
bool nearEdge(const FrameRecipe& recipe, const FrameStar& star) {
    using namespace vantrel::correction;
    const int range = std::max(recipe.width, recipe.height) - 1;
    const int k = std::max(1, range / 100);
    const int size = stripeSize(recipe.width / k, recipe.height / k);
    const auto within = [&](double position, int pixels) {
        const StripeGrid grid = centredGrid(pixels / k, size);
        const double first = std::max((grid.offset + grid.size) * k - 0.5, 2.5 * star.width);
        const double last =
            std::min((grid.offset + (grid.count - 1) * grid.size) * k - 0.5, pixels - 1 - 2.5 * star.width);
        return position < first || position >= last;
    };
    return within(star.x, recipe.width) || within(star.y, recipe.height);
}

struct Tally {
    int frames = 0, atEdge = 0, faint = 0, missed = 0, other = 0;
    int farOff = 0, wrongSize = 0;
    std::vector<double> errors, sizes;
};

double ranked(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

/// What became of one frame.
struct Verdict {
    const char* what = "good";
    int Tally::*count = nullptr;
    double error = 0, size = 0;
    bool found = false;
};

struct Judged {
    const FrameRecipe& recipe;
    const BrightestStar& result;
    const FrameStar& star = recipe.stars.front();
    bool saturated = star.peak + skyAt(recipe, star) > 65'000;
    double signal = star.peak * star.sigma() * 1.772 / noiseAt(recipe, star);

    Verdict verdict() const {
        if (result.noStar) {
            if (nearEdge(recipe, star) && result.edgeOrWeak) return {"edge", &Tally::atEdge};
            if (star.peak < 9 * noiseAt(recipe, star)) return {"faint", &Tally::faint};
            return {"missed", &Tally::missed};
        }
        Verdict verdict;
        verdict.error = std::hypot(result.x - star.x, result.y - star.y);
        if (verdict.error > 3) return {"other star", &Tally::other};
        verdict.found = true;
        const double truth = vantrel::test::trueHalfFluxDiameter(star, skyAt(recipe, star));
        verdict.size = std::abs(result.hfd / truth - 1);
        // Noise alone scatters the width of a gaussian by 1 / signal (Cramér-Rao).
        if (verdict.error > (saturated ? 1.0 : 0.5)) {
            verdict.what = "far off";
            verdict.count = &Tally::farOff;
        } else if (verdict.size > std::max(0.05, 4 / signal)) {
            verdict.what = "wrong size";
            verdict.count = &Tally::wrongSize;
        }
        return verdict;
    }

    void describe(std::size_t number, const Verdict& verdict) const {
        std::printf("  %s: frame %zu %dx%d star %.2f %.2f width %.2f peak %.0f (%.1f noise, S/N %.0f)\n",
                    verdict.what, number, recipe.width, recipe.height, star.x, star.y, star.width, star.peak,
                    star.peak / noiseAt(recipe, star), signal);
        std::printf("      nebula %.0f %.0f width %.0f peak %.0f", recipe.nebula.x, recipe.nebula.y,
                    recipe.nebula.width, recipe.nebula.peak);
        if (recipe.stars.size() > 1)
            std::printf("; second star %.2f %.2f peak %.0f", recipe.stars[1].x, recipe.stars[1].y,
                        recipe.stars[1].peak);
        std::printf("; found %.2f %.2f hfd %.3f (%.3f off) %s\n", result.x, result.y, result.hfd,
                    verdict.size, result.log.empty() ? "" : result.log.back().c_str());
    }
};

void add(Tally& tally, const Verdict& verdict) {
    ++tally.frames;
    if (verdict.count) ++(tally.*verdict.count);
    if (!verdict.found) return;
    tally.errors.push_back(verdict.error);
    tally.sizes.push_back(verdict.size);
}

void printHeading() {
    std::puts(
        "                     |       | position error, px | HFD error, %          | not found           | "
        "other\n"
        "                     |       |                    |                beyond |      peak <         | "
        "star\n"
        "              frames | found | median worst  far  | median  worst  bounds | edge 9 noise missed | "
        "taken\n"
        "---------------------+-------+--------------------+-----------------------+---------------------+-"
        "-----");
}

void print(const char* name, const Tally& t) {
    std::printf("%-14s %5d | %5zu | %6.3f %5.3f %4d  | %6.2f %6.2f %7d | %4d %7d %6d | %5d\n", name, t.frames,
                t.errors.size(), ranked(t.errors, 0.5), ranked(t.errors, 1), t.farOff,
                100 * ranked(t.sizes, 0.5), 100 * ranked(t.sizes, 1), t.wrongSize, t.atEdge, t.faint,
                t.missed, t.other);
}

/// Every second one has hot pixels and every third a gradient.
void searchBlankFrames(const Campaign& campaign, FramePainter& painter) {
    int noStar = 0, weak = 0, otherFailure = 0, falseStars = 0;
    for (std::size_t i = 0; i < campaign.frames; ++i) {
        painter.startAt(campaign.seed << 32 | i);
        FrameRecipe recipe = blankFrame(i, campaign, painter.random());
        if (i % 2 == 1) addWrongPixels(recipe, painter.random());
        if (i % 3 == 2) addGradient(recipe, painter.random());
        const BrightestStar found = BrightestStar3(painter.paint(recipe));
        ++(!found.noStar                                          ? falseStars
           : found.failure == BrightestStar::Failure::kNoStar     ? noStar
           : found.failure == BrightestStar::Failure::kEdgeOrWeak ? weak
                                                                  : otherFailure);
        if (!found.noStar && campaign.list)
            std::printf("  false star: blank frame %zu %dx%d wrong pixels %.1e at %.1f %.1f\n", i,
                        recipe.width, recipe.height, recipe.wrongPixels, found.x, found.y);
    }
    std::printf(
        "%zu blank frames, seed %llu: %d false stars; %d \"No star found\", %d \"too weak\", %d "
        "otherwise\n\n",
        campaign.frames, static_cast<unsigned long long>(campaign.seed), falseStars, noStar, weak,
        otherFailure);
}

void searchStars(const Campaign& campaign, FramePainter& painter) {
    constexpr const char* kClasses[] = {"S/N below 80", "normal", "saturated"};
    Tally kinds[std::size(kKinds)], classes[std::size(kClasses)], all;
    for (std::size_t i = 0; i < campaign.frames; ++i) {
        if (!campaign.wants(i)) continue;
        painter.startAt((campaign.seed + 1'000'000) << 32 | i);
        const std::size_t kind = i % std::size(kKinds);
        const FrameRecipe recipe = frameOf(kKinds[kind], i, campaign, painter.random());
        const BrightestStar result = BrightestStar3(painter.paint(recipe));
        const Judged judged = {recipe, result};
        const Verdict verdict = judged.verdict();
        const std::size_t brightness = judged.saturated ? 2 : judged.signal < kFaint ? 0 : 1;
        for (Tally* tally : {&kinds[kind], &classes[brightness], &all}) add(*tally, verdict);
        const bool missed =
            verdict.count && verdict.count != &Tally::atEdge && verdict.count != &Tally::faint;
        if (campaign.only >= 0 || (campaign.list && missed)) judged.describe(i, verdict);
    }
    printHeading();
    for (std::size_t i = 0; i < std::size(kKinds); ++i) print(kKinds[i].name, kinds[i]);
    std::puts("");
    for (std::size_t i = 0; i < std::size(kClasses); ++i) print(kClasses[i], classes[i]);
    print("all", all);
    std::puts(
        "\nBounds: position 0.5 pixels (saturated 1), HFD 5 % or four deviations of what noise alone makes.");
}

/// A frame of another kind, and where its star is, if it has one.
struct StrangeFrame {
    FrameRecipe recipe;
    bool star = false;
    double x = 0, y = 0;
    std::vector<FrameDefect> blanks = {};  // where pixels have no value
};

/// Makes the frames of one row; `i` counts them.
using Random = std::mt19937_64;
struct StrangeRow {
    const char* name;
    int frames;
    double bound;  // of the star's distance from its place, in pixels
    StrangeFrame (*make)(Random& random, int i);
};

int whole(Random& random, int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

StrangeFrame emptySky(Random& /*random*/, int i) {
    constexpr int kSizes[][2] = {{640, 480}, {800, 600}, {1392, 1040}, {320, 240}};
    StrangeFrame frame;
    frame.recipe.width = kSizes[i % 4][0];
    frame.recipe.height = kSizes[i % 4][1];
    return frame;
}

/// In the inner two thirds.
FrameStar starOf(double flux, Random& random, const FrameRecipe& recipe) {
    FrameStar star;
    star.x = recipe.width * between(random, 0.17, 0.83);
    star.y = recipe.height * between(random, 0.17, 0.83);
    star.width = between(random, 2, 4);
    star.peak = flux * star.peak / star.flux();
    return star;
}

StrangeFrame skyWithStar(double flux, Random& random, int i) {
    StrangeFrame frame = emptySky(random, i);
    const FrameStar star = starOf(flux, random, frame.recipe);
    frame.recipe.stars = {star};
    frame.star = true;
    frame.x = star.x;
    frame.y = star.y;
    return frame;
}

FrameDefect columnsAt(int first, int count, double offset, const FrameRecipe& recipe) {
    return {first, 0, first + count, recipe.height, offset};
}

FrameDefect rowsAt(int first, int count, double offset, const FrameRecipe& recipe) {
    return {0, first, recipe.width, first + count, offset};
}

int anyColumn(Random& random, const FrameRecipe& recipe) { return whole(random, 0, recipe.width - 1); }
int anyRow(Random& random, const FrameRecipe& recipe) { return whole(random, 0, recipe.height - 1); }

/// From somewhere to one of its ends.
FrameDefect partOf(FrameDefect column, Random& random) {
    const int length = column.bottom - column.top;
    const int cut = whole(random, length / 5, length * 4 / 5);
    (random() % 2 ? column.top : column.bottom) = cut;
    return column;
}

/// Columns a few pixels from the star's middle, on either side.
FrameDefect columnsBeside(const StrangeFrame& frame, int count, double offset, Random& random) {
    const int away = whole(random, 1, 12);
    const int middle = static_cast<int>(std::lround(frame.x));
    return columnsAt(random() % 2 ? middle + away : middle - away - count, count, offset, frame.recipe);
}

void addTwentyColumns(StrangeFrame& frame, Random& random) {
    for (int i = 0; i < 20; ++i)
        frame.recipe.defects.push_back(columnsAt(anyColumn(random, frame.recipe), whole(random, 1, 3),
                                                 (i % 4 == 0 ? -0.1 : 1) * evenly(random, 50, 8000),
                                                 frame.recipe));
}

void addClusters(StrangeFrame& frame, Random& random) {
    for (int i = 0; i < 8; ++i) {
        const int x = anyColumn(random, frame.recipe), y = anyRow(random, frame.recipe);
        const int side = whole(random, 2, 3);
        frame.recipe.defects.push_back(
            {x, y, x + side, y + whole(random, 2, 3), evenly(random, 1000, 60'000)});
    }
}

/// Particles that went along the sensor's surface.
void addCosmicRays(StrangeFrame& frame, Random& random) {
    for (int i = 0; i < 8; ++i) {
        double x = anyColumn(random, frame.recipe), y = anyRow(random, frame.recipe);
        double direction = between(random, 0, 6.28);
        const double height = evenly(random, 500, 10'000);
        std::set<std::pair<int, int>> lit;
        for (int step = whole(random, 3, 40); step > 0; --step) {
            for (int wide = whole(random, 1, 2); wide > 0; --wide)
                lit.insert({static_cast<int>(x) + wide - 1, static_cast<int>(y)});
            direction += between(random, -0.2, 0.2);
            x += std::cos(direction);
            y += std::sin(direction);
        }
        for (const auto& [column, row] : lit)
            frame.recipe.defects.push_back(
                {column, row, column + 1, row + 1, height * between(random, 0.5, 1.5)});
    }
}

/// Right across the frame, or from somewhere in it outwards.
FrameTrail trackOf(Random& random, const FrameRecipe& recipe, bool across) {
    const double direction = between(random, 0, 3.1416);
    const double length = 3.0 * recipe.width;
    const double x = recipe.width * between(random, 0.15, 0.85),
                 y = recipe.height * between(random, 0.15, 0.85);
    const double dx = length * std::cos(direction), dy = length * std::sin(direction);
    FrameTrail track;
    track.x1 = across ? x - dx : x;
    track.y1 = across ? y - dy : y;
    track.x2 = x + dx;
    track.y2 = y + dy;
    track.width = between(random, 2, 5);
    track.peak = evenly(random, 500, 40'000);
    return track;
}

double distanceFrom(const FrameTrail& track, double x, double y) {
    const double length = std::hypot(track.x2 - track.x1, track.y2 - track.y1);
    return std::abs((x - track.x1) * (track.y2 - track.y1) - (y - track.y1) * (track.x2 - track.x1)) / length;
}

/// A star of 20,000 counts and a brighter track that leaves it alone.
StrangeFrame starAndTrack(Random& random, int i, bool across) {
    StrangeFrame frame = skyWithStar(20'000, random, i);
    const FrameStar& star = frame.recipe.stars.front();
    FrameTrail track;
    do {
        track = trackOf(random, frame.recipe, across);
    } while (distanceFrom(track, star.x, star.y) < 15);
    track.peak = star.peak * evenly(random, 1, 20);
    frame.recipe.trails = {track};
    return frame;
}

StrangeFrame disc(double radius, double height, Random& random, int i) {
    StrangeFrame frame = emptySky(random, i % 3);  // not the smallest
    FrameRecipe& recipe = frame.recipe;
    const double margin = std::max(1.3 * radius + 15, 0.1 * recipe.width);
    FrameDisc disc;
    disc.x = between(random, margin, recipe.width - margin);
    disc.y = between(random, margin, recipe.height - margin);
    disc.outer = radius;
    disc.inner = radius * between(random, 0.2, 0.5);
    disc.height = height;
    disc.blur = between(random, 1, 3);
    recipe.discs = {disc};
    frame.star = true;
    frame.x = disc.x;
    frame.y = disc.y;
    return frame;
}

/// From twice a pixel's noise to saturation.
template <int radius>
StrangeFrame brightDisc(Random& random, int i) {
    return disc(radius, evenly(random, 2 * FrameRecipe().noise(), 30'000), random, i);
}

template <int radius>
StrangeFrame faintDisc(Random& random, int i) {
    return disc(radius, between(random, 1.5, 4) * FrameRecipe().noise(), random, i);
}

void addFainterDiscs(StrangeFrame& frame, Random& random) {
    for (int i = 0; i < 6; ++i) {
        FrameDisc other = frame.recipe.discs.front();
        other.x = between(random, 0, frame.recipe.width);
        other.y = between(random, 0, frame.recipe.height);
        other.height *= between(random, 0.05, 0.4);
        if (std::hypot(other.x - frame.x, other.y - frame.y) > 2.5 * other.outer)
            frame.recipe.discs.push_back(other);
    }
}

template <int from, int to>
StrangeFrame trailedStar(Random& random, int i) {
    StrangeFrame frame = skyWithStar(1, random, i);
    const double length = between(random, from, to), direction = between(random, 0, 3.1416);
    const double dx = length / 2 * std::cos(direction), dy = length / 2 * std::sin(direction);
    frame.recipe.stars.clear();
    FrameTrail trail{frame.x - dx, frame.y - dy, frame.x + dx, frame.y + dy};
    trail.width = between(random, 2, 4);
    trail.peak = evenly(random, 15 * frame.recipe.noise(), 60'000);
    frame.recipe.trails = {trail};
    return frame;
}

const StrangeRow kStrangeRows[] = {
    {"no star: column +1000", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.defects = {columnsAt(anyColumn(random, frame.recipe), 1, 1000, frame.recipe)};
         return frame;
     }},
    {"no star: columns +3000", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.defects = {
             columnsAt(anyColumn(random, frame.recipe), whole(random, 2, 5), 3000, frame.recipe)};
         return frame;
     }},
    {"no star: faint columns", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         for (int n = 0; n < 5; ++n)
             frame.recipe.defects.push_back(columnsAt(anyColumn(random, frame.recipe), whole(random, 1, 4),
                                                      between(random, 0.5, 6) * frame.recipe.noise(),
                                                      frame.recipe));
         return frame;
     }},
    {"no star: part of columns", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.defects = {partOf(columnsAt(anyColumn(random, frame.recipe), whole(random, 1, 4),
                                                  evenly(random, 100, 10'000), frame.recipe),
                                        random)};
         return frame;
     }},
    {"no star: short columns", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         const int x = anyColumn(random, frame.recipe), y = anyRow(random, frame.recipe);
         frame.recipe.defects = {{x, y, x + whole(random, 1, 3), y + whole(random, 5, 150), 3000}};
         return frame;
     }},
    {"no star: dark columns", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.defects = {
             columnsAt(anyColumn(random, frame.recipe), whole(random, 1, 4), -800, frame.recipe)};
         return frame;
     }},
    {"no star: rows", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.defects = {rowsAt(anyRow(random, frame.recipe), whole(random, 1, 4),
                                        i % 3 == 0 ? -800 : evenly(random, 100, 10'000), frame.recipe)};
         return frame;
     }},
    {"no star: column and row", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.defects = {
             columnsAt(anyColumn(random, frame.recipe), whole(random, 1, 3), 1000, frame.recipe),
             rowsAt(anyRow(random, frame.recipe), whole(random, 1, 3), 1000, frame.recipe)};
         return frame;
     }},
    {"no star: twenty columns", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         addTwentyColumns(frame, random);
         return frame;
     }},
    {"no star: full wells", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         FrameDefect columns =
             columnsAt(anyColumn(random, frame.recipe), whole(random, 1, 5), 65'535, frame.recipe);
         columns.stuck = true;
         frame.recipe.defects = {columns};
         return frame;
     }},
    {"no star: clusters", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         addClusters(frame, random);
         return frame;
     }},
    {"no star: cosmic rays", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         addCosmicRays(frame, random);
         return frame;
     }},
    {"no star: track", 24, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.trails = {trackOf(random, frame.recipe, i % 2 == 0)};
         return frame;
     }},
    {"no star: nebula", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.nebula = {between(random, 0, frame.recipe.width),
                                between(random, 0, frame.recipe.height),
                                between(random, 60, 0.5 * frame.recipe.width), evenly(random, 20, 2000)};
         return frame;
     }},
    {"no star: vignetting", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i);
         frame.recipe.vignetting = between(random, 0.1, 0.7);
         frame.recipe.sky = evenly(random, 300, 20'000);
         return frame;
     }},
    {"no star: no noise", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = emptySky(random, i / 4);
         frame.recipe.noiseFree = true;
         if (i % 4 == 1) addGradient(frame.recipe, random);
         if (i % 4 == 2) frame.recipe.vignetting = 0.3;
         if (i % 4 == 3) frame.recipe.defects = {columnsAt(100, 2, 1000, frame.recipe)};
         return frame;
     }},
    {"beside column +1000", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         frame.recipe.defects = {columnsBeside(frame, 1, 1000, random)};
         return frame;
     }},
    {"3 columns +3000", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(100'000, random, i);
         frame.recipe.defects = {columnsBeside(frame, 3, 3000, random)};
         return frame;
     }},
    {"faint beside column", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(1, random, i);
         FrameStar& star = frame.recipe.stars.front();
         star.peak = between(random, 12, 20) * frame.recipe.noise();
         frame.recipe.defects = {columnsBeside(frame, 1, 1000, random)};
         return frame;
     }},
    {"column on the star", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         frame.recipe.defects = {columnsAt(static_cast<int>(frame.x) + whole(random, -1, 1), 1,
                                           i % 2 ? 1000 : -900, frame.recipe)};
         return frame;
     }},
    {"dead column on the star", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         frame.recipe.defects = {
             columnsAt(static_cast<int>(frame.x) + whole(random, -1, 1), 1, 0, frame.recipe)};
         frame.recipe.defects.front().stuck = true;
         return frame;
     }},
    {"part of columns", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         frame.recipe.defects = {partOf(columnsBeside(frame, whole(random, 1, 4), 3000, random), random)};
         return frame;
     }},
    {"column and row", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         frame.recipe.defects = {columnsBeside(frame, whole(random, 1, 3), 2000, random),
                                 rowsAt(static_cast<int>(frame.y) + whole(random, 2, 8), whole(random, 1, 3),
                                        2000, frame.recipe)};
         return frame;
     }},
    {"twenty columns", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         addTwentyColumns(frame, random);
         return frame;
     }},
    {"bleeding", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(3e6, random, i);
         const int x = static_cast<int>(std::lround(frame.x)), y = static_cast<int>(frame.y);
         const int up = whole(random, 10, 200), down = whole(random, 10, 200);
         frame.recipe.defects = {{x - 1, y - up, x + whole(random, 0, 2), y + down, 65'535, true}};
         return frame;
     }},
    {"clusters", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         addClusters(frame, random);
         return frame;
     }},
    {"cosmic rays", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         addCosmicRays(frame, random);
         return frame;
     }},
    {"track across", 24, 1, [](Random& random, int i) { return starAndTrack(random, i, true); }},
    {"track ends", 24, 1, [](Random& random, int i) { return starAndTrack(random, i, false); }},
    {"flashing track", 24, 1,
     [](Random& random, int i) {
         StrangeFrame frame = starAndTrack(random, i, true);
         frame.recipe.trails.front().dash = between(random, 20, 50);
         frame.recipe.trails.front().gap = between(random, 5, 40);
         return frame;
     }},
    {"two tracks, faint", 24, 1,
     [](Random& random, int i) {
         StrangeFrame frame = starAndTrack(random, i, true);
         frame.recipe.trails.push_back(starAndTrack(random, i, true).recipe.trails.front());
         FrameStar& star = frame.recipe.stars.front();
         if (distanceFrom(frame.recipe.trails.back(), star.x, star.y) < 15) frame.recipe.trails.pop_back();
         star.peak = 12 * frame.recipe.noise();
         for (FrameTrail& track : frame.recipe.trails)
             track.peak = between(random, 4, 12) * frame.recipe.noise();
         return frame;
     }},
    {"trail of 5 to 20", 16, 2, trailedStar<5, 20>},
    {"trail of 20 to 50", 16, 3, trailedStar<20, 50>},
    {"star of 1 to 1.5 pixels", 24, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(1, random, i);
         frame.recipe.stars.front().width = between(random, 1, 1.5);
         frame.recipe.stars.front().peak = evenly(random, 30 * frame.recipe.noise(), 60'000);
         return frame;
     }},
    {"pixels without value", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         const int x = static_cast<int>(frame.x), y = static_cast<int>(frame.y);
         if (i % 4 == 0) frame.blanks = {{0, 0, frame.recipe.width, frame.recipe.height / 8}};
         if (i % 4 == 1) frame.blanks = {{x, 0, x + 1, frame.recipe.height}};
         if (i % 4 == 2) frame.blanks = {{x + 5, y - 60, x + 90, y + 60}};
         for (int n = 0; n < 200; ++n) {
             const int left = anyColumn(random, frame.recipe), top = anyRow(random, frame.recipe);
             frame.blanks.push_back({left, top, left + 1, top + 1});
         }
         return frame;
     }},
    {"vignetting", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(20'000, random, i);
         frame.recipe.vignetting = between(random, 0.1, 0.7);
         return frame;
     }},
    {"no noise", 16, 1,
     [](Random& random, int i) {
         StrangeFrame frame = skyWithStar(2000, random, i);
         frame.recipe.noiseFree = true;
         if (i % 2 == 1) addGradient(frame.recipe, random);
         return frame;
     }},
    {"disc of radius 10", 24, 2, brightDisc<10>},
    {"disc of radius 15", 24, 2, brightDisc<15>},
    {"disc of radius 20", 24, 2, brightDisc<20>},
    {"disc of radius 25", 24, 2, brightDisc<25>},
    {"disc of radius 30", 24, 2, brightDisc<30>},
    {"disc of radius 40", 24, 2, brightDisc<40>},
    {"disc of radius 60", 24, 2, brightDisc<60>},
    {"disc of radius 80", 24, 2, brightDisc<80>},
    {"faint disc of 10", 24, 2, faintDisc<10>},
    {"faint disc of 20", 24, 2, faintDisc<20>},
    {"faint disc of 40", 24, 2, faintDisc<40>},
    {"faint disc of 80", 24, 2, faintDisc<80>},
    {"discs, gradient, column", 24, 2,
     [](Random& random, int i) {
         StrangeFrame frame = disc(evenly(random, 15, 80), evenly(random, 100, 5000), random, i);
         addFainterDiscs(frame, random);
         frame.recipe.gradientX = between(random, -500, 500);
         frame.recipe.vignetting = between(random, 0, 0.3);
         frame.recipe.wrongPixels = 1e-4;
         frame.recipe.defects = {
             columnsAt(anyColumn(random, frame.recipe), whole(random, 1, 4), 1000, frame.recipe)};
         return frame;
     }},
    {"disc and track", 24, 2,
     [](Random& random, int i) {
         StrangeFrame frame = disc(evenly(random, 15, 80), evenly(random, 100, 5000), random, i);
         FrameTrail track;
         do {
             track = trackOf(random, frame.recipe, i % 2 == 0);
         } while (distanceFrom(track, frame.x, frame.y) < frame.recipe.discs.front().outer + 20);
         frame.recipe.trails = {track};
         return frame;
     }},
};

void searchStrangeFrames(const Campaign& campaign, FramePainter& painter) {
    std::puts(
        "\nStrange frames            | frames | right | star      | no star | edge or | not        | error, "
        "px\n"
        "                          |        |       | elsewhere | found   | weak    | measurable | median "
        "worst\n"
        "--------------------------+--------+-------+-----------+---------+---------+------------+-----------"
        "--");
    int frames = 0, right = 0;
    for (const StrangeRow& row : kStrangeRows) {
        if (!std::strstr(row.name, campaign.strangeRow)) continue;
        int good = 0, elsewhere = 0, none = 0, weak = 0, otherwise = 0;
        std::vector<double> errors;
        for (int i = 0; i < row.frames; ++i) {
            if (!campaign.wants(static_cast<std::size_t>(i))) continue;
            painter.startAt(campaign.seed * 1'000'003 +
                            static_cast<std::uint64_t>(&row - kStrangeRows) * 1000 +
                            static_cast<std::uint64_t>(i));
            const StrangeFrame frame = row.make(painter.random(), i);
            auto image = painter.paint(frame.recipe);
            if (!frame.blanks.empty()) image = withBlanks(image, frame.blanks);
            const BrightestStar found = BrightestStar3(image);
            const double error = std::hypot(found.x - frame.x, found.y - frame.y);
            bool isRight = false;
            if (!found.noStar) {
                isRight = frame.star && error <= row.bound;
                if (isRight) errors.push_back(error);
                if (!isRight) ++elsewhere;
            } else {
                isRight = !frame.star && found.failure == BrightestStar::Failure::kNoStar;
                ++(found.failure == BrightestStar::Failure::kNoStar       ? none
                   : found.failure == BrightestStar::Failure::kEdgeOrWeak ? weak
                                                                          : otherwise);
            }
            good += isRight;
            if (!isRight && campaign.list)
                std::printf("  %s: frame %d %dx%d star %.1f %.1f, found %.1f %.1f hfd %.1f flux %d %s\n",
                            row.name, i, frame.recipe.width, frame.recipe.height, frame.x, frame.y, found.x,
                            found.y, found.hfd, found.flux,
                            found.log.empty() ? "" : found.log.back().c_str());
        }
        std::printf("%-25s | %6d | %5d | %9d | %7d | %7d | %10d | %6.3f %5.3f\n", row.name, row.frames, good,
                    elsewhere, none, weak, otherwise, ranked(errors, 0.5), ranked(errors, 1));
        frames += row.frames;
        right += good;
    }
    std::printf("%-25s | %6d | %5d |\n", "all", frames, right);
}

}  // namespace

int main(int argc, char** argv) {
    Campaign campaign;
    int place = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--list") == 0)
            campaign.list = true;
        else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc)
            campaign.only = std::atol(argv[++i]);
        else if (std::strcmp(argv[i], "--strange") == 0) {
            campaign.ordinary = false;
            if (i + 1 < argc) campaign.strangeRow = argv[++i];
        } else if (place++ == 0)
            campaign.frames = static_cast<std::size_t>(std::atol(argv[i]));
        else
            campaign.seed = static_cast<std::uint64_t>(std::atol(argv[i]));
    }
    FramePainter painter(1);
    if (campaign.ordinary && campaign.only < 0) searchBlankFrames(campaign, painter);
    if (campaign.ordinary) searchStars(campaign, painter);
    if (campaign.only < 0 || !campaign.ordinary) searchStrangeFrames(campaign, painter);
}
