// An automation host that writes down what the program does with outside programs and lets them fail on
// demand.
//
// It wraps another host. Objects that members hand out (a current document, a star collection) are wrapped as
// well, under their own class name, so that everything passes through here.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/automation.h"

namespace vantrel::platform {

/// One use of an outside program's member.
struct JournalEntry {
    std::string object;  // class name
    std::string kind;    // "create", "get", "put" or "call"
    std::string member;
    Arguments arguments;  // of a put: the value last; an image without its pixels
};

/// What shall go wrong: the member of the class (or of every class, "*") fails from the use after `after`
/// more uses on, `times` times (-1: for ever). A fault with a value returns that instead of failing. The
/// member "create" stands for the creation of an object.
struct MemberFault {
    std::string object;
    std::string member;
    AutomationError error{0, "", ""};
    std::optional<Value> returns;
    std::int64_t after = 0;
    std::int64_t times = -1;
};

class RecordingHost : public AutomationHost {
  public:
    explicit RecordingHost(AutomationHost& inner);
    ~RecordingHost() override;

    ObjectRef create(const std::string& progId) override;
    std::string serverPath(const std::string& progId) const override { return inner_.serverPath(progId); }
    std::string profileDescription(const std::string& deviceType, const std::string& progId) const override {
        return inner_.profileDescription(deviceType, progId);
    }

    void inject(MemberFault fault);

    /// The uses of the class ("*": of every class) since this was last asked for it.
    std::vector<JournalEntry> takeJournal(const std::string& className);

    /// The newest object of the class that is still held, without the recording around it; empty when none
    /// is.
    ObjectRef newest(const std::string& className) const;

  private:
    class Recorder;
    class RecordedObject;

    AutomationHost& inner_;
    std::shared_ptr<Recorder> recorder_;
};

}  // namespace vantrel::platform
