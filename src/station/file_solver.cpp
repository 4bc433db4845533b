#include "station/file_solver.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>
#include <utility>

#include "fits/fits_image.h"
#include "pictures/picture_file.h"
#include "sky/compact_catalog.h"
#include "solver/deep_stars.h"
#include "solver/exposure_facts.h"
#include "solver/image_solving.h"
#include "solver/pattern_store.h"
#include "solver/unsolved_reason.h"

namespace vantrel::station {
namespace {

using platform::SolvedPicture;
using platform::Words;

constexpr std::size_t kMostPixels = 250'000'000;  // a gigabyte of them can be shown

std::shared_ptr<const platform::ImageArray> pixelsOf(const fits::FitsImage& image) {
    std::vector<float> pixels(image.width() * image.height());
    image.readRows(0, pixels);
    return std::make_shared<const platform::ImageArray>(image.width(), image.height(), std::move(pixels));
}

/// What to try, one after the other. A scale that the operator knows is the only one.
std::vector<solver::ImageClues> attemptsAt(const fits::FitsImage& image, std::optional<double> scale) {
    constexpr double kAllSky = 180;
    std::vector<solver::ImageClues> attempts;
    if (const auto former = solver::formerSolution(image)) attempts.push_back(*former);
    solver::ImageClues clues = solver::cluesOf(image.header());
    clues.radiusDeg = kAllSky;
    if (scale) clues.scales = {*scale};
    attempts.push_back(clues);
    if (!scale && !clues.scales.empty()) {
        clues.scales.clear();
        attempts.push_back(clues);
    }
    return attempts;
}

SolvedPicture told(const solver::SolvedPlate& plate, std::size_t starsFound, bool dated) {
    SolvedPicture picture{.raHours = plate.centre.ra / 15,
                          .decDeg = plate.centre.dec,
                          .scaleX = plate.orientation.scaleX,
                          .scaleY = std::abs(plate.orientation.scaleY),
                          .rollDeg = plate.orientation.rollDeg,
                          .mirrored = plate.mirrored(),
                          .residualArcsec = plate.residualArcsec,
                          .starsFound = starsFound,
                          .dated = dated,
                          .stars = {}};
    picture.stars.reserve(plate.stars.size());
    for (const solver::MatchedStar& star : plate.stars)
        picture.stars.push_back({star.x, star.y, star.magnitude});
    std::ranges::stable_sort(picture.stars, {}, &platform::RecognisedStar::magnitude);
    return picture;
}

}  // namespace

/// What the work beside the loop owns.
struct FileSolver::Job {
    std::string file;
    std::filesystem::path path, cache, data;
    std::optional<double> scale;
    Listener listener;
    std::atomic<bool> givenUp = false;

    std::optional<fits::FitsImage> image;
    std::shared_ptr<const platform::ImageArray> pixels;
    std::shared_ptr<const solver::StarPatterns> patterns;
    std::optional<SolvedPicture> solution;
    Words failure, remark;

    /// Whatever goes wrong becomes the failure.
    template <typename Work>
    void attempt(Work&& work) {
        try {
            work();
        } catch (const std::bad_alloc&) {
            failure = Words::tr("%1 is too large for the memory of this machine", {file});
        } catch (const std::exception& error) {
            failure = error.what();
        }
    }

    void read() {
        attempt([this] {
            image.emplace(pictures::openPicture(path));
            if (image->height() > kMostPixels / image->width())
                failure = Words::tr("%1 has more than 250 million pixels", {file});
            else
                pixels = pixelsOf(*image);
        });
    }

    void solve() {
        attempt([this] {
            const solver::StarList found = solver::findStars(*image, {});
            if (found.stars.empty()) {
                failure = Words::tr("No stars were found in the picture");
                remark = solver::whyUnsolved(found, {});
                return;
            }
            const auto builtIn = sky::CompactCatalog::openBuiltIn();
            const auto catalog = solver::withDeepStars(builtIn, data);
            const auto allSky = [&] {
                if (!patterns) patterns = solver::patternsOf(*builtIn, cache, [](const std::string&) {});
                return patterns;
            };
            const auto stopped = [this] { return givenUp.load(); };
            for (const solver::ImageClues& clues : attemptsAt(*image, scale)) {
                const auto solved = solver::solveImage(*image, found, clues, *catalog, allSky, stopped);
                // What is known of the scale tells how many stars there ought to be.
                if (remark.empty() || !clues.scales.empty()) remark = solved.whyNot;
                if (!solved.solution) continue;
                solution = told(*solved.solution, found.stars.size(),
                                solver::exposureStart(image->header()).has_value());
                return;
            }
            failure = Words::tr("Not solved: %1 stars were found, but no place in the sky fits them",
                                {std::to_string(found.stars.size())});
        });
    }
};

FileSolver::FileSolver(platform::Background& background, const platform::FolderMap& folders,
                       std::filesystem::path cache, std::filesystem::path data)
    : background_(background), folders_(folders), cache_(std::move(cache)), data_(std::move(data)) {}

FileSolver::~FileSolver() { giveUp(); }

void FileSolver::solve(const std::string& file, std::optional<double> scale, Listener listener) {
    giveUp();
    const auto job = std::make_shared<Job>();
    job_ = job;
    job->file = file;
    job->path = platform::existingImage(folders_, file).value_or(folders_.real(file));
    job->cache = cache_;
    job->data = data_;
    job->scale = scale;
    job->listener = std::move(listener);
    job->patterns = patterns_;
    work_ = background_.run([job] { job->read(); },
                            [this, job] {
                                if (!job->pixels) return job->listener.failed(job->failure, {});
                                job->listener.read(job->pixels);
                                if (!job->givenUp) solveRead(job);
                            });
}

void FileSolver::solveRead(const std::shared_ptr<Job>& job) {
    work_ = background_.run([job] { job->solve(); },
                            [this, job] {
                                patterns_ = job->patterns;
                                if (job->solution)
                                    job->listener.solved(*job->solution);
                                else
                                    job->listener.failed(job->failure, job->remark);
                            });
}

void FileSolver::giveUp() {
    if (job_) job_->givenUp = true;
    job_.reset();
    work_.reset();
}

}  // namespace vantrel::station
