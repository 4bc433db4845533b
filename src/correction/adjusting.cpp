#include "correction/adjusting.h"

#include <algorithm>
#include <cmath>

#include "correction/polar_chart.h"
#include "correction/result_readout.h"
#include "engine/angles.h"
#include "engine/run_exits.h"
#include "engine/site_air.h"
#include "engine/waiting.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::correction {

using engine::LiveReading;
using engine::LiveState;
using engine::shortAngle;
using platform::formatNumber;
using platform::joinLines;

namespace {

constexpr platform::Milliseconds kAgeTick{1000};

/// Seconds. A camera that is gone fails at once, again and again.
constexpr double kAfterFailure = 1;

std::string plusMinus(double arcseconds) { return "± " + shortAngle(arcseconds / 60); }

/// As the operator sees it who faces the pole above the horizon.
std::string azimuthArrow(double azimuth, double latitude) {
    const bool west = azimuth > 0;
    return west == (latitude >= 0) ? "←" : "→";
}

/// Signs as a voice reads them.
std::string spokenWords(std::string text) {
    const std::pair<const char*, const char*> signs[] = {
        {"'", " minutes"}, {"″", " seconds"}, {"°", " degrees"}};
    for (const auto& [sign, word] : signs)
        for (auto at = text.find(sign); at != std::string::npos; at = text.find(sign))
            text.replace(at, std::string(sign).size(), word);
    return text;
}

}  // namespace

/// The window shows what is adjusted while one lives.
class Adjusting::Open {
  public:
    Open(Adjusting& adjusting, const engine::AxisEstimate& measured) : adjusting_(adjusting) {
        adjusting_.begin(measured);
    }
    ~Open() { adjusting_.end(); }
    Open(const Open&) = delete;
    Open& operator=(const Open&) = delete;

  private:
    Adjusting& adjusting_;
};

Adjusting::Adjusting(frmAdjust& form, engine::RunPanel& panel, engine::RunState& state,
                     const engine::Services& services, std::function<double()> tolerance,
                     std::function<void()> sound, std::function<void(const std::string&)> say)
    : form_(form),
      panel_(panel),
      state_(state),
      services_(services),
      tolerance_(std::move(tolerance)),
      sound_(std::move(sound)),
      say_(std::move(say)),
      tones_(services.loop, sound_),
      indicators_(services.settings),
      taker_(panel, state, services),
      ageTick_(services.loop, kAgeTick) {
    ageTick_.onTick = [this] { showAge(); };
    form_.onLoad = [this] { loadBolts(); };
    form_.onUnload = [this] {
        storeBolts();
        wish_ = Wish::kEnd;
    };
    form_.chkTones.onClick = [this] { hear(); };
    form_.cmdEndAdjust.onClick = [this] { wish_ = Wish::kEnd; };
    form_.cmdMeasureAgain.onClick = [this] { wish_ = Wish::kMeasureAgain; };
    form_.cmdLock.onClick = [this] { toggleLock(); };
    form_.cmdBothTurned.onClick = [this] {
        if (live_) live_->acceptJump();
    };
    for (frmAdjust::Adjuster* adjuster : {&form_.azimuth, &form_.elevation}) {
        adjuster->txtPerTurn.onLeave = [this] {
            if (reading_) showMoves(*reading_);
        };
        adjuster->chkOtherWay.onClick = [this, show = adjuster->txtPerTurn.onLeave] {
            azimuthSense_.forget();
            elevationSense_.forget();
            show();
        };
    }
}

engine::AdjustmentEnd Adjusting::adjust(const engine::AxisEstimate& measured) {
    const Open open(*this, measured);
    while (!over()) look();
    const bool again = wish_ == Wish::kMeasureAgain || state_.NextClicked;
    services_.log.AddToLog(again ? "Adjusting ended: measuring again" : "Adjusting ended");
    if (!finish_.last()) return {.measureAgain = again};
    return {.measureAgain = again, .remaining = finish_.last()->remaining};
}

