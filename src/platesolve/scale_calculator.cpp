#include "platesolve/scale_calculator.h"

#include <cmath>
#include <string>

#include "engine/camera_binning.h"
#include "platform/key_filters.h"
#include "platform/text.h"

namespace vantrel::platesolve {

using namespace platform;

namespace {

constexpr double kMillimetresPerInch = 25.4;
constexpr double kScaleFactor = 206;  // arc-seconds, for micrometres over millimetres; rounded from 206.265

/// Three decimals, halves to the even neighbour.
double rounded(double value) { return std::nearbyint(value * 1000) / 1000; }

}  // namespace

ScaleCalculator::ScaleCalculator(frmPixelScale& window, PlateSolvePanel& panel,
                                 engine::SettingsPort& settings, engine::LogPort& log,
                                 GreatestBinning greatestBinning)
    : window_(window), settings_(settings), log_(log), greatestBinning_(std::move(greatestBinning)) {
    panel.cmdGetImageScalePP.onClick = [this] { cmdGetImageScale_Click(); };
    panel.cmdGetImageScaleTheSky.onClick = [this] { cmdGetImageScale_Click(); };
    window_.onLoad = [this] { Form_Load(); };
    window_.cmdCalculate.onClick = [this] { cmdCalculate_Click(); };
    window_.mnuExit.onClick = [this] { window_.unload(); };

    const auto storeBox = [this](TextBox& box, const char* key) {
        box.onChange = [this, &box, key] { store(key, box.text()); };
    };
    storeBox(window_.txtFL, "TelescopeFL");
    storeBox(window_.txtPixelSizeX, "CameraPixelXSize");
    storeBox(window_.txtPixelSizeY, "CameraPixelYSize");
    storeBox(window_.txtUnbinnedCCDScaleHoriz, "UnbinnedCCDScaleH");
    storeBox(window_.txtUnbinnedCCDScaleVert, "UnbinnedCCDScaleV");
    const auto storeList = [this](ComboBox& list, const char* key) {
        list.onChange = list.onClick = [this, &list, key] { store(key, list.text()); };
    };
    storeList(window_.cmbUnits, "FocalLengthUnits");
    storeList(window_.cmbCamBin, "CamBin");

    for (TextBox* box :
         {&window_.txtFL, &window_.txtPixelSizeX, &window_.txtPixelSizeY, &window_.txtUnbinnedCCDScaleHoriz,
          &window_.txtUnbinnedCCDScaleVert, &window_.txtPlateScaleHoriz, &window_.txtPlateScaleVert})
        box->keyFilter = decimalNumberKey;
}

void ScaleCalculator::cmdGetImageScale_Click() {
    window_.show();
    window_.setOnTop(true);
}

void ScaleCalculator::Form_Load() {
    const auto stored = [this](const char* key, const char* defaultText) {
        return settings_.GetSetting("Solve", key, defaultText);
    };
    window_.txtFL.setText(stored("TelescopeFL", ""));
    window_.cmbUnits.setText(stored("FocalLengthUnits", "mm"));
    window_.txtPixelSizeX.setText(stored("CameraPixelXSize", ""));
    window_.txtPixelSizeY.setText(stored("CameraPixelYSize", ""));
    offerBinnings();
    window_.cmbCamBin.setText(stored("CamBin", "3"));
    window_.txtUnbinnedCCDScaleHoriz.setText(stored("UnbinnedCCDScaleH", "1.0"));
    window_.txtUnbinnedCCDScaleVert.setText(stored("UnbinnedCCDScaleV", "1.0"));
    window_.txtPlateScaleHoriz.setText(stored("ScaleH", "3.0"));
    window_.txtPlateScaleVert.setText(stored("ScaleV", "3.0"));
    shown_.reset();
}

/// What the camera takes, once it is known.
void ScaleCalculator::offerBinnings() {
    const auto greatest = greatestBinning_();
    if (greatest == greatestShown_) return;
    greatestShown_ = greatest;
    window_.offerBinnings(greatest.value_or(frmPixelScale::kUsualBinnings));
    if (!greatest) return;
    engine::limitBinning(settings_, log_, *greatest);
    window_.cmbCamBin.setText(settings_.GetSetting("Solve", "CamBin", "3"));
}

void ScaleCalculator::cmdCalculate_Click() {
    const auto scale = scaleOfInputs();
    if (!scale) return;
    if (window_.cmbUnits.text() == "in") {
        window_.txtFL.setText(toText(scale->focalLength));
        window_.cmbUnits.setText("mm");
    }
    show(*scale);
}

void ScaleCalculator::recompute() {
    if (!window_.shown()) return;
    offerBinnings();
    const auto scale = scaleOfInputs();
    if (scale && scale != shown_) show(*scale);
}

std::optional<ScaleCalculator::Scale> ScaleCalculator::scaleOfInputs() const {
    const auto pixelX = parseNumber(window_.txtPixelSizeX.text());
    const auto pixelY = parseNumber(window_.txtPixelSizeY.text());
    auto focalLength = parseNumber(window_.txtFL.text());
    if (window_.cmbUnits.text() == "in" && focalLength)
        focalLength = rounded(*focalLength * kMillimetresPerInch);
    const auto binning = parseNumber(window_.cmbCamBin.text());
    const auto positive = [](const std::optional<double>& number) { return number && *number > 0; };
    if (!positive(pixelX) || !positive(pixelY) || !positive(focalLength) || !binning) return std::nullopt;
    const auto scale = [&](double pixel) { return rounded(pixel * *binning / *focalLength * kScaleFactor); };
    return Scale{*focalLength, scale(*pixelX), scale(*pixelY)};
}

void ScaleCalculator::show(const Scale& scale) {
    window_.txtPlateScaleHoriz.setText(toText(scale.horizontal));
    window_.txtPlateScaleVert.setText(toText(scale.vertical));
    shown_ = scale;
}

void ScaleCalculator::store(const char* key, const std::string& value) {
    settings_.SaveSetting("Solve", key, value);
}

}  // namespace vantrel::platesolve
