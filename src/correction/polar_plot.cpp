#include "correction/polar_plot.h"

#include <cmath>

#include "correction/error_plot.h"
#include "correction/needed_tolerance.h"
#include "correction/polar_chart.h"
#include "engine/angles.h"
#include "engine/indicators.h"
#include "engine/sky_geometry.h"
#include "platform/place_form.h"
#include "platform/text.h"

namespace vantrel::correction {

using engine::shortAngle;
using namespace platform;

namespace {

constexpr Milliseconds kBlink{500};

}  // namespace

TextWithUnit ErrorUnits(double arcMinutes) {
    return {formatNumber(arcMinutes, std::abs(arcMinutes) < 1 ? "0.0000" : "0.00"), "arc-min"};
}

PolarPlot::PolarPlot(EventLoop& loop, engine::SettingsPort& settings, engine::LogPort& log,
                     engine::TelescopePort& telescope, frmPolarPlot& window, ErrorPlotPanel& panel,
                     ResultPanel& result)
    : settings_(settings),
      log_(log),
      telescope_(telescope),
      window_(window),
      panel_(panel),
      readout_(result, loop.clock(),
               [&settings] { return neededTolerance(plannedPictures(settings)).arcMinutes; }),
      Timer1_(loop, kBlink) {
    Timer1_.onTick = [this] { Timer1_Tick(); };
    window_.onLoad = [this] { Form_Load(); };
    window_.onUnload = [this] { Form_Unload(); };
    window_.chkHistory.onClick = [this] { chkHistory_Click(); };
    panel_.cmdPolarPlot.onClick = [this] { window_.show(); };
    toleranceTyped_ = result.txtTolerance.changed.subscribe([this] { drawAgain(); });
}

void PolarPlot::followTolerance() {
    readout_.judge();
    drawAgain();
}

void PolarPlot::drawAgain() {
    if (plotted_) drawChart(plotted_->ErrorAmplitude * 60, plotted_->ErrorAngle);
}

void PolarPlot::clearPolarPlot() {
    window_.picPolarPlot.clear();
    plotted_.reset();
    readout_.clear();
    window_.lblOnSky.setCaption("");
    showCheck({}, {.latitude = 0, .air = engine::kNoAir}, false);
}

void PolarPlot::showCheck(const engine::AxisCheck& check, const engine::Site& site, bool leastSquares) {
    check_ = check;
    site_ = site;
    leastSquares_ = leastSquares;
    bad_ = false;
    const engine::AxisEstimate& estimate = check.estimate;
    const auto shown = [&](TextBox& box, double value, const char* pattern) {
        box.setText(estimate.valid() ? formatNumber(value, pattern) : "");
    };
    shown(window_.txtEstimateElevation, estimate.fromTruePole.elevation, "0.00");
    shown(window_.txtEstimateAzimuth, estimate.fromTruePole.azimuth, "0.00");
    shown(window_.txtUncertainty, estimate.covariance ? estimate.covariance->sigma() : 0, "0.0");
    showUncertainties();
    offerEstimate();
}

/// One sigma in arc-seconds; of an azimuth about the vertical, as the azimuth itself.
void PolarPlot::showUncertainties() {
    const auto fill = [this](const engine::AxisEstimate& axis, TextBox& elevation, TextBox& azimuth) {
        const double cosine = std::cos(engine::degreesToRadians(site_.latitude));
        constexpr double kAtThePole = 1e-6;  // where nothing is east
        const bool known = axis.valid() && axis.covariance;
        elevation.setText(known ? formatNumber(std::sqrt(axis.covariance->upUp), "0.0") : "");
        azimuth.setText(known && cosine > kAtThePole
                            ? formatNumber(std::sqrt(axis.covariance->eastEast) / cosine, "0.0")
                            : "");
    };
    fill(leastSquares_ ? check_.estimate : check_.written, window_.txtElevationSigma,
         window_.txtAzimuthSigma);
    fill(check_.estimate, window_.txtEstimateElevationSigma, window_.txtEstimateAzimuthSigma);
}

/// Plates that don't agree make the estimate as doubtful as the written result: there is nothing to offer.
void PolarPlot::offerEstimate() {
    const bool offered = !leastSquares_ && check_.estimate.valid() &&
                         check_.verdict.agreement != engine::Agreement::kSuspicious &&
                         check_.writtenMisleads(site_);
    window_.lblDoubt.setCaption(offered ? "Trust these, not the ones above: Plates lets them count" : "");
    window_.lblDoubt.setVisible(offered);
    window_.cmdPlates.setBackColor(!offered                         ? color::kButtonFace
                                   : engine::nightVision(settings_) ? color::kDarkGreen
                                                                    : color::kRed);
}

void PolarPlot::showBadSolution() {
    window_.txtOffsetDec.setText("Bad Solution");
    bad_ = true;
}

void PolarPlot::showOffsets(const std::string& offsetRA, const std::string& offsetDec) {
    window_.txtOffsetRA.setText(offsetRA);
    window_.txtOffsetDec.setText(offsetDec);
}

void PolarPlot::PlotPolar(double ErrorAmplitude, double ErrorAngle) {
    const double arcMinutes = ErrorAmplitude * 60;
    plotted_ = {.ErrorAmplitude = ErrorAmplitude, .ErrorAngle = ErrorAngle};
    drawChart(arcMinutes, ErrorAngle);

    const TextWithUnit magnitude = ErrorUnits(arcMinutes);
    window_.txtMagnitude.setText(magnitude.text);
    window_.lblRA_Unit.setCaption(magnitude.unit);
    window_.lblFromPole.setCaption(" from pole");
    window_.txtAngle.setText(formatNumber(ErrorAngle, "0.00"));

    showElevationAndAzimuth(arcMinutes, ErrorAngle);
    showResult(*plotted_);
    onPlotted();
}

void PolarPlot::drawChart(double arcMinutes, double angle) {
    const bool green = engine::nightVision(settings_);
    const Color dotColor = green ? color::kDarkGreen : color::kRed;
    const ChartRange range = chartRange(arcMinutes);
    Drawing drawing = polarChart(arcMinutes, angle, dotColor);
    for (const Shapes& marks :
         {estimateMarks(range, check_.estimate), poleMarks(range, site_), toleranceRing(range, tolerance())})
        drawing.shapes.insert(drawing.shapes.end(), marks.begin(), marks.end());
    if (historyWanted()) drawEarlier(drawing, range, dotColor);
    if (!bad_) readout_.setDial(drawing);
    const Shapes figures = ringFigures(range);
    drawing.shapes.insert(drawing.shapes.end(), figures.begin(), figures.end());
    window_.picPolarPlot.setDrawing(std::move(drawing));
    if (green) return;
    for (Label* unit :
         {&window_.lblRA_Unit, &window_.lblElevation_Unit, &window_.lblAzimuth_Unit, &window_.lblUnits})
        unit->setForeColor(color::kRed);
}

/// Of the same site, give or take a few kilometres.
void PolarPlot::drawEarlier(Drawing& drawing, const ChartRange& range, Color color) {
    constexpr double kSameSite = 0.05;  // degrees of latitude
    const auto near = [](double a, double b, double limit) { return std::abs(a - b) < limit; };
    std::vector<engine::PolarError> earlier;
    for (const engine::PastMeasurement& one : history())
        if (one.latitude && near(*one.latitude, site_.latitude, kSameSite))
            earlier.push_back({.ErrorAmplitude = one.amplitude, .ErrorAngle = one.angle});
    constexpr double kWritten = 1e-4;  // degrees, as the history rounds
    if (!earlier.empty() && near(earlier.back().ErrorAmplitude, plotted_->ErrorAmplitude, kWritten) &&
        near(earlier.back().ErrorAngle, plotted_->ErrorAngle, kWritten))
        earlier.pop_back();
    const Shapes dots = earlierDots(range, earlier, color);
    drawing.shapes.insert(drawing.shapes.end(), dots.begin(), dots.end());
}

/// What is shown is against the pole itself, also where air lifts it.
void PolarPlot::showResult(const engine::PolarError& error) {
    if (bad_) return readout_.showFailure();
    const double latitude = telescope_.SiteLatitude();
    const engine::AxisOffset offset =
        engine::offsetFromPole(engine::northernEnd(error), latitude, std::abs(latitude));
    const auto& covariance = (leastSquares_ ? check_.estimate : check_.written).covariance;
    readout_.show(offset, error.ErrorAmplitude * 60,
                  covariance ? std::optional(covariance->sigma()) : std::nullopt);
    const double onSky = offset.azimuth * std::cos(engine::degreesToRadians(latitude));
    window_.lblOnSky.setCaption(
        Words::tr("The azimuth knob's %1 are %2 on the sky (× cosine of the latitude)",
                  {shortAngle(offset.azimuth), shortAngle(onSky)}));
}

bool PolarPlot::historyWanted() const {
    return leadingNumber(settings_.GetSetting("PolarAlign", "ShowHistory", "0")) != 0;
}

void PolarPlot::chkHistory_Click() {
    if (window_.chkHistory.ticked() == historyWanted()) return;
    settings_.SaveSetting("PolarAlign", "ShowHistory", std::to_string(window_.chkHistory.value()));
    drawAgain();
}

/// The error's parts as the adjusters turn the axis: negative below and left of the pole.
void PolarPlot::showElevationAndAzimuth(double arcMinutes, double angle) {
    const double latitude = telescope_.SiteLatitude();
    const auto axis = engine::EquatorialToAltAz(angle / 15, 90 - arcMinutes / 60, latitude);

    const TextWithUnit elevation = ErrorUnits((axis.Alt - latitude) * 60);
    window_.txtAltitudeError.setText(elevation.text);
    window_.lblElevation_Unit.setCaption(elevation.unit);
    window_.lblUpFromPole.setCaption(" Up from pole");
    log_.AddToLog("Elevation error: " + elevation.text + " " + elevation.unit);

    const TextWithUnit azimuth = ErrorUnits((180 - axis.Az) * 60);
    window_.txtAzimuthError.setText(azimuth.text);
    window_.lblAzimuth_Unit.setCaption(azimuth.unit);
    window_.lblRightOfPole.setCaption(" Right of pole");
    log_.AddToLog("Azimuth error: " + azimuth.text + " " + azimuth.unit);
}

void PolarPlot::PlotError(const engine::PerPlate& plateRAs, const engine::PerPlate& decErrors) {
    const double raSpread = engine::NormalizeRAHours(raExtent(plateRAs).span()) * 15;
    panel_.txtRARange.setText(formatNumber(raSpread, "0.0000"));
    panel_.txtDecError.setText(formatNumber(decExtent(decErrors).span(), "0.0000"));
    panel_.picErrorPlot.setDrawing(errorPlot(plateRAs, decErrors));
}

void PolarPlot::Form_Load() {
    const auto stored = [this](const char* key, int current) {
        return leadingNumber(settings_.GetSetting("PolarAlign", key, std::to_string(current)));
    };
    const double top = stored("PolarPlotTop", window_.place().top);
    const double left = stored("PolarPlotLeft", window_.place().left);
    PlaceFormOnScreen(window_, top, left);
    window_.chkHistory.setValue(historyWanted() ? 1 : 0);
    Timer1_.setEnabled(false);
}

void PolarPlot::Form_Unload() {
    Timer1_.setEnabled(false);
    settings_.SaveSetting("PolarAlign", "PolarPlotTop", std::to_string(window_.place().top));
    settings_.SaveSetting("PolarAlign", "PolarPlotLeft", std::to_string(window_.place().left));
}

void PolarPlot::Timer1_Tick() {
    const bool show = !window_.lblRA_Unit.visible();
    for (Label* unit :
         {&window_.lblRA_Unit, &window_.lblElevation_Unit, &window_.lblAzimuth_Unit, &window_.lblUnits})
        unit->setVisible(show);
}

}  // namespace vantrel::correction
