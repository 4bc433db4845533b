#include "hosts/com/test_telescope.h"

#include <map>

#include "platform/errors.h"
#include "platform/image_array.h"

namespace vantrel::test {

using platform::Arguments;
using platform::Value;

namespace {

/// Members for everything that may happen to a value, and for everything that may happen to a server.
class TestTelescope : public platform::AutomationObject {
  public:
    std::string className() const override { return "VantrelTest.Telescope"; }

    Value get(const std::string& member, const Arguments& arguments) override {
        return call(member, arguments);
    }
    void put(const std::string& member, const Value& value, const Arguments& arguments) override {
        if (member != "Kept" && member != "Indexed") throw platform::runTimeError(438);
        kept_[arguments.empty() ? 0 : arguments[0].toInt()] = value;
    }
    Value call(const std::string& member, const Arguments& arguments) override {
        if (member == "Kept" || member == "Indexed")
            return kept_[arguments.empty() ? 0 : arguments[0].toInt()];
        if (member == "Missing") return static_cast<int>(!arguments.empty() && arguments[0].isEmpty());
        if (member == "Partner") return Value(platform::ObjectRef(std::make_shared<TestTelescope>()));
        if (member == "Nobody") return Value(platform::ObjectRef());
        if (member == "FailWith")
            throw platform::AutomationError(arguments[0].toInt(), "Test driver", "it is \xC2\xBD broken");
        if (member == "Rest") return ::Sleep(static_cast<DWORD>(arguments[0].toInt())), true;
        if (member == "Die") ::TerminateProcess(::GetCurrentProcess(), 9);
        throw platform::runTimeError(438);
    }

  private:
    std::map<int, Value> kept_;
};

}  // namespace

platform::ObjectRef testTelescope() { return std::make_shared<TestTelescope>(); }

}  // namespace vantrel::test
