// One measurement without an operator.
#pragma once

#include <ostream>
#include <vector>

#include "platform/dialogs.h"
#include "qt/program.h"

namespace vantrel::qt {

/// Presses Run once the program has started, declines the correction, and gives up at every question of a
/// failed run.
class UnattendedRun {
  public:
    /// Log lines go to `out` as they come.
    UnattendedRun(Program& program, platform::EventLoop& loop, std::ostream& out);

    /// Starts the program and presses Run.
    void begin();
    /// The run is over.
    bool over() const { return over_; }
    /// A polar error was reported.
    bool measured() const { return reported_ && !failed_; }

  private:
    void read(const std::string& line);
    void answer();

    Program& program_;
    platform::EventLoop& loop_;
    std::ostream& out_;
    platform::Button& run_;
    platform::Button& next_;
    platform::Button& skip_;
    std::vector<platform::Subscription> subscriptions_;
    bool running_ = false, over_ = false, reported_ = false, failed_ = false;
};

/// Prints message boxes and cancels all choices.
class UnattendedDialogs : public platform::Dialogs {
  public:
    explicit UnattendedDialogs(std::ostream& out) : out_(out) {}

    void messageBox(const std::string& title, const platform::Words& text, Icon icon,
                    Buttons buttons) override;
    std::string chooseFolder(const platform::Words& /*title*/) override { return {}; }
    std::string chooseFile(const platform::Words& /*title*/) override { return {}; }
    std::string choose(const platform::Words& /*title*/, const std::vector<Choice>& /*choices*/,
                       const std::string& /*current*/) override {
        return {};
    }

  private:
    std::ostream& out_;
};

}  // namespace vantrel::qt
