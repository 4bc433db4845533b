#include "correction/polar_plot.h"

#include <cmath>

#include "correction/error_plot.h"
#include "correction/polar_chart.h"
#include "engine/angles.h"
#include "engine/sky_geometry.h"
#include "platform/place_form.h"
#include "platform/text.h"

namespace vantrel::correction {

using namespace platform;

namespace {

constexpr Milliseconds kBlink{500};

}  // namespace

TextWithUnit ErrorUnits(double arcMinutes) {
    return {formatNumber(arcMinutes, std::abs(arcMinutes) < 1 ? "0.0000" : "0.00"), "arc-min"};
}

PolarPlot::PolarPlot(EventLoop& loop, engine::SettingsPort& settings, engine::LogPort& log,
                     engine::TelescopePort& telescope, frmPolarPlot& window, ErrorPlotPanel& panel)
    : settings_(settings),
      log_(log),
      telescope_(telescope),
      window_(window),
      panel_(panel),
      Timer1_(loop, kBlink) {
    Timer1_.onTick = [this] { Timer1_Tick(); };
    window_.onLoad = [this] { Form_Load(); };
    window_.onUnload = [this] { Form_Unload(); };
    panel_.cmdPolarPlot.onClick = [this] { window_.show(); };
}

void PolarPlot::clearPolarPlot() {
    window_.picPolarPlot.clear();
    showEstimate({});
}

void PolarPlot::showEstimate(const engine::AxisEstimate& estimate) {
    const auto shown = [&](TextBox& box, double value, const char* pattern) {
        box.setText(estimate.valid() ? formatNumber(value, pattern) : "");
    };
    shown(window_.txtEstimateElevation, estimate.fromTruePole.elevation, "0.00");
    shown(window_.txtEstimateAzimuth, estimate.fromTruePole.azimuth, "0.00");
    shown(window_.txtUncertainty, estimate.covariance ? estimate.covariance->sigma() : 0, "0.0");
}

void PolarPlot::showOffsets(const std::string& offsetRA, const std::string& offsetDec) {
    window_.txtOffsetRA.setText(offsetRA);
    window_.txtOffsetDec.setText(offsetDec);
}

void PolarPlot::PlotPolar(double ErrorAmplitude, double ErrorAngle) {
    const double arcMinutes = ErrorAmplitude * 60;
    drawChart(arcMinutes, ErrorAngle);

    const TextWithUnit magnitude = ErrorUnits(arcMinutes);
    window_.txtMagnitude.setText(magnitude.text);
    window_.lblRA_Unit.setCaption(magnitude.unit);
    window_.lblFromPole.setCaption(" from pole");
    window_.txtAngle.setText(formatNumber(ErrorAngle, "0.00"));

    showElevationAndAzimuth(arcMinutes, ErrorAngle);
}

void PolarPlot::drawChart(double arcMinutes, double angle) {
    const bool green = leadingNumber(settings_.GetSetting("PolarAlign", "GreenColors", "0")) != 0;
    window_.picPolarPlot.setDrawing(polarChart(arcMinutes, angle, green ? color::kDarkGreen : color::kRed));
    if (green) return;
    for (Label* unit :
         {&window_.lblRA_Unit, &window_.lblElevation_Unit, &window_.lblAzimuth_Unit, &window_.lblUnits})
        unit->setForeColor(color::kRed);
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
