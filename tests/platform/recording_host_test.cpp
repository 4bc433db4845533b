#include "platform/recording_host.h"

#include <gtest/gtest.h>

#include "platform/class_registry.h"
#include "platform/dispatch_object.h"

namespace vantrel::platform {
namespace {

class Shelf : public DispatchObject {
  public:
    explicit Shelf(const std::string& name = "Test.Shelf") : DispatchObject(name) {
        property(
            "Level", [this] { return Value(level_); }, [this](const Value& v) { level_ = v.toInt(); });
        property("Book", [] { return Value(ObjectRef(std::make_shared<Shelf>("Test.Book"))); });
        method("Lift", [this](const Arguments&) { return Value(++level_); });
    }

  private:
    int level_ = 1;
};

struct RecordingHostTest : testing::Test {
    RecordingHostTest() {
        classes.install("Test.Shelf", {[] { return std::make_shared<Shelf>(); }, "", "", ""});
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

    static int failure(const std::function<void()>& use) {
        try {
            use();
            return 0;
        } catch (const OperationError& error) {
            return error.number();
        }
    }

    ClassRegistry classes;
    RecordingHost host{classes};
};

TEST_F(RecordingHostTest, WritesDownEveryUseAlsoOfInnerObjects) {
    const ObjectRef shelf = host.create("test.shelf");
    shelf->put("Level", 3);
    shelf->get("level");
    const ObjectRef book = shelf->get("Book").toObject();
    book->call("Lift", {Value("high")});
    EXPECT_EQ(journal("TEST.SHELF"),
              (std::vector<std::string>{"create create", "put Level(3)", "get level", "get Book"}));
    EXPECT_EQ(journal("Test.Shelf"), std::vector<std::string>{});
    EXPECT_EQ(journal("*"), std::vector<std::string>{"call Lift(high)"});
}

TEST_F(RecordingHostTest, FaultsStrikeWhenAndAsOftenAsTheyShould) {
    const struct {
        const char* why;
        MemberFault fault;
        std::vector<int> numbers;  // of five reads of Level
    } cases[] = {
        {"for ever", {"Test.Shelf", "Level", {7, "", ""}, {}, 0, -1}, {7, 7, 7, 7, 7}},
        {"later", {"Test.Shelf", "Level", {7, "", ""}, {}, 2, -1}, {0, 0, 7, 7, 7}},
        {"twice", {"test.SHELF", "LEVEL", {7, "", ""}, {}, 1, 2}, {0, 7, 7, 0, 0}},
        {"every class", {"*", "Level", {7, "", ""}, {}, 0, 1}, {7, 0, 0, 0, 0}},
        {"another class", {"Test.Other", "Level", {7, "", ""}, {}, 0, -1}, {0, 0, 0, 0, 0}},
        {"another member", {"Test.Shelf", "Lift", {7, "", ""}, {}, 0, -1}, {0, 0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        RecordingHost fresh(classes);
        fresh.inject(c.fault);
        const ObjectRef shelf = fresh.create("Test.Shelf");
        std::vector<int> numbers;
        numbers.reserve(5);
        for (int i = 0; i < 5; ++i) numbers.push_back(failure([&] { shelf->get("Level"); }));
        EXPECT_EQ(numbers, c.numbers) << c.why;
    }
}

TEST_F(RecordingHostTest, AFaultWithAValueReturnsItInstead) {
    host.inject({"Test.Shelf", "Level", {0, "", ""}, Value(42), 0, 2});
    const ObjectRef shelf = host.create("Test.Shelf");
    EXPECT_EQ(shelf->get("Level").toInt(), 42);
    shelf->put("Level", 9);  // swallowed
    EXPECT_EQ(shelf->get("Level").toInt(), 1);
}

TEST_F(RecordingHostTest, CreationCanFail) {
    host.inject({"Test.Shelf", "create", {error_number::kCannotCreateObject, "", ""}, {}, 0, 1});
    EXPECT_EQ(failure([&] { host.create("Test.Shelf"); }), error_number::kCannotCreateObject);
    EXPECT_NE(host.create("Test.Shelf"), nullptr);
}

TEST_F(RecordingHostTest, FindsTheNewestObjectStillHeld) {
    EXPECT_EQ(host.newest("Test.Shelf"), nullptr);
    const ObjectRef first = host.create("Test.Shelf");
    first->put("Level", 1);
    {
        const ObjectRef second = host.create("Test.Shelf");
        second->put("Level", 2);
        EXPECT_EQ(host.newest("test.shelf")->get("Level").toInt(), 2);
    }
    EXPECT_EQ(host.newest("Test.Shelf")->get("Level").toInt(), 1);
    journal("*");
    host.newest("Test.Shelf")->get("Level");
    EXPECT_EQ(journal("*"), std::vector<std::string>{});
}

}  // namespace
}  // namespace vantrel::platform
