// Solving pictures from anywhere, and the ways to begin, through the operator protocol.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fits/fits_writing.h"
#include "fits/header_wcs.h"
#include "script.h"
#include "sky/compact_catalog.h"
#include "support/star_field.h"
#include "support/temp_folder.h"

namespace vantrel::headless {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::StartsWith;

constexpr double kScale = 6;

class SolvePicture : public testing::Test {
  protected:
    /// Mirrored, turned by 20 degrees, at 5h and 33 degrees.
    std::string drawn(const char* name, const std::vector<fits::FitsCard>& cards = {}) const {
        vantrel::test::StarField field;
        field.width = 640;
        field.height = 480;
        field.wcs = vantrel::test::wcsFor(640, 480, {75, 33}, kScale, 20, true);
        fits::writeFits(folder_ / name, 640, 480,
                        vantrel::test::drawField(sky::CompactCatalog::openBuiltIn().get(), field), cards);
        return (folder_ / name).string();
    }

    /// Stars that are no sky.
    std::string strewn() const {
        vantrel::test::FrameRecipe recipe;
        recipe.width = 400;
        recipe.height = 300;
        vantrel::test::FramePainter painter(5);
        for (int i = 0; i < 60; ++i)
            recipe.stars.push_back({static_cast<double>(painter.random()() % 400),
                                    static_cast<double>(painter.random()() % 300), 2.8, 4000});
        fits::writeFits(folder_ / "strewn.fits", painter.paint(recipe), {});
        return (folder_ / "strewn.fits").string();
    }

    static Script& solve(Script& script, const std::string& file, const char* scale = "") {
        script.type("frmSolvePicture.txtFile", file.c_str());
        script.type("frmSolvePicture.txtScaleHint", scale);
        script.click("frmSolvePicture.cmdSolve");
        return script.send(
            {{"do", "wait"},
             {"for", {{"control", "frmSolvePicture.cmdStop"}, {"property", "enabled"}, {"is", false}}},
             {"seconds", 5}});
    }
    static Script& readAll(Script& script, const std::string& as) {
        for (const char* box : {"txtCentreRA", "txtCentreDec", "txtScale", "txtRoll", "txtPositionAngle",
                                "txtField", "txtMatched", "lblOutcome"})
            script.read(std::string("frmSolvePicture.") + box, as + box);
        return script.send(
            {{"id", as + "drawing"}, {"do", "drawing"}, {"control", "frmSolvePicture.picPlate"}});
    }

