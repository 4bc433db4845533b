#include "app/measurement_table.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>

#include "platform/text.h"

namespace vantrel::app {
namespace {

using Fields = std::vector<std::string>;

/// Quotes around a field may hold separators, and a doubled quote for one.
Fields fieldsOf(std::string_view line, char separator) {
    Fields fields(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"')
            fields.back() += line[++i];
        else if (c == '"')
            quoted = !quoted;
        else if (c == separator && !quoted)
            fields.emplace_back();
        else if (c != '\r')
            fields.back() += c;
    }
    return fields;
}

/// Takes the line off the front of the text; what is left of the text begins behind the line's end.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

/// A line's fields by their columns.
class Row {
  public:
    Row(const MeasurementColumns& columns, std::string_view line)
        : columns_(columns), fields_(fieldsOf(line, columns.separator())) {}

    std::string text(const char* column) const {
        const auto& names = columns_.names();
        const auto place = static_cast<std::size_t>(std::ranges::find(names, column) - names.begin());
        return place < names.size() && place < fields_.size() ? platform::trimmed(fields_[place]) : "";
    }
    std::optional<double> number(const char* column, double least, double most) const {
        const auto value = platform::parseNumber(text(column));
        return value && *value >= least && *value <= most ? value : std::nullopt;
    }

  private:
    const MeasurementColumns& columns_;
    Fields fields_;
};

/// A part of the file's bytes, as many as there are.
std::string readPart(std::istream& stream, std::streamoff from, std::streamoff length) {
    std::string text(static_cast<std::size_t>(std::max<std::streamoff>(0, length)), '\0');
    stream.clear();
    stream.seekg(from);
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(0, stream.gcount())));
    return text;
}

/// Without the line's end.
std::string readHeader(std::istream& stream) {
    constexpr std::streamoff kLongest = 4096;
    const std::string beginning = readPart(stream, 0, kLongest);
    std::string_view text = beginning;
    return std::string(takeLine(text));
}

std::optional<engine::PastMeasurement> measurementOf(const Row& row) {
    const auto when = platform::parseInstant(row.text("utc"));
    const auto amplitude = row.number("amplitude_deg", 0, 180);
    const auto angle = row.number("angle_deg", -360, 360);
    if (!when || !amplitude || !angle) return std::nullopt;
    constexpr double kWidestSigma = 90.0 * 3600;
    return engine::PastMeasurement{.when = *when,
                                   .telescope = row.text("telescope"),
                                   .latitude = row.number("latitude_deg", -90, 90),
                                   .leastSquares = row.text("shown") == "least squares",
                                   .amplitude = *amplitude,
                                   .angle = *angle,
                                   .sigma = row.number("sigma_arcsec", 0, kWidestSigma),
                                   .agreement = row.text("agreement"),
                                   .note = row.text("note")};
}

bool isAnew(const engine::PastMeasurement& measurement, const engine::PastMeasurement& before) {
    return !measurement.note.empty() && measurement.telescope == before.telescope &&
           measurement.latitude == before.latitude;
}

}  // namespace

MeasurementColumns::MeasurementColumns(std::string_view header) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (header.starts_with(kByteOrderMark)) header.remove_prefix(kByteOrderMark.size());
    separator_ = header.find(',') == std::string_view::npos ? ';' : ',';
    for (const std::string& name : fieldsOf(header, separator_)) names_.push_back(platform::trimmed(name));
}

std::optional<MeasurementColumns> readColumns(const std::filesystem::path& file) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) return std::nullopt;
    std::ifstream stream(file, std::ios::binary);
    MeasurementColumns columns(readHeader(stream));
    const auto has = [&columns](const char* name) {
        return std::ranges::find(columns.names(), name) != columns.names().end();
    };
    if (!has("utc") || !has("amplitude_deg") || !has("angle_deg")) return std::nullopt;
    return columns;
}

std::vector<engine::PastMeasurement> pastMeasurements(const MeasurementColumns& columns,
                                                      std::string_view lines) {
    std::vector<engine::PastMeasurement> measurements;
    while (!lines.empty()) {
        const auto one = measurementOf(Row(columns, takeLine(lines)));
        if (!one) continue;
        if (!measurements.empty() && isAnew(*one, measurements.back()))
            measurements.back() = *one;
        else
            measurements.push_back(*one);
    }
    return measurements;
}

std::vector<engine::PastMeasurement> readMeasurements(const std::filesystem::path& file) {
    const auto columns = readColumns(file);
    if (!columns) return {};
    std::ifstream stream(file, std::ios::binary);
    const auto body = static_cast<std::streamoff>(readHeader(stream).size() + 1);
    constexpr std::streamoff kEnd = 128 * 1024;  // a line has about 300 characters
    stream.clear();
    stream.seekg(0, std::ios::end);
    const std::streamoff size = stream.tellg();
    const std::streamoff from = std::max(body, size - kEnd);
    const std::string end = readPart(stream, from, size - from);
    std::string_view lines = end;
    if (from > body) takeLine(lines);  // begins in the middle of one
    // A last line without its end was cut, unless it has all that the header promises.
    const std::size_t last = lines.rfind('\n') == std::string_view::npos ? 0 : lines.rfind('\n') + 1;
    if (fieldsOf(lines.substr(last), columns->separator()).size() < columns->names().size())
        lines = lines.substr(0, last);
    return pastMeasurements(*columns, lines);
}

}  // namespace vantrel::app
