#include "correction/plot_export.h"

#include <gmock/gmock.h>

#include "platform/queued_event_loop.h"
#include "platform/user_desktop.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/temp_folder.h"

namespace vantrel::correction {
namespace {

using namespace platform;
using testing::AllOf;
using testing::HasSubstr;

/// A desktop with a clipboard, unless it is taken away.
struct Clipboard : UserDesktop {
    using UserDesktop::UserDesktop;
    bool open(const std::string& /*file*/) override { return false; }
    bool copyText(const std::string& copied) override {
        text = copied;
        return there;
    }
    bool copyDial(const Drawing& drawing) override {
        shapes = drawing.shapes.size();
        return there;
    }
    bool there = true;
    std::string text;
    std::size_t shapes = 0;
};

class Export : public testing::Test {
  protected:
    Export() {
        window.show();
        folders.map("C:\\pictures", folder.path());
        settings.SaveSetting("PolarAlign", "ImagePath", "C:\\pictures");
        window.txtMagnitude.setText("21.07");
        window.lblRA_Unit.setCaption("arc-min");
        window.txtAltitudeError.setText("-11.07");
        window.txtElevationSigma.setText("3.1");
        window.lblElevation_Unit.setCaption("arc-min");
    }

    void draw() {
        window.picPolarPlot.setDrawing({.scale = {-2, 2, 2, -2},
                                        .shapes = {Circle{0, 0, 0.8}, Circle{1, -1, 0.1, true, color::kRed},
                                                   DrawnText{-0.1, 1.9, "Up & <away>"}, Line{-1, 0, 1, 0},
                                                   Ellipse{1, 1, 0.4, 0.2, 30}, Cross{1, 1, 0.1}}});
    }

    std::string told() const { return window.lblExport.caption(); }

    vantrel::test::TempFolder folder;
    FolderMap folders{folder.path()};
    Clipboard desktop{folders, ""};
    VirtualTime time{*parseInstant("2026-11-24T20:00:10Z"), std::chrono::hours{0}};
    vantrel::test::MemorySettingsPort settings;
    vantrel::test::RecordingLog log;
    Screen screen{{0, 0, 1920, 1040}};
    frmPolarPlot window{screen};
    PlotExport plotExport{window, desktop, folders, time, settings, log};
};

TEST_F(Export, CopiesPictureAndFigures) {
    draw();
    window.mnuCopyPicture.click();
    EXPECT_EQ(desktop.shapes, 6u);
    EXPECT_EQ(told(), "The picture is copied");
    window.mnuCopyValues.click();
    EXPECT_THAT(desktop.text,
                AllOf(HasSubstr("Distance from the pole: 21.07 arc-min\r\n"),
                      HasSubstr("Elevation: -11.07 arc-min ± 3.1″\r\n"), HasSubstr("Azimuth:  \r\n")));
    EXPECT_TRUE(log.has("The values are copied"));
    desktop.there = false;
    window.mnuCopyValues.click();
    EXPECT_EQ(told(), "There is no clipboard here");
}

TEST_F(Export, SavesIntoTheImageFolder) {
    window.mnuSaveSvg.click();
    EXPECT_EQ(told(), "There is no measurement to save");
    draw();
    window.mnuSavePng.click();
    EXPECT_EQ(told(), "Pictures of this kind can't be made here") << "nothing paints";
    window.mnuSaveSvg.click();
    EXPECT_EQ(told(), "Saved as C:\\pictures\\PolarPlot_2026-11-24_20_00_10.svg");
    const std::string svg = vantrel::test::contentsOf(folder.path() / "PolarPlot_2026-11-24_20_00_10.svg");
    EXPECT_THAT(svg, AllOf(HasSubstr(R"(width="600.00" height="600.00")"),
                           HasSubstr(R"(<circle cx="300.00" cy="300.00" r="120.00" fill="none")"),
                           HasSubstr(R"(cx="450.00" cy="450.00" r="15.00" fill="#ff0000")"),
                           HasSubstr("Up &amp; &lt;away>"), HasSubstr("rotate(30.00)"),
                           HasSubstr(R"(<line x1="435.00" y1="150.00" x2="465.00" y2="150.00")")));
    settings.SaveSetting("PolarAlign", "ImagePath", "C:\\nowhere");
    window.mnuSaveSvg.click();
    EXPECT_EQ(told(), "C:\\nowhere\\PolarPlot_2026-11-24_20_00_10.svg can't be written");
}

}  // namespace
}  // namespace vantrel::correction
