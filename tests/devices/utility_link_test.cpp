#include "devices/utility_link.h"

#include <memory>

#include <gmock/gmock.h>

#include "platform/class_registry.h"
#include "platform/dispatch_object.h"
#include "platform/recording_host.h"
#include "support/journal.h"

namespace vantrel::devices {
namespace {

using testing::ElementsAre;

/// Answers every conversion with the member's name, every parse with 12.5.
class EchoUtility : public platform::DispatchObject {
  public:
    EchoUtility() : DispatchObject("DriverHelper.Util") {
        for (const char* member : {"HoursToHMS", "DegreesToDMS", "DegreesToHMS"})
            method(member, [member](const platform::Arguments&) { return member; });
        method("DMSToDegrees", [](const platform::Arguments&) { return 12.5; });
        method("WaitForMilliseconds", [](const platform::Arguments&) { return platform::Value(); });
    }
};

TEST(UtilityLink, PassesMarksAndDecimalsByPosition) {
    platform::ClassRegistry registry;
    registry.install("DriverHelper.Util", {[] { return std::make_shared<EchoUtility>(); }, "", "", ""});
    platform::RecordingHost host(registry);
    UtilityLink utility(host);
    utility.create();

    EXPECT_EQ(utility.HoursToHMS(1.5), "HoursToHMS");
    EXPECT_EQ(utility.DegreesToDMS(-2.5), "DegreesToDMS");
    EXPECT_EQ(utility.DegreesToHMS(15), "DegreesToHMS");
    utility.HoursToHMS(1.5, " ", " ");
    utility.DegreesToDMS(2.5, " ", ",", "");
    utility.HoursToHMS(0, 1);
    utility.DegreesToDMS(0, 1);
    EXPECT_EQ(utility.DMSToDegrees("12d30m"), 12.5);
    utility.WaitForMilliseconds(3000);

    EXPECT_THAT(
        test::actionsOn(host, "DriverHelper.Util"),
        ElementsAre("create", "call HoursToHMS 1.5", "call DegreesToDMS -2.5", "call DegreesToHMS 15",
                    "call HoursToHMS 1.5    ", "call DegreesToDMS 2.5   , ", "call HoursToHMS 0    1",
                    "call DegreesToDMS 0    1", "call DMSToDegrees 12d30m", "call WaitForMilliseconds 3000"));
}

TEST(UtilityLink, FailsWithoutItsObject) {
    platform::ClassRegistry registry;
    UtilityLink utility(registry);
    const auto numberOf = [](auto&& use) {
        try {
            use();
        } catch (const platform::OperationError& error) {
            return error.number();
        }
        return 0;
    };
    EXPECT_EQ(numberOf([&] { utility.HoursToHMS(1); }), 91);
    EXPECT_EQ(numberOf([&] { utility.create(); }), 429);
}

}  // namespace
}  // namespace vantrel::devices
