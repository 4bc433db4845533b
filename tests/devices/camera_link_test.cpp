#include "devices/camera_link.h"

#include <functional>

#include <gmock/gmock.h>

#include "devices/device_world.h"

namespace vantrel::devices {
namespace {

using test::actionsOn;
using test::ImagingWorld;
using testing::ElementsAre;
using testing::IsEmpty;

using Strings = std::vector<std::string>;

constexpr const char* kMaxIm = "MaxIm.CCDCamera";
constexpr const char* kCCDSoft = "CCDSoft.Camera";
constexpr const char* kCCDSoftImage = "CCDSoft.Image";
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

TEST(CameraLink, AsksTheProgramForWhatIsSet) {
    using Change = std::function<void(CameraWorld&)>;
    const Change asItIs = [](CameraWorld&) {};
    const struct {
        const char* why;
        const char* program;
        Change change;
        double seconds;
        Strings actions;  // of the camera, in this order
    } rows[] = {
        {"a light frame", "MaxIm", asItIs, 1,
         Strings{"put LinkEnabled True", "put BinX 1", "put BinY 1", "call SetFullFrame", "put BinX 2",
                 "put BinY 2", "call Expose 1 1 2"}},
        {"a dark frame", "MaxIm", asItIs, -2, Strings{"call Expose 2 0 2"}},
        {"the stored filter when it can't be read", "MaxIm",
         [](CameraWorld& world) {
             world.openMaxIm();
             world.settings.SaveSetting("CurrentVersion", "D3130_EXP_FILTER", "3");
             world.fail(kMaxIm, "Filter", 7);
         },
         1, Strings{"call Expose 1 1 3"}},
        {"set-up and exposure", "CCDSoft", asItIs, 1,
         Strings{"call Connect", "put AutoSaveOn 0", "put ScreenShutter 0", "put ToNewWindow 0",
                 "put Subframe 0", "put AutoSaveFileFormat 0", "put Series 1", "put ImageReduction 1",
                 "put BinX 2", "put BinY 2", "put Frame 1", "put Subframe False", "put ExposureTime 1",
                 "put Asynchronous True", "call TakeImage"}},
        {"no time at all", "CCDSoft", asItIs, 0, Strings{"put ExposureTime 0.11"}},
        {"a sub-frame", "CCDSoft", [](CameraWorld& world) { world.panel.chkUseCCDSoftSubFrame.setValue(1); },
         1, Strings{"put Subframe True"}},
    };
    for (const auto& row : rows) {
        CameraWorld world(row.program);
        world.settings.SaveSetting("Solve", "CamBin", "2");
        row.change(world);
        world.link.AcquireImage(row.seconds);
        const auto actions = actionsOn(world.host, world.programs.usesMaxIm() ? kMaxIm : kCCDSoft);
        EXPECT_THAT(actions, testing::IsSupersetOf(row.actions)) << row.why;
        if (row.actions.size() > 1) {
            EXPECT_EQ(actions, row.actions) << row.why;
        }
    }
}

/// A minute beyond the exposure's five seconds, and the time of grace.
TEST(CameraLink, WaitsForAnImageThatComesLate) {
    const Strings maxIm = {
        "Error 32768: Exposure by MaxIm DL failed after being successfully started.\r\n"
        "Module modComponents sub TakePicture"};
    const Strings ccdSoft = {"** CCD Soft Image not available (after waiting 60 sec) **", "mod TakeCCDImage",
                             " Error 0: \r\nModule modComponents sub TakeCCDSoftImage"};
    constexpr double kNever = 1000;
    const struct {
        const char* program;
        bool asynchronous;  // an exposure that the call waits for needs no second look
        double readyAfter;
        const char* grace;
        double seconds;
        Strings log;
    } rows[] = {
        {"MaxIm", true, 61, "0", 67, {}},
        {"MaxIm", true, kNever, "0", 67, maxIm},
        {"MaxIm", true, kNever, "3.5", 68.5, maxIm},
        {"MaxIm", true, kNever, "-1", 67, maxIm},
        {"MaxIm", true, kNever, "", 67, maxIm},
        {"CCDSoft", true, 61, "0", 67, {}},
        {"CCDSoft", false, 0, "0", 5, {}},
        {"CCDSoft", true, kNever, "0", 67, ccdSoft},
        {"CCDSoft", true, kNever, "3.5", 68.5, ccdSoft},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.program << " " << row.readyAfter << " " << row.grace);
        CameraWorld world(row.program);
        world.camera.asynchronous = row.asynchronous;
        world.camera.readyAfter = row.readyAfter;
        world.txtPostExpDelay.setText(row.grace);
        world.state.CameraFailed = true;  // before
        world.link.AcquireImage(5);
        EXPECT_NEAR(world.elapsed(), row.seconds, 0.11);
        EXPECT_EQ(world.log.lines, row.log);
        EXPECT_EQ(world.state.CameraFailed, !row.log.empty());
        EXPECT_EQ(test::usesOf(world.host, kCCDSoft, "call abort"), row.log == ccdSoft ? 1 : 0);
    }
}

const Strings kNoCamera = {"Failed to start camera!\r\nVerify camera model in Imaging Software"};

/// All that is said is in the log and in a message. A failure of the camera ends a series of exposures.
TEST(CameraLink, ReportsTheMemberThatFails) {
    const auto report = [](const std::string& procedure) {
        return Strings{"Fake.Source Error 7: it broke\r\nModule modComponents " + procedure};
    };
    const auto plus = [](Strings some, const Strings& more) {
        some.insert(some.end(), more.begin(), more.end());
        return some;
    };
    const Strings let = report("Property Let camLinkEnabled"), acquire = report("Sub AcquireImage"),
                  noLink = plus(report("Property Get camLinkEnabled"), kNoCamera),
                  take = report("sub TakeCCDSoftImage"), aborted = {"Exposure Aborted"},
                  attach = report("Sub AttachCCDSoftImageToActiveImager"),
                  notStarted = {
                      "Error 32768: MaxIm DL Failed to start the exposure\r\n"
                      "Module modComponents sub TakePicture"};
    struct Row {
        const char* object;
        const char* member;
        Strings says;
        bool fails = false;
        long after = 0;
        int number = 7;
        std::optional<platform::Value> returns = {};  // instead of failing
    };
    std::vector<Row> rows = {
        {kMaxIm, "LinkEnabled", let},
        {kMaxIm, "LinkEnabled", noLink, false, 1},
        {kMaxIm, "LinkEnabled", kNoCamera, false, 0, 0, false},
        {kMaxIm, "Expose", notStarted, true},
        {kMaxIm, "Expose", notStarted, true, 0, 0, false},
        {kMaxIm, "ImageReady", {"Error 7: it broke\r\nModule modComponents sub TakePicture"}, true, 3},
        {kMaxIm, "ImageReady", aborted, true, 3, 65535},
        {kMaxIm, "Filter", {}},
        {kCCDSoft, "Connect", let},
        {kCCDSoft, "State", noLink},
        {kCCDSoft, "State", kNoCamera, false, 0, 0, 5},
        {kCCDSoft, "Asynchronous", {}},
        {kCCDSoft, "Asynchronous", {}, false, 1},
        {kCCDSoft, "Asynchronous", {}, false, 0, 0, false},
        {kCCDSoft, "TakeImage", aborted, true, 0, 65535},
        {kCCDSoft, "IsExposureComplete", aborted, true, 3, 65535},
        {kCCDSoft, "Subframe", take, true, 1},
        {kCCDSoftImage, "create", attach},
        {kCCDSoftImage, "AttachToActiveImager", attach},
    };
    for (const char* member : {"BinX", "BinY", "SetFullFrame", "MaxBinX", "MaxBinY"})
        rows.push_back({kMaxIm, member, acquire, true});
    for (const char* member : {"BinX", "BinY"}) rows.push_back({kCCDSoft, member, acquire, true});
    for (const char* member : {"Frame", "ExposureTime", "TakeImage", "IsExposureComplete"})
        rows.push_back({kCCDSoft, member, take, true});
    for (const char* member : {"AutoSaveOn", "ScreenShutter", "ToNewWindow", "AutoSaveFileFormat", "Series",
                               "ImageReduction", "Subframe"})
        rows.push_back({kCCDSoft, member, {}});
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.object << "." << row.member << " " << row.after);
        CameraWorld world(row.object == kMaxIm ? "MaxIm" : "CCDSoft");
        world.openMaxIm();
        world.camera.linked = true;
        world.host.inject({row.object,
                           row.member,
                           {row.number, "Fake.Source", "it broke"},
                           row.returns,
                           row.after,
                           row.returns ? -1 : 1});
        world.link.AcquireImage(1);
        EXPECT_EQ(world.log.lines, row.says);
        EXPECT_EQ(world.state.CameraFailed, row.fails);
        std::vector<test::RecordingMessages::Shown> shown;
        for (const std::string& text : row.says) {
            const bool brief = text == kNoCamera[0] || (row.says == aborted && row.object == kCCDSoft);
            shown.push_back({text, brief ? world.messages.secondsToShow : 5});
        }
        EXPECT_EQ(world.messages.shown, shown);
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
    CameraWorld world("NeedToSelect");
    world.link.AcquireImage(5);
    EXPECT_THAT(world.log.lines,
                ElementsAre(" Error 0: \r\nModule modComponents Property Let camLinkEnabled",
                            " Error 0: \r\nModule modComponents Property Get camLinkEnabled", kNoCamera[0]));
    EXPECT_EQ(world.messages.shown.back(), (test::RecordingMessages::Shown{kNoCamera[0], 7}));
    EXPECT_FALSE(world.state.CameraFailed);
    EXPECT_EQ(world.elapsed(), 0);
}

