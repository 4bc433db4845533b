#include "imaging/imaging_camera.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "imaging/taken_picture.h"
#include "platform/text.h"

namespace vantrel::imaging {
namespace {

void requireBetween(const char* what, double value, double low, double high) {
    if (!(value >= low && value <= high))
        throw std::runtime_error(std::string(what) + " must be between " + platform::toText(low) + " and " +
                                 platform::toText(high));
}

void requireInside(const ExposureOrder& order, const platform::CameraFacts& camera) {
    if (!order.part || camera.width == 0) return;
    const SubFrame& part = *order.part;
    const auto ends = [](int from, int extent) {
        return static_cast<std::size_t>(from) + static_cast<std::size_t>(extent);
    };
    const bool inside = part.left >= 0 && part.top >= 0 && part.width > 0 && part.height > 0 &&
                        ends(part.left, part.width) <= camera.width / static_cast<std::size_t>(order.binX) &&
                        ends(part.top, part.height) <= camera.height / static_cast<std::size_t>(order.binY);
    if (!inside) throw std::runtime_error("The sub-frame lies outside the sensor");
}

/// The camera's own word counts.
void addMissing(std::vector<fits::FitsCard>& header, const std::vector<fits::FitsCard>& cards) {
    for (const fits::FitsCard& card : cards)
        if (std::none_of(header.begin(), header.end(),
                         [&](const fits::FitsCard& own) { return own.keyword == card.keyword; }))
            header.push_back(card);
}

}  // namespace

ImagingCamera::ImagingCamera(platform::EventLoop& loop, platform::Background& background,
                             platform::CameraHardware& hardware, Beside beside)
    : loop_(loop), background_(background), hardware_(hardware), beside_(std::move(beside)) {}

ImagingCamera::~ImagingCamera() { hardware_.onProgress = nullptr; }

void ImagingCamera::connect(const std::string& program) {
    if (!holder_.empty() && holder_ != program)
        throw std::runtime_error("The camera is in use by " + holder_);
    if (!hardware_.connected()) hardware_.connect();
    holder_ = program;
}

void ImagingCamera::disconnect(const std::string& program) {
    if (holder_.empty() || holder_ != program) return;
    abort();
    holder_.clear();
    hardware_.disconnect();
}

void ImagingCamera::start(const ExposureOrder& order, Delivery delivery) {
    const platform::CameraFacts& camera = hardware_.facts();
    requireBetween("The exposure time", order.seconds, 0, camera.longest);
    requireBetween("Binning", order.binX, 1, camera.maxBinX);
    requireBetween("Binning", order.binY, 1, camera.maxBinY);
    if (order.filter && !camera.filters.empty())
        requireBetween("The filter", *order.filter, 0, static_cast<double>(camera.filters.size()) - 1);
    requireInside(order, camera);
    watch_.reset();
    reading_.reset();
    failure_.reset();
    cards_ = beside_ ? beside_() : std::vector<fits::FitsCard>();
    delivery_ = std::move(delivery);
    hardware_.onProgress = [this] { look(); };
    hardware_.start(order);
    addMissing(cards_, cardsOf(hardware_.facts()));  // as it was set for the exposure
    constexpr platform::Milliseconds kLook{50};      // at hardware that doesn't tell
    watch_ = loop_.every(kLook, [this] { look(); });
}

void ImagingCamera::abort() {
    if (!busy()) return;
    watch_.reset();
    reading_.reset();
    failure_.emplace(kAborted, "", "The exposure was aborted");
    hardware_.abort();
}

void ImagingCamera::requireSuccess() const {
    if (failure_) throw *failure_;
}

void ImagingCamera::look() {
    using Progress = platform::CameraHardware::Progress;
    const Progress progress = hardware_.progress();
    if (!watch_ || progress == Progress::kExposing || progress == Progress::kDownloading) return;
    watch_.reset();
    attempt([this] { read(); });
}

/// What came as a file takes its time.
void ImagingCamera::read() {
    auto taken = std::make_shared<platform::TakenPicture>(hardware_.take());
    if (!std::holds_alternative<platform::FitsBytes>(*taken)) return deliver(pictureOf(std::move(*taken)));
    const auto picture = std::make_shared<Picture>();
    const auto failure = std::make_shared<std::string>();
    reading_ = background_.run(
        [=] {
            try {
                *picture = pictureOf(std::move(*taken));
            } catch (const std::exception& error) {
                *failure = error.what();
            }
        },
        [=, this] {
            const platform::BackgroundWork ended = std::move(reading_);
            attempt([&] {
                if (picture->pixels == nullptr) throw std::runtime_error(*failure);
                deliver(std::move(*picture));
            });
        });
}

void ImagingCamera::deliver(Picture picture) {
    addMissing(picture.header, cards_);
    const Delivery delivery = std::move(delivery_);
    if (delivery) delivery(std::move(picture));
}

template <typename Step>
void ImagingCamera::attempt(Step&& step) {
    try {
        step();
    } catch (const std::exception& error) {
        failure_.emplace(platform::error_number::kDriverException, "", error.what());
    }
}

}  // namespace vantrel::imaging
