// The main form's fields and the settings they keep: one table that fills the fields at the start, stores
// them when they change and once more at the end. (The fields of the "Plate Solve" tab look after
// themselves.)
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "app/frm_main.h"
#include "engine/ports.h"
#include "engine/run_state.h"

namespace vantrel::app {

/// What the operator does that stores the field at once.
enum class StoredOn : std::int8_t { kNothing, kChange, kChangeAndLeave, kLeave, kClick };

/// One of several options, and the text that stands for it.
struct FieldOption {
    platform::OptionButton* button;
    std::string text;
};

struct SettingsField {
    std::string section, key;
    std::optional<std::string> defaultText;  // nothing: what the control shows at first
    std::variant<platform::TextBox*, platform::ComboBox*, platform::CheckBox*, std::vector<FieldOption>>
        control;
    StoredOn storedOn = StoredOn::kNothing;
    bool storedAtEnd = false;
    std::string storedWhenEmpty = {};  // instead of an empty text
};

/// Check boxes are stored as "0" or "1", options as the text of the selected one.
class SettingsFields {
  public:
    /// Takes over the fields' events.
    SettingsFields(frmMain& form, engine::SettingsPort& settings, engine::LogPort& log,
                   engine::RunState& state);
    SettingsFields(const SettingsFields&) = delete;
    SettingsFields& operator=(const SettingsFields&) = delete;

    const std::vector<SettingsField>& table() const { return table_; }

    void read();
    void store();

    /// Gives fields that are still empty something to work with.
    void fillEmptyFields();

  private:
    void connect(const SettingsField& field);
    void connectRunFields(engine::LogPort& log, engine::RunState& state);
    void store(const SettingsField& field);

    frmMain& form_;
    engine::SettingsPort& settings_;
    std::vector<SettingsField> table_;
};

}  // namespace vantrel::app
