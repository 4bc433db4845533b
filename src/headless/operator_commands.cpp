#include "headless/operator_commands.h"

#include <limits>

#include "headless/image_saving.h"
#include "headless/lookup.h"

namespace vantrel::headless {

using namespace platform;

namespace {

Outcome replying(Json reply) { return {.reply = std::move(reply), .later = {}, .action = {}}; }

Outcome doing(OperatorAction action) {
    Outcome outcome = replying({{"delivered", action.delivered}});
    if (action.delivered) outcome.action = std::move(action.act);
    return outcome;
}

/// Failure numbers may be written as the unsigned number of the same 32 bits.
int failureNumber(std::int64_t number) {
    return number < std::numeric_limits<std::int32_t>::min() ? throw CommandError("\"number\" is too small")
                                                             : static_cast<std::int32_t>(number);
}

}  // namespace

OperatorCommands::OperatorCommands(const CommandTargets& targets)
    : targets_(targets), logCursor_(targets.program) {
    using C = OperatorCommands;
    commands_ = {
        {"click", {"control"}, Needs::kStartThrough, &C::click},
        {"type", {"control", "text"}, Needs::kStartThrough, &C::type},
        {"key", {"control", "code"}, Needs::kStartThrough, &C::key},
        {"leave", {"control"}, Needs::kStartThrough, &C::leave},
        {"choose", {"control", "item"}, Needs::kStartThrough, &C::choose},
        {"check", {"control", "value"}, Needs::kStartThrough, &C::check},
        {"close", {"window"}, Needs::kStartThrough, &C::close},
        {"read", {"control"}, Needs::kStartThrough, &C::read},
        {"drawing", {"control"}, Needs::kStartThrough, &C::drawing},
        {"wait", {"for", "seconds"}, Needs::kStartBegun, &C::wait},
        {"advance", {"seconds"}, Needs::kStartBegun, &C::advance},
        {"time", {}, Needs::kNothing, &C::time},
        {"log", {"from"}, Needs::kStartThrough, &C::log},
        {"setting", {"section", "key", "value", "remove"}, Needs::kNothing, &C::setting},
        {"windows", {}, Needs::kStartThrough, &C::windows},
        {"popups", {}, Needs::kStartThrough, &C::popups},
        {"boxes", {}, Needs::kStartThrough, &C::boxes},
        {"answer", {"dialog", "with"}, Needs::kNothing, &C::answer},
        {"automation",
         {"object", "get", "put", "call", "value", "args"},
         Needs::kStartThrough,
         &C::automation},
        {"fault",
         {"object", "member", "number", "source", "description", "after", "times", "returns"},
         Needs::kNothing,
         &C::fault},
        {"journal", {"object"}, Needs::kNothing, &C::journal},
        {"image", {"save"}, Needs::kStartThrough, &C::image},
        {"quit", {}, Needs::kStartThrough, &C::quit},
    };
}

const OperatorCommands::Command& OperatorCommands::find(const std::string& name) const {
    for (const Command& command : commands_)
        if (name == command.name) return command;
    throw CommandError("Unknown command: " + name.substr(0, 60));
}

Outcome OperatorCommands::run(const Command& command, const Json& json) {
    const CommandFields fields(json);
    fields.allowOnly(command.fields);
    return (this->*command.run)(fields);
}

Control& OperatorCommands::control(const CommandFields& fields) const {
    return requiredControl(targets_.screen, fields.text("control"));
}

Outcome OperatorCommands::click(const CommandFields& fields) {
    const std::string name = fields.text("control");
    if (name.find('.') == std::string::npos)
        return doing(headless::click(requiredForm(targets_.screen, name)));
    return doing(headless::click(control(fields)));
}

Outcome OperatorCommands::type(const CommandFields& fields) {
    return doing(headless::type(control(fields), fields.text("text")));
}

Outcome OperatorCommands::key(const CommandFields& fields) {
    constexpr std::int64_t kLargestCharacter = 0xFFFF;
    auto& box = requiredKind<TextBox>(control(fields), "text box");
    const std::int64_t code = fields.integer("code");
    if (code < 0 || code > kLargestCharacter) throw CommandError("\"code\" is no character code");
    Outcome outcome = doing(headless::key(box, static_cast<int>(code)));
    outcome.later = [&box, reply = outcome.reply]() mutable {
        reply["text"] = box.text();
        return std::optional<Json>(reply);
    };
    return outcome;
}

Outcome OperatorCommands::leave(const CommandFields& fields) {
    return doing(headless::leave(control(fields)));
}

Outcome OperatorCommands::choose(const CommandFields& fields) {
    return doing(headless::choose(requiredKind<ComboBox>(control(fields), "list"), fields.text("item")));
}

Outcome OperatorCommands::check(const CommandFields& fields) {
    const std::int64_t value = fields.integer("value");
    if (value != 0 && value != 1) throw CommandError("\"value\" must be 0 or 1");
    return doing(headless::check(control(fields), static_cast<int>(value)));
}

Outcome OperatorCommands::close(const CommandFields& fields) {
    return doing(headless::close(requiredForm(targets_.screen, fields.text("window"))));
}

Outcome OperatorCommands::read(const CommandFields& fields) {
    Json reply = Json::object();
    for (const auto& [name, value] : control(fields).properties()) reply[name] = toJson(value);
    return replying(std::move(reply));
}

Outcome OperatorCommands::drawing(const CommandFields& fields) {
    return replying(toJson(requiredKind<PictureBox>(control(fields), "picture").drawing()));
}

Outcome OperatorCommands::wait(const CommandFields& fields) {
    constexpr Milliseconds kUsualLimit = std::chrono::hours{1};
    WaitCondition condition = waitCondition(fields.any("for"), targets_.screen, logCursor_,
                                            [this] { return targets_.loop.idle(); });
    const Milliseconds limit = fields.seconds("seconds", kUsualLimit);
    const Clock& clock = targets_.loop.clock();
    Outcome outcome;
    // The timer makes time stop at the limit.
    outcome.later = [condition = std::move(condition), &clock, deadline = clock.utc() + limit,
                     timer = targets_.loop.after(limit, [] {})]() -> std::optional<Json> {
        if (condition()) return Json::object();
        if (clock.utc() < deadline) return std::nullopt;
        return Json{{"ok", false}, {"timeout", true}, {"error", "Waited in vain"}};
    };
    return outcome;
}

Outcome OperatorCommands::advance(const CommandFields& fields) {
    const Milliseconds span = fields.seconds("seconds");
    const Clock& clock = targets_.loop.clock();
    Outcome outcome;
    outcome.later = [&clock, end = clock.utc() + span,
                     timer = targets_.loop.after(span, [] {})]() -> std::optional<Json> {
        return clock.utc() < end ? std::nullopt : std::optional<Json>(Json::object());
    };
    return outcome;
}

Outcome OperatorCommands::time(const CommandFields&) {
    const Clock& clock = targets_.loop.clock();
    return replying({{"utc", utcText(clock.utc())},
                     {"local", localText(clock.utc())},
                     {"seconds", static_cast<double>(clock.sinceStart().count()) / 1000}});
}

Outcome OperatorCommands::log(const CommandFields& fields) {
    const auto& all = targets_.program.logLines();
    const std::int64_t from = fields.integer("from", 0);
    if (from < 0) throw CommandError("\"from\" must not be negative");
    Json lines = Json::array();
    for (auto i = static_cast<std::size_t>(from); i < all.size(); ++i) lines.push_back(all[i]);
    return replying({{"lines", std::move(lines)}, {"next", all.size()}});
}

Outcome OperatorCommands::setting(const CommandFields& fields) {
    const std::string section = fields.text("section");
    const std::string key = fields.text("key");
    if (fields.has("value") && fields.has("remove"))
        throw CommandError("\"value\" and \"remove\" exclude each other");
    if (fields.has("value"))
        targets_.settings.write(section, key, toSettingText(fields.any("value")));
    else if (fields.flag("remove", false))
        targets_.settings.remove(section, key);
    const auto stored = targets_.settings.read(section, key);
    return replying({{"value", stored ? Json(*stored) : Json()}});
}

Outcome OperatorCommands::windows(const CommandFields&) {
    Json windows = Json::array();
    for (const Form* form : targets_.screen.shownForms()) windows.push_back(toJson(*form));
    return replying({{"windows", std::move(windows)}});
}

Outcome OperatorCommands::popups(const CommandFields&) {
    Json popups = Json::array();
    for (const auto& popup : targets_.program.popups())
        popups.push_back({{"time", utcText(popup.time)}, {"text", popup.text}, {"seconds", popup.seconds}});
    return replying({{"popups", std::move(popups)}});
}

Outcome OperatorCommands::boxes(const CommandFields&) {
    Json boxes = Json::array();
    for (const auto& box : targets_.dialogs.boxes())
        boxes.push_back(
            {{"time", utcText(box.time)}, {"text", box.text}, {"seconds", 0}, {"title", box.title}});
    return replying({{"boxes", std::move(boxes)}});
}

Outcome OperatorCommands::answer(const CommandFields& fields) {
    using Kind = ScriptedDialogs::Kind;
    const std::string dialog = fields.text("dialog");
    const std::string with = fields.text("with");
    if (dialog == "folder")
        targets_.dialogs.answer(Kind::kFolder, with);
    else if (dialog == "file")
        targets_.dialogs.answer(Kind::kFile, with);
    else if (dialog == "chooser")
        targets_.dialogs.answer(Kind::kChooser, with);
    else if (dialog == "box")
        targets_.dialogs.answer(Kind::kBox, with);
    else
        throw CommandError("\"dialog\" must be \"folder\", \"file\", \"chooser\" or \"box\"");
    return {};
}

ObjectRef OperatorCommands::object(const std::string& progId) const {
    if (ObjectRef held = targets_.automation.newest(progId)) return held;
    return targets_.classes.create(progId);
}

ObjectFinder OperatorCommands::objectFinder() const {
    return [this](const std::string& progId) { return object(progId); };
}

Outcome OperatorCommands::automation(const CommandFields& fields) {
    if (fields.has("get") + fields.has("put") + fields.has("call") != 1)
        throw CommandError("One of \"get\", \"put\" and \"call\" is needed");
    if (fields.has("value") != fields.has("put")) throw CommandError("\"value\" goes with \"put\"");
    const ObjectRef target = object(fields.text("object"));
    const Arguments arguments = fields.arguments("args", objectFinder());
    Json value;
    if (fields.has("get"))
        value = toJson(target->get(fields.text("get"), arguments));
    else if (fields.has("put"))
        target->put(fields.text("put"), toValue(fields.any("value"), objectFinder()), arguments);
    else
        value = toJson(target->call(fields.text("call"), arguments));
    return replying({{"value", std::move(value)}});
}

Outcome OperatorCommands::fault(const CommandFields& fields) {
    if (fields.has("number") == fields.has("returns"))
        throw CommandError("Either \"number\" or \"returns\" is needed");
    MemberFault fault;
    fault.object = fields.text("object");
    fault.member = fields.text("member");
    fault.after = fields.integer("after", 0);
    fault.times = fields.integer("times", -1);
    if (fault.after < 0 || fault.times < -1)
        throw CommandError("\"after\" must be 0 or more, \"times\" -1 or more");
    if (fields.has("returns")) {
        fault.returns = toValue(fields.any("returns"), objectFinder());
    } else {
        const int number = failureNumber(fields.integer("number"));
        fault.error = AutomationError(number, fields.text("source", fault.object),
                                      fields.text("description", runTimeError(number).description()));
    }
    targets_.automation.inject(std::move(fault));
    return {};
}

Outcome OperatorCommands::journal(const CommandFields& fields) {
    const std::string object = fields.text("object");
    Json entries = Json::array();
    for (const JournalEntry& entry : targets_.automation.takeJournal(object)) {
        Json arguments = Json::array();
        for (const Value& argument : entry.arguments) arguments.push_back(toJson(argument));
        Json use = {{"kind", entry.kind}, {"member", entry.member}, {"args", std::move(arguments)}};
        if (object == "*") use["object"] = entry.object;
        entries.push_back(std::move(use));
    }
    return replying({{"journal", std::move(entries)}});
}

Outcome OperatorCommands::image(const CommandFields& fields) {
    saveShownImage(targets_.images, targets_.folders, fields.text("save"));
    return {};
}

Outcome OperatorCommands::quit(const CommandFields&) {
    Outcome outcome;
    outcome.last = true;
    return outcome;
}

}  // namespace vantrel::headless
