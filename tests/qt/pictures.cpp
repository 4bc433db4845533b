// vantrel-pictures FOLDER: the windows' pictures for the documentation, taken while the program measures with
// the built-in simulator. With QT_SCALE_FACTOR set, the names end in the scale.
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QTabWidget>
#include <algorithm>
#include <cstdio>
#include <map>

#include "qt/night.h"

namespace vantrel::qt {
namespace {

/// The picture in its 256 most frequent colours, which keeps the file small.
QImage withPalette(const QImage& picture) {
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    std::map<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) ++counts[image.pixel(x, y)];
    std::vector<std::pair<int, QRgb>> byCount;
    for (const auto& [color, count] : counts) byCount.emplace_back(count, color);
    std::sort(byCount.rbegin(), byCount.rend());
    constexpr std::size_t kColors = 256;
    QList<QRgb> palette;
    for (std::size_t i = 0; i < std::min(kColors, byCount.size()); ++i) palette.push_back(byCount[i].second);
    return image.convertToFormat(QImage::Format_Indexed8, palette, Qt::ThresholdDither | Qt::AvoidDither);
}

class Pictures {
  public:
    Pictures(Night& night, QString folder, bool byNight)
        : night_(night), folder_(std::move(folder)), look_(byNight ? "-night" : "-day") {}

    /// The window as it looks now; of the main window the tab.
    void take(const char* formName, const QString& name, int tab = 0) const {
        FormWindow& window = night_.program.window(formName);
        window.resize(window.sizeHint().expandedTo(window.minimumSizeHint()).expandedTo(window.size()));
        if (auto* const tabs = window.findChild<QTabWidget*>()) tabs->setCurrentIndex(tab);
        QApplication::processEvents();
        const int percent = qRound(window.devicePixelRatio() * 100);
        const QString scale = percent == 100 ? QString() : "-" + QString::number(percent);
        const QString file = folder_ + "/" + name + look_ + scale + ".png";
        const QImage image = withPalette(window.grab().toImage());
        if (!image.save(file, "PNG", 0)) throw std::runtime_error("can't write " + file.toStdString());
        std::printf("%s\n", qPrintable(file));
    }

  private:
    Night& night_;
    QString folder_;
    QString look_;
};

void takePictures(const QString& folder, bool byNight) {
    Night night;
    night.theme.setNight(byNight);
    if (byNight) night.user.settings.write("PolarAlign", "GreenColors", "1");
    const Pictures pictures(night, folder, byNight);
    const auto shown = [&](const char* form) { return night.program.window(form).isVisible(); };
    const auto press = [&](const char* button) {
        dynamic_cast<platform::Button&>(*night.program.screen().findControl(button)).click();
    };
    const auto says = [&](const char* text) { return night.instructions().find(text) != std::string::npos; };
    night.pass({
        {[&] { return shown("frmPopupMsg"); }, [&] { pictures.take("frmPopupMsg", "popup"); }},
        {[&] { return night.started(); }, [&] { night.program.screen().find("frmSimulator")->show(); }},
        {[&] { return shown("frmSimulator"); },
         [&] {
             pictures.take("frmSimulator", "simulator-camera", 1);
             press("frmSimulator.cmdCenterStar");
         }},
        {[&] {
             const auto& window = night.program.window("frmSimulator");
             return widgetOf<QLabel>(window, "lblStatus").text().endsWith("in the middle of the picture.");
         },
         [&] {
             pictures.take("frmSimulator", "simulator");
             press("frmSimulator.cmdSync");
             night.typeInto("txtDeltaRA", "15");
             night.click("cmdRun");
         }},
        {[&] { return night.isLit("lblFrame2") && night.isLit("lblExpose"); },
         [&] { pictures.take("frmMain", "run"); }},
        {[&] { return night.enabled("cmdNext"); }, [&] { night.click("cmdPolarPlot"); }},
        {[&] { return shown("frmPolarPlot"); },
         [&] {
             pictures.take("frmMain", "measured");
             pictures.take("frmMain", "set-up", 1);
             pictures.take("frmMain", "plate-solve", 2);
             pictures.take("frmPolarPlot", "polar-plot");
             pictures.take("frmLog", "log");
             pictures.take("frmTelescope", "telescope");
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
        {[&] { return night.enabled("cmdRun"); }, [] {}},
    });
}

}  // namespace
}  // namespace vantrel::qt

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setFont(QFont("DejaVu Sans", 9));  // the same picture on every machine
    const QString folder = argc > 1 ? argv[1] : ".";
    try {
        QDir().mkpath(folder);
        for (const bool byNight : {false, true}) vantrel::qt::takePictures(folder, byNight);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantrel-pictures: %s\n", error.what());
        return 1;
    }
}
