// vantrel-pictures FOLDER [LANGUAGE]: the windows' pictures for the documentation, taken while the program
// measures with the built-in simulator, and the imaging program's window with each of the marks. With
// QT_SCALE_FACTOR set, the names end in the scale. In English, unless another language is asked for.
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QTabWidget>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

#include "correction/image_overlays.h"
#include "correction/star_guide.h"
#include "correction/stars/star_under_point.h"
#include "fits/fits_writing.h"
#include "qt/big_digits.h"
#include "qt/night.h"
#include "qt/offscreen.h"
#include "qt/qt_dialogs.h"
#include "qt/translation.h"
#include "sky/compact_catalog.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/star_field.h"

namespace vantrel::qt {
namespace {

int distance(QRgb a, QRgb b) {
    return std::max(
        {std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
}

/// The picture in its most frequent colours that are so far apart, which keeps the file small.
QImage withPalette(const QImage& picture, int apart) {
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    std::map<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) ++counts[image.pixel(x, y)];
    std::vector<std::pair<int, QRgb>> byCount;
    byCount.reserve(counts.size());
    for (const auto& [color, count] : counts) byCount.emplace_back(count, color);
    std::sort(byCount.rbegin(), byCount.rend());
    constexpr int kColors = 256;
    QList<QRgb> palette;
    for (const auto& [count, color] : byCount) {
        const auto near = [color = color, apart](QRgb taken) { return distance(taken, color) < apart; };
        if (palette.size() < kColors && std::ranges::none_of(palette, near)) palette.push_back(color);
    }
    return image.convertToFormat(QImage::Format_Indexed8, palette, Qt::ThresholdDither | Qt::AvoidDither);
}

constexpr int kNoisy = 16;  // apart enough for colours of pictures whose noise takes most room

void save(QWidget& window, const QString& path, int apart) {
    const int percent = qRound(window.devicePixelRatio() * 100);
    const QString scale = percent == 100 ? QString() : "-" + QString::number(percent);
    const QString file = path + scale + ".png";
    if (!withPalette(window.grab().toImage(), apart).save(file, "PNG", 0))
        throw std::runtime_error("can't write " + file.toStdString());
    std::printf("%s\n", qPrintable(file));
}

class Pictures {
  public:
    Pictures(Night& night, QString folder, bool byNight)
        : night_(night), folder_(std::move(folder)), look_(byNight ? "-night" : "-day") {}

    /// The window as it looks now; of the main window the tab.
    void take(const char* formName, const QString& name, int tab = 0, int apart = 1) const {
        FormWindow& window = night_.program.window(formName);
        window.resize(window.sizeHint().expandedTo(window.minimumSizeHint()).expandedTo(window.size()));
        if (auto* const tabs = window.findChild<QTabWidget*>()) tabs->setCurrentIndex(tab);
        takeWidget(window, name, apart);
    }
    void takeWidget(QWidget& widget, const QString& name, int apart = 1) const {
        QApplication::processEvents();
        save(widget, folder_ + "/" + name + look_, apart);
    }

  private:
    Night& night_;
    QString folder_;
    QString look_;
};

/// The small windows and dialogs, as they open.
void takeSmallWindows(Night& night, const Pictures& pictures) {
    for (const auto& [form, name] : {std::pair{"frmAbout", "about"},
                                     {"frmOptions", "options"},
                                     {"frmDevices", "devices"},
                                     {"frmPixelScale", "pixel-scale"},
                                     {"frmSelectCCSoftware", "imaging-software"}}) {
        night.program.screen().find(form)->show();
        pictures.take(form, name);
        night.program.screen().find(form)->unload();
    }
    QtDialogs dialogs(night.user.folders, "C:\\");
    const auto takeDialog = [&](const char* name) {
        QTimer::singleShot(0, [&pictures, name] {
            auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            pictures.takeWidget(*dialog, name);
            dialog->reject();
        });
    };
    takeDialog("chooser");
    dialogs.choose(platform::Words::tr("Telescope Chooser"),
                   {{"AxisSimulator.Telescope", "Simulated mount with a polar axis error and a camera"},
                    {"ScopeSim.Telescope", "Simulated equatorial mount"}},
                   "AxisSimulator.Telescope");
    takeDialog("chooser-devices");
    dialogs.choose(platform::Words::tr("Telescope Chooser"),
                   {{"AxisSimulator.Telescope", "Simulated mount with a polar axis error and a camera"},
                    {"ScopeSim.Telescope", "Simulated equatorial mount"},
                    {"Indi", "EQMod Mount (INDI, raspberrypi:7624)"},
                    {"Alpaca", "The mount (Alpaca, 192.168.4.1:11111)"}},
                   "Indi");
    takeDialog("camera");
    dialogs.choose("Camera",
                   {{"Simulated", "Simulated camera"},
                    {"Indi", "ZWO CCD ASI120MM (INDI, raspberrypi:7624)"},
                    {"Alpaca", "The camera (Alpaca, 192.168.4.1:11111)"}},
                   "Indi");
    takeDialog("message");
    dialogs.messageBox("Vantrel", "Vantrel is already running", platform::Dialogs::Icon::kExclamation,
                       platform::Dialogs::Buttons::kOk);
}

void takePictures(const QString& folder, bool byNight) {
    Night night;
    night.theme.setNight(byNight);
    if (byNight) night.user.settings.write("PolarAlign", "GreenColors", "1");
    const Pictures pictures(night, folder, byNight);
    const auto shown = [&](const char* form) { return night.program.window(form).isVisible(); };
    const auto press = [&](const char* button) {
        dynamic_cast<platform::Button&>(*night.program.screen().findControl(button)).click();
    };
    const auto label = [&](const char* name) -> platform::Label& {
        return dynamic_cast<platform::Label&>(*night.program.screen().findControl(name));
    };
    const auto choose = [&](const char* option) {
        night.loop.post([&night, option] {
            dynamic_cast<platform::OptionButton&>(*night.program.screen().findControl(option)).click();
        });
    };
    const auto says = [&](const char* text) { return night.instructions().find(text) != std::string::npos; };
    night.pass({
        {[&] { return shown("frmPopupMsg"); }, [&] { pictures.take("frmPopupMsg", "popup"); }},
        {[&] { return night.started(); }, [&] { night.program.screen().find("frmSimulator")->show(); }},
        {[&] { return shown("frmSimulator"); },
         [&] {
             pictures.take("frmSimulator", "simulator-camera", 1);
             pictures.take("frmSimulator", "simulator-faults", 2);
             press("frmSimulator.cmdCenterStar");
         }},
        {[&] { return label("frmSimulator.lblStatus").caption().ends_with("of the picture."); },
         [&] {
             pictures.take("frmSimulator", "simulator");
             press("frmSimulator.cmdSync");
             // The folders of this run are temporary ones.
             label("frmMain.lblImageFolder").setCaption("/home/observer/Documents/Vantrel");
             label("frmMain.lblLogFolder").setCaption("/home/observer/Documents/Vantrel/Message Logs");
             pictures.take("frmMain", "set-up", 1);
             pictures.take("frmMain", "plate-solve", 2);
             pictures.take("frmMain", "run");
             night.typeInto("txtDeltaRA", "15");
             night.click("cmdRun");
         }},
        {[&] { return night.isLit("lblFrame2") && night.isLit("lblExpose"); },
         [&] { pictures.take("frmMain", "run"); }},
        {[&] { return night.enabled("cmdNext"); }, [&] { night.click("cmdPolarPlot"); }},
        {[&] { return shown("frmPolarPlot"); },
         [&] {
             pictures.take("frmMain", "measured");
             pictures.take("frmPolarPlot", "polar-plot");
             for (const auto& [form, name] :
                  {std::pair{"frmPlates", "plates"}, {"frmPreflight", "before-the-slew"}}) {
                 night.program.screen().find(form)->show();
                 pictures.take(form, name);
                 night.program.screen().find(form)->unload();
             }
             pictures.take("frmLog", "log");
             pictures.take("frmTelescope", "telescope");
             takeSmallWindows(night, pictures);
             pictures.take("frmMain", "measured");
             night.click("cmdNext");
         }},
        {[&] { return says("place") && night.isLit("lblExpose"); },
         [&] {
             pictures.take("frmMain", "placing");
             night.click("cmdNext");
         }},
        {[&] { return says("Center Star") && night.isLit("lblExpose"); },
         [&] {
             pictures.take("frmMain", "centering");
             night.click("cmdStop");
         }},
        {[&] { return night.enabled("cmdRun"); }, [&] { choose("frmMain.optImagingSoftware(0)"); }},
        {[&] { return night.enabled("optPlateSolveMethod(1)"); },
         [&] { choose("frmMain.optPlateSolveMethod(1)"); }},
        {[&] { return night.program.screen().findControl("frmMain.frameTheSky")->visible(); },
         [&] { pictures.take("frmMain", "image-link", 2); }},
    });
}

/// Measurements of three nights before, as an observer gets better at it.
void writeHistory(const std::filesystem::path& file) {
    std::ofstream table(file, std::ios::binary);
    table << "utc,telescope,latitude_deg,shown,amplitude_deg,angle_deg,sigma_arcsec,agreement\r\n";
    const auto add = [&table](const char* when, double arcMinutes, int angle, double sigma) {
        table << when << ",Polar Axis Simulator,50,least squares," << arcMinutes / 60 << ',' << angle << ','
              << sigma << ",consistent\r\n";
    };
    add("2026-11-17T19:12:00Z", 84, 70, 21);
    add("2026-11-17T19:40:00Z", 12, 95, 12);
    add("2026-11-17T20:05:00Z", 2.6, 110, 9);
    add("2026-11-20T18:31:00Z", 1.7, 60, 20);
    add("2026-11-20T18:55:00Z", 0.8, 75, 12);
    add("2026-11-23T19:02:00Z", 3.1, 30, 14);
    add("2026-11-23T19:20:00Z", 1.2, 20, 12);
    add("2026-11-23T19:45:00Z", 0.6, 350, 11);
}

/// A fine measurement through the air: estimate, both poles, and those of before.
void takeFinePictures(const QString& folder, bool byNight) {
    Night night;
    night.theme.setNight(byNight);
    if (byNight) night.user.settings.write("PolarAlign", "GreenColors", "1");
    night.user.settings.write("PolarAlign", "ShowHistory", "1");
    const Pictures pictures(night, folder, byNight);
    night.pass({{[&] { return night.started(); },
                 [&] {
                     const auto logs = night.user.settings.read("PolarAlign", "LogPath");
                     writeHistory(night.user.folders.real(*logs) / "Measurements.csv");
                     night.turnAxis(0.5, 0.6);
                     night.program.automation().create("AxisSimulator.Telescope")->put("Refraction", true);
                     night.typeInto("txtDeltaRA", "9");
                     night.click("cmdRun");
                 }},
                {[&] { return night.enabled("cmdNext"); },
                 [&] {
                     night.program.screen().find("frmPolarPlot")->show();
                     night.program.screen().find("frmHistory")->show();
                 }},
                {[&] { return night.program.window("frmHistory").isVisible(); },
                 [&] {
                     pictures.take("frmPolarPlot", "polar-plot-fine");
                     pictures.take("frmHistory", "measurements");
                     night.click("cmdSkip");
                 }}});
}

/// Live adjusting, where the adjusters can be told apart.
void takeAdjusting(const QString& folder, bool byNight) {
    Night night;
    night.theme.setNight(byNight);
    if (byNight) night.user.settings.write("PolarAlign", "GreenColors", "1");
    night.user.settings.write("PolarAlign", "AzimuthPerTurn", "24");
    const Pictures pictures(night, folder, byNight);
    const auto& age = dynamic_cast<platform::Label&>(*night.program.screen().findControl("frmAdjust.lblAge"));
    night.pass({{[&] { return night.started(); },
                 [&] {
                     night.turnAxis(18, -11);
                     const auto mount = night.program.automation().create("AxisSimulator.Telescope");
                     mount->call("SlewToCoordinates", {mount->get("SiderealTime").toDouble() - 0.5, 20.0});
                     night.typeInto("txtDeltaRA", "9");
                     night.click("cmdRun");
                 }},
                {[&] { return night.enabled("cmdAdjust"); }, [&] { night.click("cmdAdjust"); }},
                {[&] { return !age.caption().empty(); },
                 [&] {
                     pictures.take("frmAdjust", "adjust");
                     auto* const digits = dynamic_cast<BigDigits*>(
                         night.program.window("frmAdjust").findChild<QWidget*>("bigDigits"));
                     digits->toggle();
                     QApplication::processEvents();
                     pictures.take("frmAdjust", "adjust-digits");
                     digits->toggle();
                     night.click("cmdSkip");
                 }}});
}

/// A picture of the Pleiades' surroundings, solved; and what a first start begins with.
void takeFirstPictures(const QString& folder, bool byNight) {
    Night night;
    night.theme.setNight(byNight);
    const Pictures pictures(night, folder, byNight);
    test::StarField field;
    field.width = 1200;
    field.height = 900;
    field.wcs = test::wcsFor(1200, 900, {56.9, 24.1}, 9, 172, false);
    field.tenthMagnitude = 20'000;
    const auto file = night.home.path() / "Pleiades.fits";
    fits::writeFits(file, 1200, 900, test::drawField(sky::CompactCatalog::openBuiltIn().get(), field),
                    {{"OBJCTRA", std::string("03 48 00")},
                     {"OBJCTDEC", std::string("+24 06 00")},
                     {"FOCALLEN", 88.0},
                     {"XPIXSZ", 3.8}});
    const auto control = [&](const char* name) { return night.program.screen().findControl(name); };
    auto& outcome = dynamic_cast<platform::Label&>(*control("frmSolvePicture.lblOutcome"));
    night.firstStart = true;
    night.pass({{[&] { return night.program.window("frmWelcome").isVisible() && night.started(); },
                 [&] {
                     pictures.take("frmWelcome", "welcome");
                     dynamic_cast<platform::Button&>(*control("frmWelcome.cmdJustSolve")).click();
                 }},
                {[&] { return night.program.window("frmSolvePicture").isVisible(); },
                 [&] {
                     auto& box = dynamic_cast<platform::TextBox&>(*control("frmSolvePicture.txtFile"));
                     box.type(file.string());
                     dynamic_cast<platform::Button&>(*control("frmSolvePicture.cmdSolve")).click();
                     box.setText("Documents/Pleiades.fits");  // the folders of this run are temporary ones
                 }},
                {[&] { return outcome.caption().starts_with("Solved"); },
                 [&] { pictures.take("frmSolvePicture", "solve-picture", 0, kNoisy); }}});
}

/// What the correction draws into the picture of the simulator's camera, as the observer sees it.
void takeImagePictures(const QString& folder, const char* look) {
    Night night;
    const std::string name = look;
    night.theme.setNight(name != "day");
    ImageWindow& window = night.program.imageWindow();
    window.findChild<QAction*>("green")->setChecked(name == "green");
    window.resize(600, 560);

    const auto simulator = night.program.automation().create("AxisSimulator.Telescope");
    simulator->put("Connected", true);
    simulator->put("Tracking", true);
    simulator->put("SkyLevel", 200.0);
    simulator->call("SlewToCoordinates", {5.6, -1.0});
    test::MemorySettingsPort settings;
    settings.root.write("PolarAlign", "CrossHairWidth", "2");
    test::RecordingLog log;
    correction::OpenImage image(night.program.automation(), [] { return "MaxIm"; });
    correction::ImageOverlays marks(image, settings, log);
    const auto take = [&](const char* mark, const std::function<void()>& draw) {
        simulator->call("Expose");
        draw();
        window.show();
        QApplication::processEvents();
        night.loop.yield();
        save(window, folder + "/image-" + mark + "-" + look, kNoisy);
    };
    take("cross-hair", [&] { marks.CrossHair(std::nullopt); });
    take("rectangle", [&] { marks.DrawCenteredRectangles(0.2); });
    platform::Screen aside{{0, 0, 800, 600}};
    platform::Form form(aside, "frmMain", "", {});
    correction::GuidancePanel panel(form);
    correction::StarGuide guide(panel, image);
    window.followGuide(guide);
    take("line", [&] {
        const auto star = correction::measureStarAt(*image.access().pixels(), 158, 368).value();
        correction::CorrectionMarks places{.StarX = static_cast<float>(star.x),
                                           .StarY = static_cast<float>(star.y),
                                           .TargetX = 480,
                                           .TargetY = 700,
                                           .arcMinutesPerPixel = 0.06};
        marks.DrawLineOnImage(static_cast<int>(star.x), static_cast<int>(star.y), 480, 700);
        marks.CrossHair(engine::PixelPosition{480, 700});
        guide.begin(places);
    });
    if (!log.lines.empty()) throw std::runtime_error(log.lines.front());
}

}  // namespace
}  // namespace vantrel::qt

int main(int argc, char** argv) {
    const auto display = vantrel::qt::useOffscreenDisplay();
    QApplication application(argc, argv);
    QApplication::setFont(QFont("DejaVu Sans", 9));  // the same picture on every machine
    const QString folder = argc > 1 ? argv[1] : ".";
    try {
        QDir().mkpath(folder);
        if (argc > 2) vantrel::qt::speak(application, QLocale(argv[2]));
        for (const bool byNight : {false, true}) {
            vantrel::qt::takePictures(folder, byNight);
            vantrel::qt::takeFinePictures(folder, byNight);
            vantrel::qt::takeFirstPictures(folder, byNight);
            vantrel::qt::takeAdjusting(folder, byNight);
        }
        for (const char* look : {"day", "night", "green"}) vantrel::qt::takeImagePictures(folder, look);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantrel-pictures: %s\n", error.what());
        return 1;
    }
}
