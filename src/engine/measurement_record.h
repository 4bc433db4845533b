// What is kept of a measurement.
#pragma once

#include <string>
#include <vector>

#include "engine/axis/axis_check.h"
#include "engine/polar_error.h"

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

/// Keeps measurements over the nights. Never throws.
class HistoryPort {
  public:
    virtual ~HistoryPort() = default;
    virtual void keep(const MeasurementRecord& record) = 0;
};

}  // namespace vantrel::engine
