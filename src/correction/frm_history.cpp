#include "correction/frm_history.h"

namespace vantrel::correction {

frmHistory::frmHistory(platform::Screen& screen)
    : Form(screen, "frmHistory", "Measurements", {180, 150, 640, 400}),
      picHistory(*this, "picHistory"),
      cmbMeasurement(*this, "cmbMeasurement"),
      txtMeasurement(*this, "txtMeasurement"),
      cmdOK(*this, "cmdOK", "OK") {
    txtMeasurement.setReadOnly(true);
    cmdOK.onClick = [this] { unload(); };
}

}  // namespace vantrel::correction
