#include "platesolve/solver_fields.h"

#include <string>

#include "platform/key_filters.h"
#include "platform/text.h"

namespace vantrel::platesolve {

using namespace platform;

SolverFields::SolverFields(PlateSolvePanel& panel, engine::SettingsPort& settings)
    : panel_(panel),
      settings_(settings),
      storedOnChange_{{panel.txtSolveMinSiz, "MinSize"},
                      {panel.txtSolveMinBrt, "MinBrt"},
                      {panel.txtSolveMinSig, "MinSig"},
                      {panel.txtSolveFilter, "Filter"},
                      {panel.txtSolveScaleH, "ScaleH"},
                      {panel.txtSolveScaleV, "ScaleV"},
                      {panel.txtSolveMinStars, "MinStars"},
                      {panel.txtSolveMaxRes, "MaxRes"},
                      {panel.txtCatExp, "CatExp"},
                      {panel.txtCatMaxMag, "MaxMag"},
                      {panel.txtTheSkyImageScale, "TheSkyImageScale"},
                      {panel.txtTheSkyScreenFOV, "TheSkyScreenFOV"}},
      maxSolveStars_{panel.txtMaxSolveStars, "MaxSolveStars"} {
    for (const Field& field : storedOnChange_) {
        field.box.onChange = [this, field] { store(field); };
        field.box.keyFilter = decimalNumberKey;
    }
    maxSolveStars_.box.keyFilter = decimalNumberKey;
    panel_.txtCatExp.onLeave = [this] { txtCatExp_LostFocus(); };
}

void SolverFields::restore() {
    const auto fill = [this](const Field& field) {
        field.box.setText(settings_.GetSetting("Solve", field.key, field.box.text()));
    };
    for (const Field& field : storedOnChange_) fill(field);
    fill(maxSolveStars_);
    panel_.chkSpiralSearch.setValue(settings_.GetSetting("Solve", "SpiralSearch", "True") == "True" ? 1 : 0);
}

void SolverFields::save() {
    for (const Field& field : storedOnChange_) store(field);
    store(maxSolveStars_);
    settings_.SaveSetting("Solve", "SpiralSearch", panel_.chkSpiralSearch.ticked() ? "True" : "False");
}

void SolverFields::txtCatExp_LostFocus() {
    const double percent = leadingNumber(panel_.txtCatExp.text());
    if (percent > 80) panel_.txtCatExp.setText("80");
    if (percent < 0) panel_.txtCatExp.setText("0");
    store({panel_.txtCatExp, "CatExp"});
}

void SolverFields::store(const Field& field) { settings_.SaveSetting("Solve", field.key, field.box.text()); }

}  // namespace vantrel::platesolve
