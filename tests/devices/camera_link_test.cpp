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

constexpr const char* kMaxIm = "MaxIm.CCDCamera";
constexpr const char* kCCDSoft = "CCDSoft.Camera";
constexpr int kServerIsGone = 462;

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

TEST(CameraLink, TakesAnImageThatComesLateOrAtOnce) {
    const struct {
        const char* program;
        bool asynchronous;  // an exposure that the call waits for needs no second look
        double readyAfter, seconds;
    } rows[] = {{"MaxIm", true, 61, 67}, {"CCDSoft", true, 61, 67}, {"CCDSoft", false, 0, 5}};
    for (const auto& row : rows) {
        CameraWorld world(row.program);
        world.camera.asynchronous = row.asynchronous;
        world.camera.readyAfter = row.readyAfter;
        world.link.AcquireImage(5);
        EXPECT_NEAR(world.elapsed(), row.seconds, 0.11) << row.program;
        EXPECT_FALSE(world.state.CameraFailed) << row.program;
        EXPECT_THAT(world.log.lines, IsEmpty()) << row.program;
    }
}

TEST(CameraLink, StopsAtTheOperatorsWish) {
    const struct {
        const char* program;
        bool closing;  // the main window closes, instead of a Stop
        bool cameraFailed;
        long aborts;
    } rows[] = {{"MaxIm", false, false, 0},
                {"MaxIm", true, false, 0},
                {"CCDSoft", false, true, 2},
                {"CCDSoft", true, false, 2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.program << (row.closing ? ", closing" : ", Stop"));
        CameraWorld world(row.program);
        const auto stop = world.loop.after(platform::Milliseconds{3000}, [&] {
            world.state.StopRequested = true;
            world.state.AppUnloading = row.closing;
        });
        world.link.AcquireImage(60);
        EXPECT_NEAR(world.elapsed(), 3, 0.11);
        EXPECT_EQ(world.state.CameraFailed, row.cameraFailed);
        EXPECT_EQ(world.log.lines, row.cameraFailed ? Strings{"Exposure aborted"} : Strings{});
        EXPECT_EQ(world.messages.shown.size(), world.log.lines.size());
        EXPECT_EQ(test::usesOf(world.host, kCCDSoft, "call abort"), row.aborts);
    }
}

