#include "observatory/panel/simulator_panel.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/errors.h"
#include "platform/text.h"
#include "sky/epoch.h"
#include "sky/vector3.h"

namespace vantrel::observatory {

using platform::formatNumber;
using platform::Words;
using sky::kDegree;

namespace {

/// What the operator wrote can't be used.
struct Refused {
    Words why;
};

/// A press of the hand controller.
struct Rate {
    const char* angle;
    double arcmin;

    Words name() const { return Words::tr("%1 a press", {angle}); }
};
constexpr std::array kRates{Rate{"15\"", 0.25}, Rate{"2'", 2}, Rate{"15'", 15}, Rate{"2°", 120}};

/// 1.5 as "1h 30m".
std::string hoursAndMinutes(double hours) {
    const int minutes = static_cast<int>(std::lround(std::abs(hours) * 60));
    return std::to_string(minutes / 60) + "h " + formatNumber(minutes % 60, "00") + "m";
}

std::string signedDegrees(double degrees, const char* pattern) {
    return (degrees < 0 ? "-" : "+") + formatNumber(std::abs(degrees), pattern) + "°";
}

/// How far from the meridian, in steps of ten minutes, so that the list keeps still.
Words whereItStands(const StarNow& star) {
    const std::string name = brightStars()[star.index].name;
    const std::string declination = signedDegrees(star.place.declination, "0");
    const double rounded = std::round(star.hourAngle * 6) / 6;
    if (rounded == 0) return Words::tr("%1, %2, on the meridian", {name, declination});
    const std::string hours = hoursAndMinutes(rounded);
    return rounded < 0 ? Words::tr("%1, %2, %3 east", {name, declination, hours})
                       : Words::tr("%1, %2, %3 west", {name, declination, hours});
}

Words entryOf(const StarNow& star) {
    const Words where = whereItStands(star);
    switch (star.suitability) {
        case Suitability::kBest:
            return Words::tr("%1 - best", {where});
        case Suitability::kGood:
            return Words::tr("%1 - good", {where});
        default:
            return Words::tr("%1 - to sync on", {where});
    }
}

}  // namespace

SimulatorPanel::SimulatorPanel(platform::EventLoop& loop, platform::AutomationHost& host, NoiseSource& chance,
                               frmSimulator& window)
    : loop_(loop),
      host_(host),
      chance_(chance),
      window_(window),
      timer_(loop, platform::Milliseconds{250}),
      fields_{{window.txtAzimuthError, "PolarAzimuthError", "0.00", ""},
              {window.txtElevationError, "PolarElevationError", "0.00", ""},
              {window.txtLatitude, "SiteLatitude", nullptr, "", platform::SiteAxis::kLatitude},
              {window.txtLongitude, "SiteLongitude", nullptr, "", platform::SiteAxis::kLongitude},
              {window.txtFocalLength, "FocalLength", nullptr, ""},
              {window.txtPixelSize, "PixelSize", nullptr, ""},
              {window.txtWidth, "CameraWidth", "0", ""},
              {window.txtHeight, "CameraHeight", "0", ""},
              {window.txtRotation, "CameraRotation", nullptr, ""},
              {window.txtExposure, "ExposureTime", nullptr, ""},
              {window.txtSeeing, "Seeing", nullptr, ""},
              {window.txtSkyLevel, "SkyLevel", nullptr, ""},
              {window.txtLimitingMagnitude, "LimitingMagnitude", nullptr, ""},
              {window.txtHotPixels, "HotPixels", nullptr, ""},
              {window.txtPointingNoise, "PointingNoise", nullptr, ""},
              {window.txtAirPressure, "AirPressure", nullptr, ""},
              {window.txtAirTemperature, "AirTemperature", nullptr, ""},
              {window.txtRollNoise, "RollNoise", nullptr, ""},
              {window.txtFlexure, "Flexure", nullptr, ""},
              {window.txtDeclinationJump, "DeclinationJump", nullptr, ""},
              {window.txtDeclinationJumpSlew, "DeclinationJumpSlew", nullptr, ""},
              {window.txtPeriodicError, "PeriodicError", nullptr, ""},
              {window.txtWormPeriod, "WormPeriod", nullptr, ""},
              {window.txtClockError, "ClockError", nullptr, ""}},
      switches_{{window.chkTracking, "Tracking"},
                {window.chkMirrored, "CameraMirrored"},
                {window.chkRefraction, "Refraction"}} {
    window_.onLoad = [this] { open(); };
    window_.onUnload = [this] { close(); };
    timer_.onTick = [this] {
        try {
            refresh();
        } catch (const platform::OperationError& error) {
            window_.lblStatus.setCaption(error.description());
        }
    };
    for (Field& field : fields_) field.box.onLeave = [this, &field] { put(field); };
    for (const Switch& box : switches_) box.box.onClick = [this, &box] { put(box); };
    tieAdjusters();
    tieMount();
}

void SimulatorPanel::tieAdjusters() {
    for (std::size_t i = 0; i < frmSimulator::kTurns.size(); ++i) {
        const double turn = frmSimulator::kTurns[i];
        window_.azimuth.turns[i].onClick = [this, turn] {
            attempt([&] { simulator_->call("TurnAzimuthAdjuster", {turn}); });
        };
        window_.elevation.turns[i].onClick = [this, turn] {
            attempt([&] { simulator_->call("TurnElevationAdjuster", {turn}); });
        };
    }
    window_.cmdAskew.onClick = [this] { setAskew(); };
    window_.chkShowError.onClick = [this] {
        for (platform::TextBox* box : {&window_.txtAzimuthError, &window_.txtElevationError})
            box->setVisible(window_.chkShowError.ticked());
    };
}

void SimulatorPanel::tieMount() {
    for (const Rate& rate : kRates) window_.cmbRate.addItem(rate.name());
    window_.cmbRate.setText(kRates[1].name());
    window_.cmdNorth.onClick = [this] { nudge(0, 1); };
    window_.cmdSouth.onClick = [this] { nudge(0, -1); };
    window_.cmdEast.onClick = [this] { nudge(1, 0); };
    window_.cmdWest.onClick = [this] { nudge(-1, 0); };
    window_.cmdHalt.onClick = [this] {
        centering_.reset();
        attempt([this] { simulator_->call("AbortSlew"); });
    };
    window_.cmbStar.onClick = [this] { chooseStar(); };
    window_.cmdGoToStar.onClick = [this] { goToStar(); };
    window_.cmdCenterStar.onClick = [this] { centerStar(); };
    window_.cmdSync.onClick = [this] { sync(); };
}

void SimulatorPanel::open() {
    attempt([this] { simulator_ = host_.create("AxisSimulator.Telescope"); });
    if (!simulator_) return;
    timer_.setEnabled(true);
    starsDue_ = {};
    attempt([] {});
}

void SimulatorPanel::close() {
    timer_.setEnabled(false);
    centering_.reset();
    simulator_.reset();
}

double SimulatorPanel::number(const char* member) const { return simulator_->get(member).toDouble(); }

void SimulatorPanel::attempt(const std::function<void()>& wish) {
    window_.lblStatus.setCaption("");
    try {
        wish();
        if (simulator_) refresh();
    } catch (const Refused& refused) {
        window_.lblStatus.setCaption(refused.why);
    } catch (const platform::OperationError& error) {
        window_.lblStatus.setCaption(error.description());
    }
}

// ---- what the window shows

void SimulatorPanel::refresh() {
    for (Field& field : fields_) {
        const std::string text = textFor(field);
        if (text == field.shown) continue;  // what stands there otherwise, the operator is typing
        field.shown = text;
        field.box.setText(text);
    }
    for (const Switch& box : switches_) box.box.setValue(simulator_->get(box.member).toBool() ? 1 : 0);
    refreshMount();
    refreshField();
    if (loop_.clock().sinceStart() >= starsDue_) refreshStars();
}

std::string SimulatorPanel::textFor(const Field& field) const {
    const double value = number(field.member);
    return field.pattern == nullptr ? platform::toText(value) : formatNumber(value, field.pattern);
}

void SimulatorPanel::refreshMount() {
    if (!simulator_->get("Connected").toBool()) {
        centering_.reset();
        for (platform::TextBox* readout :
             {&window_.txtRA, &window_.txtDec, &window_.txtHourAngle, &window_.txtAltitude})
            readout->setText("");
        window_.lblState.setCaption(Words::tr("Not connected"));
        return;
    }
    const double ra = number("RightAscension");
    window_.txtRA.setText(hoursAndMinutes(ra));
    window_.txtDec.setText(signedDegrees(number("Declination"), "0.00"));
    const double hourAngle = std::remainder(number("SiderealTime") - ra, 24);
    window_.txtHourAngle.setText(hoursAndMinutes(hourAngle) + (hourAngle < 0 ? " E" : " W"));
    window_.txtAltitude.setText(signedDegrees(number("Altitude"), "0.0"));
    window_.lblState.setCaption(simulator_->get("Slewing").toBool()    ? Words::tr("Slewing")
                                : simulator_->get("AtPark").toBool()   ? Words::tr("Parked")
                                : simulator_->get("Tracking").toBool() ? Words::tr("Tracking")
                                                                       : Words::tr("Standing still"));
    followCentering();
}

void SimulatorPanel::refreshStars() {
    starsDue_ = loop_.clock().sinceStart() + std::chrono::seconds{10};
    stars_ = starsUp(loop_.clock().utc(), number("SiteLatitude"), number("SiteLongitude"));
    std::vector<platform::ComboBox::Item> items;
    for (const StarNow& star : stars_) items.push_back({entryOf(star), static_cast<int>(star.index)});
    window_.cmbStar.setItems(items);
    const auto chosen = std::find_if(stars_.begin(), stars_.end(),
                                     [this](const StarNow& star) { return star.index == star_; });
    if (chosen == stars_.end()) star_ = stars_.empty() ? std::nullopt : std::optional(stars_.front().index);
    for (const StarNow& star : stars_)
        if (star.index == star_) window_.cmbStar.setText(entryOf(star));
    for (platform::Button* button : {&window_.cmdGoToStar, &window_.cmdCenterStar, &window_.cmdSync})
        button->setEnabled(star_.has_value());
    window_.lblStarHint.setCaption(Words::tr(
        "Correct on a star near the meridian and near the equator: that is what the mark is made for. The "
        "list begins with the best."));
}

void SimulatorPanel::refreshField() {
    const double scale = std::atan(number("PixelSize") / 1000 / number("FocalLength")) / kDegree;  // degrees
    window_.lblField.setCaption(Words::tr(
        "%1 a pixel, %2 by %3",
        {formatNumber(scale * 3600, "0.00") + "\"", formatNumber(scale * number("CameraWidth"), "0.00") + "°",
         formatNumber(scale * number("CameraHeight"), "0.00") + "°"}));
}

// ---- what the operator does

void SimulatorPanel::put(Field& field) {
    const std::string text = field.box.text();
    if (!simulator_ || text == field.shown) return;
    field.shown.clear();  // whatever the simulator makes of it is shown
    attempt([&] {
        simulator_->put(field.member, numberIn(field));
        starsDue_ = {};  // the site may have changed
    });
    if (field.shown.empty()) {
        field.shown = textFor(field);
        field.box.setText(field.shown);
    }
}

double SimulatorPanel::numberIn(const Field& field) {
    const std::string& text = field.box.text();
    if (field.axis) {
        const auto angle = platform::readSiteAngle(text, *field.axis);
        if (!angle)
            throw Refused{Words::tr("%1. %2", {platform::noSiteAngle(text, *field.axis),
                                               platform::howToWriteSiteAngle(*field.axis)})};
        return angle->degrees;
    }
    const auto value = platform::parseNumber(text);
    if (!value) throw Refused{Words::tr("%1 is no number", {text})};
    return *value;
}

/// Also called when the window follows the simulator, which then holds this value already.
void SimulatorPanel::put(const Switch& box) {
    attempt([&] {
        if (simulator_->get(box.member).toBool() != box.box.ticked())
            simulator_->put(box.member, box.box.ticked());
    });
}

void SimulatorPanel::setAskew() {
    constexpr double kLeast = 10;  // arc-minutes
    constexpr double kMost = 120;
    const auto somewhere = [this] {
        const double size = kLeast + (kMost - kLeast) * chance_.uniform();
        return chance_.uniform() < 0.5 ? -size : size;
    };
    window_.chkShowError.setValue(0);
    attempt([&] {
        simulator_->put("PolarAzimuthError", somewhere());
        simulator_->put("PolarElevationError", somewhere());
    });
}

void SimulatorPanel::slewTo(double ra, double dec) {
    aim_ = {ra - 24 * std::floor(ra / 24), std::clamp(dec, -90.0, 90.0)};
    simulator_->call("SlewToCoordinatesAsync", {aim_.rightAscension, aim_.declination});
}

/// Steps that come faster than the mount moves add up.
void SimulatorPanel::nudge(double raStep, double decStep) {
    centering_.reset();
    attempt([&] {
        double step = kRates[0].arcmin;
        for (const Rate& rate : kRates)
            if (window_.cmbRate.text() == rate.name().english()) step = rate.arcmin;
        if (!simulator_->get("Slewing").toBool()) aim_ = {number("RightAscension"), number("Declination")};
        const double narrow = std::max(0.02, std::cos(aim_.declination * kDegree));
        slewTo(aim_.rightAscension + raStep * step / 60 / 15 / narrow,
               aim_.declination + decStep * step / 60);
    });
}

void SimulatorPanel::chooseStar() {
    if (const auto* item = window_.cmbStar.chosen()) star_ = static_cast<std::size_t>(item->data);
}

void SimulatorPanel::goToStar() {
    centering_.reset();
    attempt([this] {
        const PlaceOfDate place = placeOfDate(brightStars()[*star_], loop_.clock().utc());
        slewTo(place.rightAscension, place.declination);
    });
}

void SimulatorPanel::centerStar() {
    constexpr int kSlews = 6;
    centering_ = Centering{*star_, kSlews};
    attempt([] {});
}

/// Looks how far the star is from the middle of the picture, and slews by as much.
void SimulatorPanel::followCentering() {
    constexpr double kNearEnough = 5;  // arc-seconds
    if (!centering_ || simulator_->get("Slewing").toBool()) return;
    const BrightStar& star = brightStars()[centering_->star];
    const PlaceOfDate place = placeOfDate(star, loop_.clock().utc());
    // Whatever the mount's clock says, the star stands where it stands.
    const double siderealTime = sky::SkyOfDate(loop_.clock().utc()).siderealTime(number("SiteLongitude"));
    const double hourAngle = std::remainder(siderealTime - place.rightAscension, 24);
    const double east = std::remainder(number("CameraAxisHourAngle") - hourAngle, 24);
    const double north = place.declination - number("CameraAxisDeclination");
    const double off = 3600 * std::hypot(15 * east * std::cos(place.declination * kDegree), north);
    if (off < kNearEnough || centering_->slewsLeft == 0) {
        window_.lblStatus.setCaption(
            off < kNearEnough
                ? Words::tr("%1 is in the middle of the picture.", {star.name})
                : Words::tr("%1 is %2 off the middle.", {star.name, formatNumber(off, "0") + "\""}));
        centering_.reset();
        return;
    }
    --centering_->slewsLeft;
    window_.lblStatus.setCaption(Words::tr("Centering %1", {star.name}));
    slewTo(number("RightAscension") + east, number("Declination") + north);
}

void SimulatorPanel::sync() {
    attempt([this] {
        const BrightStar& star = brightStars()[*star_];
        const PlaceOfDate place = placeOfDate(star, loop_.clock().utc());
        simulator_->call("SyncToCoordinates", {place.rightAscension, place.declination});
        window_.lblStatus.setCaption(Words::tr("Synced on %1", {star.name}));
    });
}

}  // namespace vantrel::observatory
