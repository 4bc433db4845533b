// Reads the table that measurements are kept in, whatever spreadsheets, full disks and other versions made of
// it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/measurement_record.h"

namespace vantrel::app {

/// The names of the columns, and what stands between them.
class MeasurementColumns {
  public:
    explicit MeasurementColumns(std::string_view header);

    const std::vector<std::string>& names() const { return names_; }
    char separator() const { return separator_; }

  private:
    char separator_ = ',';
    std::vector<std::string> names_;
};

/// Of a file that holds measurements; nothing of others.
std::optional<MeasurementColumns> readColumns(const std::filesystem::path& file);

/// The lines' measurements in their order. A measurement that was
/// calculated anew stands there once, as it was last. Lines without a result, cut ones and others that tell
/// no time and no error are passed over.
std::vector<engine::PastMeasurement> pastMeasurements(const MeasurementColumns& columns,
                                                      std::string_view lines);

/// The last some hundred of the file's measurements; none where it can't be read. Throws only for want of
/// memory.
std::vector<engine::PastMeasurement> readMeasurements(const std::filesystem::path& file);

}  // namespace vantrel::app
