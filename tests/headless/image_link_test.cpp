// Solving plates by the image link, with CCDSoft, through the operator protocol.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/text.h"
#include "script.h"

namespace vantrel::headless {
namespace {

using namespace test;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kScopeSim = "ScopeSim.Telescope";
constexpr const char* kImage = "CCDSoft.Image";

/// The driver without a camera of its own, and the imaging program with the image link. Binned 2 x 2.
void setUp(Script& s) {
    s.setting("Main", "MyTelescopeID", kScopeSim).setting("PolarAlign", "ImagingSoftware", "CCDSoft");
    s.setting("PolarAlign", "PlateSolveMethod", "1").setting("Solve", "CamBin", "2");
    s.setting("Solve", "TheSkyImageScale", "7.2").setting("Solve", "ScaleH", "7.2");
    s.setting("Solve", "ScaleV", "7.2");
}

/// A header that tells these values, one after the other, once the start position has been written, and no
/// more.
Prepare telling(const std::vector<json>& values) {
    return [=](Script& s) {
        for (const json& value : values) s.giveBack(kImage, "FITSKeyword", value, 2, 1);
        failing(kImage, "FITSKeyword", 7, 2)(s);
    };
}

TEST(ImageLink, SaysEveryStepAndEveryFailure) {
    const Lines attempt = {"Plate Solve Attempt at RA = 23:54:00  Dec = -00° 30' 00\""};
    const Lines solution = {" RA = 00h 06m 00.000s", " Dec = -00° 15' 00.00\"", " RA Error = 0.200000",
                            " Dec Error = 0.250000"};
    const Lines noLink = {"Error when performing image link"};
    const Lines noResult = {"Error while getting image link results"};
    const struct {
        const char* why;
        Prepare prepare;
        Lines logged;
        bool solved = false;
    } cases[] = {
        {"solved", telling({1.5, -0.25, 0.002, 0, 0, "2E-3"}), attempt + solution, true},
        {"no link", failing(kImage, "InsertWCS"), attempt + noLink},
        {"a scale that the program refuses", failing(kImage, "ScaleInArcsecondsPerPixel"), attempt + noLink},
        {"a scale that is no number", typing("frmMain.txtTheSkyImageScale", "fine"), attempt + noLink},
        {"no right ascension", telling({}), attempt + noResult},
        {"a right ascension that is no number", telling({"unknown"}), attempt + noResult},
        {"no declination", telling({1.5}), attempt + noResult},
        {"no matrix, after the rest was told", telling({1.5, -0.25, 0.002}), attempt + solution + noResult},
    };
    for (const auto& c : cases) {
        Script script;
        setUp(script);
        script.waitIdle();
        c.prepare(script);
        script.giveBack(kImage, "InsertWCS", nullptr);
        script.giveBack(kScopeSim, "RightAscension", 23.9).giveBack(kScopeSim, "Declination", -0.5);
        script.startLog().click("frmMain.cmdExposeSolve").waitIdle().read("frmMain.cmdExposeSolve");
        const auto result = script.run();
        const Lines begin = {"", "** Expose & Plate Solve **"};
        const Lines failed = {"Plate Solve failed", "Check Plate Solve Settings"};
        EXPECT_THAT(result.log, ElementsAreArray(begin + c.logged + (c.solved ? Lines{} : failed))) << c.why;
        EXPECT_THAT(result.popups, IsEmpty()) << c.why;
        EXPECT_EQ(result.read.at("frmMain.cmdExposeSolve")["enabled"], true) << c.why;
    }
}

TEST(ImageLink, ErrorsBeforeItAreTheCallersToReport) {
    const struct {
        const char* why;
        Prepare prepare;
        std::string report;
    } cases[] = {
        {"no image object, since the simulator took the image",
         storing("Main", "MyTelescopeID", "AxisSimulator.Telescope"),
         "Error 91: Object variable or With block variable not set"},
        {"a header that can't be written", failing(kImage, "FITSKeyword"), "Error 7: Broken"},
    };
    for (const auto& c : cases)
        for (const bool run : {false, true}) {
            Script script;
            setUp(script);
            c.prepare(script);
            script.waitIdle().startLog().click(run ? "frmMain.cmdRun" : "frmMain.cmdExposeSolve").waitIdle();
            const auto result = script.read("frmMain.cmdRun").run();
            const std::string report =
                c.report + platform::kCrLf + (run ? "mod cmdRun" : "mod cmdExposeSolve");
            EXPECT_THAT(result.log, Contains(report)) << c.why;
            EXPECT_THAT(result.popups, ElementsAre(report)) << c.why;
            EXPECT_EQ(result.read.at("frmMain.cmdRun")["enabled"], true) << c.why;
        }
}

TEST(ImageLink, StartsWhereTheMountPoints) {
    const struct {
        double mountRA, mountDec;
        const char *ra, *dec;
    } cases[] = {{23.5, 0, "23 30 00", "+00 00 00"},
                 {0.2, -0.5, "00 12 00", "-00 30 00"},
                 {6.25, 61.5, "06 15 00", "+61 30 00"}};
    for (const auto& c : cases) {
        Script script;
        setUp(script);
        script.waitIdle().giveBack(kImage, "InsertWCS", nullptr);
        script.giveBack(kScopeSim, "RightAscension", c.mountRA)
            .giveBack(kScopeSim, "Declination", c.mountDec);
        script.click("frmMain.cmdExposeSolve").waitIdle();
        const auto uses = script.journal(kImage, "uses").run().uses("uses");
        EXPECT_THAT(uses, Contains(StartsWith(std::string("put FITSKeyword \"OBJCTRA\" \"") + c.ra)));
        EXPECT_THAT(uses, Contains(StartsWith(std::string("put FITSKeyword \"OBJCTDEC\" \"") + c.dec)));
    }
}

/// The numbers that a measurement logged behind this text.
std::vector<double> numbersBehind(const std::string& text, const Lines& log) {
    std::vector<double> numbers;
    for (const std::string& line : log)
        if (line.starts_with(text)) numbers.push_back(platform::leadingNumber(line.substr(text.size())));
    return numbers;
}

TEST(ImageLink, MeasuresWhatPinPointMeasures) {
    std::vector<double> ra[2], dec[2];
    for (const int method : {0, 1}) {
        Script script;
        setUp(script);
        script.setting("PolarAlign", "PlateSolveMethod", std::to_string(method)).waitIdle();
        script.put(kScopeSim, "HourAngleOffset", 0.01).put(kScopeSim, "DeclinationOffset", 0.15);
        script.click("frmMain.cmdRun").waitForNext().click("frmMain.cmdSkip").waitIdle();
        const auto result = script.run();
        EXPECT_EQ(result.log.back(), "Alignment Run Complete");
        ra[method] = numbersBehind(" RA Error = ", result.log);
        dec[method] = numbersBehind(" Dec Error = ", result.log);
        EXPECT_EQ(ra[method].size(), 3U);
    }
    ASSERT_EQ(ra[0].size(), ra[1].size());
    constexpr double kArcsecond = 1 / 3600.0;
    for (std::size_t plate = 0; plate < ra[0].size(); ++plate) {
        EXPECT_NEAR(ra[0][plate], ra[1][plate], 0.2 * kArcsecond / 15);
        EXPECT_NEAR(dec[0][plate], dec[1][plate], 0.2 * kArcsecond);
        EXPECT_NEAR(dec[1][plate], -0.15, 2 * kArcsecond) << "what the mount's reading exceeds the truth by";
    }
}

}  // namespace
}  // namespace vantrel::headless
