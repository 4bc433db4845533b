#include "app/settings_fields.h"

#include "platform/key_filters.h"
#include "platform/text.h"

namespace vantrel::app {

using namespace platform;

namespace {

constexpr const char* kRun = "PolarAlign";
constexpr const char* kMain = "Main";

std::vector<SettingsField> fieldsOf(frmMain& form) {
    using enum StoredOn;
    auto& run = form.run;
    auto& exp = form.exposures;
    auto& setup = form.setup;
    const std::vector<FieldOption> direction{{&run.optSlewEast, "True"}, {&run.optSlewWest, "False"}};
    // section, key, default, control, stored at once on, stored at the end, stored when empty
    return {
        {kRun, "DeltaRA", {}, &run.txtDeltaRA, kChange, false},
        {kRun, "DelayAfterSlew", "5", &run.txtDelayAfterSlew, kLeave, true},
        {kRun, "ExposeContinuousEnable", "0", &exp.chkExposeContinuousEnable, kClick, true},
        {kRun, "ContinuousExposeDelay", "0", &exp.txtContinuousExposeDelay, kChangeAndLeave, true},
        {kRun, "ContinuousExposeInterval", "1", &exp.txtContinuousExposeInterval, kChange, true},
        {kRun, "PostExpDelay", "0", &run.txtPostExpDelay, kNothing, true},
        {kRun, "Plates", "3", &run.txtPlates, kChange, true},
        {kRun, "PlateExposures", "1", &run.txtPlateExposures, kChange, true},
        {kRun, "SiteHeight", "", &setup.txtSiteHeight, kChange, true},
        {kRun, "AirPressure", "", &setup.txtAirPressure, kChange, true},
        {kRun, "AirTemperature", "", &setup.txtAirTemperature, kChange, true},
        {kRun, "Tolerance", "2", &form.result.txtTolerance, kChange, true},
        {kRun, "TurnByHand", "0", &run.chkTurnByHand, kClick, true},
        {kRun, "CrossHairEnable", "0", &exp.chkCrossHairEnable, kNothing, true},
        {kRun, "CloseSound", "0", &form.guidance.chkCloseSound, kClick, true},
        {kRun, "CrossHairWidth", "1", &exp.cmbCrossHairWidth, kClick, true},
        {kRun, "UseCCDSoftSubFrame", "0", &form.imaging.chkUseCCDSoftSubFrame, kNothing, true},
        {kRun, "ImagePath", "C:\\", &setup.txtImagePath, kNothing, true, "C:"},
        {kRun, "SaveImages", "0", &setup.chkSaveImages, kNothing, true},
        {"Solve", "ExposeInterval", {}, &run.txtExposeInterval, kChange, true},
        {kMain, "SlewEast", "True", direction, kClick, false},
    };
}

std::string shown(const TextBox* box) { return box->text(); }
std::string shown(const ComboBox* list) { return list->text(); }
std::string shown(const CheckBox* box) { return std::to_string(box->value()); }
std::string shown(const std::vector<FieldOption>& options) {
    for (const FieldOption& option : options)
        if (option.button->selected()) return option.text;
    return {};
}

void show(TextBox* box, const std::string& text) { box->setText(text); }
void show(ComboBox* list, const std::string& text) { list->setText(text); }
void show(CheckBox* box, const std::string& text) { box->setValue(leadingNumber(text) != 0 ? 1 : 0); }
/// What stands for no option selects the last one.
void show(const std::vector<FieldOption>& options, const std::string& text) {
    for (const FieldOption& option : options)
        if (option.text == text) return option.button->select();
    options.back().button->select();
}

using Action = std::function<void()>;

void connectControl(TextBox* box, StoredOn when, const Action& store) {
    if (when == StoredOn::kChange || when == StoredOn::kChangeAndLeave) box->onChange = store;
    if (when == StoredOn::kLeave || when == StoredOn::kChangeAndLeave) box->onLeave = store;
}
void connectControl(ComboBox* list, StoredOn when, const Action& store) {
    if (when == StoredOn::kClick) list->onClick = store;
}
void connectControl(CheckBox* box, StoredOn when, const Action& store) {
    if (when == StoredOn::kClick) box->onClick = store;
}
void connectControl(const std::vector<FieldOption>& options, StoredOn when, const Action& store) {
    for (const FieldOption& option : options)
        if (when == StoredOn::kClick) option.button->onClick = store;
}

}  // namespace

SettingsFields::SettingsFields(frmMain& form, engine::SettingsPort& settings, engine::LogPort& log,
                               engine::RunState& state)
    : form_(form), settings_(settings), table_(fieldsOf(form)) {
    for (const SettingsField& field : table_) connect(field);
    connectRunFields(log, state);
}

void SettingsFields::connect(const SettingsField& field) {
    const Action storeField = [this, &field] { store(field); };
    std::visit([&](const auto& control) { connectControl(control, field.storedOn, storeField); },
               field.control);
}

/// What some fields do beside being stored.
void SettingsFields::connectRunFields(engine::LogPort& log, engine::RunState& state) {
    auto& run = form_.run;
    auto& exposures = form_.exposures;
    for (TextBox* box : {&run.txtDeltaRA, &run.txtPlates, &run.txtPlateExposures})
        box->keyFilter = wholeNumberKey;
    for (TextBox* box : {&form_.result.txtTolerance, &run.txtExposeInterval, &run.txtDelayAfterSlew,
                         &exposures.txtContinuousExposeInterval, &exposures.txtContinuousExposeDelay})
        box->keyFilter = decimalNumberKey;

    run.txtDeltaRA.onChange = [&box = run.txtDeltaRA, store = run.txtDeltaRA.onChange] {
        if (box.text().empty())
            box.setText("0");  // comes back here
        else
            store();
    };
    run.txtPostExpDelay.onLeave = [&box = run.txtPostExpDelay, &log] {
        if (parseNumber(box.text())) return;
        log.AddToLog("Post exposure delay is not numeric, setting to 0");
        box.setText("0");
    };
    SetupPanel& setup = form_.setup;
    for (TextBox* box : {&setup.txtSiteHeight, &setup.txtAirPressure, &setup.txtAirTemperature})
        box->onLeave = [box, &log] {
            if (box->text().empty() || parseNumber(box->text())) return;
            log.AddToLog(box->text() + " is no number: the standard atmosphere counts");
            box->setText("");
        };
    exposures.chkCrossHairEnable.onClick = [&list = exposures.cmbCrossHairWidth] { list.setEnabled(true); };
    const auto remember = [&state](OptionButton& option, bool east) {
        option.onClick = [&state, east, store = option.onClick] {
            state.SlewEast = east;
            store();
        };
    };
    remember(run.optSlewEast, true);
    remember(run.optSlewWest, false);
}

void SettingsFields::read() {
    for (const SettingsField& field : table_) {
        const auto readField = [&](const auto& control) {
            const std::string otherwise = field.defaultText.value_or(shown(control));
            show(control, field.section == kMain ? settings_.GetMainSetting(field.key, otherwise)
                                                 : settings_.GetSetting(field.section, field.key, otherwise));
        };
        std::visit(readField, field.control);
    }
}

void SettingsFields::store(const SettingsField& field) {
    const std::string text = std::visit([](const auto& control) { return shown(control); }, field.control);
    settings_.SaveSetting(field.section, field.key, text.empty() ? field.storedWhenEmpty : text);
}

void SettingsFields::store() {
    for (const SettingsField& field : table_)
        if (field.storedAtEnd) store(field);
    const auto& imaging = form_.imaging;
    if (imaging.optMaxIm.selected()) settings_.SaveSetting(kRun, "ImagingSoftware", "MaxIm");
    if (imaging.optCCDSoft.selected()) settings_.SaveSetting(kRun, "ImagingSoftware", "CCDSoft");
    if (imaging.optBuiltIn.selected()) settings_.SaveSetting(kRun, "ImagingSoftware", "BuiltIn");
    // Nothing reads these two; they belong to the stored set.
    settings_.SaveSetting("Solve", "SolveMode", "0");
    settings_.SaveSetting("Find", "BlinkMode", "0");
}

void SettingsFields::fillEmptyFields() {
    const auto fill = [](TextBox& box, const char* text) {
        if (box.text().empty()) box.setText(text);
    };
    fill(form_.run.txtDelayAfterSlew, "0");
    fill(form_.exposures.txtContinuousExposeDelay, "0");
    fill(form_.exposures.txtContinuousExposeInterval, "1");
}

}  // namespace vantrel::app
