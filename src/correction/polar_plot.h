// Shows a measurement's result: the polar plot window and the error plot of the main window.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "correction/error_plot_panel.h"
#include "correction/frm_polar_plot.h"
#include "correction/polar_chart.h"
#include "correction/result_readout.h"
#include "engine/measurement_record.h"
#include "engine/ports.h"
#include "platform/timer.h"

namespace vantrel::correction {

struct TextWithUnit {
    std::string text;
    std::string unit;
};

/// How an error in arc-minutes is shown: four decimals below one, else two.
TextWithUnit ErrorUnits(double arcMinutes);

/// The window always shows the last measurement, also while it is closed.
class PolarPlot : public engine::ResultDisplayPort {
  public:
    PolarPlot(platform::EventLoop& loop, engine::SettingsPort& settings, engine::LogPort& log,
              engine::TelescopePort& telescope, frmPolarPlot& window, ErrorPlotPanel& panel,
              ResultPanel& result);

    void clearPolarPlot() override;
    void showCheck(const engine::AxisCheck& check, const engine::Site& site, bool leastSquares) override;
    void showOffsets(const std::string& offsetRA, const std::string& offsetDec) override;
    void showBadSolution() override;
    void PlotPolar(double ErrorAmplitude, double ErrorAngle) override;
    void PlotError(const engine::PerPlate& plateRAs, const engine::PerPlate& decErrors) override;

    /// Measurements of before, in the order of time; the last one may be that which is shown.
    std::function<std::vector<engine::PastMeasurement>()> history = [] {
        return std::vector<engine::PastMeasurement>{};
    };

    /// A measurement's result stands there.
    std::function<void()> onPlotted = [] {};

    /// Arc-minutes from the pole that are good enough for the operator.
    double tolerance() const { return readout_.tolerance(); }
    /// It may be another.
    void followTolerance();

    /// Blinks the units while it is enabled.
    platform::Timer& Timer1() { return Timer1_; }

  private:
    void Form_Load();
    void Form_Unload();
    void Timer1_Tick();
    void drawAgain();
    void drawChart(double arcMinutes, double angle);
    void drawEarlier(platform::Drawing& drawing, const ChartRange& range, platform::Color color);
    void showUncertainties();
    void offerEstimate();
    bool historyWanted() const;
    void chkHistory_Click();
    void showElevationAndAzimuth(double arcMinutes, double angle);
    void showResult(const engine::PolarError& error);

    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    engine::TelescopePort& telescope_;
    frmPolarPlot& window_;
    ErrorPlotPanel& panel_;
    ResultReadout readout_;
    platform::Timer Timer1_;
    platform::Subscription toleranceTyped_;

    // What the window shows
    std::optional<engine::PolarError> plotted_;
    engine::AxisCheck check_;
    engine::Site site_{.latitude = 0, .air = engine::kNoAir};  // shows no pole but the true one
    bool leastSquares_ = false;
    bool bad_ = false;  // there is no result to show
};

}  // namespace vantrel::correction
