#include "app/measurement_history.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/text.h"

namespace vantrel::app {
namespace {

constexpr const char* kHeader =
    "utc,telescope,latitude_deg,exposure_s,shown,amplitude_deg,angle_deg,"
    "written_azimuth_arcmin,written_elevation_arcmin,azimuth_arcmin,elevation_arcmin,sigma_arcsec,"
    "major_arcsec,minor_arcsec,direction_deg,chi_square,degrees_of_freedom,agreement,plates,"
    "hour_angles_h,declinations_deg,along_arcsec,across_arcsec,note";

/// Commas and quotes within a field.
std::string quoted(const std::string& text) {
    std::string field = "\"";
    for (const char c : text) field += c == '"' ? std::string("\"\"") : std::string(1, c < ' ' ? ' ' : c);
    return field + '"';
}

std::string number(double value, const char* pattern = "0.0000") {
    return std::isfinite(value) ? platform::formatNumber(value, pattern) : "";
}

const char* nameOf(engine::Agreement agreement) {
    switch (agreement) {
        case engine::Agreement::kConsistent:
            return "consistent";
        case engine::Agreement::kSuspicious:
            return "suspicious";
        case engine::Agreement::kUntestable:
            return "untestable";
        default:
            return "none";
    }
}

/// One number a plate, with blanks between them.
template <typename Items, typename Number>
std::string list(const Items& items, const Number& numberOf) {
    std::string text;
    for (const auto& item : items) text += (text.empty() ? "" : " ") + number(numberOf(item));
    return text;
}

}  // namespace

void MeasurementHistory::keep(const engine::MeasurementRecord& record) {
    std::string shown;
    try {
        shown =
            platform::joinFolder(settings_.GetSetting("PolarAlign", "LogPath", "C:\\"), "Measurements.csv");
        const std::filesystem::path file = folders_.real(shown);
        std::error_code ignored;
        const bool isNew = !std::filesystem::exists(file, ignored);
        std::ofstream stream(file, std::ios::binary | std::ios::app);
        if (isNew) stream << kHeader << "\r\n";
        stream << row(record) << "\r\n" << std::flush;
        if (stream) return;
    } catch (const std::exception&) {
        // said below
    }
    log_.AddToLog("The measurement couldn't be kept in " + shown);
}

std::string MeasurementHistory::row(const engine::MeasurementRecord& record) const {
    const engine::AxisEstimate& estimate = record.check.estimate;
    const engine::AxisEstimate& written = record.check.written;
    std::ostringstream text;
    text << platform::formatTime(platform::civilUtc(clock_.utc()), "yyyy-MM-ddTHH:mm:ss") << "Z,"
         << quoted(telescope_()) << ',' << number(record.latitude) << ',' << number(record.exposure, "0.###")
         << ','
         << (record.bad            ? "none"
             : record.leastSquares ? "least squares"
                                   : "written")
         << ','
         << (record.bad ? "," : number(record.shown.ErrorAmplitude) + ',' + number(record.shown.ErrorAngle))
         << ',';
    text << (written.valid()
                 ? number(written.fromTruePole.azimuth) + ',' + number(written.fromTruePole.elevation)
                 : ",")
         << ',';
    if (estimate.valid() && estimate.covariance) {
        const engine::ErrorEllipse ellipse = estimate.covariance->ellipse();
        text << number(estimate.fromTruePole.azimuth) << ',' << number(estimate.fromTruePole.elevation) << ','
             << number(estimate.covariance->sigma(), "0.00") << ',' << number(ellipse.major, "0.00") << ','
             << number(ellipse.minor, "0.00") << ',' << number(ellipse.direction, "0.0") << ',';
    } else {
        text << ",,,,,,";
    }
    const auto& residuals = estimate.residuals;
    text << number(record.check.verdict.chiSquare, "0.00") << ',' << record.check.verdict.degreesOfFreedom
         << ',' << nameOf(record.check.verdict.agreement) << ',' << record.plates.size() << ','
         << list(record.plates, [](const engine::Plate& plate) { return plate.hourAngle; }) << ','
         << list(record.plates, [](const engine::Plate& plate) { return plate.declination; }) << ','
         << list(residuals, [](const engine::PlateResidual& one) { return one.along; }) << ','
         << list(residuals, [](const engine::PlateResidual& one) { return one.across; }) << ','
         << (record.note.empty() ? "" : quoted(record.note));
    return text.str();
}

}  // namespace vantrel::app
