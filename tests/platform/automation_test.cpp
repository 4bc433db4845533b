#include "platform/automation.h"

#include <gtest/gtest.h>

#include "platform/class_registry.h"
#include "platform/dispatch_object.h"
#include "platform/image_array.h"

namespace vantrel::platform {
namespace {

class Dome : public DispatchObject {
  public:
    Dome() : DispatchObject("Test.Dome") {
        property(
            "Azimuth", [this] { return Value(azimuth_); },
            [this](const Value& value) { azimuth_ = value.toDouble(); });
        property("Broken", []() -> Value { throw std::runtime_error("Jammed"); });
        method("Turn",
               [this](const Arguments& arguments) { return azimuth_ += argument(arguments, 0).toDouble(); });
        indexedProperty(
            "Slot", [](const Arguments& a) { return Value(a.at(0).toInt() * 2); }, nullptr);
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
    try {
        required(nullptr);
        FAIL();
    } catch (const OperationError& error) {
        EXPECT_EQ(error.number(), error_number::kNoObject);
    }
}

TEST(DispatchObject, ReportsWhatGoesWrongByNumber) {
    Dome dome;
    dome.put("AZIMUTH", "90");
    EXPECT_EQ(dome.call("turn", {Value(10)}).toDouble(), 100);
    EXPECT_EQ(dome.get("Slot", {Value(4)}).toInt(), 8);
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
    try {
        classes.create("Test.Dome");
        FAIL();
    } catch (const OperationError& error) {
        EXPECT_EQ(error.number(), error_number::kCannotCreateObject);
    }
}

}  // namespace
}  // namespace vantrel::platform
