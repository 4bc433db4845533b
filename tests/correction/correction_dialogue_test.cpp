// The guided correction as the operator lives it: every stage, every event in it, letter for letter.

#include <cmath>
#include <map>
#include <set>

#include <gmock/gmock.h>

#include "correction_world.h"

namespace vantrel::correction {
namespace {

using namespace platform;
using engine::Indicators;
using testing::Contains;
using testing::Not;

std::string placing(const std::string& heading) {
    return joinLines({heading, "1. Slew Telescope to place", "     any Bright Star in rectangle",
                      "     and Sync", "2. Click Next Button to start,",
                      "     or click Skip Button to skip"});
}
std::string waiting(const std::string& heading) {
    return joinLines({heading, "", "Determining Correction", "", "Please Wait"});
}
std::string centring(const std::string& heading, const std::string& adjuster) {
    return joinLines({heading, "1. Center Star on Cross Hair", "      using ONLY",
                      "      polar " + adjuster + " adjuster", "Do Not center by slewing!!",
                      "2. Click Next when centered"});
}

const char* const kAzimuth = "Polar Azimuth Correction";
const char* const kElevation = "Polar Elevation Correction";

/// The stages by what the instruction box says in them.
const std::map<std::string, std::string>& stages() {
    static const std::map<std::string, std::string> byText = {
        {joinLines({"Polar Align Measurement Start", "1. Slew and Sync Telescope", "     to any Star",
                    "2. Click Run Button to start", "     Alignment Measurement"}),
         "start"},
        {joinLines({"Polar Align Measurement", "Completed Successfully !!", "1. Click Next to correct",
                    "      misalignment, or click", "      Skip Button to end"}),
         "offer"},
        {placing(kAzimuth), "azimuth placing"},
        {waiting(kAzimuth), "azimuth pointing"},
        {centring(kAzimuth, "Azimuth"), "azimuth centring"},
        {placing(kElevation), "elevation placing"},
        {waiting(kElevation), "elevation pointing"},
        {centring(kElevation, "Elevation"), "elevation centring"},
        {joinLines({"Polar Alignment Correction", "was Successful!", "", "", "Click Next to measure again"}),
         "success"},
    };
    return byText;
}

/// A measurement and the correction after it. The operator presses Next half a second into every stage before
/// the one of interest, does something half a second into that, looks again when the stage has changed (or a
/// minute later), and then stops whatever still goes on with a single
/// click.
struct Evening : CorrectionWorld {
    explicit Evening(bool simulator = false) : CorrectionWorld(simulator) {
        loop.setAttendant([this] { attend(); });
    }

    std::string stage() {
        const auto found = stages().find(panel.txtInstructions.text());
        return found == stages().end() ? "measuring" : found->second;
    }

    void live(const std::string& stageOfInterest, std::function<void()> doing,
              std::function<void()> looking) {
        interest_ = stageOfInterest;
        doing_ = std::move(doing);
        looking_ = std::move(looking);
        part_ = Part::kBefore;
        enter();
        panel.cmdRun.click();
    }
    bool looked() const { return part_ == Part::kAfter || part_ == Part::kStopped; }

    std::string lights() {
        std::string names;
        for (const Label* light :
             {&panel.lblSlew, &panel.lblExpose, &panel.lblSolve, &panel.lblFrame1, &panel.lblFrame2,
              &panel.lblFrame3, &panel.lblAz, &panel.lblAlt, &panel.lblMeasure})
            if (light->backColor() != color::kIndicatorOffBack) names += " " + light->name();
        for (const Button* button : {&panel.cmdRun, &panel.cmdStop, &panel.cmdNext, &panel.cmdExpose})
            if (Indicators::isLit(*button)) names += " " + button->name();
        return names;
    }
    /// What the log says of the way that things went, since the line of this number.
    std::vector<std::string> outcome(std::size_t from) {
        static const std::set<std::string> telling = {
            "Operation stopped by operator",     "Align Aborted",          "Alignment Run Complete",
            "Azimuth Correction Aborted !!",     "Polar Align Aborted !!", "Azimuth Correction Plate Solved",
            "Elevation Correction Plate Solved", "Star is on Plate",       "Star is not on Plate"};
        std::vector<std::string> lines;
        for (std::size_t i = from; i < log.lines.size(); ++i)
            if (telling.contains(log.lines[i]) || log.lines[i].ends_with("mod cmdRun"))
                lines.push_back(log.lines[i]);
        return lines;
    }

