// A program with one window and one outside program, just large enough to be operated.
#pragma once

#include <memory>

#include "headless/session.h"
#include "platform/dispatch_object.h"
#include "script_lines.h"

namespace vantrel::headless::test {

using namespace platform;

struct SmallWindow : Form {
    explicit SmallWindow(Screen& screen)
        : Form(screen, "frmMain", "Small", {10, 20, 300, 200}),
          cmdCount(*this, "cmdCount", "Count"),
          cmdWork(*this, "cmdWork", "Work"),
          cmdOff(*this, "cmdOff", "Off"),
          txtCount(*this, "txtCount", "0"),
          txtDigits(*this, "txtDigits", "1"),
          chkLight(*this, "chkLight", "Light"),
          optOne(*this, group, "optWay(0)", "One"),
          optTwo(*this, group, "optWay(1)", "Two"),
          cmbColor(*this, "cmbColor"),
          mnuExit(*this, "mnuExit", "Exit"),
          picPlot(*this, "picPlot") {
        cmdOff.setEnabled(false);
        txtDigits.keyFilter = [](int code) { return code == 8 || (code >= '0' && code <= '9') ? code : 0; };
        cmbColor.setItems({{"red", 1}, {"green", 2}});
    }

    Button cmdCount, cmdWork, cmdOff;
    TextBox txtCount, txtDigits;
    CheckBox chkLight;
    OptionGroup group;
    OptionButton optOne, optTwo;
    ComboBox cmbColor;
    MenuItem mnuExit;
    PictureBox picPlot;
};

class SmallMount : public DispatchObject {
  public:
    explicit SmallMount(double& ra) : DispatchObject("Small.Mount") {
        property(
            "RightAscension", [&ra] { return Value(ra); }, [&ra](const Value& v) { ra = v.toDouble(); });
        property("Itself", [&ra] { return ObjectRef(std::make_shared<SmallMount>(ra)); });
        method("Slew", [&ra](const Arguments& arguments) {
            ra = argument(arguments, 0).toDouble();
            return Value();
        });
    }
};

class SmallProgram : public OperatedProgram {
  public:
    SmallProgram(QueuedEventLoop& loop, Screen& screen, AutomationHost& automation)
        : loop_(loop), automation_(automation), window(screen), question(screen, "frmQuestion", "", {}) {
        window.cmdCount.onClick = [this] {
            window.txtCount.setText(std::to_string(std::stoi(window.txtCount.text()) + 1));
        };
        window.cmdWork.onClick = [this] { work(); };
        window.txtCount.onChange = [this] { log("count " + window.txtCount.text()); };
        window.txtCount.onLeave = [this] { log("left"); };
        window.chkLight.onClick = [this] { log("light " + std::to_string(window.chkLight.value())); };
        window.optTwo.onClick = [this] { log("two"); };
        window.cmbColor.onClick = [this] { log(window.cmbColor.text()); };
        window.mnuExit.onClick = [this] { window.closeByOperator(); };
        window.onClick = [this] { log("window clicked"); };
        window.onClose = [this] { closing_ = true; };
    }

    void start() override {
        log("Starting");
        mount_ = automation_.create("Small.Mount");
        mount_->put("RightAscension", 3.5);
        if (asks) question.show();
        while (asks && question.shown()) loop_.sleep(Milliseconds{100});
        loop_.sleep(std::chrono::seconds{5});
        window.show();
        log("Started");
    }
    void close() override { window.closeByOperator(); }
    bool ended() const override { return closing_ && !working_; }
    bool asksDuringStart() const override { return question.shown(); }
    const std::vector<std::string>& logLines() const override { return lines_; }
    const std::vector<app::PopupMessages::Shown>& popups() const override { return popups_; }

    bool asks = false;

  private:
    void log(const std::string& text) { lines_.push_back("12:00:00   " + text); }

    /// Ten seconds of work in steps that yield.
    void work() {
        working_ = true;
        popups_.push_back({loop_.clock().utc(), "Working", 5});
        for (int step = 1; step <= 10 && !closing_; ++step) {
            loop_.sleep(std::chrono::seconds{1});
            log("step " + std::to_string(step));
        }
        working_ = false;
    }

    QueuedEventLoop& loop_;
    AutomationHost& automation_;
    ObjectRef mount_;
    std::vector<std::string> lines_;
    std::vector<app::PopupMessages::Shown> popups_;
    bool closing_ = false;
    bool working_ = false;

  public:
    SmallWindow window;
    Form question;
};

/// A small program and the session that operates it, from the first command to the end.
struct SmallWorld {
    double ra = 0;
    VirtualTime time{parseInstant("2026-11-24T20:00:00Z").value()};
    QueuedEventLoop loop{time};
    Screen screen{{0, 0, 1600, 900}};
    ClassRegistry classes;
    RecordingHost automation{classes};
    MemorySettings settings;
    FolderMap folders{"/nowhere"};
    ScriptedDialogs dialogs{time};
    imaging::OpenDocuments images;
    SmallProgram program{loop, screen, automation};
    ListedCommands commands;
    KeptReplies kept;
    Session session{{program, loop, screen, settings, automation, classes, folders, dialogs, images},
                    commands,
                    kept,
                    true};

    SmallWorld() {
        classes.install("Small.Mount", {[this] { return std::make_shared<SmallMount>(ra); }, {}, {}, {}});
        loop.setAttendant([this] { session.attend(); });
    }

    const std::vector<nlohmann::json>& run() {
        loop.runUntil([this] { return session.over(); });
        return kept.replies;
    }

    /// Runs the whole dialogue and compares the replies.
    void expect(const std::string& text) {
        const Dialogue dialogue(text);
        for (const auto& command : dialogue.commands) commands.add(command);
        dialogue.check(run());
        EXPECT_TRUE(session.endedWell());
    }
};

}  // namespace vantrel::headless::test