void Adjusting::begin(const engine::AxisEstimate& measured) {
    site_ = {.latitude = services_.telescope.SiteLatitude(),
             .air = engine::siteAir(services_.settings, services_.telescope)};
    live_.emplace(engine::MeasuredAxisPosition{engine::northernEnd(measured.written), *measured.covariance},
                  site_, engine::LiveSettings{.fit = engine::fitSettingsFor(taker_.exposureSeconds())});
    finish_ = {};
    offset_.reset();
    shownAt_.reset();
    beganAt_.reset();
    reading_.reset();
    number_ = 0;
    spoken_.clear();
    toldDone_ = toldShift_ = toldUndriven_ = false;
    azimuthSense_.forget();
    elevationSense_.forget();
    near_ = {.RA = services_.telescope.GetTelescopeRA(), .Dec = services_.telescope.GetTelescopeDec()};

    form_.show();
    wish_ = Wish::kGoOn;
    state_.NextClicked = state_.SkipClicked = false;
    panel_.lblMeasure.setCaption("Adjust");
    panel_.txtInstructions.setAlignment(platform::Alignment::kLeft);
    panel_.txtInstructions.setText(
        joinLines({"Live Adjusting", "Turn one adjuster after the other",
                   "by the numbers in the window Adjust", "Next: measure again", "Skip: end"}));
    panel_.cmdNext.setEnabled(true);
    panel_.cmdSkip.setEnabled(true);
    form_.cmdLock.setCaption("Lock");
    form_.cmdLock.setEnabled(false);
    form_.cmdBothTurned.setEnabled(false);
    form_.cmdMeasureAgain.setEnabled(true);
    form_.cmdEndAdjust.setEnabled(true);
    form_.lblLiveState.setCaption("The first picture is taken: don't turn anything yet");
    showMoves({.state = LiveState::kDoubtful});
    showAge();
    ageTick_.setEnabled(true);
    services_.log.AddToLog("Adjusting by live pictures");
}

void Adjusting::end() {
    ageTick_.setEnabled(false);
    tones_.tell(std::nullopt);
    live_.reset();
    panel_.cmdNext.setEnabled(false);
    panel_.cmdSkip.setEnabled(false);
    engine::Indicators::switchOff(panel_.cmdNext);
    engine::Indicators::switchOff(panel_.lblExpose);
    engine::Indicators::switchOff(panel_.lblSolve);
    for (platform::Button* button :
         {&form_.cmdLock, &form_.cmdBothTurned, &form_.cmdMeasureAgain, &form_.cmdEndAdjust})
        button->setEnabled(false);
    form_.lblLiveState.setCaption("Not adjusting");
    for (frmAdjust::Adjuster* adjuster : {&form_.azimuth, &form_.elevation})
        adjuster->lblMove.setEnabled(false);
}

bool Adjusting::over() const { return wish_ != Wish::kGoOn || state_.NextClicked || state_.SkipClicked; }

void Adjusting::look() {
    const auto taken = take();
    engine::goOn(services_.loop, state_);
    if (over()) return;
    const auto reading = taken ? live_->follow(plateOf(*taken), taken->exposedLst) : std::nullopt;
    if (!reading) {
        tellNoSolution();
        engine::WaitSeconds(services_.loop, kAfterFailure);
        return engine::goOn(services_.loop, state_);
    }
    shownAt_ = taken->readAt;
    tell(*reading);
}

/// Near where the mount says that it points, as far off as the last time; else near the last place.
std::optional<engine::TakenPlate> Adjusting::take() {
    const auto mount = services_.telescope.readingIfKnown();
    const auto here = taker_.at(++number_, mount && offset_ ? *mount : near_);
    if (beganAt_) rhythm_ = here.readAt - *beganAt_;
    beganAt_ = here.readAt;
    engine::Indicators::switchOff(panel_.lblSolve);
    indicators_.SetActiveColors(panel_.lblExpose);
    try {
        const bool byMount = mount && offset_;
        const auto taken = taker_.take(here, 1, byMount ? *offset_ : engine::EquatorialPosition{});
        if (!taken || taker_.cameraFailed()) return std::nullopt;
        near_ = {.RA = taken->ra, .Dec = taken->dec};
        if (mount)
            offset_ = {.RA = engine::signedHours(taken->ra - mount->RA), .Dec = taken->dec - mount->Dec};
        return taken;
    } catch (const engine::StopExit&) {
        throw;
    } catch (const engine::Closing&) {
        throw;
    } catch (...) {
        services_.log.AddToLog(platform::errorReport(platform::currentError(), "mod Adjusting"));
        return std::nullopt;
    }
}

/// With what the mount itself says now: the plate's own reading is where it was looked for.
engine::Plate Adjusting::plateOf(const engine::TakenPlate& taken) {
    engine::Plate plate = engine::seenPlate(taken);
    plate.reading.reset();
    if (const auto mount = services_.telescope.readingIfKnown())
        plate.reading = {engine::NormalizeRAHours(taken.exposedLst - mount->RA), mount->Dec};
    return plate;
}

void Adjusting::tell(const LiveReading& reading) {
    reading_ = reading;
    finish_.add(reading, tolerance_());
    learnBolts(reading);
    showMoves(reading);
    if (!reading.driven && !toldUndriven_)
        services_.log.AddToLog("The mount doesn't track: the numbers allow for it");
    toldUndriven_ = !reading.driven;
    const std::string words = situation(reading);
    if (words != form_.lblLiveState.caption()) services_.log.AddToLog("Adjusting: " + words);
    form_.lblLiveState.setCaption(words);
    form_.cmdLock.setEnabled(finish_.last().has_value());
    form_.cmdBothTurned.setEnabled(reading.state == LiveState::kJumped);
    const bool moves = reading.trustworthy() && reading.still && !finish_.done() && !finish_.locked();
    speak(moves ? spokenWords(form_.azimuth.lblMove.caption() + ", " + form_.elevation.lblMove.caption())
                : spokenWords(words));
    showAge();
}

