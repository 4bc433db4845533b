// Every measurement since the first one, a line each, in a file that other programs read: Measurements.csv in
// the folder of the logs.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/measurement_record.h"
#include "engine/ports.h"
#include "platform/clock.h"
#include "platform/folder_map.h"

namespace vantrel::app {

class MeasurementHistory : public engine::HistoryPort {
  public:
    MeasurementHistory(const platform::Clock& clock, const platform::FolderMap& folders,
                       engine::SettingsPort& settings, engine::LogPort& log,
                       std::function<std::string()> telescope)
        : clock_(clock),
          folders_(folders),
          settings_(settings),
          log_(log),
          telescope_(std::move(telescope)) {}

    /// A file that can't be written costs a line in the log.
    void keep(const engine::MeasurementRecord& record) override;

    /// The last ones in the order of time, also those of this session that couldn't be kept. Never throws.
    std::vector<engine::PastMeasurement> past() const;

  private:
    std::string file() const;

    const platform::Clock& clock_;
    const platform::FolderMap& folders_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    std::function<std::string()> telescope_;
    std::vector<std::string> unkept_;  // lines with all columns
};

}  // namespace vantrel::app