    vantrel::test::TempFolder folder_;
};

// The picture that says nothing of itself is found by the patterns of the whole sky.
TEST_F(SolvePicture, FindsItByItsHeaderOrAnywhere) {
    const struct {
        const char* name;
        std::vector<fits::FitsCard> cards;
        const char* scale;
    } cases[] = {
        {"optics",
         {{"OBJCTRA", std::string("05 01 00")},
          {"OBJCTDEC", std::string("+33 10 00")},
          {"FOCALLEN", 206.264806},
          {"XPIXSZ", 6.1}},
         ""},
        {"solved-before",
         fits::wcsCards(vantrel::test::wcsFor(640, 480, {75.2, 33.1}, 6.2, 0, false), 480, false), ""},
        {"silent", {}, ""},
        {"scale-known", {}, "6.3"},
        {"wrong-optics", {{"FOCALLEN", 2000.0}, {"XPIXSZ", 3.8}}, ""},
    };
    Script script;
    script.waitIdle().startLog().click("frmMain.mnuSolvePicture");
    for (const auto& c : cases) readAll(solve(script, drawn(c.name, c.cards), c.scale), c.name);
    // A script that answers the file dialog need not type.
    script.send({{"do", "answer"}, {"dialog", "file"}, {"with", strewn()}});
    script.type("frmSolvePicture.txtScaleHint", "6").click("frmSolvePicture.cmdChooseFile").advance(1);
    readAll(script, "strewn");
    const auto result = script.run();
    EXPECT_THAT(result.read.at("strewnlblOutcome")["caption"].get<std::string>(),
                HasSubstr("stars were found, but no place in the sky fits them"));
    for (const auto& c : cases) {
        const auto text = [&](const std::string& box) -> std::string {
            const auto& read = result.read.at(c.name + box);
            return read[box.starts_with("lbl") ? "caption" : "text"];
        };
        EXPECT_THAT(text("lblOutcome"), StartsWith("Solved in 0.0 s by ")) << c.name;
        EXPECT_THAT(text("lblOutcome"), HasSubstr("; the picture is mirrored")) << c.name;
        EXPECT_THAT(text("txtCentreRA"), testing::AnyOf(StartsWith("05h 00m 00"), StartsWith("04h 59m 59.9")))
            << c.name;
        EXPECT_THAT(text("txtCentreDec"), testing::AnyOf(StartsWith("33° 00' 0"), StartsWith("32° 59' 5")))
            << c.name;
        EXPECT_NEAR(std::stod(text("txtScale")), kScale, 0.01) << c.name;
        EXPECT_NEAR(std::stod(text("txtRoll")), 20, 0.05) << c.name;
        EXPECT_NEAR(std::stod(text("txtPositionAngle")), 340, 0.05) << c.name;
        EXPECT_NEAR(std::stod(text("txtField")), 640 * kScale / 3600, 0.002) << c.name;
        const auto& shapes = result.read.at(std::string(c.name) + "drawing")["drawing"];
        const auto circles = std::count_if(shapes.begin(), shapes.end(),
                                           [](const json& shape) { return shape["kind"] == "circle"; });
        EXPECT_GT(circles, 10) << c.name;
        EXPECT_EQ(circles, std::stol(text("txtMatched"))) << c.name;
    }
    EXPECT_TRUE(result.log.empty() && result.popups.empty()) << "a measurement's log has no part in it";
}

TEST(Welcome, LeadsToEachOfTheThreeBeginnings) {
    const struct {
        const char* button;
        const char* telescope;  // in use before
        const char* opens;
        const char* inUse;  // then
    } cases[] = {
        {"cmdTrySimulator", "AxisSimulator.Telescope", "frmMain", "AxisSimulator.Telescope"},
        {"cmdTrySimulator", "ScopeSim.Telescope", "frmMain", "AxisSimulator.Telescope"},
        {"cmdMyDevices", "AxisSimulator.Telescope", "frmDevices", "ScopeSim.Telescope"},
        {"cmdJustSolve", "ScopeSim.Telescope", "frmSolvePicture", "ScopeSim.Telescope"},
    };
    for (const auto& c : cases) {
        Script script;
        script.setting("Main", "MyTelescopeID", c.telescope);
        script.waitIdle().send({{"id", "before"}, {"do", "windows"}});
        script.send({{"do", "answer"}, {"dialog", "chooser"}, {"with", "ScopeSim.Telescope"}});
        script.click("frmMain.mnuWelcome").click((std::string("frmWelcome.") + c.button).c_str()).waitIdle();
        script.send({{"id", "after"}, {"do", "windows"}}).readSetting("Main", "MyTelescopeID");
        script.send({{"id", "connected"}, {"do", "automation"}, {"object", c.inUse}, {"get", "Connected"}});
        const auto result = script.run();
        EXPECT_EQ(result.read.at("before").dump().find("frmWelcome"), std::string::npos)
            << "scripts meet no window that they don't know";
        const std::string windows = result.read.at("after").dump();
        EXPECT_EQ(windows.find("frmWelcome"), std::string::npos) << c.button;
        EXPECT_THAT(windows, HasSubstr(c.opens)) << c.button;
        EXPECT_EQ(result.read.at("MyTelescopeID")["value"], c.inUse) << c.button;
        EXPECT_EQ(result.read.at("connected")["value"], true) << c.button << " " << c.telescope;
    }
}

}  // namespace
}  // namespace vantrel::headless
