#include "app/frm_options.h"

#include <array>
#include <string>

#include "app/settings_store.h"
#include "correction/needed_tolerance.h"
#include "platform/key_filters.h"
#include "platform/text.h"

namespace vantrel::app {

frmOptions::frmOptions(platform::Screen& screen, engine::SettingsPort& settings)
    : Form(screen, "frmOptions", "Options", {200, 200, 320, 100}),
      chkImagingSWVersionCheck(*this, "chkImagingSWVersionCheck", "Version check"),
      chkGreenColors(*this, "chkGreenColors", "Night vision colors"),
      cmbNightBrightness(*this, "cmbNightBrightness"),
      chkEnableRestoreImagingSW(*this, "chkEnableRestoreImagingSW", "Restore imaging software size"),
      chkLeastSquares(*this, "chkLeastSquares", "Least squares count"),
      chkClosingPlate(*this, "chkClosingPlate", "Closing plate"),
      chkExactMark(*this, "chkExactMark", "Exact marks"),
      txtPictureExposure(*this, "txtPictureExposure"),
      chkPictureGuided(*this, "chkPictureGuided", "Guided"),
      txtPictureDeclination(*this, "txtPictureDeclination"),
      txtFromGuideStar(*this, "txtFromGuideStar"),
      lblNeededTolerance(*this, "lblNeededTolerance", ""),
      cmdOK(*this, "cmdOK", "OK") {
    cmdOK.onClick = [this] { unload(); };
    chkImagingSWVersionCheck.setToolTip("Enable Imaging SW Version Check");
    chkEnableRestoreImagingSW.setToolTip("Enable auto restore imaging software size while taking images");

    chkLeastSquares.setToolTip(
        "Show and correct the least-squares result instead of the written calculation's");
    chkClosingPlate.setToolTip(
        "One more plate at the start after the way back: it shows whether anything moved meanwhile");

    struct Switch {
        platform::CheckBox* box;
        const char* key;
        const char* usual;
    };
    const std::array<Switch, 6> switches{{
        {&chkImagingSWVersionCheck, "ImagingSWVersionCheck", "1"},
        {&chkGreenColors, "GreenColors", "0"},
        {&chkEnableRestoreImagingSW, "EnableRestoreImagingSW", "0"},
        {&chkLeastSquares, "LeastSquares", "0"},
        {&chkClosingPlate, "ClosingPlate", "0"},
        {&chkExactMark, "ExactMark", "0"},
    }};
    cmbNightBrightness.setItems({{"Bright by night", 3}, {"Medium by night", 2}, {"Dim by night", 1}});
    cmbNightBrightness.setToolTip("How bright the night vision colors are");
    cmbNightBrightness.onClick = [this, &settings] {
        settings.SaveSetting(kProgramSection, "NightBrightness",
                             std::to_string(cmbNightBrightness.chosen()->data));
    };
    setUpPictures(settings);
    onLoad = [this, switches, &settings] {
        showPictures(settings);
        showNightBrightness(
            platform::leadingNumber(settings.GetSetting(kProgramSection, "NightBrightness", "3")));
        for (const Switch& s : switches) {
            const std::string stored = settings.GetSetting(kProgramSection, s.key, s.usual);
            s.box->setValue(platform::leadingNumber(stored) != 0 ? 1 : 0);
        }
    };
    onUnload = [switches, &settings] {
        for (const Switch& s : switches)
            settings.SaveSetting(kProgramSection, s.key, std::to_string(s.box->value()));
    };
}

void frmOptions::setUpPictures(engine::SettingsPort& settings) {
    const auto told = [this, &settings] {
        lblNeededTolerance.setCaption(
            correction::neededTolerance(correction::plannedPictures(settings)).words);
        onPicturesChanged();
    };
    const auto box = [&](platform::TextBox& field, const char* key, int (*filter)(int)) {
        field.keyFilter = filter;
        field.onChange = [&field, &settings, key, told] {
            settings.SaveSetting(kProgramSection, key, field.text());
            told();
        };
    };
    box(txtPictureExposure, "PictureExposure", platform::decimalNumberKey);
    box(txtPictureDeclination, "PictureDeclination", nullptr);
    box(txtFromGuideStar, "FromGuideStar", platform::decimalNumberKey);
    chkPictureGuided.onClick = [this, &settings, told] {
        settings.SaveSetting(kProgramSection, "PictureGuided", std::to_string(chkPictureGuided.value()));
        told();
    };
}

void frmOptions::showPictures(engine::SettingsPort& settings) {
    const auto stored = [&](const char* key) { return settings.GetSetting(kProgramSection, key, ""); };
    txtPictureExposure.setText(stored("PictureExposure"));
    txtPictureDeclination.setText(stored("PictureDeclination"));
    txtFromGuideStar.setText(stored("FromGuideStar"));
    chkPictureGuided.setValue(stored("PictureGuided") == "1" ? 1 : 0);
    lblNeededTolerance.setCaption(correction::neededTolerance(correction::plannedPictures(settings)).words);
}

void frmOptions::showNightBrightness(double step) {
    for (const platform::ComboBox::Item& item : cmbNightBrightness.items())
        if (item.data == step) cmbNightBrightness.setText(item.text);
}

}  // namespace vantrel::app
