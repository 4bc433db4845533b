#include "engine/progress.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "engine/waiting.h"
#include "platform/queued_event_loop.h"

namespace vantrel::engine {
namespace {

using platform::Milliseconds;

struct ProgressTest : testing::Test {
    platform::VirtualTime time{platform::Instant{}};
    platform::QueuedEventLoop loop{time};
    platform::Screen screen{{0, 0, 800, 600}};
    platform::Form form{screen, "frmMain", "", {}};
    RunPanel panel{form};
    RunState state;
    Progress progress{panel, state, loop};

    void pass(double seconds) { loop.sleep(platform::Milliseconds(static_cast<long>(seconds * 1000))); }
    std::string line() const { return panel.lblProgress.caption(); }
    /// A whole stage of so many seconds.
    void live(const PlannedStage& stage, double seconds) {
        const Progress::UnderWay underWay(progress, stage);
        pass(seconds);
    }
};

TEST_F(ProgressTest, TellsTheStageAndWhatIsLeftOfAllOfThem) {
    const PlannedStage exposing{Stage::kExpose, 10}, solving{Stage::kSolve}, slewing{Stage::kSlew};
    progress.begin({exposing, solving, slewing, exposing, solving});
    progress.setSubject("Plate 1 of 2");
    {
        const Progress::UnderWay underWay(progress, exposing);
        EXPECT_EQ(line(), "Plate 1 of 2: exposing, 0 of 10 s; about 31 s left") << "by what is usual";
        pass(6.5);
        EXPECT_EQ(line(), "Plate 1 of 2: exposing, 6 of 10 s; about 25 s left");
        pass(7);
        EXPECT_EQ(line(), "Plate 1 of 2: exposing, 10 of 10 s; about 20 s left") << "late, but never below";
    }
    live(solving, 4);
    progress.setSubject("Plate 2 of 2");
    {
        const Progress::UnderWay underWay(progress, slewing);
        EXPECT_EQ(line(), "Plate 2 of 2: slewing; about 23 s left")
            << "the second exposure and solution as long as the first";
    }
    const double before = panel.gaugeProgress.fraction();
    EXPECT_NEAR(before, 17.5 / (17.5 + 23), 0.05);
    live(exposing, 13);
    EXPECT_GT(panel.gaugeProgress.fraction(), before);
    progress.end("Done");
    pass(60);
    EXPECT_EQ(line(), "Done");
    EXPECT_EQ(panel.gaugeProgress.fraction(), 0);
}

TEST_F(ProgressTest, AStageThatWasNotLaidOutLeavesTheOthers) {
    progress.begin({{Stage::kExpose, 10}, {Stage::kSolve}});
    live({Stage::kSlew}, 1);
    const Progress::UnderWay underWay(progress, {Stage::kExpose, 10});
    EXPECT_EQ(line(), "Exposing, 0 of 10 s; about 13 s left");
}

TEST_F(ProgressTest, WithoutAPlanTheBarIsTheStagesOwn) {
    progress.begin({});
    const Progress::UnderWay underWay(progress, {Stage::kExpose, 9});
    pass(5);
    EXPECT_EQ(line(), "Exposing, 5 of 9 s");
    EXPECT_NEAR(panel.gaugeProgress.fraction(), 0.5, 0.01);
}

TEST_F(ProgressTest, AStopIsAnsweredAtOnceAndTeachesNothing) {
    const struct {
        Stage stage;
        const char* words;
    } cases[] = {{Stage::kSlew, "Stopping after the slew"},
                 {Stage::kSettle, "Stopping"},
                 {Stage::kExpose, "Stopping after the exposure"},
                 {Stage::kSolve, "Stopping after the solution"}};
    for (const auto& c : cases) {
        state.StopRequested = false;
        progress.begin({{c.stage, 100}});
        const Progress::UnderWay underWay(progress, {c.stage, 100});
        pass(1);
        state.StopRequested = true;
        pass(0.3);
        EXPECT_EQ(line(), c.words);
    }
    state.StopRequested = false;
    progress.begin({{Stage::kSlew}});
    const Progress::UnderWay underWay(progress, {Stage::kSlew});
    EXPECT_EQ(line(), "Slewing; about 5 s left") << "not the second that the stopped one took";
}

// ---- waiting

constexpr double kForEver = std::numeric_limits<double>::infinity();

TEST(WaitSeconds, WaitsInStepsAndEndsWithTheProgram) {
    const struct {
        double seconds;
        int endsAfter;  // ms; when the program begins to end, 0: never
        int waited;     // ms
    } rows[] = {
        {0, 0, 100},      {0.05, 0, 100},   {0.25, 0, 250},
        {-3, 0, 100},     {65, 0, 65'000},  {kForEver, 1050, 1100},
        {1e308, 10, 100}, {0.25, 150, 200}, {std::nan(""), 0, 100},
    };
    for (const auto& row : rows) {
        platform::VirtualTime time(platform::Instant{});
        platform::QueuedEventLoop loop(time);
        platform::TimerHandle end;
        if (row.endsAfter > 0)
            end = loop.after(Milliseconds{row.endsAfter}, [&loop] { loop.setEnding(true); });
        WaitSeconds(loop, row.seconds);
        EXPECT_EQ(time.sinceStart(), Milliseconds{row.waited}) << row.seconds << " s";
    }
}

}  // namespace
}  // namespace vantrel::engine
