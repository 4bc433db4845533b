// How well the star detection does against known stars: frames of all sizes and kinds, as a table.
//
// star_detection_campaign [frames] [seed] [--list]: --list shows every frame that missed a bound.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "correction/brightest_star.h"
#include "support/star_frames.h"

namespace {

using vantrel::correction::BrightestStar;
using vantrel::correction::BrightestStar3;
using vantrel::test::FramePainter;
using vantrel::test::FrameRecipe;
using vantrel::test::FrameStar;

const char* const kKinds[] = {"plain", "gradient", "wrong pixels", "nebula", "two stars", "all of these"};

double between(std::mt19937_64& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}

double evenly(std::mt19937_64& random, double low, double high) {
    return std::exp(between(random, std::log(low), std::log(high)));
}

FrameRecipe blankFrame(std::mt19937_64& random) {
    FrameRecipe recipe;
    recipe.width = static_cast<int>(std::lround(evenly(random, 90, 9576)));
    recipe.height = std::clamp(static_cast<int>(recipe.width * between(random, 0.6, 1.0)), 90, 6388);
    recipe.sky = evenly(random, 50, 5000);
    recipe.readNoise = between(random, 3, 15);
    return recipe;
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

FrameRecipe frameOf(std::size_t kind, std::mt19937_64& random) {
    FrameRecipe recipe = blankFrame(random);
    const bool all = kind == 5;
    FrameStar star;
    star.x = between(random, 0, recipe.width - 1);
    star.y = between(random, 0, recipe.height - 1);
    star.width = between(random, 1.5, 8);
    star.peak = evenly(random, 4 * recipe.noise(), 5 * 65535.0);
    recipe.stars = {star};
    if (kind == 1 || all) {
        recipe.gradientX = between(random, -1, 1) * recipe.sky;
        recipe.gradientY = between(random, -0.9, 0.9) * recipe.sky;
    }
    if (kind == 2 || all) recipe.wrongPixels = evenly(random, 1e-5, 3e-4);
    if (kind == 3 || all)
        recipe.nebula = {
            between(random, 0, recipe.width), between(random, 0, recipe.height),
            between(random, std::max(60.0, 12 * star.width), std::max(100.0, 0.5 * recipe.width)),
            evenly(random, 20, 2000)};
    if (kind == 4 || all) addSecondStar(recipe, random);
    return recipe;
}

struct Tally {
    std::vector<double> errors, saturatedErrors, sizes, saturatedSizes, faintSizes;
    int frames = 0, weakOrEdge = 0, none = 0, other = 0, missedBright = 0, wrongStar = 0;
};

double ranked(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

void describe(const char* what, std::size_t number, const FrameRecipe& recipe, const BrightestStar& found) {
    const FrameStar& star = recipe.stars.front();
    std::printf(
        "  %s: frame %zu %dx%d star %.2f %.2f width %.2f peak %.0f (%.1f noise), found %.2f %.2f hfd "
        "%.3f%s\n",
        what, number, recipe.width, recipe.height, star.x, star.y, star.width, star.peak,
        star.peak / recipe.noise(), found.x, found.y, found.hfd, found.noStar ? " none" : "");
}

void judge(Tally& tally, std::size_t number, const FrameRecipe& recipe, const BrightestStar& found,
           bool list) {
    const FrameStar& star = recipe.stars.front();
    const double signal = star.peak * star.sigma() * 1.772 / recipe.noise();
    const bool saturated = star.peak + recipe.sky > 60'000;
    ++tally.frames;
    if (found.noStar) {
        (found.failure == BrightestStar::Failure::kEdgeOrWeak ? tally.weakOrEdge
         : found.failure == BrightestStar::Failure::kNoStar   ? tally.none
                                                              : tally.other)++;
        const double margin = 0.11;
        const bool inside = star.x > margin * recipe.width && star.x < (1 - margin) * recipe.width &&
                            star.y > margin * recipe.height && star.y < (1 - margin) * recipe.height;
        const bool bright = star.peak > 25 * recipe.noise() + recipe.nebula.peak / 2;
        if (inside && bright) {
            ++tally.missedBright;
            if (list) describe("missed", number, recipe, found);
        }
        return;
    }
    const double error = std::hypot(found.x - star.x, found.y - star.y);
    if (error > 3) {
        ++tally.wrongStar;
        if (list) describe("wrong star", number, recipe, found);
        return;
    }
    (saturated ? tally.saturatedErrors : tally.errors).push_back(error);
    const double truth = vantrel::test::trueHalfFluxDiameter(star, recipe.sky);
    (saturated     ? tally.saturatedSizes
     : signal < 80 ? tally.faintSizes
                   : tally.sizes)
        .push_back(std::abs(found.hfd / truth - 1));
    if (list && error > (saturated ? 1.0 : 0.5)) describe("far off", number, recipe, found);
    if (list && signal >= 80 && !saturated && std::abs(found.hfd / truth - 1) > 0.05)
        describe("wrong size", number, recipe, found);
}

void print(const char* kind, const Tally& t) {
    std::printf("%-13s %5d |", kind, t.frames);
    for (const auto* errors : {&t.errors, &t.saturatedErrors})
        std::printf(" %4zu %6.3f %6.3f |", errors->size(), ranked(*errors, 0.5), ranked(*errors, 1));
    for (const auto* sizes : {&t.sizes, &t.saturatedSizes, &t.faintSizes})
        std::printf(" %6.4f %6.4f |", ranked(*sizes, 0.5), ranked(*sizes, 1));
    std::printf(" %4d %4d %3d | %6d %5d\n", t.weakOrEdge, t.none, t.other, t.missedBright, t.wrongStar);
}

}  // namespace

int main(int argc, char** argv) {
    const auto frames = static_cast<std::size_t>(argc > 1 ? std::atol(argv[1]) : 1000);
    FramePainter painter(static_cast<std::uint64_t>(argc > 2 ? std::atol(argv[2]) : 1));
    const bool list = argc > 3 && std::string(argv[3]) == "--list";

    int falseStars = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        FrameRecipe recipe = blankFrame(painter.random());
        if (i % 2 == 1) recipe.wrongPixels = evenly(painter.random(), 1e-5, 3e-4);
        const BrightestStar found = BrightestStar3(painter.paint(recipe));
        if (found.noStar) continue;
        ++falseStars;
        if (list)
            std::printf("  false star: %dx%d wrong pixels %.1e at %.1f %.1f\n", recipe.width, recipe.height,
                        recipe.wrongPixels, found.x, found.y);
    }
    std::printf("%zu blank frames, half of them with wrong pixels: %d false stars\n", frames, falseStars);

    std::map<std::size_t, Tally> tallies;
    for (std::size_t i = 0; i < frames; ++i) {
        const std::size_t kind = i % std::size(kKinds);
        const FrameRecipe recipe = frameOf(kind, painter.random());
        judge(tallies[kind], i, recipe, BrightestStar3(painter.paint(recipe)), list);
    }
    std::puts(
        "\n                    |   stars: error     | saturated: error   | size, S/N > 80  | saturated       "
        "| fainter         | not found     | wrong\n"
        "kind         frames |    n median  worst |    n median  worst | median  worst   | median  worst   "
        "| median  worst   | weak none  ?  | missed other");
    for (const auto& [kind, tally] : tallies) print(kKinds[kind], tally);
}
