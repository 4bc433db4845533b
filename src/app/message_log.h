// The message log: every line since the start, in the Log window and in a dated file.
#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "app/frm_log.h"
#include "engine/ports.h"
#include "platform/clock.h"
#include "platform/folder_map.h"
#include "platform/signal.h"

namespace vantrel::app {

class MessageLog : public engine::LogPort {
  public:
    MessageLog(const platform::Clock& clock, const platform::FolderMap& folders, frmLog& window)
        : clock_(clock), folders_(folders), window_(window) {}

    /// Adds "HH:mm:ss" (local time), three blanks and the text to the window and the file. Never fails;
    /// without a writable file the line is in the window only. Loads the window.
    void AddToLog(const std::string& text) override;
    /// Silent, it takes nothing: the program is ending and procedures are being cut off.
    void setSilent(bool silent) { silent_ = silent; }

    /// Makes sure that the folder exists and, unless it is the current one, opens a new log file in it. An
    /// empty folder is ignored. The operator hears of a folder that can't be created.
    void SetLogStream(const std::string& folder, engine::MessagePort& messages);

    /// Every entry so far: time, three blanks, text.
    const std::vector<std::string>& lines() const { return lines_; }

    platform::Signal<const std::string&> lineAdded;

    /// Lets go of the file and leaves the window alone from now on: the program is ending.
    void release();

  private:
    const platform::Clock& clock_;
    const platform::FolderMap& folders_;
    frmLog& window_;
    std::vector<std::string> lines_;
    std::string shown_;  // the end of all lines, as much as the window shows
    std::string folder_;
    std::ofstream file_;
    bool silent_ = false;
    bool released_ = false;
};

}  // namespace vantrel::app
