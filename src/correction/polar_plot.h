// Shows a measurement's result: the polar plot window and the error plot of the main window.
#pragma once

#include <string>

#include "correction/error_plot_panel.h"
#include "correction/frm_polar_plot.h"
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
              engine::TelescopePort& telescope, frmPolarPlot& window, ErrorPlotPanel& panel);

    void clearPolarPlot() override;
    void showEstimate(const engine::AxisEstimate& estimate) override;
    void showOffsets(const std::string& offsetRA, const std::string& offsetDec) override;
    void showBadSolution() override { window_.txtOffsetDec.setText("Bad Solution"); }
    void PlotPolar(double ErrorAmplitude, double ErrorAngle) override;
    void PlotError(const engine::PerPlate& plateRAs, const engine::PerPlate& decErrors) override;

    /// Blinks the units while it is enabled.
    platform::Timer& Timer1() { return Timer1_; }

  private:
    void Form_Load();
    void Form_Unload();
    void Timer1_Tick();
    void drawChart(double arcMinutes, double angle);
    void showElevationAndAzimuth(double arcMinutes, double angle);

    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    engine::TelescopePort& telescope_;
    frmPolarPlot& window_;
    ErrorPlotPanel& panel_;
    platform::Timer Timer1_;
};

}  // namespace vantrel::correction
