// The measurement run as the operator lives it: every prompt, every failure, every way out, letter for
// letter.

#include <algorithm>
#include <functional>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "observatory/simulator_setup.h"
#include "platform/text.h"
#include "program_world.h"

namespace vantrel::app {
namespace {

using platform::Button;
using platform::joinLines;
using platform::TextBox;

/// One measurement of the built-in simulator. Doings are tied to log lines: each runs once, at the first
/// moment after its line was written.
struct OneRun : test::ProgramWorld {
    OneRun() {
        observatory::storeSimulatorSetup(settings);
        start();
        slewBy("15");
        loop.setAttendant([this] { attend(); });
    }

    void slewBy(const std::string& degrees) { control<TextBox>("frmMain.txtDeltaRA").type(degrees); }
    platform::ObjectRef simulator() { return host.newest("AxisSimulator.Telescope"); }

    /// From the (after + 1)-th solve on, so many attempts fail (-1: all).
    void failSolving(long after, long times) {
        host.inject({"PinPoint.Plate", "Solve", {0, "", ""}, platform::Value(false), after, times});
    }
    void when(const std::string& line, std::function<void()> doing) { doings.push_back({line, doing}); }
    void click(const std::string& button) { control<Button>("frmMain." + button).click(); }

    /// Presses Run; once the program has nothing to do but wait for the operator, does what the operator
    /// does.
    void run(const std::function<void()>& operatorsTurn = [] {}) {
        constexpr std::chrono::seconds kLongEnough{200};
        first = logged().size();
        loop.post([this] { click("cmdRun"); });
        const auto turn = loop.after(kLongEnough, operatorsTurn);
        pass(201);
    }

    std::string instructions() { return text("frmMain.txtInstructions"); }
    bool enabled(const std::string& button) { return control<Button>("frmMain." + button).enabled(); }
    std::string enabledButtons() {
        std::string names;
        for (const char* button : {"cmdRun", "cmdStop", "cmdNext", "cmdSkip", "cmdExpose"})
            if (enabled(button)) names += std::string(button) + " ";
        return names;
    }
    long count(const std::string& line) {
        const auto lines = logged();
        return std::count(lines.begin() + static_cast<std::ptrdiff_t>(first), lines.end(), line);
    }
    void expectReadyAgain(const char* why) {
        EXPECT_EQ(instructions(), joinLines({"Polar Align Measurement Start", "1. Slew and Sync Telescope",
                                             "     to any Star", "2. Click Run Button to start",
                                             "     Alignment Measurement"}))
            << why;
        EXPECT_EQ(enabledButtons(), "cmdRun cmdExpose ") << why;
        for (const char* light : {"lblSlew", "lblExpose", "lblSolve", "lblFrame1", "lblFrame2", "lblFrame3"})
            EXPECT_EQ(control<platform::Label>(std::string("frmMain.") + light).backColor(),
                      platform::color::kIndicatorOffBack)
                << light << ": " << why;
        EXPECT_EQ(control<Button>("frmMain.cmdRun").backColor(), platform::color::kButtonFace) << why;
    }

    std::size_t first = 0;

