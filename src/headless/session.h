// One operator's session: reads commands, carries them out while the program runs, and replies.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "headless/command_source.h"
#include "headless/operator_commands.h"

namespace vantrel::headless {

/// Takes part in the event loop as its attendant. A command is carried out between the program's handlers,
/// however deep they are nested; after a command that does something to the program, or waits, the program
/// has its turn before the next one is read. Replies come in the order of the commands.
///
/// The start-up begins with the first command that needs the program; commands other than waits let it run
/// to its end first, unless it asks the operator something.
class Session {
  public:
    /// With `timeStandsStill` reading blocks: no time passes between commands.
    Session(const CommandTargets& targets, CommandSource& commands, ReplySink& replies, bool timeStandsStill);

    /// For the loop's attendant.
    void attend();

    /// Lets the start-up begin without a command.
    void beginStart();

    /// Closes the program, as the end of the commands does.
    void close();

    /// True while a new command would be carried out at once.
    bool wantsInput() const { return !later_ && !held_ && !closing_; }

    /// The last command was given and the program has ended, or doesn't come to an end.
    bool over() const;
    /// Whether the program ended as it should.
    bool endedWell() const { return targets_.program.ended(); }

  private:
    struct Command {
        Json json;
        bool fromScript = true;
    };

    enum class Next { kReadOn, kProgramsTurn };
    Next takeTurn();
    std::optional<Command> nextCommand();
    Next carryOut(const Command& command);
    Next finish(const Command& command, Outcome outcome);
    bool startAllows(OperatorCommands::Needs needs);
    void refuse(const Command& command, const Json& reason);
    void reply(const Json& id, const Json& fields);

    CommandTargets targets_;
    OperatorCommands table_;
    CommandSource& commands_;
    ReplySink& replies_;
    bool timeStandsStill_;

    bool attending_ = false;
    std::optional<Command> held_;  // waits for the start-up
    std::function<std::optional<Json>()> later_;
    Json laterId_;

    std::optional<platform::Instant> startBegan_;
    bool startThrough_ = false;
    bool closing_ = false;
    platform::Instant closingBegan_;
};

}  // namespace vantrel::headless
