#include "correction/plot_export.h"

#include <fstream>

#include "platform/svg.h"
#include "platform/text.h"

namespace vantrel::correction {

PlotExport::PlotExport(frmPolarPlot& window, platform::Desktop& desktop, const platform::FolderMap& folders,
                       const platform::Clock& clock, engine::SettingsPort& settings, engine::LogPort& log)
    : window_(window), desktop_(desktop), folders_(folders), clock_(clock), settings_(settings), log_(log) {
    constexpr double kWidth = 600;
    window_.mnuCopyPicture.onClick = [this] { copyPicture(); };
    window_.mnuCopyValues.onClick = [this] { copyValues(); };
    window_.mnuSavePng.onClick = [this] { save("png", desktop_.pngOfDial(window_.picPolarPlot.drawing())); };
    window_.mnuSaveSvg.onClick = [this] {
        save("svg", platform::svgOf(window_.picPolarPlot.drawing(), kWidth));
    };
}

void PlotExport::copyPicture() {
    tell(desktop_.copyDial(window_.picPolarPlot.drawing()) ? "The picture is copied"
                                                           : "There is no clipboard here");
}

void PlotExport::copyValues() {
    tell(desktop_.copyText(values()) ? "The values are copied" : "There is no clipboard here");
}

/// Under the name of its minute; a second picture of that minute takes the first one's place.
void PlotExport::save(const std::string& kind, const std::string& contents) {
    if (window_.picPolarPlot.drawing().shapes.empty()) return tell("There is no measurement to save");
    if (contents.empty()) return tell("Pictures of this kind can't be made here");
    const std::string name = "PolarPlot_" +
                             platform::formatTime(platform::civilLocal(clock_.utc()), "yyyy-MM-dd_HH_mm") +
                             "." + kind;
    const std::string file =
        platform::joinFolder(settings_.GetSetting("PolarAlign", "ImagePath", "C:"), name);
    std::ofstream out(folders_.real(file), std::ios::binary);
    out << contents;
    out.close();
    tell(out ? "Saved as " + file : file + " can't be written");
}

void PlotExport::tell(const std::string& words) {
    window_.lblExport.setCaption(words);
    log_.AddToLog(words);
}

std::string PlotExport::values() const {
    const auto line = [](const char* name, const platform::TextBox& value, const std::string& unit) {
        return name + (": " + value.text()) + " " + unit + "\r\n";
    };
    const auto sigma = [](const platform::TextBox& box) {
        return box.text().empty() ? "" : " ± " + box.text() + "″";
    };
    return line("Distance from the pole", window_.txtMagnitude, window_.lblRA_Unit.caption()) +
           line("Angle", window_.txtAngle, "degrees counter-clockwise from up") +
           line("Elevation", window_.txtAltitudeError,
                window_.lblElevation_Unit.caption() + sigma(window_.txtElevationSigma)) +
           line("Azimuth", window_.txtAzimuthError,
                window_.lblAzimuth_Unit.caption() + sigma(window_.txtAzimuthSigma));
}

}  // namespace vantrel::correction
