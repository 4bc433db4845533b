#include "engine/run_panel.h"

#include "platform/text.h"

namespace vantrel::engine {

RunPanel::RunPanel(platform::Form& form)
    : cmdRun(form, "cmdRun", "Run"),
      cmdStop(form, "cmdStop", "Stop"),
      cmdNext(form, "cmdNext", "Next"),
      cmdSkip(form, "cmdSkip", "Skip"),
      cmdAdjust(form, "cmdAdjust", "Adjust"),
      cmdExpose(form, "cmdExpose", "Expose"),
      txtInstructions(form, "txtInstructions", std::string("Click Run Button to start") + platform::kCrLf),
      txtDeltaRA(form, "txtDeltaRA", "5"),
      txtExposeInterval(form, "txtExposeInterval", "10"),
      txtDelayAfterSlew(form, "txtDelayAfterSlew", "5"),
      txtPostExpDelay(form, "txtPostExpDelay", "0"),
      txtPlates(form, "txtPlates", "3"),
      txtPlateExposures(form, "txtPlateExposures", "1"),
      chkTurnByHand(form, "chkTurnByHand", "Turn by hand"),
      lblProspect(form, "lblProspect", ""),
      cmdPreflight(form, "cmdPreflight", "Look ahead"),
      optSlewEast(form, slewDirection, "optSlewEast", "Slew East"),
      optSlewWest(form, slewDirection, "optSlewWest", "Slew West"),
      lblSlew(form, "lblSlew", "Slew"),
      lblExpose(form, "lblExpose", "Expose"),
      lblSolve(form, "lblSolve", "Solve"),
      lblFrame1(form, "lblFrame1", "1"),
      lblFrame2(form, "lblFrame2", "2"),
      lblFrame3(form, "lblFrame3", "3"),
      lblMeasure(form, "lblMeasure", "Measure"),
      lblAlt(form, "lblAlt", "Elv"),
      lblAz(form, "lblAz", "Az"),
      lblProgress(form, "lblProgress", ""),
      gaugeProgress(form, "gaugeProgress") {
    cmdStop.setEnabled(false);
    cmdNext.setEnabled(false);
    cmdSkip.setEnabled(false);
    cmdAdjust.setEnabled(false);
    txtInstructions.setReadOnly(true);
    cmdPreflight.setToolTip("The whole arc before the first slew, and where on the sky it would be better");
    chkTurnByHand.setToolTip("For a mount that can't slew: you turn its axis, the program tells how far");
    lblAlt.setVisible(false);
    lblAz.setVisible(false);
    for (platform::Label* indicator : {&lblSlew, &lblExpose, &lblSolve, &lblFrame1, &lblFrame2, &lblFrame3,
                                       &lblMeasure, &lblAlt, &lblAz}) {
        indicator->setBackColor(platform::color::kIndicatorOffBack);
        indicator->setForeColor(platform::color::kIndicatorOffFore);
    }
}

}  // namespace vantrel::engine
