// The window of the plates that the last measurement took: how they agree, and which of them count.
#pragma once

#include <memory>
#include <vector>

#include "engine/measurement_plan.h"
#include "platform/form.h"

namespace vantrel::engine {

class frmPlates : public platform::Form {
  public:
    explicit frmPlates(platform::Screen& screen);

    struct Row {
        Row(platform::Form& form, int number);

        platform::CheckBox chkPlate;  // it counts
        platform::Label lblHourAngle, lblDeclination, lblAlong, lblAcross;
    };
    std::vector<std::unique_ptr<Row>> rows;  // as many as a measurement can have, with the closing one

    platform::ComboBox cmbRedo;  // a plate's number
    platform::Button cmdRedo;
    platform::TextBox txtVerdict;
    platform::CheckBox chkEstimate;  // the least-squares result is shown and corrected with
    platform::Button cmdOK;
};

}  // namespace vantrel::engine
