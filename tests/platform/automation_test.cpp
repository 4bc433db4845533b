#include "platform/automation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/class_registry.h"
#include "platform/desktop_windows.h"
#include "platform/dispatch_object.h"
#include "platform/errors.h"
#include "platform/image_array.h"
#include "platform/recording_host.h"
#include "support/refusal.h"

namespace vantrel::platform {
namespace {

using test::failureOf;

class Dome : public DispatchObject {
  public:
    explicit Dome(const std::string& name = "Test.Dome") : DispatchObject(name) {
        property(
            "Azimuth", [this] { return Value(azimuth_); },
            [this](const Value& value) { azimuth_ = value.toDouble(); });
        property("Broken", []() -> Value { throw std::runtime_error("Jammed"); });
        property("Lamp", [] { return Value(ObjectRef(std::make_shared<Dome>("Test.Lamp"))); });
        method("Turn",
               [this](const Arguments& arguments) { return azimuth_ += argument(arguments, 0).toDouble(); });
        indexedProperty(
            "Slot", [this](const Arguments& a) { return Value(azimuth_ * a.at(0).toInt()); },
            [this](const Value& value, const Arguments& a) { azimuth_ = value.toInt() + a.at(0).toInt(); });
    }

  private:
    double azimuth_ = 0;
};

TEST(Value, ConvertsAsAutomationDoes) {
    struct Case {
        const char* why;
        Value value;
        std::optional<double> number;
        std::optional<bool> flag;
        std::optional<std::string> text;
    };
    const Case cases[] = {
        {"empty", Value(), 0.0, false, ""},
        {"true is -1", true, -1.0, true, "True"},
        {"false", false, 0.0, false, "False"},
        {"integer", 7, 7.0, true, "7"},
        {"double", 0.5, 0.5, true, "0.5"},
        {"numeric text", "12.5", 12.5, true, "12.5"},
        {"comma", "1,5", 1.5, true, "1,5"},
        {"truth as text", "true", std::nullopt, true, "true"},
        {"other text", "open", std::nullopt, std::nullopt, "open"},
        {"object", ObjectRef(std::make_shared<Dome>()), std::nullopt, std::nullopt, std::nullopt},
        {"image", ImageRef(std::make_shared<ImageArray>(1, 1, std::vector<float>{0})), std::nullopt,
         std::nullopt, std::nullopt},
    };
    const auto orNothing = [](auto convert) -> std::optional<decltype(convert())> {
        try {
            return convert();
        } catch (const OperationError& error) {
            EXPECT_EQ(error.number(), error_number::kTypeMismatch);
            return std::nullopt;
        }
    };
    for (const Case& c : cases) {
        EXPECT_EQ(orNothing([&] { return c.value.toDouble(); }), c.number) << c.why;
        EXPECT_EQ(orNothing([&] { return c.value.toBool(); }), c.flag) << c.why;
        EXPECT_EQ(orNothing([&] { return c.value.toText(); }), c.text) << c.why;
    }
}

TEST(Value, TellsNoObjectFromNotAnObject) {
    EXPECT_EQ(Value().toObject(), nullptr);
    EXPECT_THROW(Value(1).toObject(), OperationError);
    EXPECT_THROW(Value("x").toImage(), OperationError);
    EXPECT_EQ(failureOf([] { required(nullptr); }), error_number::kNoObject);
}

TEST(DispatchObject, ReportsWhatGoesWrongByNumber) {
    Dome dome;
    dome.put("AZIMUTH", "90");
    EXPECT_EQ(dome.call("turn", {Value(10)}).toDouble(), 100);
    EXPECT_EQ(dome.get("Slot", {Value(4)}).toInt(), 400);
    dome.put("Slot", 7, {Value(2)});
    EXPECT_EQ(dome.get("Azimuth").toInt(), 9);
    const struct {
        const char* why;
        std::function<void()> use;
        int number;
        const char* description;
    } cases[] = {
        {"unknown", [&] { dome.get("Shutter"); }, error_number::kNoSuchMember,
         "Object doesn't support this property or method"},
        {"read-only", [&] { dome.put("Broken", 1); }, error_number::kNoSuchMember,
         "Object doesn't support this property or method"},
        {"not a method", [&] { dome.call("Azimuth"); }, error_number::kNoSuchMember,
         "Object doesn't support this property or method"},
        {"own exception", [&] { dome.get("Broken"); }, error_number::kDriverException, "Jammed"},
        {"wrong kind", [&] { dome.put("Azimuth", "north"); }, error_number::kTypeMismatch, "Type mismatch"},
        {"too few arguments", [&] { dome.call("Turn"); }, 450,
         "Wrong number of arguments or invalid property assignment"},
    };
    for (const auto& c : cases) {
        try {
            c.use();
            ADD_FAILURE() << c.why;
        } catch (const AutomationError& error) {
            EXPECT_EQ(error.number(), c.number) << c.why;
            EXPECT_EQ(error.source(), "Test.Dome") << c.why;
            EXPECT_EQ(error.description(), c.description) << c.why;
        }
    }
}

TEST(ClassRegistry, KnowsClassesWithoutRegardToCase) {
    ClassRegistry classes;
    classes.install("Test.Dome",
                    {[] { return std::make_shared<Dome>(); }, R"(C:\Dome.exe)", "Dome", "A dome"});
    EXPECT_EQ(classes.create("TEST.DOME")->className(), "Test.Dome");
    EXPECT_EQ(classes.serverPath("test.dome"), R"(C:\Dome.exe)");
    EXPECT_EQ(classes.profileDescription("dome", "test.dome"), "A dome");
    EXPECT_EQ(classes.profileDescription("Telescope", "Test.Dome"), "");
    EXPECT_EQ(classes.installed("Telescope"), std::vector<std::string>{});
    classes.uninstall("test.DOME");
    EXPECT_EQ(classes.serverPath("Test.Dome"), "");
    EXPECT_EQ(failureOf([&] { classes.create("Test.Dome"); }), error_number::kCannotCreateObject);
}

// ---- recording host

struct RecordingHostTest : testing::Test {
    RecordingHostTest() {
        classes.install("Test.Dome", {[] { return std::make_shared<Dome>(); }, "", "", ""});
    }

