#include "app/message_log.h"

#include "app/folders.h"
#include "platform/text.h"

namespace vantrel::app {

using namespace platform;

namespace {

constexpr std::size_t kShownCharacters = 30000;

}  // namespace

void MessageLog::AddToLog(const std::string& text) {
    if (silent_) return;
    const std::string line = formatTime(civilLocal(clock_.utc()), "HH:mm:ss") + "   " + text;
    lines_.push_back(line);
    if (!released_) {
        shown_ = lastCharacters(shown_ + kCrLf + line, kShownCharacters);
        window_.load();
        window_.txtLog.setText(shown_);
        file_.clear();  // a disk that was full may have room again
        file_ << line << kCrLf << std::flush;
    }
    lineAdded.emit(line);
}

void MessageLog::SetLogStream(const std::string& folder, engine::MessagePort& messages) {
    if (folder.empty()) return;
    if (!FolderIsWritable(folders_, folder)) MakeFolderPath(folders_, folder, messages);
    if (folder == folder_) return;
    const std::string name = formatTime(civilLocal(clock_.utc()), "yyyyMMdd_HHmmss") + ".log";
    file_ = std::ofstream(folders_.real(joinFolder(folder, name)), std::ios::binary | std::ios::trunc);
    folder_ = file_ ? folder : "";
}

void MessageLog::release() {
    released_ = true;
    file_.close();
}

}  // namespace vantrel::app
