// Both imaging programs as the program sees them: automation classes, and windows on the desktop.

#include "imaging/imaging_programs.h"

#include <filesystem>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fits/fits_image.h"
#include "helpers/angle_texts.h"
#include "observatory/observatory.h"
#include "platform/image_array.h"
#include "platform/queued_event_loop.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::imaging {
namespace {

using platform::Arguments;
using platform::AutomationError;
using platform::ImageRef;
using platform::Milliseconds;
using platform::ObjectRef;
using platform::Value;
using testing::HasSubstr;

class ImagingTest : public testing::Test {
  protected:
    ImagingTest() {
        observatory_.install(classes_);
        std::filesystem::create_directories(drives_.path() / "c");
        simulator_ = classes_.create("AxisSimulator.Telescope");
        simulator_->put("CameraWidth", 240);
        simulator_->put("CameraHeight", 160);
    }

    ObjectRef linkedMaxIm() {
        ObjectRef camera = classes_.create("MaxIm.CCDCamera");
        camera->put("LinkEnabled", true);
        return camera;
    }
    ObjectRef linkedCCDSoft() {
        ObjectRef camera = classes_.create("CCDSoft.Camera");
        camera->call("Connect");
        camera->put("Asynchronous", true);
        return camera;
    }
    ObjectRef document() { return classes_.create("MaxIm.Application")->get("CurrentDocument").toObject(); }
    OpenDocuments& documents() { return observatory_.imaging().documents(); }
    void pass(double seconds) { loop_.sleep(Milliseconds{std::lround(seconds * 1000)}); }

    /// Takes a picture with MaxIm DL and waits for it.
    void takePicture(const ObjectRef& camera) {
        camera->call("Expose", {1.0, 1, 0});
        pass(2);
    }
    template <typename Use>
    static std::string refusal(Use&& use) {
        return test::refusalOf<AutomationError>(use);
    }
    /// The failure's number; 0 when there is none.
    template <typename Use>
    static int failure(Use&& use) {
        try {
            use();
            return 0;
        } catch (const AutomationError& error) {
            return error.number();
        }
    }

