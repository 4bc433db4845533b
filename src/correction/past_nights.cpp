#include "correction/past_nights.h"

#include <utility>

#include "correction/history_chart.h"
#include "correction/polar_plot.h"
#include "platform/text.h"

namespace vantrel::correction {

using namespace platform;

namespace {

constexpr std::size_t kMostShown = 120;  // that the chart can keep apart

std::string timeOf(const engine::PastMeasurement& measurement) {
    return formatTime(civilLocal(measurement.when), "yyyy-MM-dd HH:mm:ss");
}

std::string verdictOf(const engine::PastMeasurement& measurement) {
    if (measurement.agreement == "consistent") return "The plates agree";
    if (measurement.agreement == "suspicious") return "The plates don't agree";
    if (measurement.agreement == "untestable") return "Too few plates to tell whether they agree";
    if (measurement.agreement == "none") return "Least squares found no axis";
    return "";
}

}  // namespace

std::string describe(const engine::PastMeasurement& measurement) {
    std::string text = timeOf(measurement);
    if (!measurement.telescope.empty()) text += ", " + measurement.telescope;
    const TextWithUnit error = ErrorUnits(60 * measurement.amplitude);
    text += kCrLf + error.text + " " + error.unit + " from pole";
    if (measurement.sigma) text += ", \u00b1 " + formatNumber(*measurement.sigma, "0.0") + " arc-sec";
    text += measurement.leastSquares ? ", by least squares" : ", by the written calculation";
    for (const std::string& line : {verdictOf(measurement), measurement.note})
        if (!line.empty()) text += kCrLf + line;
    return text;
}

PastNights::PastNights(frmHistory& window, std::function<std::vector<engine::PastMeasurement>()> history)
    : window_(window), history_(std::move(history)) {
    window_.onLoad = [this] { refresh(); };
    window_.cmbMeasurement.onClick = [this] {
        if (const ComboBox::Item* chosen = window_.cmbMeasurement.chosen())
            select(static_cast<std::size_t>(chosen->data));
    };
}

void PastNights::refresh() {
    if (!window_.loaded()) return;
    measurements_ = history_();
    if (measurements_.size() > kMostShown)
        measurements_.erase(measurements_.begin(),
                            measurements_.end() - static_cast<std::ptrdiff_t>(kMostShown));
    std::vector<ComboBox::Item> items;
    for (std::size_t i = measurements_.size(); i-- > 0;)
        items.push_back({timeOf(measurements_[i]), static_cast<int>(i)});
    window_.cmbMeasurement.setItems(std::move(items));
    select(measurements_.size() - 1);
}

/// None when there is no such measurement.
void PastNights::select(std::size_t measurement) {
    const bool any = measurement < measurements_.size();
    window_.cmbMeasurement.setText(any ? timeOf(measurements_[measurement]) : "");
    window_.txtMeasurement.setText(any ? describe(measurements_[measurement]) : "");
    window_.picHistory.setDrawing(historyChart(measurements_, measurement));
}

}  // namespace vantrel::correction
