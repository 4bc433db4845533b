// The boxes of the "Plate Solve" tab: filled from the settings, stored as soon as they change.
#pragma once

#include <vector>

#include "engine/ports.h"
#include "platesolve/plate_solve_panel.h"

namespace vantrel::platesolve {

class SolverFields {
  public:
    SolverFields(PlateSolvePanel& panel, engine::SettingsPort& settings);

    /// Fills every field; a field that was never stored keeps what it shows.
    void restore();
    /// Stores every field.
    void save();

  private:
    struct Field {
        platform::TextBox& box;
        const char* key;
    };

    void txtCatExp_LostFocus();
    void store(const Field& field);

    PlateSolvePanel& panel_;
    engine::SettingsPort& settings_;
    std::vector<Field> storedOnChange_;
    Field maxSolveStars_;  // stored with all the others only
};

}  // namespace vantrel::platesolve
