#include "platform/image_array.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <mutex>

namespace vantrel::platform {
namespace {

struct Change {
    std::vector<std::size_t> places;
    double value;
};

template <typename Pixel>
Pixel nearest(double value) {
    if (!(value > static_cast<double>(std::numeric_limits<Pixel>::lowest())))
        return std::numeric_limits<Pixel>::lowest();
    if (value >= static_cast<double>(std::numeric_limits<Pixel>::max()))
        return std::numeric_limits<Pixel>::max();
    return static_cast<Pixel>(std::is_integral_v<Pixel> ? std::nearbyint(value) : value);
}

using SetPixels = std::vector<ImageArray::SetPixel>;

/// Appends what was there to `set`.
void apply(const Change& change, ImageArray::Pixels& pixels, SetPixels& set) {
    std::visit(
        [&](auto& values) {
            using Pixel = typename std::decay_t<decltype(values)>::value_type;
            const auto value = nearest<Pixel>(change.value);
            for (const std::size_t place : change.places) {
                set.push_back({place, static_cast<double>(values[place])});
                values[place] = value;
            }
        },
        pixels);
}

/// Of those with the same place the first stays.
void putInOrder(SetPixels& set) {
    std::stable_sort(set.begin(), set.end(), [](const auto& a, const auto& b) { return a.place < b.place; });
    const auto samePlace = [](const auto& a, const auto& b) { return a.place == b.place; };
    set.erase(std::unique(set.begin(), set.end(), samePlace), set.end());
}

/// True when this is the only owner. The fence makes what former owners did visible here.
bool owned(const std::shared_ptr<ImageArray::Pixels>& pixels) {
    if (pixels.use_count() != 1) return false;
    std::atomic_thread_fence(std::memory_order_acquire);
    return true;
}

}  // namespace

/// Pixels that may be another array's as well, and what has been set in this one since.
struct ImageArray::Body {
    explicit Body(std::shared_ptr<Pixels> from) : pixels(std::move(from)) {}

    const Pixels& settled() {
        if (!hasChanges.load(std::memory_order_acquire)) return *pixels;
        const std::lock_guard lock(mutex);
        if (changes.empty()) return *pixels;
        if (!owned(pixels)) pixels = std::make_shared<Pixels>(*pixels);
        for (const Change& change : changes) apply(change, *pixels, set);
        putInOrder(set);
        changes.clear();
        hasChanges.store(false, std::memory_order_release);
        return *pixels;
    }

    std::mutex mutex;
    std::shared_ptr<Pixels> pixels;
    std::vector<Change> changes;
    SetPixels set;  // by the changes that were made
    std::atomic<bool> hasChanges = false;
};

ImageArray::ImageArray(std::size_t width, std::size_t height, Pixels pixels)
    : width_(width),
      height_(height),
      body_(std::make_shared<Body>(std::make_shared<Pixels>(std::move(pixels)))) {}

const ImageArray::Pixels& ImageArray::pixels() const { return body_->settled(); }

ImageArray::Pixels& ImageArray::pixels() {
    const Pixels& current = body_->settled();
    if (body_.use_count() != 1 || !owned(body_->pixels))
        body_ = std::make_shared<Body>(std::make_shared<Pixels>(current));
    body_->set.clear();
    return *body_->pixels;
}

ImageArray ImageArray::withPixels(std::vector<std::size_t> places, double value) const {
    ImageArray changed = *this;
    const std::lock_guard lock(body_->mutex);
    changed.body_ = std::make_shared<Body>(body_->pixels);
    changed.body_->changes = body_->changes;
    changed.body_->set = body_->set;
    changed.body_->changes.push_back({std::move(places), value});
    changed.body_->hasChanges = true;
    return changed;
}

const SetPixels& ImageArray::setPixels() const {
    body_->settled();
    return body_->set;
}

ImageArray ImageArray::untouched(std::size_t left, std::size_t top, std::size_t width,
                                 std::size_t height) const {
    return std::visit(
        [&](const auto& all) {
            std::decay_t<decltype(all)> part;
            using Pixel = typename decltype(part)::value_type;
            part.reserve(width * height);
            for (std::size_t y = top; y < top + height; ++y) {
                const auto first = all.begin() + static_cast<std::ptrdiff_t>(y * width_ + left);
                part.insert(part.end(), first, first + static_cast<std::ptrdiff_t>(width));
            }
            for (const SetPixel& pixel : setPixels()) {
                const std::size_t x = pixel.place % width_ - left;  // far out where it lies to the left
                const std::size_t y = pixel.place / width_ - top;
                if (x < width && y < height) part[y * width + x] = static_cast<Pixel>(pixel.before);
            }
            return ImageArray(width, height, std::move(part));
        },
        pixels());
}

}  // namespace vantrel::platform