// ---- one camera, two programs

TEST(CameraLink, FreesTheCameraFromTheOtherProgram) {
    enum Other { kClosed, kOpen, kHolds };
    const struct {
        const char* program;
        Other other;
        bool link;
        Strings actions;
        const char* fails = nullptr;  // a member of the other, which then keeps the camera
        std::string says = {};
    } rows[] = {
        {"MaxIm", kClosed, true, Strings{"put LinkEnabled True"}},
        {"MaxIm", kOpen, true, Strings{"create", "call Disconnect", "put LinkEnabled True"}},
        {"MaxIm", kOpen, false, Strings{"create", "call Disconnect", "put LinkEnabled False"}},
        {"CCDSoft", kClosed, true, Strings{"call Connect"}},
        {"CCDSoft", kHolds, true,
         Strings{"create", "put LinkEnabled True", "put LinkEnabled False", "call Connect"}},
        {"CCDSoft", kOpen, true, Strings{"create", "call Connect"}},
        {"CCDSoft", kHolds, false, Strings{"call Disconnect"}},
        {"CCDSoft", kHolds, true, Strings{"create", "put LinkEnabled True", "call Connect"}, "LinkEnabled",
         "Sub DisconnectMaxImCamera"},
        {"CCDSoft", kHolds, true, Strings{"create"}, "create", "Property Let camLinkEnabled"},
        {"MaxIm", kOpen, true, Strings{"create", "call Disconnect", "put LinkEnabled True"}, "Disconnect",
         "Sub DisconnectCCDSoftCamera"},
        {"MaxIm", kOpen, true, Strings{"create"}, "create", "Property Let camLinkEnabled"},
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
        if (row.fails != nullptr) world.fail(world.programs.usesMaxIm() ? kCCDSoft : kMaxIm, row.fails, 7, 1);
        world.link.setCamLinkEnabled(row.link);
        EXPECT_EQ(actionsOn(world.host, "*"), row.actions);
        EXPECT_EQ(world.programs.ImagingSoftware, row.program);
        if (row.fails == nullptr) {
            EXPECT_EQ(world.programs.usesMaxIm() ? world.programs.ccdSoftCamera : world.programs.maxImCamera,
                      nullptr);
        }
        EXPECT_EQ(world.log.lines,
                  row.says.empty()
                      ? Strings{}
                      : Strings{"Fake.Source Error 7: it broke\r\nModule modComponents " + row.says});
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
