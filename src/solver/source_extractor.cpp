#include "solver/source_extractor.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <numeric>

extern "C" {
#include <sep.h>
}

#ifdef __SANITIZE_ADDRESS__
// SEP 1.2.1 allocates two of its result arrays twice and loses the first ones (8 bytes a source).
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libsep.so"; }
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
#endif

namespace vantrel::solver {

namespace {

constexpr std::size_t kPixelStack = 60'000;  // SEP touches all of it, so it starts small
constexpr std::size_t kLargestPixelStack = 960'000;
constexpr int kDeblendLevels = 16;          // half of the library's own number: stars are simple shapes
constexpr double kDeblendContrast = 0.005;  // the library's own
constexpr int kSubObjectLimit = 4000;       // in a globular cluster or a nebula
constexpr int kMaxRaises = 6;               // of the threshold, doubled each time

struct Kernel {
    std::vector<float> weights;
    int side = 0;
    double noise = 0;  ///< noise of the smoothed image, from noise 1 in each pixel
};

Kernel kernelOf(std::vector<float> weights, int side) {
    const float sum = std::accumulate(weights.begin(), weights.end(), 0.0F);
    double squares = 0;
    for (float& w : weights) {
        w /= sum;
        squares += static_cast<double>(w) * static_cast<double>(w);
    }
    return {std::move(weights), side, std::sqrt(squares)};
}

Kernel smoothingKernel(double fwhm) {
    if (fwhm <= 0) return kernelOf({1, 2, 1, 2, 4, 2, 1, 2, 1}, 3);
    const double sigma = std::max(fwhm / 2.3548, 0.2);
    const int half = std::clamp(static_cast<int>(std::ceil(2.2 * sigma)), 1, 7);
    std::vector<float> weights;
    for (int y = -half; y <= half; ++y) {
        for (int x = -half; x <= half; ++x) {
            weights.push_back(static_cast<float>(std::exp(-(x * x + y * y) / (2 * sigma * sigma))));
        }
    }
    return kernelOf(std::move(weights), 2 * half + 1);
}

/// The noise of the smoothed image, from a sample of its pixels: where neighbouring pixels are correlated it
/// is larger than the kernel alone would leave. (Mean of the four fifths of values nearest to 0; see the
/// reduction.)
double smoothedNoise(std::span<const float> pixels, std::size_t width, std::size_t height,
                     const Kernel& kernel) {
    constexpr std::size_t kSamples = 6000;
    const auto side = static_cast<std::size_t>(kernel.side);
    if (width < side || height < side) return kernel.noise;
    const std::size_t columns = width - side + 1;
    const std::size_t places = columns * (height - side + 1);
    const std::size_t step = std::max<std::size_t>(1, places / kSamples) | 1U;
    std::vector<float> values;
    for (std::size_t place = step / 2; place < places; place += step) {
        const float* corner = pixels.data() + place / columns * width + place % columns;
        float sum = 0;
        for (std::size_t y = 0; y < side; ++y) {
            for (std::size_t x = 0; x < side; ++x)
                sum += kernel.weights[y * side + x] * corner[y * width + x];
        }
        if (!std::isnan(sum)) values.push_back(std::abs(sum));
    }
    const auto most = values.begin() + static_cast<std::ptrdiff_t>(values.size() * 4 / 5);
    std::nth_element(values.begin(), most, values.end());
    const double mean = std::accumulate(values.begin(), most, 0.0) /
                        static_cast<double>(std::max<std::ptrdiff_t>(1, most - values.begin()));
    return std::max(kernel.noise, mean / 0.5586);
}

/// Whether any pixel has no value; compilers turn this into vector code.
bool hasGaps(std::span<const float> pixels) {
    int gaps = 0;
    for (const float v : pixels) gaps |= static_cast<int>(std::isnan(v));
    return gaps != 0;
}

/// Where there is no value there is nothing but background.
std::vector<float> withoutGaps(std::span<const float> pixels) {
    std::vector<float> filled(pixels.begin(), pixels.end());
    std::replace_if(
        filled.begin(), filled.end(), [](float v) { return std::isnan(v); }, 0.0F);
    return filled;
}

using CatalogPointer = std::unique_ptr<sep_catalog, decltype(&sep_catalog_free)>;

CatalogPointer extract(const sep_image& image, const Kernel& kernel, double threshold, int minimumPixels) {
    sep_catalog* found = nullptr;
    const int status = sep_extract(&image, static_cast<float>(threshold), SEP_THRESH_ABS, minimumPixels,
                                   kernel.weights.data(), kernel.side, kernel.side, SEP_FILTER_CONV,
                                   kDeblendLevels, kDeblendContrast, 0, 1.0, &found);
    if (status != 0) {
        sep_catalog_free(found);
        found = nullptr;
    }
    return {found, &sep_catalog_free};
}

}  // namespace

std::vector<Source> extractSources(std::span<const float> pixels, std::size_t width, std::size_t height,
                                   const ExtractionSettings& settings) {
    std::vector<float> filled;
    if (hasGaps(pixels)) filled = withoutGaps(pixels);
    sep_image image{};
    image.data = filled.empty() ? pixels.data() : filled.data();
    image.dtype = SEP_TFLOAT;
    image.w = static_cast<int>(width);
    image.h = static_cast<int>(height);
    image.noise_type = SEP_NOISE_NONE;
    sep_set_sub_object_limit(kSubObjectLimit);

    const Kernel kernel = smoothingKernel(settings.filterFwhm);
    double threshold = settings.sigma * smoothedNoise(pixels, width, height, kernel);
    CatalogPointer found{nullptr, &sep_catalog_free};
    std::size_t stack = kPixelStack;
    for (int raise = 0; raise < kMaxRaises && found == nullptr;) {
        sep_set_extract_pixstack(stack);
        found = extract(image, kernel, threshold, settings.minimumPixels);
        if (stack < kLargestPixelStack) {
            stack *= 4;
        } else {
            threshold *= 2;
            ++raise;
        }
    }
    std::vector<Source> sources;
    if (found == nullptr) return sources;
    sources.reserve(static_cast<std::size_t>(found->nobj));
    for (int i = 0; i < found->nobj; ++i) {
        sources.push_back({found->x[i], found->y[i], static_cast<double>(found->flux[i]),
                           static_cast<double>(found->peak[i]),
                           std::sqrt(static_cast<double>(found->a[i]) * static_cast<double>(found->b[i])),
                           static_cast<double>(found->a[i]),
                           static_cast<double>(found->theta[i]) * 180 / std::numbers::pi, found->npix[i],
                           (found->flag[i] & SEP_OBJ_TRUNC) != 0});
    }
    const auto brighter = [](const Source& a, const Source& b) { return a.flux > b.flux; };
    std::sort(sources.begin(), sources.end(), brighter);
    if (sources.size() > settings.atMost) sources.resize(settings.atMost);
    return sources;
}

}  // namespace vantrel::solver