  private:
    void attend() {
        const auto lines = logged();
        for (; seen < lines.size(); ++seen)
            for (auto& [line, doing] : doings)
                if (doing && lines[seen] == line) loop.post(std::exchange(doing, nullptr));
    }
    std::vector<std::pair<std::string, std::function<void()>>> doings;
    std::size_t seen = 0;
};

TEST(RunDialogue, EveryFailurePromptEndsTheRunWithNextOrStop) {
    const struct {
        const char* why;
        std::function<void(OneRun&)> prepare;
        const char* logged;  // before the prompt; empty for none
        int alignment;
        std::string text;
    } cases[] = {
        {"slew 0", [](OneRun& r) { r.slewBy("0"); }, "", 2,
         joinLines({"***ERROR***ERROR***", "Telescope Slew must be ", "between 1 and 45 degrees!", "",
                    "Enter a new value, click Next"})},
        {"slew 46", [](OneRun& r) { r.slewBy("46"); }, "", 2,
         joinLines({"***ERROR***ERROR***", "Telescope Slew must be ", "between 1 and 45 degrees!", "",
                    "Enter a new value, click Next"})},
        {"plate 1", [](OneRun& r) { r.failSolving(0, -1); }, "Polar Align Aborted !!", 0,
         joinLines({"Plate Solve Failed !!", "1. Is Scope is Synced to Star?",
                    "2. Check Plate Solve Settings", "", "Click Next to try again"})},
        {"plate 2", [](OneRun& r) { r.failSolving(1, -1); }, "Polar Align Aborted !!", 0,
         joinLines({"Second Plate Solve Failed !!", "", "1. Try smaller Telescope Slew", "",
                    "Click Next to try again"})},
        {"plate 3", [](OneRun& r) { r.failSolving(2, -1); }, "Polar Align Aborted !!", 0,
         joinLines({"Third Plate Solve Failed !!", "", "1. Try smaller Telescope Slew", "",
                    "Click Next to try again"})},
        {"bad solution",
         [](OneRun& r) {
             r.slewBy("1");
             r.when("***** Exposing Image 2 *****",
                    [&r] { r.simulator()->call("TurnElevationAdjuster", {40.0}); });
             r.when("***** Exposing Image 3 *****",
                    [&r] { r.simulator()->call("TurnElevationAdjuster", {-40.0}); });
         },
         "Polar Align Error Calculation Failed", 2,
         joinLines({"***ERROR***ERROR***", "Polar Align Error ", "Calculation Failed!", "",
                    "Try new conditions, click Next"})},
    };
    for (const auto& c : cases)
        for (const char* wayOut : {"cmdNext", "cmdStop"}) {
            OneRun run;
            c.prepare(run);
            run.run([&] {
                EXPECT_EQ(run.instructions(), c.text) << c.why;
                EXPECT_EQ(static_cast<int>(run.control<TextBox>("frmMain.txtInstructions").alignment()),
                          c.alignment)
                    << c.why;
                EXPECT_EQ(run.enabledButtons(), "cmdStop cmdNext ") << c.why;
                if (*c.logged != '\0') {
                    EXPECT_EQ(run.logged().back(), c.logged) << c.why;
                }
                run.click(wayOut);
            });
            EXPECT_EQ(run.logged().back(), "Align Aborted") << c.why;
            run.expectReadyAgain(c.why);
        }
}

TEST(RunDialogue, SkipStopAndClosingEndTheLastPrompt) {
    const struct {
        const char* button;
        const char* logged;
    } cases[] = {{"cmdSkip", "Alignment Run Complete"}, {"cmdStop", "Align Aborted"}};
    for (const auto& c : cases) {
        OneRun run;
        run.run([&] {
            EXPECT_EQ(
                run.instructions(),
                joinLines({"Polar Align Measurement", "Completed Successfully !!", "1. Click Next to correct",
                           "      misalignment, or click", "      Skip Button to end"}));
            EXPECT_EQ(run.enabledButtons(), "cmdStop cmdNext cmdSkip ");
            run.click(c.button);
        });
        EXPECT_EQ(run.logged().back(), c.logged);
        run.expectReadyAgain(c.button);
    }
    OneRun run;
    run.run([&] { run.form("frmMain").closeByOperator(); });
    EXPECT_TRUE(run.program->ended());
    EXPECT_EQ(run.count("Align Aborted"), 0) << "closing is silent";
}

TEST(RunDialogue, StopEndsTheRunAtEveryStage) {
    for (const char* line : {"Start Alignment Run", "***** Exposing Image 1 *****", "Start Solving Plate 1",
                             "Step 3: Solve the plate...", "Plate 1 Solved", "***** Exposing Image 2 *****",
                             "Plate 2 Solved", "Start Solving Plate 3", "Plate 3 Solved"}) {
        OneRun run;
        run.when(line, [&run] { run.click("cmdStop"); });
        run.run();
        EXPECT_EQ(run.count("Operation stopped by operator"), 1) << line;
        EXPECT_EQ(run.logged().back(), "Align Aborted") << line;
        run.expectReadyAgain(line);
    }
}

TEST(RunDialogue, APlateSolvedAtHalfTheSlewMovesTheThirdToWhereTheSecondWas) {
    constexpr long kAttemptsOfOneSolve = 11;
    OneRun run;
    run.failSolving(1, kAttemptsOfOneSolve);
    run.run([&] { run.click("cmdSkip"); });
    EXPECT_EQ(run.logged().back(), "Alignment Run Complete");
    EXPECT_EQ(run.count("Trying again with half Telescope Slew"), 1);
    const double step = 1;  // hours
    std::vector<double> slews;
    for (const auto& entry : run.host.takeJournal("AxisSimulator.Telescope"))
        if (entry.member == "SlewToCoordinatesAsync") slews.push_back(entry.arguments[0].toDouble());
    ASSERT_EQ(slews.size(), 4u) << "to plate 2, half back, to plate 3, to the start";
    EXPECT_NEAR(slews[0] - slews[1], step / 2, 1e-9);
    EXPECT_NEAR(slews[2], slews[0], 1e-9);
    EXPECT_NEAR(slews[0] - slews[3], step, 1e-9);
}

TEST(RunDialogue, TextsThatAreNoNumbersAndFailingProgramsAreReported) {
    const struct {
        const char* why;
        std::function<void(OneRun&)> prepare;
        std::string report;
    } cases[] = {
        {"slew text", [](OneRun& r) { r.slewBy("five"); }, "Error 13: Type mismatch\r\nmod cmdRun"},
        {"the utility object",
         [](OneRun& r) {
             r.host.inject({"DriverHelper.Util", "HoursToHMS", {440, "Util", "No licence"}, {}, 0, 1});
         },
         "Error 440: No licence\r\nmod cmdRun"},
    };
    for (const auto& c : cases) {
        OneRun run;
        c.prepare(run);
        run.run();
        EXPECT_EQ(run.logged().back(), c.report) << c.why;
        run.expectReadyAgain(c.why);
    }
}

TEST(RunDialogue, WithoutAMethodNothingBegins) {
    test::ProgramWorld world;
    world.start();
    world.loop.post([&] { world.control<Button>("frmMain.cmdRun").click(); });
    world.pass(5);
    const auto lines = world.logged();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], "No Plate solve method selected");
    EXPECT_EQ(lines.back(), "Align Aborted");
}

}  // namespace
}  // namespace vantrel::app
