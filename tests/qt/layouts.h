// What windows are laid out for: font sizes, languages, and the longest texts that occur.
#pragma once

#include <QApplication>
#include <QFont>
#include <QTranslator>
#include <optional>
#include <ostream>
#include <stdexcept>

#include "correction/result_readout.h"
#include "platform/user_machine.h"
#include "qt/forms.h"

namespace vantrel::qt {

/// The windows in German, as long as it lives.
class InGerman {
  public:
    InGerman() {
        const auto folder = platform::sharedDataFolder() / "translations";
        if (!german_.load("vantrel_de", QString::fromStdString(folder.string())))
            throw std::runtime_error("no translation in " + folder.string());
        QCoreApplication::installTranslator(&german_);
    }
    ~InGerman() { QCoreApplication::removeTranslator(&german_); }
    InGerman(const InGerman&) = delete;
    InGerman& operator=(const InGerman&) = delete;

  private:
    QTranslator german_;
};

struct Layout {
    int points;
    bool german = false;
    friend void PrintTo(const Layout& layout, std::ostream* out) {
        *out << layout.points << (layout.german ? " points, German" : " points, English");
    }
};

inline constexpr Layout kLayouts[] = {{9}, {11}, {13}, {9, true}, {13, true}};

/// Windows that are made meanwhile are laid out so.
class WithLayout {
  public:
    explicit WithLayout(const Layout& layout) : before_(QApplication::font()) {
        QApplication::setFont(QFont("DejaVu Sans", layout.points));
        if (layout.german) german_.emplace();
    }
    ~WithLayout() { QApplication::setFont(before_); }
    WithLayout(const WithLayout&) = delete;
    WithLayout& operator=(const WithLayout&) = delete;

  private:
    QFont before_;
    std::optional<InGerman> german_;
};

/// Everything shown and filled with the longest texts that occur.
inline void fill(Forms& forms) {
    using platform::Words;
    for (platform::Form* form : forms.screen.forms()) form->show();
    forms.main.run.optSlewEast.select();
    forms.main.plateSolve.framePP.setVisible(true);
    forms.main.plateSolve.frameTheSky.setVisible(true);
    forms.main.plateSolve.cmbppCat.addItem("USNO-B-Net", 8);
    forms.main.plateSolve.cmbppCat.setText("USNO-B-Net");
    forms.main.plateSolve.lblCatTest.setCaption("Test passed\r\n(see log)");
    forms.main.errorPlot.txtRARange.setText("90.0000");
    forms.main.errorPlot.txtDecError.setText("-10.1243");
    forms.main.result.lblAzimuthAdvice.setCaption(correction::azimuthAdvice({.azimuth = 118.8}));
    forms.main.result.lblElevationAdvice.setCaption(correction::elevationAdvice({.elevation = 118.8}));
    forms.main.result.lblTotal.setCaption(
        Words::tr("Total %1, measured at %2", {"118.8' ± 118.8″", "22:22"}));
    forms.main.result.lblVerdict.setCaption(Words::tr("Not yet within %1", {"10.0'"}));
    const Words exposing = Words::tr("%1: exposing", {Words::tr("Plate %1 of %2", {"2", "3"})});
    forms.main.run.lblProgress.setCaption(
        Words::tr("%1; about %2 left", {Words::tr("%1, %2 of %3 s", {exposing, "16", "20"}), "1 min 40 s"}));
    forms.main.status.cmdMountStatus.setCaption(Words::tr("Mount ready"));
    forms.main.status.cmdCameraStatus.setCaption(Words::tr("Camera failed"));
    forms.main.status.cmdSolverStatus.setCaption(Words::tr("Solver ready"));
    forms.main.guidance.lblStarToTarget.setCaption("star to target 999.9' (9999 px)");
    forms.main.guidance.setReadingsVisible(true);
    forms.main.run.cmdExpose.setCaption("Stoping Exp.");
    forms.main.run.lblMeasure.setCaption("Correct");
    auto& plot = forms.polarPlot;
    for (platform::TextBox* box : {&plot.txtMagnitude, &plot.txtAngle, &plot.txtAltitudeError,
                                   &plot.txtAzimuthError, &plot.txtOffsetRA, &plot.txtOffsetDec})
        box->setText("-1234.56");
    for (platform::TextBox* sigma : {&plot.txtElevationSigma, &plot.txtAzimuthSigma,
                                     &plot.txtEstimateElevationSigma, &plot.txtEstimateAzimuthSigma})
        sigma->setText("1234.5");
    plot.lblDoubt.setCaption("Trust these, not the ones above: Plates lets them count");
    plot.lblDoubt.setVisible(true);
    forms.history.cmbMeasurement.setText("2026-11-24 20:00:12");
    for (platform::Label* unit : {&plot.lblRA_Unit, &plot.lblElevation_Unit, &plot.lblAzimuth_Unit})
        unit->setCaption("arc-min");
    auto& mount = forms.simulator;
    for (platform::TextBox* box : {&mount.txtAzimuthError, &mount.txtElevationError}) box->setText("-120.00");
    for (platform::TextBox* box : {&mount.txtRA, &mount.txtHourAngle, &mount.txtAltitude})
        box->setText("23h 59m E");
    mount.lblState.setCaption(Words::tr("Standing still"));
    mount.cmbStar.setText(
        Words::tr("%1 - to sync on", {Words::tr("%1, %2, %3 east", {"Kaus Australis", "-34°", "5h 50m"})}));
    mount.lblField.setCaption(Words::tr("%1 a pixel, %2 by %3", {"10.00\"", "10.39°", "10.04°"}));
    mount.lblStatus.setCaption("The mount can't slew to coordinates while it isn't tracking");
    plot.lblRightOfPole.setCaption(" Right of pole");
    forms.adjust.lblPhone.setCaption("http://192.168.188.188:41233/0123456789abcdef0123456789abcdef/");
    auto& plate = forms.solvePicture;
    plate.lblOutcome.setCaption(Words::tr(
        "%1; the picture is mirrored",
        {Words::tr("Solved in %1 s by %2 stars, off by %3\" on average", {"12.3", "1234", "0.41"})}));
    plate.txtCentreRA.setText("23h 59m 59.999s");
    plate.txtCentreDec.setText("-89° 59' 59.99\"");
    plate.txtScale.setText("100.1234 x 100.1234");
    plate.txtField.setText("100.123 x 100.123");
    plate.txtMatched.setText("1234 / 2000");
    forms.popup.txtMsg.setText("\r\n Connecting to Camera \r\n\r\n Please wait \r\n");
    platform::Drawing dial;
    dial.scale = {-1, 1, 1, -1};
    dial.shapes = {platform::Circle{0, 0, 0.8}, platform::Line{-0.8, 0, 0.8, 0},
                   platform::DrawnText{-0.05, 0.98, "Up"},
                   platform::Circle{0.2, 0.3, 0.05, true, platform::color::kDarkGreen}};
    plot.picPolarPlot.setDrawing(dial);
}

}  // namespace vantrel::qt
