// The window of the devices, as far as the camera is concerned, and the binnings that are offered.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program_world.h"
#include "support/plain_camera.h"

namespace vantrel::app {
namespace {

using platform::CameraFacts;
using platform::CameraLevel;
using platform::CameraRange;
using platform::CheckBox;
using platform::ComboBox;
using platform::Label;
using platform::TextBox;

struct CameraInWindows : testing::Test, test::ProgramWorld {
    void startWithCamera() {
        program.emplace(platform::Machine{loop,
                                          host,
                                          settings,
                                          folders,
                                          screen,
                                          dialogs,
                                          desktop,
                                          windows,
                                          {},
                                          nullptr,
                                          {},
                                          {},
                                          [this]() -> const platform::CameraHardware& { return camera; },
                                          [this] { ++adjusted; }});
        program->start();
    }
    std::string reading(const char* label) {
        return control<Label>(std::string("frmDevices.lblCamera") + label).caption();
    }
    std::string reachable() {
        std::string names;
        for (const char* name :
             {"txtCameraGain", "txtCameraOffset", "chkCameraCooling", "txtCameraTemperature"})
            if (screen.findControl(std::string("frmDevices.") + name)->reachable()) names += name + 9;
        return names;
    }
    std::vector<std::string> binnings() {
        std::vector<std::string> texts;
        for (const auto& item : control<ComboBox>("frmPixelScale.cmbCamBin").items())
            texts.push_back(item.text.english());
        return texts;
    }

    test::PlainCamera camera;
    int adjusted = 0;
};

TEST_F(CameraInWindows, SaysWhatItHasAndTakesNoMore) {
    const struct {
        CameraFacts facts;
        const char *gain, *offset, *cooling, *reachable;
    } cases[] = {
        {{}, "This camera has none", "This camera has none", "This camera has no cooler", ""},
        {{.temperature = 12.34, .canCool = false, .gain = CameraLevel{120}},
         "120",
         "This camera has none",
         "12.3 °C, no cooler",
         "Gain"},
        {{.temperature = -9.96,
          .canCool = true,
          .gain = CameraLevel{.value = 7, .canSet = false},
          .offset = CameraLevel{10, CameraRange{0, 100}}},
         "7, can't be set",
         "10, takes 0 to 100",
         "-10.0 °C",
         "OffsetCoolingTemperature"},
        {{.temperature = -10,
          .canCool = true,
          .cooling = true,
          .coolerPower = 39.6,
          .gain = CameraLevel{.value = 1, .names = {"ISO 100", "ISO 200"}}},
         "ISO 200",
         "This camera has none",
         "-10.0 °C, cooler at 40 %",
         "GainCoolingTemperature"},
        {{.temperature = 20, .canCool = true, .cooling = false, .coolerPower = 0},
         "This camera has none",
         "This camera has none",
         "20.0 °C, cooler off",
         "CoolingTemperature"},
        {{.cooling = true}, "This camera has none", "This camera has none", "cooler on", "Cooling"},
    };
    startWithCamera();
    form("frmDevices").show();
    EXPECT_EQ(reading("Cooling"), "The camera is not connected");
    EXPECT_EQ(reachable(), "GainOffsetCoolingTemperature");
    camera.on = true;
    for (const auto& c : cases) {
        camera.camera = c.facts;
        pass(1.1);
        EXPECT_EQ(reading("Gain"), c.gain);
        EXPECT_EQ(reading("Offset"), c.offset);
        EXPECT_EQ(reading("Cooling"), c.cooling);
        EXPECT_EQ(reachable(), c.reachable) << c.cooling;
    }
}

TEST_F(CameraInWindows, IsAdjustedWhenTheOperatorHasChangedSomething) {
    startWithCamera();
    form("frmDevices").show();
    auto& gain = control<TextBox>("frmDevices.txtCameraGain");
    gain.type("120");
    EXPECT_EQ(adjusted, 0) << "he is typing";
    gain.leave();
    EXPECT_EQ(adjusted, 1);
    gain.leave();
    EXPECT_EQ(adjusted, 1);
    control<CheckBox>("frmDevices.chkCameraCooling").check(1);
    EXPECT_EQ(adjusted, 2);
    control<TextBox>("frmDevices.txtCameraTemperature").type("-15");
    form("frmDevices").closeByOperator();
    EXPECT_EQ(adjusted, 3);
    form("frmDevices").show();
    form("frmDevices").closeByOperator();
    EXPECT_EQ(adjusted, 3);
    EXPECT_EQ(settings.read("Hosts", "CameraGain"), "120");
    EXPECT_EQ(settings.read("Hosts", "CameraCooling"), "1");
    EXPECT_EQ(settings.read("Hosts", "CameraTemperature"), "-15");
}

TEST_F(CameraInWindows, BinningsAreThoseThatItTakes) {
    useImagingProgram("BuiltIn");
    startWithCamera();
    camera.camera.maxBinX = camera.camera.maxBinY = 2;
    form("frmPixelScale").show();
    EXPECT_THAT(binnings(), testing::ElementsAre("1", "2", "3", "4")) << "until it is known";
    EXPECT_EQ(control<ComboBox>("frmPixelScale.cmbCamBin").text(), "3");
    camera.on = true;
    pass(1.1);
    EXPECT_THAT(binnings(), testing::ElementsAre("1", "2"));
    EXPECT_EQ(control<ComboBox>("frmPixelScale.cmbCamBin").text(), "2");
    EXPECT_EQ(settings.read("Solve", "CamBin"), "2");
    EXPECT_TRUE(
        hasLogged("Camera binning 3 is more than the camera takes: it is 2 from now on, and the image scale "
                  "has to be that "
                  "of it"));
    camera.camera.maxBinX = 8;
    camera.camera.maxBinY = 6;
    pass(1.1);
    EXPECT_EQ(binnings().size(), 6U);
    EXPECT_EQ(control<ComboBox>("frmPixelScale.cmbCamBin").text(), "2");
}

}  // namespace
}  // namespace vantrel::app
