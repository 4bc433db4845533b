#include "engine/preflight_desk.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "engine/angles.h"
#include "engine/interlock.h"
#include "engine/site_air.h"
#include "engine/sky_map.h"
#include "platform/text.h"

namespace vantrel::engine {

using platform::formatNumber;
using platform::leadingNumber;

PreflightDesk::PreflightDesk(frmPreflight& form, RunPanel& panel, RunState& state, const Services& services,
                             ReadText readText)
    : form_(form), panel_(panel), state_(state), services_(services), readText_(std::move(readText)) {
    panel_.cmdPreflight.onClick = [this] { form_.show(); };
    form_.onLoad = [this] {
        const auto stored = [this](const char* key, const char* usual) {
            return services_.settings.GetSetting("PolarAlign", key, usual);
        };
        form_.txtLowest.setText(stored("LowestAltitude", "15"));
        form_.txtHorizon.setText(stored("HorizonFile", ""));
        look();
    };
    const auto store = [this] {
        services_.settings.SaveSetting("PolarAlign", "LowestAltitude", form_.txtLowest.text());
        services_.settings.SaveSetting("PolarAlign", "HorizonFile", form_.txtHorizon.text());
    };
    form_.onUnload = store;
    form_.cmdLook.onClick = [this, store] {
        store();
        look();
    };
    form_.cmdSlewThere.onClick = [this] { slewThere(); };
    for (platform::Control* figure : std::initializer_list<platform::Control*>{
             &panel_.txtDeltaRA, &panel_.txtPlates, &panel_.txtPlateExposures, &panel_.optSlewEast,
             &panel_.chkTurnByHand})
        changes_.push_back(figure->changed.subscribe([this] { follow(); }));
}

void PreflightDesk::announce(const HourAnglePosition& start, const MeasurementPlan& plan) {
    start_ = {signedHours(start.ha), start.Dec};
    readSite(true);
    reportHorizon();
    const Preflight ahead = lookAhead(planAhead(plan), site_, horizon(), fitSettings(plan));
    panel_.lblProspect.setCaption(ahead.summary());
    const bool valid = ahead.prospect.validity == Validity::kValid;
    services_.log.AddToLog(valid ? "Expected: +- " + formatNumber(ahead.prospect.covariance.sigma(), "0.0") +
                                       " arc-sec"
                                 : ahead.summary());
    std::string shown;
    for (const std::string& warning : ahead.warnings()) {
        services_.log.AddToLog("Warning: " + warning);
        shown += (shown.empty() ? "" : platform::kCrLf) + warning;
    }
    constexpr double kToRead = 10;  // seconds
    if (!shown.empty()) services_.messages.ShowPopupMessage(shown, kToRead);
}

void PreflightDesk::learn(const TakenPlate& plate, int exposures) {
    const PlateCovariance& c = plate.covariance;
    centreSigma_ = std::sqrt((c.eastEast + c.northNorth) / 2 * exposures);
    rollSigma_ = std::sqrt(c.rollRoll * exposures);
}

void PreflightDesk::showProspect() {
    const MeasurementPlan plan = planAsTyped();
    panel_.lblProspect.setCaption(lookAhead(planAhead(plan), site_, horizon(), fitSettings(plan)).summary());
    if (form_.loaded()) show();
}

/// The figures change by themselves too: settings that fail are reported by what stores the figure.
void PreflightDesk::follow() {
    try {
        showProspect();
    } catch (const std::exception&) {
        panel_.lblProspect.setCaption("");
    }
}

void PreflightDesk::look() {
    const auto reading = services_.telescope.readingIfKnown();
    if (reading) start_ = {signedHours(services_.telescope.SiderealTime() - reading->RA), reading->Dec};
    readSite(reading.has_value());
    reportHorizon();
    showProspect();
}

void PreflightDesk::show() {
    const Plan plan = planAhead(planAsTyped());
    const Horizon skyline = horizon();
    const FitSettings settings = fitSettings(planAsTyped());
    const Preflight ahead = lookAhead(plan, site_, skyline, settings);
    std::string text = ahead.summary() + platform::kCrLf;
    for (std::size_t i = 0; i < ahead.plates.size(); ++i) {
        const Preflight::PlateAhead& plate = ahead.plates[i];
        text += "Plate " + std::to_string(i + 1) + ": hour angle " + formatNumber(plate.hourAngle, "0.0") +
                " h, altitude " + formatNumber(plate.place.altitude, "0") + "°, azimuth " +
                formatNumber(plate.place.azimuth, "0") + "°" + platform::kCrLf;
    }
    if (ahead.crossesMeridian)
        text += std::string("The arc crosses the meridian, where some mounts turn over") + platform::kCrLf;
    if (ahead.hoursToSix)
        text +=
            formatNumber(*ahead.hoursToSix, "0.0") + " h are left before hour angle six" + platform::kCrLf;
    for (const std::string& warning : ahead.warnings()) text += "Warning: " + warning + platform::kCrLf;
    form_.txtForecast.setText(text);

    const std::vector<StartingPlace> places = startingPlaces(plan, site_, skyline, settings);
    proposal_ = bestOf(places);
    form_.picSky.setDrawing(skyMap(places, skyline, ahead.plates, proposal_));
    form_.txtProposal.setText(proposal_ ? "Begin at hour angle " + formatNumber(proposal_->hourAngle, "0.0") +
                                              " h, declination " + formatNumber(proposal_->declination, "0") +
                                              "°: +- " + formatNumber(proposal_->sigma, "0.0") + "″"
                                        : "");
    form_.cmdSlewThere.setEnabled(proposal_.has_value());
}

/// While it lasts nothing else can be begun; Stop ends it.
void PreflightDesk::slewThere() {
    if (!proposal_ || !panel_.cmdRun.enabled()) return;
    state_.forgetStop();
    const Interlock::Engaged undisturbed(services_.interlock);
    panel_.cmdRun.setEnabled(false);
    panel_.cmdExpose.setEnabled(false);
    panel_.cmdStop.setEnabled(true);
    const double ra = NormalizeRAHours(services_.telescope.SiderealTime() - proposal_->hourAngle);
    services_.telescope.SlewToCoordinates(ra, proposal_->declination);
    if (state_.AppUnloading) return;
    panel_.cmdRun.setEnabled(true);
    panel_.cmdExpose.setEnabled(true);
    panel_.cmdStop.setEnabled(false);
    look();
}

Plan PreflightDesk::planAhead(const MeasurementPlan& plan) const {
    return {.hourAngle = start_.ha,
            .declination = start_.Dec,
            .slew = (plan.eastward ? -15 : 15) * plan.slew,
            .exposures = std::vector<int>(static_cast<std::size_t>(plan.plates), plan.exposures),
            .centreSigma = centreSigma_,
            .rollSigma = rollSigma_,
            .readings = !plan.byHand};
}

FitSettings PreflightDesk::fitSettings(const MeasurementPlan& plan) const {
    return fitSettingsFor(leadingNumber(panel_.txtExposeInterval.text()) * plan.exposures);
}

MeasurementPlan PreflightDesk::planAsTyped() const {
    const auto within = [](const platform::TextBox& box, double least, double most) {
        return std::clamp(leadingNumber(box.text()), least, most);
    };
    return {.slew = within(panel_.txtDeltaRA, 1, 45) / 15,
            .eastward = state_.SlewEast,
            .plates = static_cast<int>(within(panel_.txtPlates, kFewestPlates, kMostPlates)),
            .exposures = static_cast<int>(within(panel_.txtPlateExposures, 1, kMostExposures)),
            .byHand = panel_.chkTurnByHand.ticked()};
}

/// Where the file isn't one the lowest altitude counts all around.
Horizon PreflightDesk::horizon() const {
    const double lowest = std::clamp(
        leadingNumber(services_.settings.GetSetting("PolarAlign", "LowestAltitude", "15")), 0.0, 80.0);
    const std::string text = horizonText().value_or("");
    return Horizon::parse(text).value_or(Horizon(lowest)).notBelow(lowest);
}

std::optional<std::string> PreflightDesk::horizonText() const {
    const std::string path = services_.settings.GetSetting("PolarAlign", "HorizonFile", "");
    return path.empty() ? std::nullopt : readText_(path);
}

void PreflightDesk::reportHorizon() {
    const std::string path = services_.settings.GetSetting("PolarAlign", "HorizonFile", "");
    if (path.empty() || Horizon::parse(horizonText().value_or(""))) return;
    services_.log.AddToLog(path + " is no file of a horizon");
}

/// Without a mount the stored site counts; asking for it would be reported as the mount's failure.
void PreflightDesk::readSite(bool mountTells) {
    const auto stored = platform::parseNumber(services_.settings.GetSetting("Main", "SiteLatitude", ""));
    site_ = {.latitude = mountTells ? services_.telescope.SiteLatitude() : stored.value_or(45),
             .air = siteAir(services_.settings, services_.telescope)};
}

}  // namespace vantrel::engine