    /// "put Level(3)"
    std::vector<std::string> journal(const std::string& object) {
        std::vector<std::string> lines;
        for (const JournalEntry& entry : host.takeJournal(object)) {
            std::string line = entry.kind + " " + entry.member;
            for (const Value& argument : entry.arguments) line += "(" + argument.toText() + ")";
            lines.push_back(line);
        }
        return lines;
    }

    ClassRegistry classes;
    RecordingHost host{classes};
};

TEST_F(RecordingHostTest, WritesDownEveryUseAlsoOfInnerObjects) {
    const ObjectRef dome = host.create("test.dome");
    dome->put("Azimuth", 3);
    dome->get("azimuth");
    const ObjectRef lamp = dome->get("Lamp").toObject();
    lamp->call("Turn", {Value("90")});
    EXPECT_EQ(journal("TEST.DOME"),
              (std::vector<std::string>{"create create", "put Azimuth(3)", "get azimuth", "get Lamp"}));
    EXPECT_EQ(journal("Test.Dome"), std::vector<std::string>{});
    EXPECT_EQ(journal("*"), std::vector<std::string>{"call Turn(90)"});
}

TEST_F(RecordingHostTest, FaultsStrikeWhenAndAsOftenAsTheyShould) {
    const struct {
        const char* why;
        MemberFault fault;
        std::vector<int> numbers;  // of five reads
    } cases[] = {
        {"for ever", {"Test.Dome", "Azimuth", {7, "", ""}, {}, 0, -1}, {7, 7, 7, 7, 7}},
        {"later", {"Test.Dome", "Azimuth", {7, "", ""}, {}, 2, -1}, {0, 0, 7, 7, 7}},
        {"twice", {"test.DOME", "AZIMUTH", {7, "", ""}, {}, 1, 2}, {0, 7, 7, 0, 0}},
        {"every class", {"*", "Azimuth", {7, "", ""}, {}, 0, 1}, {7, 0, 0, 0, 0}},
        {"another class", {"Test.Other", "Azimuth", {7, "", ""}, {}, 0, -1}, {0, 0, 0, 0, 0}},
        {"another member", {"Test.Dome", "Turn", {7, "", ""}, {}, 0, -1}, {0, 0, 0, 0, 0}},
        {"a value in its place",
         {"Test.Dome", "Azimuth", {0, "", ""}, Value("no number"), 0, 1},
         {13, 0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        RecordingHost fresh(classes);
        fresh.inject(c.fault);
        const ObjectRef dome = fresh.create("Test.Dome");
        std::vector<int> numbers;
        numbers.reserve(5);
        for (int i = 0; i < 5; ++i) numbers.push_back(failureOf([&] { dome->get("Azimuth").toDouble(); }));
        EXPECT_EQ(numbers, c.numbers) << c.why;
    }
    host.inject({"Test.Dome", "create", {error_number::kCannotCreateObject, "", ""}, {}, 0, 1});
    EXPECT_EQ(failureOf([&] { host.create("Test.Dome"); }), error_number::kCannotCreateObject);
    host.inject({"Test.Dome", "Azimuth", {0, "", ""}, Value(42), 0, 1});
    const ObjectRef dome = host.create("Test.Dome");
    dome->put("Azimuth", 9);
    EXPECT_EQ(dome->get("Azimuth").toInt(), 0) << "a value swallows what is put";
}

TEST_F(RecordingHostTest, FindsTheNewestObjectStillHeld) {
    EXPECT_EQ(host.newest("Test.Dome"), nullptr);
    const ObjectRef first = host.create("Test.Dome");
    first->put("Azimuth", 1);
    {
        const ObjectRef second = host.create("Test.Dome");
        second->put("Azimuth", 2);
        EXPECT_EQ(host.newest("test.dome")->get("Azimuth").toInt(), 2);
    }
    journal("*");
    EXPECT_EQ(host.newest("Test.Dome")->get("Azimuth").toInt(), 1);
    EXPECT_EQ(journal("*"), std::vector<std::string>{});
}

// ---- desktop windows

using testing::ElementsAre;
using testing::IsEmpty;

TEST(DesktopWindows, KeepsWindowsInTheirOrderAndPlace) {
    //  main ── tabs, button        dialog belongs to main, other stands alone
    DesktopWindows desktop;
    const WindowId main = desktop.open({"Main", "Frame"});
    const WindowId tabs = desktop.open({"", "SysTabControl32", main});
    const WindowId button = desktop.open({"&Connect", "Button", main});
    const WindowId dialog = desktop.open({"Dialog", "#32770", 0, main});
    const WindowId other = desktop.open({"Other", "Frame"});

    EXPECT_THAT(desktop.topLevelWindows(), ElementsAre(other, dialog, main));
    EXPECT_THAT(desktop.childrenOf(main), ElementsAre(tabs, button));
    EXPECT_EQ(desktop.parentOf(button), main);
    EXPECT_EQ(desktop.parentOf(dialog), main);
    EXPECT_EQ(desktop.parentOf(main), 0U);
    EXPECT_EQ(desktop.classOf(dialog), "#32770");

    desktop.bringToTop(main);
    EXPECT_THAT(desktop.topLevelWindows(), ElementsAre(main, other, dialog));

    desktop.close(main);
    EXPECT_THAT(desktop.topLevelWindows(), ElementsAre(other)) << "its dialog goes with it";
    EXPECT_THAT(desktop.childrenOf(main), IsEmpty());
    EXPECT_EQ(desktop.titleOf(dialog) + desktop.classOf(dialog), "");
    desktop.bringToTop(main);
    desktop.restore(main);
    desktop.selectTab(tabs, 1);
    EXPECT_THAT(desktop.topLevelWindows(), ElementsAre(other)) << "wishes for a closed window are ignored";
}

TEST(DesktopWindows, StartsInstalledProgramsOnly) {
    DesktopWindows desktop;
    bool idle = false;
    desktop.installProgram("C:\\Programs\\Camera.exe", {[&] {
                                                            desktop.open({"Camera", "Frame"});
                                                        },
                                                        "5.0.1", [&] { return idle; }});

    EXPECT_GT(desktop.shellOpen("c:\\programs\\CAMERA.EXE", "c:\\programs"), 32);
    desktop.startProgram("C:\\Programs\\Camera.exe");
    EXPECT_EQ(desktop.topLevelWindows().size(), 2U);
    EXPECT_EQ(desktop.fileVersion("C:\\Programs\\Camera.exe"), "5.0.1");
    EXPECT_FALSE(desktop.programIsIdle("C:\\Programs\\Camera.exe"));

    EXPECT_LE(desktop.shellOpen("C:\\Programs\\Other.exe", ""), 32);
    EXPECT_THROW(desktop.startProgram("C:\\Programs\\Other.exe"), OperationError);
    EXPECT_EQ(desktop.fileVersion("C:\\Programs\\Other.exe"), std::nullopt);
}

}  // namespace
}  // namespace vantrel::platform
