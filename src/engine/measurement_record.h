// What is kept of a measurement.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/axis/axis_check.h"
#include "engine/polar_error.h"
#include "platform/clock.h"

namespace vantrel::engine {

struct MeasurementRecord {
    std::vector<Plate> plates;
    AxisCheck check;
    PolarError shown;           // what the window showed
    bool bad = false;           // it showed that there is no result
    bool leastSquares = false;  // which of the two it was
    double latitude = 0;        // degrees
    double exposure = 0;        // seconds
    std::string note;           // what the operator changed after the first calculation
};

/// A measurement of before, as far as the history still tells; numbers that it doesn't tell are missing.
struct PastMeasurement {
    platform::Instant when{};
    std::string telescope;
    std::optional<double> latitude{};  // degrees
    bool leastSquares = false;
    double amplitude = 0;           // degrees, of the result that was shown
    double angle = 0;               // degrees, as PolarError has it
    std::optional<double> sigma{};  // of the estimate, arc-seconds on the sky
    std::string agreement{};        // "consistent", "suspicious", "untestable", "none"; or empty
    std::string note{};
};

/// Keeps measurements over the nights. Never throws.
class HistoryPort {
  public:
    virtual ~HistoryPort() = default;
    virtual void keep(const MeasurementRecord& record) = 0;
};

}  // namespace vantrel::engine
