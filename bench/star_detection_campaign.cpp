// How well the star detection does against known stars: frames of all sizes and kinds, as a table.
//
// star_detection_campaign [frames] [seed] [--list | --only NUMBER]
// --list also shows each frame that missed a bound, --only looks at one frame: each depends on the seed and
// its number alone.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "correction/stars/brightest_star.h"
#include "correction/stars/stripe_search.h"
#include "support/star_frames.h"

namespace {

using vantrel::correction::BrightestStar;
using vantrel::correction::BrightestStar3;
using vantrel::test::FramePainter;
using vantrel::test::FrameRecipe;
using vantrel::test::FrameStar;

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

}  // namespace

int main(int argc, char** argv) {
    Campaign campaign;
    int place = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--list") == 0)
            campaign.list = true;
        else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc)
            campaign.only = std::atol(argv[++i]);
        else if (place++ == 0)
            campaign.frames = static_cast<std::size_t>(std::atol(argv[i]));
        else
            campaign.seed = static_cast<std::uint64_t>(std::atol(argv[i]));
    }
    FramePainter painter(1);
    if (campaign.only < 0) searchBlankFrames(campaign, painter);
    searchStars(campaign, painter);
}
