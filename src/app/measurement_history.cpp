#include "app/measurement_history.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <utility>

#include "app/measurement_table.h"
#include "app/settings_store.h"
#include "platform/text.h"

namespace vantrel::app {
namespace {

using NamedFields = std::vector<std::pair<const char*, std::string>>;  // by the names of their columns

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

/// As a full disk or a crash leaves the file.
bool endsWithinALine(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(-1, std::ios::end);
    const int last = stream.get();
    return stream && last != '\n';
}

/// One number a plate, with blanks between them.
template <typename Items, typename Number>
std::string list(const Items& items, const Number& numberOf) {
    std::string text;
    for (const auto& item : items) text += (text.empty() ? "" : " ") + number(numberOf(item));
    return text;
}

std::string headerOf(const NamedFields& fields) {
    std::string header;
    for (const auto& [name, value] : fields) header += (header.empty() ? "" : ",") + std::string(name);
    return header;
}

/// In the order of the columns, which may be those of another version, or of a spreadsheet.
std::string lineOf(const NamedFields& fields, const MeasurementColumns& columns) {
    std::string line;
    for (std::size_t i = 0; i < columns.names().size(); ++i) {
        if (i > 0) line += columns.separator();
        const auto field = std::ranges::find(fields, columns.names()[i], &NamedFields::value_type::first);
        if (field != fields.end()) line += field->second;
    }
    return line;
}

NamedFields fieldsOf(const engine::MeasurementRecord& record, platform::Instant when,
                     const std::string& telescope) {
    const engine::AxisEstimate& estimate = record.check.estimate;
    const engine::AxisEstimate& written = record.check.written;
    const engine::Verdict& verdict = record.check.verdict;
    const bool estimated = estimate.valid() && estimate.covariance;
    const engine::AxisCovariance covariance = estimate.covariance.value_or(engine::AxisCovariance{});
    const engine::ErrorEllipse ellipse = covariance.ellipse();
    const auto where = [](bool told, double value, const char* pattern = "0.0000") {
        return told ? number(value, pattern) : "";
    };
    const char* const shown = record.bad ? "none" : record.leastSquares ? "least squares" : "written";
    return {
        {"utc", platform::formatTime(platform::civilUtc(when), "yyyy-MM-ddTHH:mm:ss") + "Z"},
        {"telescope", quoted(telescope)},
        {"latitude_deg", number(record.latitude)},
        {"exposure_s", number(record.exposure, "0.###")},
        {"shown", shown},
        {"amplitude_deg", where(!record.bad, record.shown.ErrorAmplitude)},
        {"angle_deg", where(!record.bad, record.shown.ErrorAngle)},
        {"written_azimuth_arcmin", where(written.valid(), written.fromTruePole.azimuth)},
        {"written_elevation_arcmin", where(written.valid(), written.fromTruePole.elevation)},
        {"azimuth_arcmin", where(estimated, estimate.fromTruePole.azimuth)},
        {"elevation_arcmin", where(estimated, estimate.fromTruePole.elevation)},
        {"sigma_arcsec", where(estimated, covariance.sigma(), "0.00")},
        {"major_arcsec", where(estimated, ellipse.major, "0.00")},
        {"minor_arcsec", where(estimated, ellipse.minor, "0.00")},
        {"direction_deg", where(estimated, ellipse.direction, "0.0")},
        {"chi_square", number(verdict.chiSquare, "0.00")},
        {"degrees_of_freedom", std::to_string(verdict.degreesOfFreedom)},
        {"agreement", nameOf(verdict.agreement)},
        {"plates", std::to_string(record.plates.size())},
        {"hour_angles_h", list(record.plates, [](const engine::Plate& one) { return one.hourAngle; })},
        {"declinations_deg", list(record.plates, [](const engine::Plate& one) { return one.declination; })},
        {"along_arcsec",
         list(estimate.residuals, [](const engine::PlateResidual& one) { return one.along; })},
        {"across_arcsec",
         list(estimate.residuals, [](const engine::PlateResidual& one) { return one.across; })},
        {"note", record.note.empty() ? "" : quoted(record.note)},
    };
}

}  // namespace

/// With drive letter and backslashes.
std::string MeasurementHistory::file() const {
    return platform::joinFolder(settings_.GetSetting(kProgramSection, "LogPath", "C:\\"), "Measurements.csv");
}

void MeasurementHistory::keep(const engine::MeasurementRecord& record) {
    std::string shown;
    try {
        const NamedFields fields = fieldsOf(record, clock_.utc(), telescope_());
        const MeasurementColumns own(headerOf(fields));
        unkept_.push_back(lineOf(fields, own));
        shown = file();
        const std::filesystem::path path = folders_.real(shown);
        std::error_code ignored;
        const bool isNew = !std::filesystem::exists(path, ignored);
        const std::string line = lineOf(fields, readColumns(path).value_or(own));
        const bool cut = !isNew && endsWithinALine(path);
        std::ofstream stream(path, std::ios::binary | std::ios::app);
        if (isNew) stream << headerOf(fields) << "\r\n";
        stream << (cut ? "\r\n" : "") << line << "\r\n" << std::flush;
        if (stream) return unkept_.pop_back();
    } catch (const std::exception&) {
        // said below
    }
    log_.AddToLog("The measurement couldn't be kept in " + shown);
}

std::vector<engine::PastMeasurement> MeasurementHistory::past() const {
    try {
        std::vector<engine::PastMeasurement> all = readMeasurements(folders_.real(file()));
        const MeasurementColumns own(headerOf(fieldsOf({}, {}, "")));
        for (const std::string& line : unkept_)
            for (const engine::PastMeasurement& one : pastMeasurements(own, line)) all.push_back(one);
        std::ranges::stable_sort(all, {}, &engine::PastMeasurement::when);
        return all;
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace vantrel::app
