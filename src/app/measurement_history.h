// Every measurement since the first one, a line each, in a file that other programs read: Measurements.csv in
// the folder of the logs.
#pragma once

#include <functional>
#include <string>

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

  private:
    std::string row(const engine::MeasurementRecord& record) const;

    const platform::Clock& clock_;
    const platform::FolderMap& folders_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    std::function<std::string()> telescope_;
};

}  // namespace vantrel::app
