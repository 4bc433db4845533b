#include "platesolve/catalog_setup.h"

#include <limits>
#include <string>

#include "platform/text.h"

namespace vantrel::platesolve {

using namespace platform;

namespace {

int catalogNumber(const std::string& stored) {
    const auto number = parseNumber(stored);
    constexpr double kLargest = std::numeric_limits<std::int16_t>::max();
    return number && *number >= 0 && *number <= kLargest ? toInt16(*number) : kDefaultCatalog;
}

}  // namespace

CatalogSetup::CatalogSetup(PlateSolvePanel& panel, engine::SettingsPort& settings, Dialogs& dialogs)
    : panel_(panel), settings_(settings), dialogs_(dialogs) {
    panel_.cmbppCat.onClick = [this] { cmbppCat_Click(); };
    panel_.cmdSetDir.onClick = [this] { cmdSetDir_Click(); };
    panel_.txtCatPath.onLeave = [this] { setCatpath(); };
}

void CatalogSetup::restore() {
    LoadComboCat(panel_.cmbppCat);
    PinPointCatalog_ =
        catalogNumber(settings_.GetSetting("Solve", "ppCatalog", std::to_string(kDefaultCatalog)));
    getCatName(panel_.cmbppCat, PinPointCatalog_);
    showFolder();
}

void CatalogSetup::save() {
    settings_.SaveSetting("Solve", "ppCatalog", std::to_string(PinPointCatalog_));
    settings_.SaveSetting("Solve", "CatPath", panel_.txtCatPath.text());
    setCatpath();
}

void CatalogSetup::cmbppCat_Click() {
    const ComboBox::Item* const item = panel_.cmbppCat.chosen();
    if (item == nullptr) return;
    setCatpath();  // a folder typed for the catalogue that is left
    panel_.lblCatTest.setCaption("");
    PinPointCatalog_ = item->data;
    getCatName(panel_.cmbppCat, PinPointCatalog_);
    panel_.txtCatPath.setText("");
    showFolder();
    setCatpath();
}

void CatalogSetup::cmdSetDir_Click() {
    const std::string folder = dialogs_.chooseFolder("Set PinPoint path");
    panel_.txtCatPath.setText(folder.empty() ? "c:\\" : folder);
    setCatpath();
}

void CatalogSetup::showFolder() {
    panel_.txtCatPath.setText(
        settings_.GetSetting("Solve", "ppCatPath" + std::to_string(PinPointCatalog_), "C:\\"));
}

/// Stores the box's folder for the chosen catalogue.
void CatalogSetup::setCatpath() {
    if (ppCatName(PinPointCatalog_).empty()) return;
    if (isInternetCatalog(PinPointCatalog_)) panel_.txtCatPath.setText("Internet");
    settings_.SaveSetting("Solve", "ppCatPath" + std::to_string(PinPointCatalog_), panel_.txtCatPath.text());
}

}  // namespace vantrel::platesolve
