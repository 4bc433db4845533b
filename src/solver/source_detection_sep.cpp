#include <cmath>
#include <memory>
#include <numbers>

#include "solver/source_detection.h"

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
constexpr int kSubObjectLimit = 4000;

using CatalogPointer = std::unique_ptr<sep_catalog, decltype(&sep_catalog_free)>;

CatalogPointer extract(const sep_image& image, const DetectionTask& task) {
    sep_catalog* found = nullptr;
    const int status = sep_extract(&image, static_cast<float>(task.threshold), SEP_THRESH_ABS,
                                   task.minimumPixels, task.kernel.data(), task.kernelSide, task.kernelSide,
                                   SEP_FILTER_CONV, kDeblendLevels, kDeblendContrast, 0, 1.0, &found);
    if (status != 0) {
        sep_catalog_free(found);
        found = nullptr;
    }
    return {found, &sep_catalog_free};
}

}  // namespace

std::optional<std::vector<Source>> detectSources(const DetectionTask& task) {
    sep_image image{};
    image.data = task.pixels.data();
    image.dtype = SEP_TFLOAT;
    image.w = static_cast<int>(task.width);
    image.h = static_cast<int>(task.height);
    image.noise_type = SEP_NOISE_NONE;
    sep_set_sub_object_limit(kSubObjectLimit);
    CatalogPointer found{nullptr, &sep_catalog_free};
    for (std::size_t stack = kPixelStack; found == nullptr && stack <= kMostDetectedPixels; stack *= 4) {
        sep_set_extract_pixstack(stack);
        found = extract(image, task);
    }
    if (found == nullptr) return std::nullopt;
    std::vector<Source> sources;
    sources.reserve(static_cast<std::size_t>(found->nobj));
    for (int i = 0; i < found->nobj; ++i) {
        sources.push_back({found->x[i], found->y[i], static_cast<double>(found->flux[i]),
                           static_cast<double>(found->peak[i]),
                           std::sqrt(static_cast<double>(found->a[i]) * static_cast<double>(found->b[i])),
                           static_cast<double>(found->a[i]),
                           static_cast<double>(found->theta[i]) * 180 / std::numbers::pi, found->npix[i],
                           (found->flag[i] & SEP_OBJ_TRUNC) != 0});
    }
    return sources;
}

}  // namespace vantrel::solver
