// The main form's readings while a star is centred: how far it still is from its mark.
#pragma once

#include "platform/form.h"

namespace vantrel::correction {

struct GuidancePanel {
    explicit GuidancePanel(platform::Form& form)
        : lblStarToTarget(form, "lblStarToTarget", ""),
          gaugeStarToTarget(form, "gaugeStarToTarget"),
          chkCloseSound(form, "chkCloseSound", "Sound when close") {
        setReadingsVisible(false);
    }

    void setReadingsVisible(bool visible) {
        lblStarToTarget.setVisible(visible);
        gaugeStarToTarget.setVisible(visible);
    }

    platform::Label lblStarToTarget;    // shown only while a star is guided
    platform::Gauge gaugeStarToTarget;  // as well
    platform::CheckBox chkCloseSound;
};

}  // namespace vantrel::correction
