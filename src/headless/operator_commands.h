// The commands of the operator protocol, by name.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "headless/command_fields.h"
#include "headless/operated_program.h"
#include "headless/operator_actions.h"
#include "headless/scripted_dialogs.h"
#include "headless/wait_condition.h"
#include "imaging/open_documents.h"
#include "platform/class_registry.h"
#include "platform/folder_map.h"
#include "platform/queued_event_loop.h"
#include "platform/recording_host.h"
#include "platform/settings_root.h"

namespace vantrel::headless {

/// What a command comes to.
struct Outcome {
    /// The reply's fields beside "id" and "ok".
    Json reply = Json::object();
    /// Set when the reply comes later: asked between the program's handlers until it gives one.
    std::function<std::optional<Json>()> later;
    /// What the operator does: a handler for the event loop.
    std::function<void()> action;
    /// No more commands after this one.
    bool last = false;
};

/// Everything that commands act on.
struct CommandTargets {
    OperatedProgram& program;
    platform::QueuedEventLoop& loop;
    platform::Screen& screen;
    platform::SettingsRoot& settings;
    platform::RecordingHost& automation;
    platform::ClassRegistry& classes;
    const platform::FolderMap& folders;
    ScriptedDialogs& dialogs;
    const imaging::OpenDocuments& images;
};

class OperatorCommands {
  public:
    explicit OperatorCommands(const CommandTargets& targets);

    /// When a command may run.
    enum class Needs {
        kNothing,       // prepares the scene: before the start-up as well
        kStartBegun,    // lets the program run: the start-up as well
        kStartThrough,  // deals with the running program
    };
    struct Command {
        const char* name;
        std::vector<std::string> fields;
        Needs needs;
        Outcome (OperatorCommands::*run)(const CommandFields&);
    };

    const std::vector<Command>& all() const { return commands_; }

    /// Throws CommandError when there is no such command.
    const Command& find(const std::string& name) const;

    /// Throws CommandError or platform::OperationError when the command can't be carried out.
    Outcome run(const Command& command, const Json& json);

  private:
    Outcome click(const CommandFields& fields);
    Outcome type(const CommandFields& fields);
    Outcome key(const CommandFields& fields);
    Outcome leave(const CommandFields& fields);
    Outcome choose(const CommandFields& fields);
    Outcome check(const CommandFields& fields);
    Outcome close(const CommandFields& fields);
    Outcome read(const CommandFields& fields);
    Outcome drawing(const CommandFields& fields);
    Outcome wait(const CommandFields& fields);
    Outcome advance(const CommandFields& fields);
    Outcome time(const CommandFields& fields);
    Outcome log(const CommandFields& fields);
    Outcome setting(const CommandFields& fields);
    Outcome windows(const CommandFields& fields);
    Outcome popups(const CommandFields& fields);
    Outcome boxes(const CommandFields& fields);
    Outcome answer(const CommandFields& fields);
    Outcome automation(const CommandFields& fields);
    Outcome fault(const CommandFields& fields);
    Outcome journal(const CommandFields& fields);
    Outcome image(const CommandFields& fields);
    Outcome quit(const CommandFields& fields);

    platform::Control& control(const CommandFields& fields) const;
    /// The object of the class that the program holds, else a fresh one.
    platform::ObjectRef object(const std::string& progId) const;
    ObjectFinder objectFinder() const;

    CommandTargets targets_;
    LogCursor logCursor_;
    std::vector<Command> commands_;
};

}  // namespace vantrel::headless