void Adjusting::tellNoSolution() {
    form_.lblLiveState.setCaption("No solution: clouds?");
    showAge();
}

/// Where nobody should turn anything by the numbers, there are none to follow.
void Adjusting::showMoves(const LiveReading& reading) {
    const engine::AxisOffset& left = reading.remaining;
    const bool follow = reading.trustworthy();
    const auto fill = [&](frmAdjust::Adjuster& adjuster, double arcMinutes, const std::string& move,
                          const std::string& arrow, double sigma) {
        const bool right = move.ends_with(" is right");
        adjuster.lblMove.setCaption(follow ? move : "–");
        adjuster.lblArrow.setCaption(!follow ? "" : right ? "✓" : arrow);
        adjuster.lblSigma.setCaption(follow ? plusMinus(sigma) : "");
        adjuster.lblBolt.setCaption(follow ? boltText(adjuster, arcMinutes) : "");
    };
    fill(form_.azimuth, left.azimuth, azimuthMove(left), azimuthArrow(left.azimuth, site_.latitude),
         reading.azimuthSigma);
    fill(form_.elevation, left.elevation, elevationMove(left), left.elevation > 0 ? "↓" : "↑",
         reading.elevationSigma);
    form_.lblLiveTotal.setCaption(
        follow ? "Total " + shortAngle(reading.distance) + " " + plusMinus(reading.sigma) : "");
    if (!follow) return;
    const bool green = engine::nightVision(services_.settings);
    // The end that the operator sees: in the south the written convention speaks of the other one.
    const double angle = reading.written.ErrorAngle + (site_.latitude < 0 ? 180 : 0);
    platform::Drawing dial =
        polarChart(reading.distance, angle, green ? platform::color::kDarkGreen : platform::color::kRed);
    for (platform::Shape& shape : toleranceRing(chartRange(reading.distance), tolerance_()))
        dial.shapes.push_back(std::move(shape));
    form_.picAdjust.setDrawing(std::move(dial));
}

std::string Adjusting::situation(const LiveReading& reading) {
    switch (reading.state) {
        case LiveState::kDoubtful:
            return "Wait: the picture moved as neither adjuster moves it";
        case LiveState::kIndistinct:
            return "Both adjusters look alike here: slew to the meridian, declination " +
                   formatNumber(engine::distinctPlace(near_.Dec, site_.latitude), "0") + "°";
        case LiveState::kJumped:
            return "The mount was bumped by " + shortAngle(reading.jump / 60) + ", or both were turned";
        case LiveState::kTrackingOff:
            return "Tracking is off";
        case LiveState::kSlewed:
            return "Slewed by another program";
        case LiveState::kFollowing:
            break;
    }
    if (const auto shift = finish_.shift(site_.latitude)) return lockedSituation(*shift);
    const std::string limit = shortAngle(tolerance_());
    soundOnce(finish_.done(), toldDone_);
    if (finish_.done()) return "Done: within " + limit + ". Press Lock, and tighten the bolts";
    if (!reading.still) return "Moving";
    return "Not yet within " + limit + (reading.driven ? "" : ", without tracking");
}

std::string Adjusting::lockedSituation(double shift) {
    const bool tooFar = shift > tolerance_();
    soundOnce(tooFar, toldShift_);
    return "Locked: moved by " + shortAngle(shift) + (tooFar ? ", more than the tolerance" : "");
}

std::string Adjusting::boltText(const frmAdjust::Adjuster& adjuster, double arcMinutes) const {
    const std::string turns = boltTurns(arcMinutes, platform::leadingNumber(adjuster.txtPerTurn.text()));
    if (turns.empty()) return "";
    // West, or up.
    const bool wanted = &adjuster == &form_.azimuth ? arcMinutes > 0 : arcMinutes < 0;
    return turns + (wanted != adjuster.chkOtherWay.ticked() ? " clockwise" : " counter-clockwise");
}

/// By what was read before this plate; while the bolts are tightened, both move as they like.
void Adjusting::learnBolts(const LiveReading& reading) {
    if (!reading.trustworthy() || finish_.locked()) {
        azimuthSense_.forget();
        elevationSense_.forget();
        return;
    }
    const double toSky = std::cos(engine::degreesToRadians(site_.latitude));
    const double azimuth = reading.remaining.azimuth * toSky;
    const double elevation = reading.remaining.elevation;
    learnBolt(form_.azimuth, azimuthSense_,
              {azimuth, elevation, reading.azimuthSigma * toSky / 60, reading.still}, "azimuth");
    learnBolt(form_.elevation, elevationSense_,
              {elevation, azimuth, reading.elevationSigma / 60, reading.still}, "elevation");
}

