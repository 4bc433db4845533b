#include "hosts/alpaca/exposure.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "hosts/alpaca/device_error.h"
#include "hosts/alpaca/image_bytes.h"
#include "hosts/alpaca/image_json.h"
#include "platform/text.h"

namespace vantrel::hosts::alpaca {

namespace {

using platform::HttpAnswer;
using platform::HttpLimits;
using platform::Milliseconds;

constexpr Milliseconds kTick{50};
constexpr Milliseconds kBetweenStates{500};
constexpr Milliseconds kBetweenQuickStates{100};  // during the first second after an exposure's end
constexpr Milliseconds kTimeOfQuickStates{1000};
constexpr Milliseconds kBetweenDownloads{1000};
constexpr Milliseconds kLongestSilence{60'000};
constexpr Milliseconds kIdleGrace{5000};       // beyond which an idle camera has no picture
constexpr Milliseconds kReadOutTime{120'000};  // the longest that reading the sensor may take
constexpr Milliseconds kDownloadTime{600'000};
constexpr int kMostDownloads = 5;

constexpr int kIdle = 0;
constexpr int kReading = 3;
constexpr int kFetching = 4;
constexpr int kError = 5;
constexpr int kUnknownState = -1;

constexpr std::size_t kMostBytes = std::size_t{1} << 30U;
constexpr std::size_t kReplyBytes = 64U << 10U;
constexpr std::size_t kJsonBytes = 12;  // of a number: its sign, ten digits and a comma

Milliseconds fromSeconds(double seconds) {
    return Milliseconds{static_cast<Milliseconds::rep>(std::ceil(seconds * 1000))};
}

HttpLimits downloadLimits(const ImageLimits& sensor) {
    const std::size_t pixels = sensor.width * sensor.height;
    return {.body = std::min(kMostBytes, kReplyBytes + pixels * ImageLimits::kPlanes * kJsonBytes),
            .connecting = Milliseconds{3000},
            .whole = kDownloadTime,
            .drip = HttpLimits::Drip{.bytesPerSecond = 1000, .patience = std::chrono::seconds{30}}};
}

/// Some servers send the one form under the other's name.
bool isImageBytes(const HttpAnswer& answer) {
    return platform::containsIgnoringCase(answer.contentType, "imagebytes") ||
           answer.body.starts_with(std::string_view("\1\0\0\0", 4));
}

/// What the background thread makes of an answer.
struct Decoding {
    HttpAnswer answer;
    ImageLimits limits;
    std::optional<platform::ImageArray> image = {};
    std::string failure = {};

    void run() {
        try {
            image = isImageBytes(answer) ? parseImageBytes(answer.body, limits)
                                         : parseImageJson(answer.body, limits);
        } catch (const std::bad_alloc&) {
            failure = "There is no memory for the camera's picture.";
        } catch (const std::exception& error) {
            failure = error.what();
        }
        answer = {};
    }
};

}  // namespace

Exposure::Exposure(const Surroundings& surroundings, DeviceLink& link, double seconds,
                   const ImageLimits& limits)
    : surroundings_(surroundings),
      link_(link),
      limits_(limits),
      seconds_(seconds),
      ordered_(seconds),
      start_(surroundings.loop.clock().utc()),
      began_(now()),
      answered_(now()),
      due_(now() + std::min(fromSeconds(seconds), kBetweenStates)),
      timer_(surroundings.loop.every(kTick, [this] { tick(); })) {}

void Exposure::tick() {
    if (exchange_ == nullptr && decoding_ == nullptr && now() >= due_) (this->*step_)();
}

void Exposure::next(Step step, Milliseconds delay) {
    step_ = step;
    due_ = now() + delay;
}

void Exposure::proceed(Step step) {
    next(step);
    (this->*step)();
}

// ---- is it there?

void Exposure::look() {
    if (!link_.isPlatform7() || !hasState_) return lookAtMembers();
    ask("devicestate", Refusal::kFailsExposure, [this](const Json& list) {
        const auto state = namedValuesIn(list);
        const auto ready = state.find("ImageReady");
        hasState_ = ready != state.end() && flagIn(ready->second);
        if (!hasState_) return lookAtMembers();
        const auto cameraState = state.find("CameraState");
        judge(*flagIn(ready->second), cameraState == state.end() ? kUnknownState
                                                                 : intMember({{"State", cameraState->second}},
                                                                             "State", kUnknownState));
    });
}

void Exposure::lookAtMembers() {
    ask("imageready", Refusal::kFailsExposure, [this](const Json& ready) {
        if (ready.is_null()) {
            const std::string why = link_.name() + " isn't known to its server any more.";
            return bear(std::make_exception_ptr(std::runtime_error(why)));
        }
        if (flagIn(ready).value_or(false)) return judge(true, kUnknownState);
        ask("camerastate", Refusal::kFailsExposure, [this](const Json& state) {
            judge(false, intMember({{"State", state}}, "State", kUnknownState));
        });
    });
}

void Exposure::judge(bool ready, int cameraState) {
    const Milliseconds elapsed = now() - began_;
    const Milliseconds ordered = fromSeconds(ordered_);
    // A picture that is there before its time is the one before.
    if (ready && elapsed >= ordered * 9 / 10) {
        progress_ = Progress::kDownloading;
        return proceed(&Exposure::readStart);
    }
    if (cameraState == kError) return fail(link_.name() + " reports that the exposure failed.");
    if (cameraState == kIdle && elapsed > ordered + kIdleGrace)
        return fail(link_.name() + " has stopped without a picture.");
    if (elapsed > ordered + kReadOutTime) return fail(link_.name() + " didn't deliver its picture in time.");
    if (cameraState == kReading || cameraState == kFetching) progress_ = Progress::kDownloading;
    const Milliseconds untilEnd = ordered - elapsed;
    next(&Exposure::look, untilEnd > Milliseconds{0}       ? std::min(untilEnd, kBetweenStates)
                          : -untilEnd < kTimeOfQuickStates ? kBetweenQuickStates
                                                           : kBetweenStates);
}

// ---- fetching it

void Exposure::readStart() {
    ask("lastexposurestarttime", Refusal::kDoesntMatter, [this](const Json& time) {
        if (time.is_string())
            start_ = platform::parseInstant(time.get_ref<const std::string&>()).value_or(start_);
        proceed(&Exposure::readDuration);
    });
}

void Exposure::readDuration() {
    ask("lastexposureduration", Refusal::kDoesntMatter, [this](const Json& duration) {
        const auto seconds = numberIn(duration);
        if (seconds && *seconds >= 0 && *seconds <= 2 * ordered_ + 1) seconds_ = *seconds;
        proceed(&Exposure::download);
    });
}

void Exposure::download() {
    ++downloads_;
    exchange_ = surroundings_.client.fetch(link_.question("imagearray"),
                                           std::string(kImageBytes) + ", application/json",
                                           downloadLimits(limits_), [this](Result<HttpAnswer> result) {
                                               const auto held = std::move(exchange_);
                                               try {
                                                   HttpAnswer answer = valueOf(std::move(result));
                                                   requireGood(answer, link_.device().server.text());
                                                   decode(std::move(answer));
                                               } catch (const std::runtime_error& error) {
                                                   if (downloads_ == kMostDownloads)
                                                       return fail(error.what());
                                                   next(&Exposure::download, kBetweenDownloads);
                                               }
                                           });
}

void Exposure::decode(HttpAnswer answer) {
    const auto work = std::make_shared<Decoding>(Decoding{std::move(answer), limits_});
    decoding_ = surroundings_.background.run([work] { work->run(); },
                                             [this, work] {
                                                 const auto held = std::move(decoding_);
                                                 if (!work->image) return fail(work->failure);
                                                 image_ = std::move(work->image);
                                                 progress_ = Progress::kReady;
                                                 timer_.reset();
                                             });
}

// ---- when something goes wrong

void Exposure::ask(const std::string& member, Refusal refusal, Heard heard) {
    exchange_ = link_.ask(member, [this, refusal, heard = std::move(heard)](Result<Json> result) {
        const auto held = std::move(exchange_);
        Json value;
        try {
            value = valueOf(std::move(result));
            answered_ = now();
        } catch (const UnknownMember&) {
        } catch (const DeviceError& error) {
            if (error.number() == device_error::kNotConnected) return bear(std::current_exception());
            if (refusal == Refusal::kFailsExposure && !error.isNotImplemented()) return fail(error.what());
        } catch (...) {
            return bear(std::current_exception());
        }
        heard(value);
    });
}

/// The server will come back, or it won't.
void Exposure::bear(const std::exception_ptr& failure) {
    if (now() - answered_ <= kLongestSilence) return next(step_, kBetweenDownloads);
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        fail(error.what());
    }
}

void Exposure::fail(const std::string& why) {
    progress_ = Progress::kFailed;
    failure_ = why;
    timer_.reset();
}

}  // namespace vantrel::hosts::alpaca