    observatory::ObservatorySeams seams() {
        observatory::ObservatorySeams seams;
        seams.desktop = &desktop_;
        return seams;
    }

    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop_{time_};
    test::TempFolder drives_;
    platform::FolderMap folders_{drives_.path()};
    platform::DesktopWindows desktop_;
    observatory::Observatory observatory_{loop_, folders_, 1, seams()};
    platform::ClassRegistry classes_;
    ObjectRef simulator_;
};

TEST_F(ImagingTest, PicturesComeAsTheyWereAskedFor) {
    const ObjectRef camera = linkedMaxIm();
    const struct {
        const char* why;
        std::vector<std::pair<const char*, int>> settings;
        Arguments expose;
        double seconds;  // until the picture is there: filter wheel, exposure, download
        int width, height;
        const char* type;
        int binning;
    } cases[] = {
        {"whole frame", {}, {1.5, 1}, 1.51, 240, 160, "Light Frame", 1},
        {"binned", {{"BinX", 3}, {"BinY", 3}}, {2.0, 1, 0}, 2.003, 80, 53, "Light Frame", 3},
        {"part of it", {{"StartX", 10}, {"NumX", 20}}, {1.0, 1, 0}, 1.002, 20, 53, "Light Frame", 3},
        {"whole again", {{"StartX", 0}, {"NumX", 80}}, {1.0, 1, 0}, 1.003, 80, 53, "Light Frame", 3},
        {"dark", {}, {4.0, 0, 0}, 4.003, 80, 53, "Dark Frame", 3},
        {"bias", {}, {0.0, 0, 0}, 0.004, 80, 53, "Bias Frame", 3},
        {"another filter first turns its wheel", {}, {1.0, 1, 2}, 3.003, 80, 53, "Light Frame", 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        for (const auto& [member, value] : c.settings) camera->put(member, value);
        EXPECT_TRUE(camera->call("Expose", c.expose).toBool());
        EXPECT_FALSE(camera->get("ImageReady").toBool());
        pass(c.seconds - 0.01);
        EXPECT_FALSE(camera->get("ImageReady").toBool() && c.seconds > 0.01) << "too early";
        pass(0.02);
        ASSERT_TRUE(camera->get("ImageReady").toBool());
        const ObjectRef image = document();
        EXPECT_EQ(image->get("XSize"), Value(c.width));
        EXPECT_EQ(image->get("YSize"), Value(c.height));
        for (const auto& [keyword, value] : {std::pair{"IMAGETYP", Value(c.type)},
                                             {"XBINNING", c.binning},
                                             {"XPIXSZ", 6.45 * c.binning},
                                             {"EXPTIME", c.expose[0]}})
            EXPECT_EQ(image->call("GetFITSKey", {keyword}), value) << keyword;
    }
    EXPECT_EQ(document()->call("GetFITSKey", {"FILTER"}), Value("Green"));
    EXPECT_EQ(camera->get("Filter"), Value(2));
    EXPECT_EQ(documents().all().size(), 1U) << "pictures replace each other";
}

TEST_F(ImagingTest, TheConnectedMountCarriesTheCameraAndItsOwnPicturesAreShown) {
    const ObjectRef camera = linkedMaxIm();
    takePicture(camera);
    EXPECT_EQ(document()->call("GetFITSKey", {"TELESCOP"}).toText(), "Telescope Simulator");
    simulator_->put("Connected", true);
    takePicture(camera);
    EXPECT_EQ(document()->call("GetFITSKey", {"TELESCOP"}).toText(), "Polar Axis Simulator");
    const auto shown = documents().current();
    simulator_->call("Expose");
    EXPECT_EQ(documents().all().size(), 1U);
    EXPECT_EQ(documents().current(), shown) << "the window stays";
    EXPECT_EQ(document()->get("ImageArray").toImage(), simulator_->get("ImageArray").toImage());
}

TEST_F(ImagingTest, OrdersThatCannotBe) {
    const ObjectRef camera = linkedMaxIm();
    const auto put = [&](const char* member, int value) {
        return refusal([&] { camera->put(member, value); });
    };
    const auto expose = [&](double seconds, int filter) {
        return refusal([&] { camera->call("Expose", {seconds, 1, filter}); });
    };
    EXPECT_EQ(put("BinX", 5), "BinX must be between 1 and 4");
    EXPECT_EQ(put("Filter", 9), "Filter must be between 0 and 4");
    EXPECT_EQ(expose(-1, 0), "The exposure time must be between 0 and 86400");
    EXPECT_EQ(expose(1, 7), "Filter must be between 0 and 4");
    EXPECT_EQ(put("StartX", 200), "");
    EXPECT_EQ(expose(1, 0), "The sub-frame lies outside the sensor");
    camera->call("SetFullFrame");
    EXPECT_EQ(expose(1, 0), "");
    camera->put("LinkEnabled", false);
    EXPECT_EQ(expose(1, 0), "The camera is not connected");
    EXPECT_EQ(refusal([&] { document(); }), "There is no open image") << "the link's end gave it up";
    EXPECT_EQ(refusal([&] { camera->call("SaveImage", {"C:\\a"}); }), "There is no image to save");
    EXPECT_EQ(refusal([&] { classes_.create("CCDSoft.Camera")->put("ExposureTime", 0); }),
              "ExposureTime must be greater than 0");
}

TEST_F(ImagingTest, AbortedExposuresFailWithTheirNumber) {
    const ObjectRef maxIm = linkedMaxIm();
    maxIm->call("Expose", {10.0, 1, 0});
    pass(5);
    maxIm->call("AbortExposure");
    EXPECT_EQ(failure([&] { maxIm->get("ImageReady"); }), 65535);
    maxIm->call("Expose", {1.0, 1, 0});
    pass(0.5);
    maxIm->call("Expose", {1.0, 1, 0});  // a new order replaces the one under way
    pass(0.9);
    EXPECT_FALSE(maxIm->get("ImageReady").toBool());
    pass(0.2);
    EXPECT_TRUE(maxIm->get("ImageReady").toBool());
    maxIm->put("LinkEnabled", false);

    const ObjectRef ccdSoft = linkedCCDSoft();
    ccdSoft->put("ExposureTime", 10);
    ccdSoft->call("TakeImage");
    EXPECT_FALSE(ccdSoft->get("IsExposureComplete").toBool());
    ccdSoft->call("abort");
    ccdSoft->call("abort");
    EXPECT_EQ(failure([&] { ccdSoft->get("IsExposureComplete"); }), 65535);
    ccdSoft->put("Asynchronous", false);
    const auto stop = loop_.after(Milliseconds{3000}, [&] { ccdSoft->call("abort"); });
    EXPECT_EQ(failure([&] { ccdSoft->call("TakeImage"); }), 65535);
    EXPECT_LT(time_.sinceStart(), Milliseconds{11'000});
}

TEST_F(ImagingTest, OneProgramHoldsTheCamera) {
    const ObjectRef maxIm = linkedMaxIm();
    const ObjectRef ccdSoft = classes_.create("CCDSoft.Camera");
    EXPECT_NE(ccdSoft->get("State"), Value(0));
    EXPECT_EQ(refusal([&] { ccdSoft->call("Connect"); }), "The camera is in use by MaxIm DL");
    ccdSoft->call("Disconnect");  // nothing of its own
    EXPECT_TRUE(maxIm->get("LinkEnabled").toBool());
    maxIm->put("LinkEnabled", false);
    ccdSoft->call("Connect");
    EXPECT_EQ(ccdSoft->get("State"), Value(0));
    EXPECT_EQ(refusal([&] { maxIm->put("LinkEnabled", true); }), "The camera is in use by CCDSoft");
    EXPECT_FALSE(maxIm->get("LinkEnabled").toBool());
}

TEST_F(ImagingTest, TheLinkEndsWithTheLastClientUnlessItIsKept) {
    for (const bool kept : {false, true}) {
        ObjectRef camera = linkedMaxIm();
        camera->put("DisableAutoShutdown", kept);
        camera.reset();
        EXPECT_EQ(classes_.create("MaxIm.CCDCamera")->get("LinkEnabled").toBool(), kept);
    }
}

// Which windows there are, those who look for them test.
TEST_F(ImagingTest, TheConnectButtonStaysDownWhileTheCameraIsConnected) {
    const std::string server = classes_.serverPath("maxim.ccdcamera");
    for (int time = 0; time < 2; ++time) desktop_.startProgram(server);  // once is enough
    ASSERT_EQ(desktop_.topLevelWindows().size(), 2U);
    const auto setup = desktop_.childrenOf(desktop_.topLevelWindows()[0])[1];
    const auto connect = desktop_.childrenOf(setup)[0];
    EXPECT_EQ(desktop_.buttonState(connect), 0);
    const ObjectRef camera = linkedMaxIm();
    EXPECT_NE(desktop_.buttonState(connect), 0);
    camera->put("LinkEnabled", false);
    EXPECT_EQ(desktop_.buttonState(connect), 0);
}

TEST_F(ImagingTest, ObjectsOfAnEndedRunAreDead) {
    const ObjectRef camera = linkedMaxIm();
    const ObjectRef application = classes_.create("MaxIm.Application");
    application->call("Quit");
    EXPECT_TRUE(desktop_.topLevelWindows().empty());
    EXPECT_EQ(failure([&] { application->get("AutofocusStatus"); }), 462);
    classes_.create("MaxIm.Application");  // a new run
    EXPECT_EQ(failure([&] { camera->get("LinkEnabled"); }), 462);
    EXPECT_EQ(failure([&] { camera->put("BinX", 1); }), 462);
    EXPECT_EQ(failure([&] { camera->call("SetFullFrame"); }), 462);
    EXPECT_FALSE(classes_.create("MaxIm.CCDCamera")->get("LinkEnabled").toBool());
}

TEST_F(ImagingTest, MarksStayInTheDocumentAndInItsFile) {
    const ObjectRef camera = linkedMaxIm();
    takePicture(camera);
    const ObjectRef image = document();
    const double white = image->get("StretchMax").toDouble();
    const ImageRef before = image->get("ImageArray").toImage();
    EXPECT_FALSE(image->get("Modified").toBool());
    int shown = 0;
    const auto listening = documents().onChange([&] { ++shown; });
    image->put("ImageArray",
               ImageRef(std::make_shared<platform::ImageArray>(before->withPixels({5 * 240 + 7}, white))));
    EXPECT_EQ(shown, 1);
    EXPECT_TRUE(image->get("Modified").toBool());
    EXPECT_EQ(image->get("ImageArray").toImage()->at(7, 5), std::round(white));
    EXPECT_EQ(image->get("StretchMax").toDouble(), white) << "a mark doesn't change the picture's look";
    EXPECT_EQ(refusal([&] { image->put("ImageArray", Value(ImageRef())); }), "ImageArray is empty");

    for (const auto& [given, file] :
         {std::pair{"C:\\SavedImage", "c/SavedImage.fit"}, {"C:\\Other.fts", "c/Other.fts"}}) {
        camera->call("SaveImage", {given});
        const fits::FitsImage saved = fits::FitsImage::open(drives_ / file);
        std::vector<float> row(240);
        saved.readRows(5, row);
        EXPECT_EQ(row[7], std::round(white)) << given;
        EXPECT_EQ(saved.header().number("EXPTIME"), 1);
    }
    EXPECT_FALSE(image->get("Modified").toBool());
    EXPECT_THAT(refusal([&] { camera->call("SaveImage", {"C:\\none\\a.fit"}); }),
                HasSubstr("could not be saved as C:\\none\\a.fit"));
}

TEST_F(ImagingTest, ClosedImagesFailAndTheNextPictureOpensOne) {
    const ObjectRef camera = linkedMaxIm();
    takePicture(camera);
    const ObjectRef image = document();
    const ObjectRef other = classes_.create("CCDSoft.Image");
    EXPECT_EQ(refusal([&] { other->get("Width"); }), "The object is not attached to an image");
    other->call("AttachToActive");
    image->call("Close");
    for (const auto& [object, member] : {std::pair{image, "XSize"},
                                         {image, "ImageArray"},
                                         {image, "StretchMax"},
                                         {other, "Width"},
                                         {other, "DataArray"},
                                         {other, "ModifiedFlag"}})
        EXPECT_EQ(refusal([&, o = object, m = member] { o->get(m); }), "The image was closed") << member;
    EXPECT_EQ(refusal([&] { other->call("AttachToActive"); }), "There is no open image");
    takePicture(camera);
    EXPECT_EQ(document()->get("XSize"), Value(240));
}

TEST_F(ImagingTest, TheSecondProgramTakesSeriesAndSavesThem) {
    const ObjectRef camera = linkedCCDSoft();
    const auto put = [&](std::initializer_list<std::pair<const char*, int>> settings) {
        for (const auto& [member, value] : settings) camera->put(member, value);
    };
    put({{"Subframe", 1}, {"Series", 3}, {"AutoSaveOn", 1}, {"ToNewWindow", 0}, {"ExposureTime", 2}});
    camera->call("TakeImage");
    pass(4.1);
    EXPECT_FALSE(camera->get("IsExposureComplete").toBool());
    pass(2);
    EXPECT_TRUE(camera->get("IsExposureComplete").toBool());
    EXPECT_EQ(documents().all().size(), 1U);
    EXPECT_EQ(camera->get("LastImageFileName"), Value("C:\\Image.00000003.fit"));
    EXPECT_TRUE(std::filesystem::exists(drives_ / "c/Image.00000002.fit"));
    const ObjectRef image = classes_.create("CCDSoft.Image");
    image->call("AttachToActiveImager");
    EXPECT_EQ(image->get("Width"), Value(120)) << "the middle, unless it says where";
    EXPECT_EQ(image->get("Height"), Value(80));
    EXPECT_FALSE(image->get("ModifiedFlag").toBool()) << "it was saved";

    put({{"Series", 1},
         {"ToNewWindow", 1},
         {"Asynchronous", 0},
         {"SubframeLeft", 30},
         {"SubframeRight", 70}});
    put({{"FilterIndexZeroBased", 2}});
    camera->call("TakeImage");  // returns when it is done
    EXPECT_EQ(documents().all().size(), 2U);
    EXPECT_EQ(documents().current()->pixels->width(), 40U);
    EXPECT_EQ(document()->call("GetFITSKey", {"FILTER"}), Value("Green"));
    image->call("SetActive");
    EXPECT_EQ(documents().current()->pixels->width(), 120U);
}

TEST_F(ImagingTest, DarkSubtractionTakesHotPixelsAway) {
    simulator_->put("HotPixels", 50);
    const ObjectRef camera = linkedCCDSoft();
    const auto hot = [&](int frame, int reduction) {
        camera->put("Frame", frame);
        camera->put("ImageReduction", reduction);
        camera->call("TakeImage");
        pass(2);
        const auto& counts = std::get<std::vector<std::uint16_t>>(documents().current()->pixels->pixels());
        return std::count_if(counts.begin(), counts.end(), [](std::uint16_t c) { return c > 1500; });
    };
    EXPECT_NEAR(static_cast<double>(hot(3, 0)), 50, 2) << "a dark frame";
    const auto light = hot(1, 0);
    EXPECT_GE(light, 48);
    EXPECT_LE(hot(1, 1) + 45, light);
}

// Where the camera points, the headless front's tests measure; here is what the header says beside it.
TEST_F(ImagingTest, TheImageLinkWritesItsSolutionIntoTheHeader) {
    for (const auto& [member, value] : {std::pair{"CameraWidth", 1392}, {"CameraHeight", 1040}})
        simulator_->put(member, value);
    simulator_->put("CameraRotation", 30);
    simulator_->put("Connected", true);
    const ObjectRef camera = linkedCCDSoft();
    for (const auto& [member, value] : {std::pair{"BinX", 2}, {"BinY", 2}, {"ExposureTime", 5}})
        camera->put(member, value);
    const double ra = std::fmod(
        simulator_->get("SiderealTime").toDouble() + 24 - simulator_->get("CameraAxisHourAngle").toDouble(),
        24);
    camera->call("TakeImage");
    pass(6);
    const ObjectRef image = classes_.create("CCDSoft.Image");
    image->call("AttachToActiveImager");
    EXPECT_EQ(refusal([&] { image->call("InsertWCS"); }), "ScaleInArcsecondsPerPixel is not set");
    image->put("ScaleInArcsecondsPerPixel", 7.1);
    image->put("FITSKeyword", "12 00 00", {"OBJCTRA"});
    EXPECT_THAT(refusal([&] { image->call("InsertWCS"); }), testing::StartsWith("Image link failed"));
    EXPECT_TRUE(image->get("FITSKeyword", {"CRVAL1"}).isEmpty());

    image->put("FITSKeyword", helpers::formatSeconds(ra, {" ", " ", ""}, 0), {"OBJCTRA"});
    image->put("FITSKeyword", "+40 30 00", {"OBJCTDEC"});
    image->call("InsertWCS");
    const auto keyword = [&](const char* name) { return image->get("FITSKeyword", {name}).toDouble(); };
    constexpr double kPixel = 7.19 / 3600;  // degrees
    EXPECT_NEAR(keyword("CRVAL1") / 15, ra, kPixel / 15);
    EXPECT_NEAR(std::hypot(keyword("CD1_1"), keyword("CD2_1")), kPixel, 0.001 * kPixel);
    EXPECT_NEAR(keyword("CD1_1") / keyword("CD2_2"), 1, 0.01) << "rows count downwards, columns westwards";
    EXPECT_NEAR(std::abs(std::atan2(keyword("CD2_1"), keyword("CD1_1")) / sky::kDegree), 150, 0.1);
    EXPECT_EQ(keyword("CRPIX1"), 348.5);
    EXPECT_EQ(image->get("FITSKeyword", {"RADESYS"}), Value("GAPPT"));
    for (const char* none : {"TOO-LONG1", "BLANK IN", ""})
        EXPECT_THAT(refusal([&] { image->put("FITSKeyword", 1, {none}); }), HasSubstr("is no FITS keyword"));
}

}  // namespace
}  // namespace vantrel::imaging
