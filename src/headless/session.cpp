#include "headless/session.h"

#include <utility>

namespace vantrel::headless {

using namespace platform;

namespace {

// A start-up or a shutdown that takes longer than this hangs.
constexpr Milliseconds kPatience = std::chrono::hours{1};

struct While {
    bool& flag;
    explicit While(bool& f) : flag(f) { flag = true; }
    ~While() { flag = false; }
};

/// Throws CommandError when the line isn't a command.
Json parsed(const std::string& line) {
    constexpr int kDeepest = 32;
    const auto limitDepth = [](int depth, Json::parse_event_t, Json&) {
        return depth <= kDeepest ? true : throw CommandError("The command is nested too deeply");
    };
    Json json;
    try {
        json = Json::parse(line, limitDepth);
    } catch (const Json::exception&) {
        throw CommandError("Not JSON");
    }
    if (!json.is_object()) throw CommandError("Not a JSON object");
    return json;
}

Json idOf(const Json& command) {
    const auto id = command.find("id");
    return id == command.end() || id->is_structured() ? Json() : *id;
}

bool isBlank(const std::string& line) { return line.find_first_not_of(" \t\r") == std::string::npos; }

}  // namespace

Session::Session(const CommandTargets& targets, CommandSource& commands, ReplySink& replies,
                 bool timeStandsStill)
    : targets_(targets),
      table_(targets),
      commands_(commands),
      replies_(replies),
      timeStandsStill_(timeStandsStill) {}

void Session::attend() {
    // A command at work may wait itself; others have to stand back until it is done.
    if (attending_) return;
    const While attending(attending_);
    while (takeTurn() == Next::kReadOn) {
    }
}

Session::Next Session::takeTurn() {
    if (closing_) return Next::kProgramsTurn;
    if (later_) {
        const auto fields = later_();
        if (!fields) return Next::kProgramsTurn;
        later_ = nullptr;
        reply(laterId_, *fields);
    }
    const auto command = held_ ? std::exchange(held_, std::nullopt) : nextCommand();
    return command ? carryOut(*command) : Next::kProgramsTurn;
}

/// The next well-formed command; nothing when none has come yet.
std::optional<Session::Command> Session::nextCommand() {
    for (;;) {
        const Incoming incoming = commands_.next(timeStandsStill_);
        switch (incoming.kind) {
            case Incoming::Kind::kNothingYet:
                return std::nullopt;
            case Incoming::Kind::kEnd:
                return Command{{{"do", "quit"}}, false};
            case Incoming::Kind::kTooLong:
                reply({}, {{"ok", false}, {"error", "The line is too long"}});
                break;
            case Incoming::Kind::kLine: {
                if (isBlank(incoming.line)) break;
                try {
                    return Command{parsed(incoming.line)};
                } catch (const CommandError& error) {
                    reply({}, {{"ok", false}, {"error", error.what()}});
                }
                break;
            }
        }
        if (closing_) return std::nullopt;
    }
}

Session::Next Session::carryOut(const Command& command) {
    try {
        const auto& entry = table_.find(CommandFields(command.json).text("do"));
        if (!startAllows(entry.needs)) {
            held_ = command;
            return Next::kProgramsTurn;
        }
        return finish(command, table_.run(entry, command.json));
    } catch (const OperationError& error) {
        refuse(command, {{"error", std::to_string(error.number()) + ": " + error.description()},
                         {"number", error.number()},
                         {"source", error.source()},
                         {"description", error.description()}});
    } catch (const std::exception& error) {
        refuse(command, {{"error", error.what()}});
    }
    return Next::kReadOn;
}

Session::Next Session::finish(const Command& command, Outcome outcome) {
    const Json id = idOf(command.json);
    if (outcome.last) {
        if (command.fromScript) reply(id, outcome.reply);
        close();
        return Next::kProgramsTurn;
    }
    const bool acts = outcome.action != nullptr;
    if (acts) targets_.loop.post(std::move(outcome.action));
    if (outcome.later) {
        later_ = std::move(outcome.later);
        laterId_ = id;
    } else {
        reply(id, outcome.reply);
    }
    // What the operator did begins before anything else is looked at; a wait looks at once.
    return acts ? Next::kProgramsTurn : Next::kReadOn;
}

void Session::beginStart() {
    if (startBegan_) return;
    startBegan_ = targets_.loop.clock().utc();
    targets_.loop.post([this] {
        struct Through {
            bool& flag;
            ~Through() { flag = true; }
        } const through{startThrough_};
        targets_.program.start();
    });
}

bool Session::startAllows(OperatorCommands::Needs needs) {
    using Needs = OperatorCommands::Needs;
    if (needs == Needs::kNothing) return true;
    beginStart();
    if (needs == Needs::kStartBegun) return true;
    const bool hangs = targets_.loop.clock().utc() - *startBegan_ > kPatience;
    return startThrough_ || targets_.program.asksDuringStart() || hangs;
}

void Session::close() {
    if (std::exchange(closing_, true)) return;
    closingBegan_ = targets_.loop.clock().utc();
    targets_.loop.post([this] { targets_.program.close(); });
}

bool Session::over() const {
    return closing_ && (targets_.program.ended() || targets_.loop.clock().utc() - closingBegan_ > kPatience);
}

void Session::refuse(const Command& command, const Json& reason) {
    Json fields = {{"ok", false}};
    fields.update(reason);
    reply(idOf(command.json), fields);
}

void Session::reply(const Json& id, const Json& fields) {
    Json whole = Json::object();
    if (!id.is_null()) whole["id"] = id;
    whole["ok"] = true;
    whole.update(fields);
    if (!replies_.send(whole.dump(-1, ' ', false, Json::error_handler_t::replace))) close();
}

}  // namespace vantrel::headless