  private:
    enum class Part { kBefore, kDone, kAfter, kStopped };

    void enter() {
        stage_ = stage();
        since_ = time.sinceStart();
    }
    void attend() {
        if (attending_) return;
        attending_ = true;
        if (stage() != stage_) enter();
        const Milliseconds here = time.sinceStart() - since_;
        if (here >= Milliseconds{500}) act(here);
        attending_ = false;
    }
    void act(Milliseconds here) {
        if (part_ == Part::kBefore && stage_ == interest_) {
            part_ = Part::kDone;
            doing_();
        } else if (part_ == Part::kDone && (stage_ != interest_ || here > std::chrono::minutes{1})) {
            part_ = Part::kAfter;
            looking_();
        } else if (part_ == Part::kBefore) {
            panel.cmdNext.click();
        } else if (part_ == Part::kAfter && here > std::chrono::seconds{2}) {
            part_ = Part::kStopped;
            panel.cmdStop.click();
        }
    }

    std::string interest_;
    std::function<void()> doing_, looking_;
    Part part_ = Part::kBefore;
    std::string stage_;
    Milliseconds since_{0};
    bool attending_ = false;
};

enum class Event { kNext, kSkip, kStop, kClose, kNoExposure, kNoSolve, kOffImage };

void happen(Evening& evening, Event event) {
    using enum Event;
    if (event == kNext) evening.panel.cmdNext.click();
    if (event == kSkip) evening.panel.cmdSkip.click();
    if (event == kStop) evening.panel.cmdStop.click();
    if (event == kClose) evening.state.StopRequested = evening.state.AppUnloading = true;
    if (event == kNoExposure) evening.camera.fails = evening.mount.shutterStuck = true;
    if (event == kNoSolve) evening.solver.fails = true;
    if (event == kOffImage) evening.star.place = {10, 790};
}

using Lines = std::vector<std::string>;

struct Case {
    std::string stage;
    Event event;
    std::string next;     // the stage that follows; the same when nothing comes of the event
    std::string buttons;  // enabled there
    Lines lines = {};
};

struct Adjuster {
    std::string name, capitalised;
    std::string aborted;           // log line
    std::string next;              // stage
    std::string buttonsAfterStar;  // there, when the star was centred
};
const Adjuster kAdjusters[] = {
    {"azimuth", "Azimuth", "Azimuth Correction Aborted !!", "elevation placing", "Stop Next Skip"},
    {"elevation", "Elevation", "Polar Align Aborted !!", "success", "Stop Next"}};

const Lines kStopped = {"Operation stopped by operator", "Align Aborted", "Alignment Run Complete"};

std::vector<Case> casesOfBothCameras() {
    using enum Event;
    std::vector<Case> cases = {
        {"success", kNext, "start", "Run Expose", {"Alignment Run Complete"}},
        {"success", kStop, "start", "Run Expose", {kStopped[0], kStopped[2]}},
        {"success", kNoExposure, "success", "Stop Next"},
    };
    for (const Adjuster& a : kAdjusters) {
        const std::string placing = a.name + " placing", pointing = a.name + " pointing";
        const std::string centring = a.name + " centring";
        const std::string solved = a.capitalised + " Correction Plate Solved";
        const Lines stopped = {kStopped[0], a.aborted, kStopped[1], kStopped[2]};
        const Lines unsolved = {a.aborted, kStopped[1], kStopped[2]};
        cases.insert(cases.end(),
                     {{placing, kNext, pointing, "Stop"},
                      {placing, kSkip, a.next, "Stop Next Skip"},
                      {placing, kStop, "start", "Run Expose", kStopped},
                      {placing, kNoSolve, placing, "Stop Next Skip"},
                      {pointing, kNext, centring, "Stop Next", {solved, "Star is on Plate"}},
                      {pointing, kSkip, centring, "Stop Next", {solved, "Star is on Plate"}},
                      {pointing, kStop, "start", "Run Expose", stopped},
                      {pointing, kNoSolve, "start", "Run Expose", unsolved},
                      {pointing, kOffImage, centring, "Stop Next", {solved, "Star is not on Plate"}},
                      {centring, kNext, a.next, a.buttonsAfterStar},
                      {centring, kSkip, centring, "Stop Next"},
                      {centring, kStop, "start", "Run Expose", kStopped},
                      {centring, kNoSolve, centring, "Stop Next"}});
    }
    return cases;
}

/// A camera that fails once: the loops end as by Skip or Next, the pointing goes on with its next exposure.
std::vector<Case> failuresOfTheCamera() {
    std::vector<Case> cases;
    for (const Adjuster& a : kAdjusters) {
        const Lines solved = {a.capitalised + " Correction Plate Solved", "Star is on Plate"};
        cases.push_back({a.name + " placing", Event::kNoExposure, a.next, "Stop Next Skip"});
        cases.push_back(
            {a.name + " pointing", Event::kNoExposure, a.name + " centring", "Stop Next", solved});
        cases.push_back({a.name + " centring", Event::kNoExposure, a.next, a.buttonsAfterStar});
    }
    return cases;
}

std::vector<Case> failuresOfTheSimulator() {
    std::vector<Case> cases;
    const Lines stuck = {"Error 5: Shutter stuck\r\nmod cmdRun"};
    for (const Adjuster& a : kAdjusters)
        for (const char* stage : {" placing", " pointing", " centring"})
            cases.push_back({a.name + stage, Event::kNoExposure, "start", "Run Expose", stuck});
    return cases;
}

/// Nothing is left over, and a new run comes as far as its offer.
void expectAnotherRun(Evening& evening) {
    EXPECT_EQ(evening.stage(), "start");
    EXPECT_EQ(evening.enabledButtons(), "Run Expose");
    EXPECT_EQ(evening.lights(), "");
    EXPECT_EQ(evening.panel.lblMeasure.caption(), "Measure");
    EXPECT_FALSE(evening.panel.lblAz.visible() || evening.panel.lblAlt.visible());
    EXPECT_TRUE(evening.panel.lblFrame1.visible());
    evening.mount.shutterStuck = false;
    evening.solver.fails = false;
    evening.live(
        "offer", [&] { evening.panel.cmdSkip.click(); }, [] {});
    EXPECT_EQ(evening.log.lines.back(), "Alignment Run Complete");
}

void expectCases(const std::vector<Case>& cases, bool simulator) {
    for (const Case& c : cases) {
        Evening evening(simulator);
        SCOPED_TRACE(c.stage + ", event " + std::to_string(static_cast<int>(c.event)));
        std::size_t from = 0;
        const auto look = [&] {
            EXPECT_EQ(evening.stage(), c.next);
            EXPECT_EQ(evening.enabledButtons(), c.buttons);
            EXPECT_EQ(evening.outcome(from), c.lines);
            const bool correcting = evening.stage() != "start";
            EXPECT_EQ(evening.panel.lblAz.visible() && evening.panel.lblAlt.visible(), correcting);
            const bool centred = evening.stage().ends_with("pointing") || evening.stage() == "success";
            EXPECT_TRUE(!correcting ||
                        (evening.panel.txtInstructions.alignment() == Alignment::kCentre) == centred);
            const std::string lights = evening.lights();
            EXPECT_EQ(lights.find("lblAz") != std::string::npos, evening.stage().starts_with("azimuth"));
            EXPECT_EQ(lights.find("lblAlt") != std::string::npos,
                      evening.stage().starts_with("elevation") || evening.stage() == "success");
        };
        evening.live(
            c.stage,
            [&] {
                from = evening.log.lines.size();
                happen(evening, c.event);
            },
            look);
        if (!evening.looked()) look();  // the event ended everything at once
        expectAnotherRun(evening);
    }
}

TEST(CorrectionDialogue, EveryEventAtEveryStageWithACamera) {
    expectCases(casesOfBothCameras(), false);
    expectCases(failuresOfTheCamera(), false);
}

TEST(CorrectionDialogue, EveryEventAtEveryStageWithTheSimulator) {
    expectCases(casesOfBothCameras(), true);
    expectCases(failuresOfTheSimulator(), true);
}

TEST(CorrectionDialogue, TheFailureOfAnotherCameraDoesNotSkipTheSimulatorsCorrection) {
    Evening evening(true);
    evening.state.CameraFailed = true;
    evening.live(
        "azimuth placing", [] {}, [&] { EXPECT_EQ(evening.stage(), "azimuth placing"); });
}

TEST(CorrectionDialogue, ClosingIsSilentAtEveryStage) {
    for (const bool simulator : {false, true})
        for (const auto& [text, stage] : stages()) {
            if (stage == "start") continue;
            Evening evening(simulator);
            std::size_t from = 0;
            evening.live(
                stage,
                [&] {
                    from = evening.log.lines.size();
                    happen(evening, Event::kClose);
                },
                [] {});
            const auto lines = evening.outcome(from);
            for (const std::string& line : kStopped) EXPECT_THAT(lines, Not(Contains(line))) << stage;
            EXPECT_FALSE(evening.panel.cmdRun.enabled()) << stage << ": the window is left as it was";
        }
}

TEST(CorrectionDialogue, TheLoopsMarkEveryImage) {
    Evening evening;
    evening.guide.instead = 0.05;
    evening.live(
        "azimuth placing", [&] { evening.overlays.drawn.clear(); },
        [&] {
            EXPECT_GT(evening.overlays.drawn.size(), 30u);
            EXPECT_THAT(evening.overlays.drawn, testing::Each("rectangle 0.2"));
        });
    evening.live(
        "elevation centring", [&] { evening.overlays.drawn.clear(); },
        [&] {
            const auto& marks = evening.marks;
            EXPECT_GT(std::hypot(marks.TargetX - marks.StarX, marks.TargetY - marks.StarY), 5);
            const std::string line = "line 500 400 " + std::to_string(std::lround(marks.TargetX)) + " " +
                                     std::to_string(std::lround(marks.TargetY));
            const std::string cross = "cross " + toText(marks.TargetX) + " " + toText(marks.TargetY);
            ASSERT_GT(evening.overlays.drawn.size(), 60u);
            for (std::size_t i = 0; i + 1 < evening.overlays.drawn.size(); i += 2) {
                EXPECT_EQ(evening.overlays.drawn[i], line);
                EXPECT_EQ(evening.overlays.drawn[i + 1], cross);
            }
        });
}

TEST(CorrectionDialogue, SkippingBothAdjustersEndsWithoutAWord) {
    Evening evening;
    evening.live(
        "azimuth placing", [&] { evening.panel.cmdSkip.click(); },
        [&] {
            EXPECT_EQ(evening.stage(), "elevation placing");
            evening.panel.cmdSkip.click();
        });
    EXPECT_EQ(evening.outcome(0), Lines{"Alignment Run Complete"});
    expectAnotherRun(evening);
}

TEST(CorrectionDialogue, TheDelayBetweenExposuresIsTheLeadingNumberOfItsField) {
    const struct {
        const char* delay;
        std::size_t exposures;  // of one second each, in a minute
    } cases[] = {{"", 55}, {"soon", 55}, {"2", 20}, {"9 s", 6}};
    for (const auto& c : cases) {
        Evening evening;
        evening.exposurePanel.txtContinuousExposeDelay.setText(c.delay);
        std::size_t before = 0;
        evening.live(
            "azimuth placing", [&] { before = evening.camera.exposures.size(); },
            [&] {
                EXPECT_NEAR(static_cast<double>(evening.camera.exposures.size() - before),
                            static_cast<double>(c.exposures), 1.5)
                    << c.delay;
            });
    }
}

TEST(CorrectionDialogue, AStopBetweenTwoExposuresOrAfterTheSolveIsNotForgotten) {
    Evening between;
    between.exposurePanel.txtContinuousExposeDelay.setText("20");
    between.live(
        "azimuth placing", [] {}, [&] { EXPECT_EQ(between.camera.exposures.size(), 6u); });
    EXPECT_EQ(between.outcome(0), kStopped) << "a minute later, in the fourth exposure or its wait";

    Evening after;
    std::size_t exposures = 0;
    const auto stopOnceSolved = after.loop.every(Milliseconds{10}, [&] {
        if (!after.log.has("Azimuth Correction Plate Solved") || !after.panel.cmdStop.enabled()) return;
        if (exposures == 0) after.panel.cmdStop.click();
        if (exposures == 0) exposures = after.camera.exposures.size();
    });
    after.live(
        "start", [] {}, [] {});
    EXPECT_EQ(after.outcome(0),
              (Lines{"Azimuth Correction Plate Solved", "Operation stopped by operator",
                     "Azimuth Correction Aborted !!", "Align Aborted", "Alignment Run Complete"}));
    EXPECT_EQ(after.camera.exposures.size(), exposures) << "none after the one that was under way";
}

}  // namespace
}  // namespace vantrel::correction
