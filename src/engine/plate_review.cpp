#include "engine/plate_review.h"

#include <algorithm>
#include <utility>

#include "engine/angles.h"
#include "platform/text.h"

namespace vantrel::engine {

using platform::formatNumber;

PlateReview::PlateReview(frmPlates& form, const Services& services)
    : form_(form), services_(services), calculation_(services) {
    for (std::size_t row = 0; row < form_.rows.size(); ++row)
        form_.rows[row]->chkPlate.onClick = [this, row] { choosePlate(row); };
    form_.cmdRedo.onClick = [this] {
        redo_ = static_cast<int>(platform::leadingNumber(form_.cmbRedo.text()));
    };
    form_.chkEstimate.onClick = [this] {
        if (!filling_) calculate(form_.chkEstimate.ticked() ? "least squares chosen" : "written chosen");
    };
    setOffered(false);
    showPlates();
}

void PlateReview::begin(std::vector<TakenPlate> plates, double exposureSeconds) {
    plates_ = std::move(plates);
    exposureSeconds_ = exposureSeconds;
    redo_.reset();
    std::vector<platform::ComboBox::Item> numbers;
    for (const TakenPlate& plate : plates_) numbers.push_back({std::to_string(plate.number), plate.number});
    form_.cmbRedo.setItems(numbers);
    form_.cmbRedo.setText(numbers.front().text);
    filling_ = true;
    for (const auto& row : form_.rows) row->chkPlate.setValue(1);
    const bool byHand = plates_.front().pointing == Pointing::kByHand;  // nothing else can be told then
    form_.chkEstimate.setValue(byHand || platform::leadingNumber(services_.settings.GetSetting(
                                             "PolarAlign", "LeastSquares", "0")) != 0);
    filling_ = false;
    calculate("");
}

void PlateReview::replace(const TakenPlate& plate) {
    const auto same = std::ranges::find(plates_, plate.number, &TakenPlate::number);
    if (same == plates_.end()) return;
    *same = plate;
    calculate("plate " + std::to_string(plate.number) + " redone");
}

std::optional<TakenPlate> PlateReview::takeRedoRequest() {
    const auto number = std::exchange(redo_, std::nullopt);
    const auto plate = std::ranges::find(plates_, number.value_or(0), &TakenPlate::number);
    if (plate == plates_.end()) return std::nullopt;
    return *plate;
}

void PlateReview::setOffered(bool offered) {
    for (const auto& row : form_.rows) row->chkPlate.setEnabled(offered);
    for (platform::Control* control :
         std::initializer_list<platform::Control*>{&form_.cmbRedo, &form_.cmdRedo, &form_.chkEstimate})
        control->setEnabled(offered);
}

void PlateReview::choosePlate(std::size_t row) {
    if (filling_ || row >= plates_.size()) return;
    platform::CheckBox& box = form_.rows[row]->chkPlate;
    const std::string plate = "plate " + std::to_string(plates_[row].number);
    if (counting().size() < kFewestPlates) {
        filling_ = true;
        box.setValue(1);
        filling_ = false;
        services_.messages.ShowPopupMessage("A measurement needs three plates at least: " + plate + " stays",
                                            5);
        return;
    }
    calculate(plate + (box.ticked() ? " counts again" : " left out"));
}

std::vector<TakenPlate> PlateReview::counting() const {
    std::vector<TakenPlate> counting;
    for (std::size_t i = 0; i < plates_.size(); ++i)
        if (form_.rows[i]->chkPlate.ticked()) counting.push_back(plates_[i]);
    return counting;
}

void PlateReview::calculate(const std::string& note) {
    if (plates_.empty()) return;
    if (!note.empty()) services_.log.AddToLog("Calculated anew: " + note);
    axis_ = calculation_.of(counting(), {exposureSeconds_, form_.chkEstimate.ticked(), note});
    showPlates();
}

void PlateReview::showPlates() {
    const auto& residuals = axis_.check.estimate.residuals;
    std::size_t counted = 0;
    for (std::size_t i = 0; i < form_.rows.size(); ++i) {
        frmPlates::Row& row = *form_.rows[i];
        const bool taken = i < plates_.size();
        for (platform::Control* control : std::initializer_list<platform::Control*>{
                 &row.chkPlate, &row.lblHourAngle, &row.lblDeclination, &row.lblAlong, &row.lblAcross})
            control->setVisible(taken);
        if (!taken) continue;
        const Plate seen = seenPlate(plates_[i]);
        row.chkPlate.setCaption(std::to_string(plates_[i].number));
        row.lblHourAngle.setCaption(formatNumber(signedHours(seen.hourAngle), "0.00") + " h");
        row.lblDeclination.setCaption(formatNumber(seen.declination, "0.00") + "°");
        const bool told = row.chkPlate.ticked() && counted < residuals.size();
        const auto arcSeconds = [&](double value) { return told ? formatNumber(value, "0.00") + "″" : ""; };
        row.lblAlong.setCaption(arcSeconds(told ? residuals[counted].along : 0));
        row.lblAcross.setCaption(arcSeconds(told ? residuals[counted].across : 0));
        if (row.chkPlate.ticked()) ++counted;
    }
    form_.txtVerdict.setText(plates_.empty() ? "" : axis_.verdict);
}

}  // namespace vantrel::engine
