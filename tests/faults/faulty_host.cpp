#include "faults/faulty_host.h"

#include <limits>

#include "platform/text.h"

namespace vantrel::faults {

using namespace platform;

namespace {

constexpr Milliseconds kSlowAnswer = std::chrono::seconds{20};
constexpr int kServerIsGone = 462;

class WrappedObject : public AutomationObject {
  public:
    WrappedObject(ObjectRef inner, FaultyHost& host) : inner_(std::move(inner)), host_(host) {}

    std::string className() const override { return inner_->className(); }

    Value get(const std::string& member, const Arguments& arguments) override {
        return host_.use(named("get", member), [&] { return wrapped(inner_->get(member, arguments)); });
    }
    void put(const std::string& member, const Value& value, const Arguments& arguments) override {
        host_.use(named("put", member), [&] {
            inner_->put(member, value, arguments);
            return Value();
        });
    }
    Value call(const std::string& member, const Arguments& arguments) override {
        return host_.use(named("call", member), [&] { return wrapped(inner_->call(member, arguments)); });
    }

  private:
    Member named(const char* kind, const std::string& member) const {
        return {toLower(className()), kind, toLower(member)};
    }
    Value wrapped(const Value& value) const {
        const auto* object = std::get_if<ObjectRef>(&value.held());
        if (object == nullptr || *object == nullptr) return value;
        return ObjectRef(std::make_shared<WrappedObject>(*object, host_));
    }

    ObjectRef inner_;
    FaultyHost& host_;
};

bool isNumber(const Value& value) {
    return std::holds_alternative<double>(value.held()) || std::holds_alternative<std::int64_t>(value.held());
}

Value nonsense(Kind kind) {
    switch (kind) {
        case Kind::kFalse:
            return false;
        case Kind::kTrue:
            return true;
        case Kind::kHuge:
            return 1e308;
        case Kind::kNegative:
            return -1e9;
        case Kind::kNotANumber:
            return std::numeric_limits<double>::quiet_NaN();
        case Kind::kGarbage:
            return std::string(100'000, '\xff');
        default:
            return {};
    }
}

}  // namespace

const char* nameOf(Kind kind) {
    constexpr const char* kNames[] = {"raises",   "false",        "true",    "empty", "huge",
                                      "negative", "not a number", "garbage", "slow",  "gone"};
    return kNames[static_cast<std::size_t>(kind)];
}

bool applies(Kind kind, const Member& member, const Sighting& seen) {
    const bool answers = member.kind == "get" || (member.kind == "call" && !seen.result.isEmpty());
    switch (kind) {
        case Kind::kRaises:
        case Kind::kSlow:
        case Kind::kGone:
            return true;
        case Kind::kTrue:
            return answers && std::holds_alternative<bool>(seen.result.held());
        case Kind::kFalse:
        case Kind::kEmpty:
        case Kind::kGarbage:
            return answers;
        default:
            return answers && isNumber(seen.result);
    }
}

ObjectRef FaultyHost::create(const std::string& progId) {
    const Value made = use({toLower(progId), "create", "create"}, [&] {
        return ObjectRef(std::make_shared<WrappedObject>(inner_.create(progId), *this));
    });
    return made.toObject();
}

std::optional<Value> FaultyHost::strike(const Member& member) {
    if (!fault_) return std::nullopt;
    // A program that has gone takes all its members along.
    const bool gone = fault_->kind == Kind::kGone && struck_ > 0 && member.object == fault_->member.object;
    if (!gone && member != fault_->member) return std::nullopt;
    if (!gone && fault_->after-- > 0) return std::nullopt;
    if (fault_->times <= struck_) return std::nullopt;
    ++struck_;
    switch (fault_->kind) {
        case Kind::kRaises:
            throw AutomationError(error_number::kDriverException, member.object, "It went wrong");
        case Kind::kGone:
            throw AutomationError(kServerIsGone, member.object, "The remote server is gone");
        case Kind::kSlow:
            time_.passUntil(time_.utc() + kSlowAnswer);
            return std::nullopt;
        default:
            return nonsense(fault_->kind);
    }
}

void FaultyHost::note(const Member& member, const Value& value) {
    Sighting& seen = seen_[member];
    ++seen.uses;
    const bool keeps =
        std::holds_alternative<ObjectRef>(value.held()) || std::holds_alternative<ImageRef>(value.held());
    if (!keeps) seen.result = value;
}

std::vector<WindowId> FaultyWindows::topLevelWindows() const {
    std::vector<WindowId> windows;
    const Value answer = host_.use({"desktop", "get", "toplevelwindows"}, [&] {
        windows = DesktopWindows::topLevelWindows();
        return Value(true);
    });
    return windows;
}

void FaultyWindows::startProgram(const std::string& path) {
    host_.use({"desktop", "call", "startprogram"}, [&] {
        DesktopWindows::startProgram(path);
        return Value();
    });
}

int FaultyWindows::shellOpen(const std::string& path, const std::string& workingFolder) {
    const Value answer = host_.use({"desktop", "call", "shellopen"},
                                   [&] { return Value(DesktopWindows::shellOpen(path, workingFolder)); });
    return isNumber(answer) ? static_cast<int>(answer.toDouble() > 32) * 33 : 0;
}

bool FaultyWindows::programIsIdle(const std::string& path) const {
    return host_
        .use({"desktop", "get", "programisidle"}, [&] { return Value(DesktopWindows::programIsIdle(path)); })
        .toBool();
}

std::optional<std::string> FaultyWindows::fileVersion(const std::string& path) const {
    const Value answer = host_.use({"desktop", "get", "fileversion"}, [&] {
        const auto version = DesktopWindows::fileVersion(path);
        return version ? Value(*version) : Value();
    });
    if (const auto* text = std::get_if<std::string>(&answer.held())) return *text;
    return std::nullopt;
}

}  // namespace vantrel::faults
