#include "devices/camera_link.h"

#include <gmock/gmock.h>

#include "devices/imaging_world.h"

namespace vantrel::devices {
namespace {

using test::actionsOn;
using test::ImagingWorld;
using testing::ElementsAre;
using testing::IsEmpty;

using Strings = std::vector<std::string>;
using Messages = std::vector<test::RecordingMessages::Shown>;

constexpr const char* kMaxIm = "MaxIm.CCDCamera";
constexpr const char* kCCDSoft = "CCDSoft.Camera";

/// A world whose operator uses this program.
struct CameraWorld : ImagingWorld {
    explicit CameraWorld(const std::string& program) {
        installMaxIm();
        installCCDSoft();
        programs.ImagingSoftware = program;
        if (program == "MaxIm") programs.maxImCamera = host.create(kMaxIm);
        if (program == "CCDSoft") programs.ccdSoftCamera = host.create(kCCDSoft);
        messages.secondsToShow = 7;
        forget();
    }
};

TEST(CameraLink, KeepsTheGraceOfTheSecondProgramAsAPauseOfTheFirst) {
    CameraWorld world("CCDSoft");
    world.txtPostExpDelay.setText("3.5");
    world.link.AcquireImage(5);
    world.programs.ImagingSoftware = "MaxIm";
    world.programs.maxImCamera = world.host.create(kMaxIm);
    const double before = world.elapsed();
    world.link.AcquireImage(5);
    EXPECT_NEAR(world.elapsed() - before, 3.5 + 5, 0.11);
}

TEST(CameraLink, CopesWithACCDSoftThatBlocksOrLacksSettings) {
    CameraWorld world("CCDSoft");
    world.camera.asynchronous = false;
    for (const char* member : {"ScreenShutter", "Series"}) world.fail(kCCDSoft, member, 438);
    world.link.AcquireImage(5);
    EXPECT_FALSE(world.state.CameraFailed);
    EXPECT_THAT(world.log.lines, IsEmpty());
    EXPECT_NEAR(world.elapsed(), 5, 0.01);
}

TEST(CameraLink, TakesAnImageThatComesDuringTheGrace) {
    for (const char* program : {"MaxIm", "CCDSoft"}) {
        CameraWorld world(program);
        world.camera.readyAfter = 61;
        world.link.AcquireImage(5);
        EXPECT_NEAR(world.elapsed(), 67, 0.11) << program;
        EXPECT_FALSE(world.state.CameraFailed) << program;
        EXPECT_THAT(world.log.lines, IsEmpty()) << program;
    }
}

TEST(CameraLink, StopsAtTheOperatorsWish) {
    struct Case {
        const char* program;
        bool closing;  // the main window closes, instead of a Stop
        bool cameraFailed;
        Strings log;
        long aborts;
    };
    for (const Case& c : {
             Case{"MaxIm", false, false, {}, 0},
             Case{"MaxIm", true, false, {}, 0},
             Case{"CCDSoft", false, true, {"Exposure aborted"}, 2},
             Case{"CCDSoft", true, false, {}, 2},
         }) {
        SCOPED_TRACE(testing::Message() << c.program << (c.closing ? ", closing" : ", Stop"));
        CameraWorld world(c.program);
        const auto stop = world.loop.after(platform::Milliseconds{3000}, [&] {
            world.state.StopRequested = true;
            world.state.AppUnloading = c.closing;
        });
        world.link.AcquireImage(60);
        EXPECT_NEAR(world.elapsed(), 3, 0.11);
        EXPECT_EQ(world.state.CameraFailed, c.cameraFailed);
        EXPECT_EQ(world.log.lines, c.log);
        EXPECT_EQ(world.messages.shown.size(), c.log.size());
        EXPECT_EQ(test::usesOf(world.host, kCCDSoft, "call abort"), c.aborts);
    }
}

TEST(CameraLink, DoesNothingWhileTheProgramEnds) {
    CameraWorld world("MaxIm");
    world.state.AppUnloading = true;
    world.link.AcquireImage(5);
    EXPECT_THAT(world.host.takeJournal("*"), IsEmpty());
}

TEST(CameraLink, ExposesNothingWithoutAProgram) {
    const std::string failed = "Failed to start camera!\r\nVerify camera model in Imaging Software";
    CameraWorld world("NeedToSelect");
    world.link.AcquireImage(5);
    EXPECT_THAT(world.log.lines,
                ElementsAre(" Error 0: \r\nModule modComponents Property Let camLinkEnabled",
                            " Error 0: \r\nModule modComponents Property Get camLinkEnabled", failed));
    EXPECT_EQ(world.messages.shown.back(), (test::RecordingMessages::Shown{failed, 7}));
    EXPECT_FALSE(world.state.CameraFailed);
    EXPECT_EQ(world.elapsed(), 0);
}

TEST(CameraLink, BringsTheProgramBackWhenAskedTo) {
    for (const bool asked : {true, false}) {
        CameraWorld world("CCDSoft");
        world.openCCDSoft();
        world.desktop.find(world.ccdSoftMain)->minimised = true;
        if (asked) world.settings.SaveSetting("PolarAlign", "EnableRestoreImagingSW", "1");
        world.link.AcquireImage(1);
        EXPECT_EQ(world.desktop.minimised(world.ccdSoftMain), !asked);
    }
}

// ---- one camera, two programs

TEST(CameraLink, FreesTheCameraFromTheOtherProgram) {
    struct Case {
        const char* why;
        const char* program;
        bool otherIsOpen, otherHolds, link;
        Strings actions;
    };
    for (const Case& c : {
             Case{"CCDSoft is closed", "MaxIm", false, false, true, {"put LinkEnabled True"}},
             Case{"CCDSoft is open",
                  "MaxIm",
                  true,
                  false,
                  true,
                  {"create", "call Disconnect", "put LinkEnabled True"}},
             Case{"CCDSoft is open, unlinking",
                  "MaxIm",
                  true,
                  false,
                  false,
                  {"create", "call Disconnect", "put LinkEnabled False"}},
             Case{"MaxIm is closed", "CCDSoft", false, false, true, {"call Connect"}},
             Case{"MaxIm holds the camera",
                  "CCDSoft",
                  true,
                  true,
                  true,
                  {"create", "put LinkEnabled True", "put LinkEnabled False", "call Connect"}},
             Case{"MaxIm is open without it", "CCDSoft", true, false, true, {"create", "call Connect"}},
             Case{"unlinking bothers nobody", "CCDSoft", true, true, false, {"call Disconnect"}},
         }) {
        SCOPED_TRACE(c.why);
        CameraWorld world(c.program);
        if (c.otherIsOpen && world.programs.usesMaxIm()) world.openCCDSoft();
        if (c.otherIsOpen && world.programs.usesCCDSoft()) {
            world.openMaxIm();
            world.desktop.find(world.connectButton)->buttonState = c.otherHolds ? 1 : 0;
        }
        world.link.setCamLinkEnabled(c.link);
        EXPECT_EQ(actionsOn(world.host, "*"), c.actions);
        EXPECT_EQ(world.programs.ImagingSoftware, c.program);
        EXPECT_EQ(world.programs.usesMaxIm() ? world.programs.ccdSoftCamera : world.programs.maxImCamera,
                  nullptr);
        EXPECT_THAT(world.log.lines, IsEmpty());
    }
}

TEST(CameraLink, KeepsTheProgramInUseWhenTheOtherCannotBeReached) {
    CameraWorld world("MaxIm");
    world.openCCDSoft();
    world.fail(kCCDSoft, "create", 429);
    world.link.setCamLinkEnabled(true);
    EXPECT_EQ(world.programs.ImagingSoftware, "MaxIm");
    EXPECT_THAT(
        world.log.lines,
        ElementsAre("Fake.Source Error 429: it broke\r\nModule modComponents Property Let camLinkEnabled"));
}

TEST(CameraLink, LinkOperationsReportTheirFailures) {
    struct Case {
        const char* program;
        const char* progId;
        const char* member;
        std::function<void(CameraLink&)> act;
        const char* label;
    };
    for (const Case& c : {
             Case{"MaxIm", kMaxIm, "LinkEnabled", [](CameraLink& l) { l.DisconnectMaxImCamera(); },
                  "Sub DisconnectMaxImCamera"},
             Case{"CCDSoft", kCCDSoft, "Disconnect", [](CameraLink& l) { l.DisconnectCCDSoftCamera(); },
                  "Sub DisconnectCCDSoftCamera"},
             Case{"MaxIm", kMaxIm, "DisableAutoShutdown",
                  [](CameraLink& l) { l.setCamDisableAutoShutdown(true); },
                  "Property Let camDisableAutoShutdown"},
             Case{"CCDSoft", "CCDSoft.Image", "AttachToActiveImager",
                  [](CameraLink& l) { l.AttachCCDSoftImageToActiveImager(); },
                  "Sub AttachCCDSoftImageToActiveImager"},
         }) {
        CameraWorld world(c.program);
        world.openMaxIm();
        world.desktop.find(world.connectButton)->buttonState = 1;
        world.fail(c.progId, c.member, 438);
        c.act(world.link);
        const std::string report =
            std::string("Fake.Source Error 438: it broke\r\nModule modComponents ") + c.label;
        EXPECT_THAT(world.log.lines, ElementsAre(report));
        EXPECT_EQ(world.messages.shown, (Messages{{report, 5}}));
        EXPECT_EQ(world.link.CameraMessage(), report);
    }
}

TEST(CameraLink, KeepsQuietAboutTheWayOfExposing) {
    CameraWorld world("CCDSoft");
    world.fail(kCCDSoft, "Asynchronous", 438);
    world.link.setCCDSoftIsAsynchronous(true);
    EXPECT_EQ(world.state.LastMessage,
              "Fake.Source Error 438: it broke\r\nmodComponents Property Let CCDSoftIsAsynchronous");
    EXPECT_FALSE(world.link.CCDSoftIsAsynchronous());
    EXPECT_EQ(world.state.LastMessage,
              "Fake.Source Error 438: it broke\r\nmodComponents Property Get CCDSoftIsAsynchronous");
    EXPECT_THAT(world.log.lines, IsEmpty());
    EXPECT_THAT(world.messages.shown, IsEmpty());
}

TEST(CameraLink, LeavesTheProgramThatIsNotInUseAlone) {
    CameraWorld maxIm("MaxIm"), ccdSoft("CCDSoft");
    maxIm.link.DisconnectCCDSoftCamera();
    maxIm.link.setCCDSoftIsAsynchronous(true);
    maxIm.link.abortCCDSoftExposure();
    ccdSoft.link.DisconnectMaxImCamera();
    ccdSoft.link.setCamDisableAutoShutdown(true);
    EXPECT_THAT(maxIm.host.takeJournal("*"), IsEmpty());
    EXPECT_THAT(ccdSoft.host.takeJournal("*"), IsEmpty());
}

// ---- saving

TEST(CameraLink, SavesInTheImageFolder) {
    CameraWorld maxIm("MaxIm");
    maxIm.settings.SaveSetting("PolarAlign", "ImagePath", "D:\\Images");
    maxIm.link.SaveImageToFile("SavedImage.fit");
    EXPECT_THAT(actionsOn(maxIm.host, "*"), ElementsAre("call SaveImage D:\\Images\\SavedImage.fit"));
    EXPECT_EQ(maxIm.state.LastSavedImage, "SavedImage.fit");

    CameraWorld ccdSoft("CCDSoft");
    ccdSoft.link.AttachCCDSoftImageToActiveImager();
    ccdSoft.forget();
    ccdSoft.link.SaveImageToFile("SavedImage.fit");
    EXPECT_THAT(actionsOn(ccdSoft.host, "*"), ElementsAre("put path C:\\SavedImage.fit", "call Save"));
}

TEST(CameraLink, LogsAnImageThatCannotBeSaved) {
    for (const auto& [program, failure] : std::vector<std::pair<std::string, std::string>>{
             {"", " Error 0: "},
             {"MaxIm", "Fake.Source Error 438: it broke"},
             {"CCDSoft", "Vantrel Error 91: Object variable or With block variable not set"}}) {
        CameraWorld world(program);
        world.fail(kMaxIm, "SaveImage", 438);
        world.link.SaveImageToFile("SavedImage.fit");
        EXPECT_THAT(world.log.lines, ElementsAre(failure + "\r\nmodUtilities Sub SaveImageToFile"));
        EXPECT_THAT(world.messages.shown, IsEmpty());
        EXPECT_EQ(world.state.LastSavedImage, "");
    }
}

}  // namespace
}  // namespace vantrel::devices