// One that was ended, or hung, answers again, but not the object that was held of it.
TEST(CameraLink, AsksAProgramThatIsBackByANewObject) {
    const struct {
        const char* program;
        const char* camera;
        const char* member;
    } rows[] = {{"MaxIm", kMaxIm, "LinkEnabled"}, {"CCDSoft", kCCDSoft, "Connect"}};
    for (const auto& row : rows) {
        for (const int failures : {1, 2}) {
            SCOPED_TRACE(testing::Message() << row.program << ' ' << failures);
            CameraWorld world(row.program);
            world.host.inject(
                {row.camera, row.member, {kServerIsGone, row.camera, "gone"}, std::nullopt, 0, failures});
            world.link.setCamLinkEnabled(true);
            EXPECT_EQ(test::usesOf(world.host, row.camera, "create"), 1);
            EXPECT_EQ(world.log.lines.size(), failures == 1 ? 0U : 1U) << "still away, so it is told once";
            world.link.AcquireImage(5);
            EXPECT_FALSE(world.state.CameraFailed);
        }
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
    enum Other { kClosed, kOpen, kHolds };
    const struct {
        const char* program;
        Other other;
        bool link;
        Strings actions;
    } rows[] = {
        {"MaxIm", kClosed, true, {"put LinkEnabled True"}},
        {"MaxIm", kOpen, true, {"create", "call Disconnect", "put LinkEnabled True"}},
        {"MaxIm", kOpen, false, {"create", "call Disconnect", "put LinkEnabled False"}},
        {"CCDSoft", kClosed, true, {"call Connect"}},
        {"CCDSoft",
         kHolds,
         true,
         {"create", "put LinkEnabled True", "put LinkEnabled False", "call Connect"}},
        {"CCDSoft", kOpen, true, {"create", "call Connect"}},
        {"CCDSoft", kHolds, false, {"call Disconnect"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message()
                     << row.program << ", the other " << row.other << ", link " << row.link);
        CameraWorld world(row.program);
        if (row.other != kClosed && world.programs.usesMaxIm()) world.openCCDSoft();
        if (row.other != kClosed && world.programs.usesCCDSoft()) {
            world.openMaxIm();
            world.desktop.find(world.connectButton)->buttonState = row.other == kHolds ? 1 : 0;
        }
        world.link.setCamLinkEnabled(row.link);
        EXPECT_EQ(actionsOn(world.host, "*"), row.actions);
        EXPECT_EQ(world.programs.ImagingSoftware, row.program);
        EXPECT_EQ(world.programs.usesMaxIm() ? world.programs.ccdSoftCamera : world.programs.maxImCamera,
                  nullptr);
        EXPECT_THAT(world.log.lines, IsEmpty());
    }
}

TEST(CameraLink, KeepsQuietAboutTheWayOfExposing) {
    CameraWorld world("CCDSoft");
    double delay = 0;
    CCDSoftCamera camera({world.services,
                          world.programs,
                          world.windows,
                          {world.txtPostExpDelay, world.panel.chkUseCCDSoftSubFrame},
                          delay});
    world.fail(kCCDSoft, "Asynchronous", 438);
    camera.setCCDSoftIsAsynchronous(true);
    EXPECT_EQ(world.state.LastMessage,
              "Fake.Source Error 438: it broke\r\nmodComponents Property Let CCDSoftIsAsynchronous");
    EXPECT_FALSE(camera.CCDSoftIsAsynchronous());
    EXPECT_EQ(world.state.LastMessage,
              "Fake.Source Error 438: it broke\r\nmodComponents Property Get CCDSoftIsAsynchronous");
    EXPECT_THAT(world.log.lines, IsEmpty());
    EXPECT_THAT(world.messages.shown, IsEmpty());
}

TEST(CameraLink, LeavesTheProgramThatIsNotInUseAlone) {
    CameraWorld maxIm("MaxIm"), ccdSoft("CCDSoft");
    maxIm.link.abortExposure();
    ccdSoft.link.setCamDisableAutoShutdown(true);
    for (CameraWorld* world : {&maxIm, &ccdSoft}) {
        EXPECT_THAT(world->host.takeJournal("*"), IsEmpty());
        EXPECT_THAT(world->log.lines, IsEmpty());
    }
}

// ---- saving

TEST(CameraLink, SavesInTheImageFolder) {
    CameraWorld maxIm("MaxIm");
    maxIm.settings.SaveSetting("PolarAlign", "ImagePath", "D:\\Images");
    maxIm.link.SaveImageToFile("SavedImage.fit");
    EXPECT_THAT(actionsOn(maxIm.host, "*"), ElementsAre("call SaveImage D:\\Images\\SavedImage.fit"));
    EXPECT_EQ(maxIm.state.LastSavedImage, "SavedImage.fit");

    CameraWorld ccdSoft("CCDSoft");
    ccdSoft.programs.ccdSoftImage = ccdSoft.host.create("CCDsoft.Image");
    ccdSoft.link.SaveImageToFile("SavedImage.fit");
    EXPECT_THAT(actionsOn(ccdSoft.host, "*"),
                ElementsAre("create", "put path C:\\SavedImage.fit", "call Save"));
}

TEST(CameraLink, LogsAnImageThatCannotBeSaved) {
    for (const auto& [program, failure] : {std::pair{"", " Error 0: "},
                                           {"CCDSoft",
                                            "Vantrel Error 91: Object variable or With block "
                                            "variable not set"}}) {
        CameraWorld world(program);
        world.link.SaveImageToFile("SavedImage.fit");
        EXPECT_THAT(world.log.lines,
                    ElementsAre(std::string(failure) + "\r\nmodUtilities Sub SaveImageToFile"));
        EXPECT_THAT(world.messages.shown, IsEmpty());
        EXPECT_EQ(world.state.LastSavedImage, "");
    }
}

}  // namespace
}  // namespace vantrel::devices
