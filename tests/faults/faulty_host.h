// Outside programs that fail as a table says: every use of a member passes through here, is counted, and may
// be struck by a fault. Objects that members hand out are wrapped as well.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/automation.h"
#include "platform/desktop_windows.h"
#include "platform/queued_event_loop.h"

namespace vantrel::faults {

/// A way to use a member of a class. The kind is "create", "get", "put" or "call".
struct Member {
    std::string object;
    std::string kind;
    std::string name;
    auto operator<=>(const Member&) const = default;  // NOLINT(modernize-use-nullptr): no pointer is here
    std::string text() const { return object + "." + name + " (" + kind + ")"; }
};

/// What was seen of it: how often, and the last thing that came back.
struct Sighting {
    long uses = 0;
    platform::Value result;
};

enum class Kind { kRaises, kFalse, kTrue, kEmpty, kHuge, kNegative, kNotANumber, kGarbage, kSlow, kGone };

const char* nameOf(Kind kind);

/// True when the member can go wrong in this way: only what gives something back can give back nonsense.
bool applies(Kind kind, const Member& member, const Sighting& seen);

/// The member fails from the use after `after` more uses on, `times` times.
struct Fault {
    Member member;
    Kind kind = Kind::kRaises;
    long after = 0;
    long times = 1'000'000'000;
};

class FaultyHost : public platform::AutomationHost {
  public:
    FaultyHost(platform::AutomationHost& inner, platform::TimeKeeper& time) : inner_(inner), time_(time) {}

    platform::ObjectRef create(const std::string& progId) override;
    std::string serverPath(const std::string& progId) const override { return inner_.serverPath(progId); }
    std::string profileDescription(const std::string& deviceType, const std::string& progId) const override {
        return inner_.profileDescription(deviceType, progId);
    }

    /// Hears of every use as it begins.
    std::function<void(const Member&)> onUse;

    /// From now on uses are counted anew, as they end.
    void watch() { seen_.clear(); }
    const std::map<Member, Sighting>& seen() const { return seen_; }

    void arm(Fault fault) { fault_ = std::move(fault), struck_ = 0; }
    void disarm() { fault_.reset(); }
    long struck() const { return struck_; }

    /// Carries the use out, or strikes. `carryOut` gives the value back.
    template <typename CarryOut>
    platform::Value use(const Member& member, CarryOut&& carryOut) {
        if (onUse) onUse(member);
        if (const auto instead = strike(member)) return *instead;
        platform::Value value = carryOut();
        note(member, value);
        return value;
    }

  private:
    std::optional<platform::Value> strike(const Member& member);
    void note(const Member& member, const platform::Value& value);

    platform::AutomationHost& inner_;
    platform::TimeKeeper& time_;
    std::map<Member, Sighting> seen_;
    std::optional<Fault> fault_;
    long struck_ = 0;
};

/// The desktop's programs, with the same faults under the class name "Desktop".
class FaultyWindows : public platform::DesktopWindows {
  public:
    explicit FaultyWindows(FaultyHost& host) : host_(host) {}

    std::vector<platform::WindowId> topLevelWindows() const override;
    void startProgram(const std::string& path) override;
    int shellOpen(const std::string& path, const std::string& workingFolder) override;
    bool programIsIdle(const std::string& path) const override;
    std::optional<std::string> fileVersion(const std::string& path) const override;

  private:
    FaultyHost& host_;
};

}  // namespace vantrel::faults