void Adjusting::learnBolt(frmAdjust::Adjuster& adjuster, BoltSense& sense, const BoltSense::Look& look,
                          const char* name) {
    BoltSense::Look now = look;
    now.told = !boltText(adjuster, look.left).empty();
    if (!sense.wrong(now)) return;
    adjuster.chkOtherWay.setValue(adjuster.chkOtherWay.ticked() ? 0 : 1);
    const std::string words =
        "The " + std::string(name) + " bolt goes the other way: clockwise and counter-clockwise are swapped";
    services_.log.AddToLog(words);
    constexpr double kSeconds = 5;
    services_.messages.ShowPopupMessage(words, kSeconds);
}

/// Old numbers are dimmed.
void Adjusting::showAge() {
    constexpr int kExposures = 3;
    if (!shownAt_) return form_.lblAge.setCaption("");
    const auto age = services_.loop.clock().sinceStart() - *shownAt_;
    const auto most = std::max<platform::Milliseconds>(rhythm_, std::chrono::seconds{2}) * kExposures;
    form_.lblAge.setCaption(formatNumber(std::chrono::duration<double>(age).count(), "0") + " s old");
    for (platform::Label* label : {&form_.azimuth.lblMove, &form_.elevation.lblMove, &form_.azimuth.lblArrow,
                                   &form_.elevation.lblArrow, &form_.lblLiveTotal})
        label->setEnabled(age <= most);
    hear();
}

/// Numbers that are dimmed, or that nobody should follow, aren't heard.
void Adjusting::hear() {
    const bool heard = form_.chkTones.ticked() && live_ && reading_ && reading_->trustworthy() &&
                       !finish_.locked() && form_.azimuth.lblMove.enabled();
    tones_.tell(heard ? std::optional(reading_->distance / tolerance_()) : std::nullopt);
}

/// Not what was said last, nor into the middle of it.
void Adjusting::speak(const std::string& words) {
    constexpr std::chrono::seconds kSaying{5};
    const auto now = services_.loop.clock().sinceStart();
    if (!say_ || !form_.chkSpoken.ticked() || words == spoken_) return;
    if (!spoken_.empty() && now - spokenAt_ < kSaying) return;
    spoken_ = words;
    spokenAt_ = now;
    say_(words);
}

void Adjusting::toggleLock() {
    if (!live_) return;
    if (finish_.locked()) {
        finish_.unlock();
    } else {
        finish_.lock();
        toldShift_ = false;
    }
    live_->setLocked(finish_.locked());
    form_.cmdLock.setCaption(finish_.locked() ? "Unlock" : "Lock");
    services_.log.AddToLog(finish_.locked() ? "Adjusting: locked" : "Adjusting: unlocked");
}

void Adjusting::soundOnce(bool now, bool& told) {
    if (now && !told && sound_ && form_.chkDoneSound.ticked()) sound_();
    told = now;
}

void Adjusting::loadBolts() {
    const auto stored = [this](const char* key, const char* usual) {
        return services_.settings.GetSetting("PolarAlign", key, usual);
    };
    form_.azimuth.txtPerTurn.setText(stored("AzimuthPerTurn", ""));
    form_.elevation.txtPerTurn.setText(stored("ElevationPerTurn", ""));
    form_.azimuth.chkOtherWay.setValue(stored("AzimuthOtherWay", "0") == "1" ? 1 : 0);
    form_.elevation.chkOtherWay.setValue(stored("ElevationOtherWay", "0") == "1" ? 1 : 0);
    form_.chkDoneSound.setValue(stored("DoneSound", "1") == "1" ? 1 : 0);
    form_.chkTones.setValue(stored("Tones", "0") == "1" ? 1 : 0);
    form_.chkSpoken.setValue(stored("Spoken", "0") == "1" ? 1 : 0);
}

void Adjusting::storeBolts() {
    const auto store = [this](const char* key, const std::string& value) {
        services_.settings.SaveSetting("PolarAlign", key, value);
    };
    store("AzimuthPerTurn", form_.azimuth.txtPerTurn.text());
    store("ElevationPerTurn", form_.elevation.txtPerTurn.text());
    store("AzimuthOtherWay", std::to_string(form_.azimuth.chkOtherWay.value()));
    store("ElevationOtherWay", std::to_string(form_.elevation.chkOtherWay.value()));
    store("DoneSound", std::to_string(form_.chkDoneSound.value()));
    store("Tones", std::to_string(form_.chkTones.value()));
    store("Spoken", std::to_string(form_.chkSpoken.value()));
}

}  // namespace vantrel::correction
