// Shows all measurements over the nights, and one of them in words.
#pragma once

#include <functional>
#include <vector>

#include "correction/frm_history.h"
#include "engine/measurement_record.h"

namespace vantrel::correction {

class PastNights {
  public:
    PastNights(frmHistory& window, std::function<std::vector<engine::PastMeasurement>()> history);

    /// Reads them again while the window is open, and shows the newest.
    void refresh();

  private:
    void select(std::size_t measurement);

    frmHistory& window_;
    std::function<std::vector<engine::PastMeasurement>()> history_;
    std::vector<engine::PastMeasurement> measurements_;
};

/// Lines that say what is known of it.
std::string describe(const engine::PastMeasurement& measurement);

}  // namespace vantrel::correction
