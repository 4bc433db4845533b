// The chart of all measurements: how far the axis was off, over the nights.
#pragma once

#include <span>
#include <string>

#include "engine/measurement_record.h"
#include "platform/drawing.h"

namespace vantrel::correction {

/// The date of the evening on which the night began, "2026-11-24"; a day begins at local noon.
std::string nightOf(platform::Instant when);

/// To the right the measurements in their order, with a gap and a date before each night; upwards the decadic
/// logarithm of the distance from the pole in arc-minutes. The selected one stands out. Empty without any.
platform::Drawing historyChart(std::span<const engine::PastMeasurement> measurements, std::size_t selected);

}  // namespace vantrel::correction
