#include "engine/frm_plates.h"

#include <string>

namespace vantrel::engine {
namespace {

std::string member(const char* name, int number) { return name + ("(" + std::to_string(number) + ")"); }

}  // namespace

frmPlates::Row::Row(platform::Form& form, int number)
    : chkPlate(form, member("chkPlate", number), std::to_string(number)),
      lblHourAngle(form, member("lblHourAngle", number), ""),
      lblDeclination(form, member("lblDeclination", number), ""),
      lblAlong(form, member("lblAlong", number), ""),
      lblAcross(form, member("lblAcross", number), "") {
    chkPlate.setToolTip("The plate counts");
}

frmPlates::frmPlates(platform::Screen& screen)
    : Form(screen, "frmPlates", "Plates", {220, 180, 420, 300}),
      cmbRedo(*this, "cmbRedo"),
      cmdRedo(*this, "cmdRedo", "Redo"),
      txtVerdict(*this, "txtVerdict"),
      chkEstimate(*this, "chkEstimate", "Least squares count"),
      cmdOK(*this, "cmdOK", "OK") {
    for (int number = 1; number <= kMostPlates + 1; ++number)
        rows.push_back(std::make_unique<Row>(*this, number));
    cmdRedo.setToolTip("Slew to this plate and take it again");
    txtVerdict.setReadOnly(true);
    chkEstimate.setToolTip("Show and correct the least-squares result of this measurement");
    cmdOK.onClick = [this] { unload(); };
}

}  // namespace vantrel::engine
