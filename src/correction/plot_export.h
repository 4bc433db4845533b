// Takes the polar plot and its values out of the program: to the clipboard, or into the image folder.
#pragma once

#include <string>

#include "correction/frm_polar_plot.h"
#include "engine/ports.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/folder_map.h"

namespace vantrel::correction {

/// What became of it is told in the window and in the log.
class PlotExport {
  public:
    PlotExport(frmPolarPlot& window, platform::Desktop& desktop, const platform::FolderMap& folders,
               const platform::Clock& clock, engine::SettingsPort& settings, engine::LogPort& log);

  private:
    void copyPicture();
    void copyValues();
    void save(const std::string& kind, const std::string& contents);
    void tell(const std::string& words);
    std::string values() const;

    frmPolarPlot& window_;
    platform::Desktop& desktop_;
    const platform::FolderMap& folders_;
    const platform::Clock& clock_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
};

}  // namespace vantrel::correction
