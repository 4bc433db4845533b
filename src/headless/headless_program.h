// The whole program with the built-in observatory, operated by commands.
#pragma once

#include <functional>
#include <memory>

#include "app/application.h"
#include "app/startup.h"
#include "headless/command_source.h"
#include "headless/headless_desktop.h"
#include "headless/operated_program.h"
#include "headless/options.h"
#include "headless/scripted_dialogs.h"
#include "headless/session.h"
#include "platform/instance_guard.h"
#include "platform/recording_host.h"
#include "platform/user_machine.h"
#include "station/station.h"

namespace vantrel::headless {

/// The application as a session operates it.
class OperatedApplication : public OperatedProgram {
  public:
    OperatedApplication(const platform::Machine& machine, platform::InstanceGuard& guard);

    void start() override;
    void close() override { application_.close(); }
    bool ended() const override { return refused_ || application_.ended(); }
    bool asksDuringStart() const override;
    const std::vector<std::string>& logLines() const override;
    const std::vector<app::PopupMessages::Shown>& popups() const override;

    bool stopping() const { return application_.stopping(); }
    void tell(const std::string& line) { application_.log().AddToLog(line); }
    platform::PictureFacts pictureFacts() { return application_.pictureFacts(); }

    /// Inside a catch block.
    void reportFailure() { application_.reportFailure("event loop"); }

  private:
    platform::Machine machine_;
    platform::InstanceGuard& guard_;
    mutable app::Application application_;  // hands out its log to readers as well
    bool refused_ = false;                  // another instance runs
};

/// Everything that one run needs, from the files of its user to the session.
class HeadlessProgram {
  public:
    /// The clock, the commands and the replies must outlive this. Throws platform::UsageError for classes
    /// that don't exist, std::runtime_error when a file can't be used.
    HeadlessProgram(const Options& options, platform::TimeKeeper& time, CommandSource& commands,
                    ReplySink& replies);

    /// From the first command to the end of the program; true when it ended as it should. The program closes
    /// when `endRequested` says so, as at the end of the commands.
    bool run(const std::function<bool()>& endRequested);

    /// True while a new command would be carried out at once.
    bool wantsInput() const { return session_.wantsInput(); }

  private:
    void preloadSettings(const std::filesystem::path& file);
    void openImagingProgram();
    void restoreDevices();
    void keepInstalled(const std::vector<std::string>& progIds);

    Options options_;
    platform::QueuedEventLoop loop_;
    platform::UserPaths paths_;
    platform::UserMachine user_;
    platform::LockFileGuard guard_;
    ScriptedDialogs dialogs_;
    HeadlessDesktop desktop_;
    platform::Screen screen_;
    station::Station station_;
    platform::RecordingHost automation_;
    OperatedApplication application_;
    Session session_;
};

}  // namespace vantrel::headless
