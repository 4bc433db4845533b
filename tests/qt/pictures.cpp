// Writes the windows' pictures for the documentation, by day and by night.
#include <QApplication>
#include <QDir>
#include <QTabWidget>
#include <cmath>
#include <cstdio>

#include "engine/indicators.h"
#include "forms.h"

namespace vantrel::qt {
namespace {

platform::Drawing exampleDial() {
    platform::Drawing d;
    const double n = 3;
    d.scale = {-n, n, n, -n};
    for (int i = 1; i <= 3; ++i) d.shapes.emplace_back(platform::Circle{0, 0, 0.8 * i, false, 0});
    d.shapes.emplace_back(platform::Line{-0.85 * n, 0, 0.85 * n, 0, 0});
    d.shapes.emplace_back(platform::Line{0, -0.85 * n, 0, 0.85 * n, 0});
    d.shapes.emplace_back(platform::Text{0.78 * n, -0.7 * n, "30", 0});
    d.shapes.emplace_back(platform::Text{0.65 * n, -0.8 * n, "arc-min", 0});
    d.shapes.emplace_back(platform::Text{-0.05 * n, 0.98 * n, "Up", 0});
    d.shapes.emplace_back(platform::Text{-0.1 * n, -0.85 * n, "Down", 0});
    d.shapes.emplace_back(platform::Text{0.9 * n, 0.04 * n, "E", 0});
    d.shapes.emplace_back(platform::Text{-0.95 * n, 0.04 * n, "W", 0});
    d.shapes.emplace_back(platform::Circle{1.1, 1.3, 0.05 * n, true, platform::color::kRed});
    return d;
}

void fill(Forms& f) {
    using namespace platform;
    f.main.run.txtInstructions.setText(
        "Polar Align Measurement\r\nCompleted Successfully !!\r\n1. Click Next to correct\r\n      "
        "misalignment, or click\r\n      Skip Button to end");
    f.main.run.optSlewEast.select();
    f.main.plateSolve.optPinPoint.select();
    f.main.plateSolve.framePP.setVisible(true);
    f.main.plateSolve.cmbppCat.addItem("GSC-ACT", 3);
    f.main.plateSolve.cmbppCat.setText("GSC-ACT");
    f.main.plateSolve.txtCatPath.setText("C:\\");
    f.main.plateSolve.lblCatTest.setCaption("Test passed\r\n(see log)");
    f.main.setup.txtImagePath.setText("C:\\Users\\observer\\Documents\\Vantrel");
    f.main.setup.txtLogPath.setText("C:\\Users\\observer\\Documents\\Vantrel\\Message Logs");
    f.main.run.cmdRun.setEnabled(false);
    f.main.run.cmdNext.setEnabled(true);
    f.main.run.cmdSkip.setEnabled(true);
    f.main.run.cmdStop.setEnabled(true);
    f.main.run.cmdRun.setBackColor(f.theme.night() ? color::kDarkGreen : color::kRed);
    f.main.run.lblExpose.setBackColor(f.theme.night() ? color::kDarkGreen : color::kRed);
    f.main.run.lblExpose.setForeColor(f.theme.night() ? color::kIndicatorOffBack : color::kBlack);
    f.main.run.lblFrame2.setBackColor(f.main.run.lblExpose.backColor());
    f.main.run.lblFrame2.setForeColor(f.main.run.lblExpose.foreColor());
    Drawing chart;
    chart.scale = {1, 0.5, 2, -0.5};
    chart.shapes.emplace_back(Line{1.05, 0, 1.95, 0, 0});
    chart.shapes.emplace_back(Circle{1.1, -.4, 0.02, true, 0});
    chart.shapes.emplace_back(Circle{1.5, .1, 0.02, true, 0});
    chart.shapes.emplace_back(Circle{1.9, .4, 0.02, true, 0});
    f.main.errorPlot.picErrorPlot.setDrawing(chart);
    f.main.errorPlot.txtRARange.setText("20.0012");
    f.main.errorPlot.txtDecError.setText("0.1243");
    std::string log;
    for (int i = 0; i < 30; ++i)
        log += "\r\n21:05:33   Plate Solve Attempt at RA = 05:12:33  Dec = +20:11:12";
    f.log.txtLog.setText(log);
    f.popup.txtMsg.setText(" Connecting \r\n\r\nPolar-axis simulator\r\n\r\n Please Wait ");
    f.popup.setPlace({300, 300, 260, 140});
    auto& p = f.polarPlot;
    p.picPolarPlot.setDrawing(exampleDial());
    p.txtMagnitude.setText("21.28"), p.lblRA_Unit.setCaption("arc-min"),
        p.lblFromPole.setCaption(" from pole");
    p.txtAngle.setText("319.77");
    p.txtAltitudeError.setText("16.25"), p.lblElevation_Unit.setCaption("arc-min"),
        p.lblUpFromPole.setCaption(" Up from pole");
    p.txtAzimuthError.setText("17.95"), p.lblAzimuth_Unit.setCaption("arc-min"),
        p.lblRightOfPole.setCaption(" Right of pole");
    p.txtOffsetRA.setText("0.0213"), p.txtOffsetDec.setText("-0.1042");
    f.telescope.txtTelescopeName.setText("Polar-axis simulator with a camera");
    f.telescope.txtTelescopeSelectionStatus.setText(" Connected");
}

void save(QWidget& window, const QString& file) {
    QApplication::processEvents();
    window.grab().save(file);
    std::printf("%s %dx%d\n", qPrintable(file), window.width(), window.height());
}

void run(const QString& folder, bool night) {
    Forms f;
    f.theme.setNight(night);
    const auto windows = windowsFor(f.screen, f.front);
    for (platform::Form* form : f.screen.forms()) form->show();
    for (platform::Form* form :
         {static_cast<platform::Form*>(&f.main), static_cast<platform::Form*>(&f.log),
          static_cast<platform::Form*>(&f.polarPlot), static_cast<platform::Form*>(&f.telescope),
          static_cast<platform::Form*>(&f.popup)})
        form->show();
    fill(f);
    f.settle();
    for (const auto& window : windows) {
        const QString base =
            folder + "/" + QString::fromStdString(window->form().name()) + (night ? "-night" : "-day");
        if (auto* tabs = window->findChild<QTabWidget*>()) {
            for (int i = 0; i < tabs->count(); ++i) {
                tabs->setCurrentIndex(i);
                save(*window, base + QString::number(i) + ".png");
            }
        } else {
            save(*window, base + ".png");
        }
    }
}

}  // namespace
}  // namespace vantrel::qt

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const int points = argc > 2 ? std::atoi(argv[2]) : 9;
    QApplication::setFont(QFont("DejaVu Sans", points));
    const QString folder = argc > 1 ? argv[1] : ".";
    QDir().mkpath(folder);
    for (const bool night : {false, true}) vantrel::qt::run(folder, night);
}
