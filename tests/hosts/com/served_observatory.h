// The built-in observatory as programs of its own that COM knows: a mount, both imaging programs with their
// windows, and the plate solver. What goes wrong with them is told from outside.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "headless/system_time.h"
#include "observatory/observatory.h"
#include "platform/user_machine.h"
#include "platform/win32_calls.h"

namespace vantrel::test {

/// A mount with an axis error that the program takes for anybody's: its pictures come from the imaging
/// programs.
inline constexpr const char* kServedMount = "TestMount.Telescope";

struct ServedClass {
    std::string progId;
    std::string builtIn;  // what is behind it
    GUID id;
};
const std::vector<ServedClass>& servedClasses();

/// Which member of all goes wrong, and how: kept in the registry, so that it can be told from another
/// process. `how` is "fails", "slow" (10 s), "dies", "hangs", or empty. Not for the first `after` uses.
void setFault(const std::string& classAndMember, const std::string& how, int after);
/// Since it was set.
bool faultHappened();

/// Which imaging program it is that one sees when the server starts, until somebody asks for an object of the
/// other: "MaxIm", unless "CCDSoft" is told.
void setProgram(const std::string& imagingProgram);

/// Lives in one thread, whose loop calls pump() every few milliseconds.
class ServedObservatory {
  public:
    explicit ServedObservatory(bool withWindows);

    platform::ObjectRef create(const ServedClass& served);
    void pump();

  private:
    void mirrorWindows();

    headless::SystemTime time_{headless::SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop_{time_};
    platform::UserMachine user_;
    platform::DesktopWindows desktop_;
    observatory::Observatory observatory_;
    platform::ClassRegistry classes_;
    bool withWindows_;
    std::map<platform::WindowId, HWND> windows_;
};

}  // namespace vantrel::test
