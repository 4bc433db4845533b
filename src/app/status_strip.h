// Tells at a glance what is ready for a measurement and what isn't, and keeps the last message in view after
// its pop-up has gone.
#pragma once

#include <string>

#include "app/status_panel.h"

namespace vantrel::app {

/// What a lamp says. `kReady` is lit, `kTrouble` (of a camera) is lit as a warning, `kMissing` is dark.
enum class Readiness { kReady, kMissing, kTrouble };

/// Of the things that a measurement needs, as far as the program knows without asking anybody.
struct Equipment {
    Readiness mount = Readiness::kMissing;
    bool mountChosen = false;
    Readiness camera = Readiness::kMissing;
    bool cameraChosen = false;
    bool solver = false;
    bool site = false;
};

/// A message in one line that can be read without knowing the program: its lines in a row, numbers and the
/// names of procedures left out.
std::string plainSentence(const std::string& message);

class StatusStrip {
  public:
    explicit StatusStrip(StatusPanel& panel) : panel_(panel) {}

    void show(const Equipment& equipment);
    /// A message came up; it stays until it is taken back, by the program or by an operator who has read it.
    void keep(const std::string& message);
    void takeBack();

  private:
    platform::Words advised(const std::string& sentence) const;

    StatusPanel& panel_;
    Equipment equipment_;
};

}  // namespace vantrel::app
